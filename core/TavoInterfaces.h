// The interfaces of the engine's shared objects. Each I name is the counted
// reference to the class that implements it; where one implementing class
// derives from another, the I name points at the base. The engine-side
// interfaces that are not counted are abstract classes that the engine
// implements; callers hold plain pointers to them.
#pragma once

#include <functional>

#include "common/MekGenerics.h"
#include "core/TavoConsts.h"

namespace tavo {

class TTavoValue;
class TValueVector;
class TSingletonsVector;
class TModule;
class TModuleImportExport;
class TModuleConstruct;
class TTavoUserFunction;
class TInterpretedFunction;
class TTavoStreamToken;
class TFactSlot;
class TFactTemplate;
class TFact;
class TFunctionCall;
class TTavoDefinedType;
class TTavoToken;
class TIFuzzySet;
class TIFuzzyVariable;
class TTavoContext;

using ITavoValue = TRef<TTavoValue>;
using IValueVector = TRef<TValueVector>;
using ISingletonsVector = TRef<TSingletonsVector>;
using IModule = TRef<TModule>;
using IModuleExport = TRef<TModuleImportExport>;
using IModuleImport = TRef<TModuleImportExport>;
using IModuleSharedConstruct = TRef<TModuleConstruct>;
using IUserFunction = TRef<TTavoUserFunction>;
using IInterpretedFunction = TRef<TInterpretedFunction>;
using IStreamToken = TRef<TTavoStreamToken>;
using IFactSlot = TRef<TFactSlot>;
using IFactTemplate = TRef<TFactTemplate>;
using IFact = TRef<TFact>;
using IFunCall = TRef<TFunctionCall>;
using ITavoDefinedType = TRef<TTavoDefinedType>;
using IReteToken = TRef<TTavoToken>;
using IFuzzySet = TRef<TIFuzzySet>;
using IFuzzyVariable = TRef<TIFuzzyVariable>;

// Modules belong to the engine layer, yet constructs below it hold them.
void TavoAddReference(const TModule* Module) noexcept;
void TavoReleaseReference(const TModule* Module) noexcept;

class IFuzzyParser;
class TFactSet;
class TRule;
class TTavoPattern;

// The engine as the constructs and functions see it. Not counted: the engine
// implements it and callers hold plain pointers.
class IReasoner {
 public:
  virtual const IModule& GetCurrentModule() const = 0;
  // A construct tells its engine that its name changed, so that the
  // engine's tables rekey it.
  virtual void RenameDefinedType(const String& OldName, const String& NewName) = 0;
  virtual void RenameModule(const String& OldName, const String& NewName) = 0;
  virtual void RenameFactTemplate(const String& OldName, const String& NewName) = 0;
  // What constructs need of the engine's settings and state.
  virtual TTypeChecks GetTypeChecks() const = 0;
  virtual int GetFactIdCounter() const = 0;
  // The context in which the engine evaluates outside of rules, or null.
  virtual TObject* GetGlobalContext() const = 0;
  // The defined type of that name in the current module, or null.
  virtual ITavoDefinedType FindDefinedType(StringView Name) const = 0;
  // The engine's functions, by name.
  virtual void AddUserFunction(const IUserFunction& Function) = 0;
  virtual void RemoveUserFunction(const IUserFunction& Function) = 0;
  virtual bool ContainsUserFunction(StringView Name, IUserFunction& Function) const = 0;
  // What fact sets need: a fact read from its text, an assertion, and the
  // module of a set made current. FocusFactSetModule gives the module to
  // make current again afterwards, or null when nothing changed; an
  // unknown module is skipped unless Force is set, and then raises. A
  // reasoner without facts of its own keeps the defaults: it reads and
  // asserts nothing, and holds no fact sets.
  virtual IFact ParseFact(const String& Text);
  // Any value as a fuzzy value of Variable: a term, a hedged expression,
  // points, a number. Context may be null; what cannot be computed without
  // one is then kept as it is. A reasoner without fuzzy expressions gives
  // the value back.
  virtual ITavoValue EvalFuzzyExpression(const IFuzzyVariable& Variable, const ITavoValue& Value,
                                         TTavoContext* Context);
  virtual int Assert(const IFact& Fact, bool Unconditional);
  virtual IModule FocusFactSetModule(StringView /*Module*/, bool /*Force*/) { return nullptr; }
  virtual void RestoreModule(const IModule& /*Module*/) {}
  // The fact sets of the current module.
  virtual void AddFactSet(TFactSet* /*FactSet*/) {}
  virtual void RemoveFactSet(TFactSet* /*FactSet*/) {}
  virtual bool HoldsFactSet(const TFactSet* /*FactSet*/) const { return false; }
  // A construct's rule-language text by the engine's printers, which is
  // what its ToString gives. A reasoner without printers gives empty
  // text, and the construct then writes a plain form of its own.
  virtual String PrettyPrint(const IFactTemplate& /*Template*/) { return String(); }
  virtual String PrettyPrint(const ITavoDefinedType& /*Type*/) { return String(); }
  virtual String PrettyPrint(const IModule& /*Module*/) { return String(); }
  virtual String PrettyPrint(const IUserFunction& /*Function*/) { return String(); }
  virtual String PrettyPrint(const TFactSet& /*FactSet*/) { return String(); }
  virtual String PrettyPrint(const TRule& /*Rule*/) { return String(); }
  virtual String PrettyPrint(const TTavoPattern& /*Pattern*/) { return String(); }

 protected:
  ~IReasoner() = default;
};

// Reads and prints the literal points of a fuzzy value; the engine
// implements it.
class ISingletonsParser {
 public:
  virtual ISingletonsVector ParseSingletons(const String& Text) = 0;
  virtual String PrettyPrint(const ISingletonsVector& Singletons) = 0;

 protected:
  ~ISingletonsParser() = default;
};

using TTavoValueChangeEvent = std::function<void(const ITavoValue& Sender)>;

// The tag under which a value holds an interface of class T. Declared here
// for the interface classes a value can hold, so that the typed value
// accessors compile wherever the class itself is complete.
template <class T>
struct TValueInterfaceType;
template <>
struct TValueInterfaceType<TFunctionCall> {
  static constexpr TTavoType Type = dtFunCall;
  static constexpr const char16_t* Word = u"function call";
};
template <>
struct TValueInterfaceType<TFact> {
  static constexpr TTavoType Type = dtFact;
  static constexpr const char16_t* Word = u"fact";
};
template <>
struct TValueInterfaceType<TValueVector> {
  static constexpr TTavoType Type = dtList;
  static constexpr const char16_t* Word = u"list";
};
template <>
struct TValueInterfaceType<TSingletonsVector> {
  static constexpr TTavoType Type = dtSingletons;
  static constexpr const char16_t* Word = u"singletons";
};
template <>
struct TValueInterfaceType<TIFuzzySet> {
  static constexpr TTavoType Type = dtFuzzy;
  static constexpr const char16_t* Word = u"fuzzy value";
};

}  // namespace tavo
