// The evaluation context: a chain of scopes with variable bindings, a
// pending return, and the fact and token that pattern tests look at.
#pragma once

#include "common/MekHashTables.h"
#include "core/TavoVectors.h"

namespace tavo {

class TTavoContext;

// The coordinates of a variable in a token: the pattern (fact) index, the
// slot name or a special name, and the index inside a multifield slot. A
// dtObject value holding one is a variable reference compiled to coordinates.
class TBindingInfo : public TPersistent {
  TAVO_CLASS(TBindingInfo, TPersistent)
 public:
  TBindingInfo() = default;
  TBindingInfo(int FactIndex, String SlotIndex, int SubIndex = NoSubIndex)
      : FSubIndex(SubIndex), FFactIndex(FactIndex), FSlotIndex(std::move(SlotIndex)) {}

  int GetSubIndex() const { return FSubIndex; }
  int GetFactIndex() const { return FFactIndex; }
  const String& GetSlotIndex() const { return FSlotIndex; }
  void SetSubIndex(int Value) { FSubIndex = Value; }
  void SetFactIndex(int Value) { FFactIndex = Value; }
  void SetSlotIndex(const String& Value) { FSlotIndex = Value; }

  // All three coordinates equal; Other must be a TBindingInfo or descend from it.
  virtual bool Equals(const TObject* Other) const;
  String ToString() const override;
  void Assign(const TPersistent* Source) override;

 protected:
  int FSubIndex = NoSubIndex;
  int FFactIndex = 0;
  String FSlotIndex;
};

// A named value in a context; with coordinates instead of a value, where a
// rule's variable lies in its token.
class TBinding : public TBindingInfo {
  TAVO_CLASS(TBinding, TBindingInfo)
 public:
  TBinding() = default;
  TBinding(String Name, int FactIndex, String SlotIndex, int SubIndex)
      : TBindingInfo(FactIndex, std::move(SlotIndex), SubIndex), FName(std::move(Name)) {}
  TBinding(String Name, ITavoValue Value)
      : TBindingInfo(LocalBindingIndex, SLocalBinding, NoSubIndex), FValue(std::move(Value)), FName(std::move(Name)) {}

  const String& GetName() const { return FName; }
  const ITavoValue& GetValue() const { return FValue; }
  void SetValue(ITavoValue Value) { FValue = std::move(Value); }

  bool Equals(const TObject* Other) const override;
  String ToString() const override;

 private:
  ITavoValue FValue;
  String FName;
};

enum TTableNotification { tnAdded, tnDeleted, tnCleared };

// A scope's bindings by name; it owns them.
class TBindings : public TMekStringHashTable<TBinding*> {
  using TInherited = TMekStringHashTable<TBinding*>;

 public:
  explicit TBindings(TTavoContext* Owner) : FOwner(Owner) {}
  ~TBindings() override;
  using TInherited::Add;
  // Stores Binding under its name, replacing (and freeing) one of that name.
  void Add(TBinding* Binding);
  void Clear() override;

 protected:
  void KeyNotify(const String& Key, TCollectionNotification Action) override;
  void ValueNotify(TBinding* const& Binding, TCollectionNotification Action) override;

 private:
  TTavoContext* FOwner;
  bool FClearing = false;
};

// What evaluation needs of a fact: its id and its slot values. Facts derive
// from it.
class TContextFact : public TCloneableObject {
 public:
  virtual int GetID() const = 0;
  virtual const ITavoValue& GetValue(StringView Name) = 0;
};
using IContextFact = TRef<TContextFact>;

// What evaluation needs of a partial match: its facts by position. Tokens
// derive from it.
class TContextToken : public TCloneableObject {
 public:
  virtual int GetCount() const = 0;
  virtual TContextFact* GetContextFact(int Index) const = 0;
};
using IContextToken = TRef<TContextToken>;

class TTavoContext : public TPersistent {
  TAVO_CLASS(TTavoContext, TPersistent)
 public:
  TTavoContext(TTavoContext* Parent = nullptr, IReasoner* Engine = nullptr);
  ~TTavoContext() override;

  IReasoner* GetEngine() const { return FEngine; }
  TTavoContext* GetParent() const { return FParent; }
  const TBindings& GetBindings() const { return FBindings; }

  // The first scope up the chain that holds the name wins; null if none.
  TBinding* FindBinding(StringView Name) const;
  // Looks only in the root of the chain.
  TBinding* FindGlobalBinding(StringView Name) const;
  // The bound value; "Unknown variable name: %s" when nothing holds it.
  const ITavoValue& GetVariable(StringView Name) const;
  // Replaces the value in this scope's own binding, else AddBinding.
  virtual void SetVariable(const String& Name, const ITavoValue& Value);
  // Changes the binding wherever it lies up the chain, so that bind in a
  // child changes the parent's variable; a new name goes into this scope.
  virtual void AddBinding(const String& Name, const ITavoValue& Value);
  // Frees any binding of the name up the chain and stores coordinates here.
  virtual void AddBinding(const String& Name, int FactIndex, const String& SlotName, int SubIndex);
  virtual void AddGlobalBinding(const String& Name, const ITavoValue& Value);
  // Always a new binding here, hiding any outer one.
  virtual void AddLocalBinding(const String& Name, const ITavoValue& Value);

  bool GetReturning() const { return FReturning; }
  const ITavoValue& GetReturnValue() const { return FReturnValue; }
  virtual void SetReturnValue(const ITavoValue& Value);
  virtual void ClearReturnValue();
  // Empties the bindings, and with them a pending return.
  virtual void Clear();
  // A child scope with the same engine; the caller owns it.
  virtual TTavoContext* Push();
  // Hands the return state to the parent and gives the parent, or this
  // context at the root. The caller frees the popped context.
  virtual TTavoContext* Pop();
  // Takes the return state (a clone of the value) from another context.
  void Assign(const TPersistent* Source) override;
  virtual void Notify(TBinding* Binding, TTableNotification Action);

  // Each item resolved here; a list at the end of the result is spliced in.
  IValueVector ExpandList(const IValueVector& Vector);
  // Nested lists walked in place, nothing evaluated.
  static IValueVector FlattenList(const IValueVector& Vector);

  // The fact under test on the right input of a node, and the token on the
  // left. Typed access compiles where facts and tokens are complete.
  const IContextFact& GetContextFact() const { return FFact; }
  void SetFact(IContextFact Value) { FFact = std::move(Value); }
  template <class T = TFact>
  TRef<T> GetFact() const {
    return TRef<T>(static_cast<T*>(FFact.Get()));
  }
  const IContextToken& GetContextToken() const { return FToken; }
  void SetToken(IContextToken Value) { FToken = std::move(Value); }
  template <class T = TTavoToken>
  TRef<T> GetToken() const {
    return TRef<T>(static_cast<T*>(FToken.Get()));
  }

  // The value at a variable's coordinates in the current token and fact.
  ITavoValue ResolveBindingInfo(const TBindingInfo& Info) const;

 private:
  bool FReturning = false;
  ITavoValue FReturnValue;
  IReasoner* FEngine;
  TBindings FBindings;
  TTavoContext* FParent;
  IContextFact FFact;
  IContextToken FToken;
};

}  // namespace tavo
