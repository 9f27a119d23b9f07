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

// Not counted: implemented by the engine.
class IReasoner;
class ISingletonsParser;
class IFuzzyParser;

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
