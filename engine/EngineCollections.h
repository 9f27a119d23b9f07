// The engine's keyed collections of constructs: defined types and fact
// templates per module, and the named values of store/fetch and defglobal.
#pragma once

#include <vector>

#include "common/MekTextStream.h"
#include "core/TavoFunctions.h"
#include "core/TavoVectors.h"
#include "knowledge/TavoFactSets.h"
#include "knowledge/TavoFactTemplate.h"
#include "knowledge/TavoRule.h"

namespace tavo {

class TInferenceEngine;

// A module's table of shared constructs by name. Adding, replacing and
// removing go through here so that the engine's duplicate policy applies
// and its events are raised. Entries whose home is another module are
// imported and counted apart.
template <class T>
class TConstructTable : public TMekStringHashTable<TRef<T>> {
  using TInherited = TMekStringHashTable<TRef<T>>;

 public:
  using TItemRef = TRef<T>;

  TConstructTable(TInferenceEngine* Engine, TModule* Module) : FEngine(Engine), FModule(Module) {}

  TInferenceEngine* GetEngine() const { return FEngine; }
  void SetEngine(TInferenceEngine* Value) { FEngine = Value; }
  TModule* GetModule() const { return FModule; }
  int GetImportCount() const { return FImportCount; }
  int GetLocalsCount() const { return this->Count() - FImportCount; }
  // The entries in the order they were defined.
  std::vector<TItemRef> InOrder(bool LocalsOnly = false) const;

  // Puts New in Old's place, under New's name; the engine moves what
  // depended on Old. Gives New.
  TItemRef Replace(const TItemRef& Old, const TItemRef& New);
  // Moves an entry to the new name its construct took, keeping its place
  // in the definition order; no event.
  void Rekey(const String& OldName, const String& NewName);
  // Takes the construct of that name out; gives it, or null.
  TItemRef RemoveConstruct(const String& Name);
  void Clear() override;
  // Takes out only the imported, or only the module's own, constructs.
  void Clear(TConstructScope Scope);
  // The definitions, one per line.
  String ToString() const override;
  String LocalsToString() const;
  // From another table, of this engine or another: this table is emptied,
  // and each of the source's constructs, in definition order, is read
  // again by this engine into this table's module. AssignLocal takes only
  // the source's own constructs and keeps what this table imported.
  using TInherited::Assign;
  void Assign(const TPersistent* Source) override;
  void AssignLocal(const TConstructTable& Source);

 protected:
  void DoAdd(const String& Key, const TItemRef& Value) override;
  void DoSetValue(const String& Key, const TItemRef& Value) override;
  bool DoRemove(const String& Key) override;

  // What each kind does beyond the table.
  virtual void Prepare(T& Construct) = 0;
  virtual void Added(const TItemRef& Construct) = 0;
  virtual void Removing(const TItemRef& Construct) = 0;
  virtual void Replaced(const TItemRef& Old, const TItemRef& New) = 0;
  virtual void Cleared(bool BeforeEmptying) = 0;
  virtual const char16_t* DuplicateMessage() const = 0;

  bool IsForeign(const T& Construct) const { return Construct.GetModule().Get() != FModule; }

  TInferenceEngine* FEngine;
  TModule* FModule;
  int FImportCount = 0;

 private:
  void CopyFrom(const TConstructTable& Source, bool LocalsOnly);
  void Store(const String& Key, const TItemRef& Value);
  void Unstore(const String& Key, const TItemRef& Value);

  std::vector<String> FOrder;
};

class TTavoDefinedTypes : public TConstructTable<TTavoDefinedType> {
  TAVO_CLASS(TTavoDefinedTypes, TMekStringHashTable<ITavoDefinedType>)
 public:
  using TConstructTable::TConstructTable;
  // The first defined type of Template's slots that this table lacks by
  // name, or null.
  ITavoDefinedType FindUnsharedType(const IFactTemplate& Template) const;

 protected:
  void Prepare(TTavoDefinedType& Type) override;
  void Added(const ITavoDefinedType& Type) override;
  void Removing(const ITavoDefinedType& Type) override;
  void Replaced(const ITavoDefinedType& Old, const ITavoDefinedType& New) override;
  void Cleared(bool BeforeEmptying) override;
  const char16_t* DuplicateMessage() const override { return SDuplicateDefTypeNames; }
};

class TFactTemplates : public TConstructTable<TFactTemplate> {
  TAVO_CLASS(TFactTemplates, TMekStringHashTable<IFactTemplate>)
 public:
  using TConstructTable::TConstructTable;

 protected:
  // A template with no slots becomes an implied one: one "__Data" multislot.
  void Prepare(TFactTemplate& Template) override;
  void Added(const IFactTemplate& Template) override;
  void Removing(const IFactTemplate& Template) override;
  void Replaced(const IFactTemplate& Old, const IFactTemplate& New) override;
  void Cleared(bool BeforeEmptying) override;
  const char16_t* DuplicateMessage() const override { return SDuplicateTemplateNames; }
};

// All functions of an engine by name, built-in and defined alike. A
// function in the table has the engine among its reasoners.
class TUserFunctions : public TMekStringHashTable<IUserFunction> {
  using TInherited = TMekStringHashTable<IUserFunction>;
  TAVO_CLASS(TUserFunctions, TInherited)
 public:
  explicit TUserFunctions(TInferenceEngine* Engine) : FEngine(Engine) {}
  ~TUserFunctions() override;

  int GetNumInterpreted() const { return FNumInterpreted; }
  // Takes the function out, and the engine out of the function's
  // reasoners; gives the function, or null.
  IUserFunction RemoveFunction(const String& Name);
  // Takes the entry out without touching the function: the road of a
  // function that leaves the engine or changes its name.
  IUserFunction ExtractFunction(const String& Name);
  void Clear() override;
  // From another engine's table: built-in and host functions are shared
  // by name, deffunctions are read again by this engine.
  void Assign(const TPersistent* Source) override;
  void AssignInterpretedFunctions(const TUserFunctions& Source);
  // The names, each followed by CR LF.
  String GetNamesToString() const;
  // The deffunctions in the order they were defined, each followed by CR
  // LF; built-in functions are not printed.
  String ToString() const override;
  void SetEngine(TInferenceEngine* Value) { FEngine = Value; }

 protected:
  void DoAdd(const String& Key, const IUserFunction& Function) override;
  void DoSetValue(const String& Key, const IUserFunction& Function) override;
  bool DoRemove(const String& Key) override;

 private:
  void CheckName(const String& Key, const IUserFunction& Function) const;

  TInferenceEngine* FEngine;
  int FNumInterpreted = 0;
  // The deffunctions' names in definition order: a deffunction may call
  // only those defined before it, so saved text keeps this order.
  std::vector<String> FInterpretedNames;
};

// The engine's named text streams. A stream that leaves the table is freed
// while FreeStream holds; Clear frees them all.
class TIOStreams : public TMekStringObjectHashTable<TGTextStream> {
  using TInherited = TMekStringObjectHashTable<TGTextStream>;
  TAVO_CLASS(TIOStreams, TInherited)
 public:
  explicit TIOStreams(TInferenceEngine* Engine) : FEngine(Engine) {}
  bool GetFreeStream() const { return FFreeStream; }
  void SetFreeStream(bool Value);
  // Under an existing name by the engine's duplicate policy; the same
  // stream again does nothing. The table takes the stream.
  void AddStream(const String& Name, TGTextStream* Stream);
  // SInvalidStreamName for an absent name.
  void RemoveStream(const String& Name);
  void Clear() override;
  // Streams are not shared between engines: another table copies nothing.
  void Assign(const TPersistent* Source) override;

 private:
  TInferenceEngine* FEngine;
  bool FFreeStream = true;
};

// Named values of the engine: the store of store and fetch.
class TEngineVariables : public TValueHashTable {
  TAVO_CLASS(TEngineVariables, TValueHashTable)
 public:
  explicit TEngineVariables(TInferenceEngine* Engine = nullptr) : FEngine(Engine) {}
  TInferenceEngine* GetEngine() const { return FEngine; }

 protected:
  TInferenceEngine* FEngine;
};

// The definitions of defglobal, kept unevaluated. Each is bound in the
// engine's global context when it is stored, and again at every reset.
class TGlobalVariables : public TEngineVariables {
  TAVO_CLASS(TGlobalVariables, TEngineVariables)
 public:
  using TEngineVariables::TEngineVariables;

 protected:
  void DoAdd(const String& Key, const ITavoValue& Value) override;
  void DoSetValue(const String& Key, const ITavoValue& Value) override;
};

// A module's rules by name, in the order they came. Adding a rule compiles
// it into the module's network; rules the engine owns are freed by Clear.
class TRules : public TObject {
 public:
  TRules(TInferenceEngine* Engine, TModule* Module) : FEngine(Engine), FModule(Module) {}
  ~TRules() override;

  int Count() const { return int(FItems.size()); }
  TRule* Get(int Index) const { return FItems[size_t(Index)]; }
  TRule* Find(StringView Name) const;
  int IndexOf(const TRule* Rule) const;
  // Under the duplicate policy of the engine: an older rule of the name is
  // replaced, kept, or refused.
  void Add(TRule* Rule);
  // Only this very rule under this name goes; it stays alive.
  bool Remove(const String& Name, TRule* Rule);
  // A renamed rule is found under its new name.
  void Rename(TRule* Rule, const String& OldName, const String& NewName);
  void Clear();
  // The source's rules, read again by this engine into this module, in
  // the order they came; the former rules go first.
  void Assign(const TRules& Source);
  String ToString() const override;
  TModule* GetModule() const { return FModule; }

 private:
  TInferenceEngine* FEngine;
  TModule* FModule;
  std::vector<TRule*> FItems;
  TMekStringHashTable<TRule*> FNames;
};

// A module's fact sets, in the order they came. The list owns its sets: a
// set that leaves by Remove is the caller's again, and Clear frees them.
// Lookups by name find the oldest set of a name.
class TFactSets : public TObject {
 public:
  TFactSets(TInferenceEngine* Engine, TModule* Module) : FEngine(Engine), FModule(Module) {}
  ~TFactSets() override;
  TFactSets(const TFactSets&) = delete;
  TFactSets& operator=(const TFactSets&) = delete;

  TInferenceEngine* GetEngine() const { return FEngine; }
  // Without an engine the sets are no longer told of adds and removes.
  void SetEngine(TInferenceEngine* Value) { FEngine = Value; }
  TModule* GetModule() const { return FModule; }
  int Count() const { return int(FItems.size()); }
  TFactSet* Get(int Index) const { return FItems.at(size_t(Index)); }
  // A set of a name that another set has is added beside it, and the older
  // ones are told that they have no engine.
  int Add(TFactSet* FactSet);
  // Takes the set out, without freeing it; the set loses its engine.
  void Remove(TFactSet* FactSet);
  int IndexOf(const TFactSet* FactSet) const;
  int IndexOf(StringView Name) const;
  void Clear();
  std::vector<TFactSet*>::const_iterator begin() const { return FItems.begin(); }
  std::vector<TFactSet*>::const_iterator end() const { return FItems.end(); }
  // The deffacts texts, one per line.
  String ToString() const override;
  // The source's sets, read again by this engine into this module.
  void Assign(const TFactSets& Source);

 private:
  TInferenceEngine* FEngine;
  TModule* FModule;
  std::vector<TFactSet*> FItems;
};

}  // namespace tavo
