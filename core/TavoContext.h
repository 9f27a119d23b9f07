// The evaluation context: a chain of scopes with variable bindings, a
// pending return, and the fact and token that pattern tests look at.
#pragma once

#include <memory>
#include <vector>

#include "common/MekHashTables.h"
#include "core/TavoVectors.h"

namespace tavo {

class TTavoContext;
class TContextFact;

// The coordinates of a variable in a token: the pattern (fact) index, the
// slot name or a special name, and the index inside a multifield slot. A
// dtObject value holding one is a variable reference compiled to coordinates.
class TBindingInfo : public TPersistent {
  TAVO_CLASS(TBindingInfo, TPersistent)
 public:
  TBindingInfo() = default;
  TBindingInfo(int FactIndex, String SlotIndex, int SubIndex = NoSubIndex)
      : FSubIndex(SubIndex), FFactIndex(FactIndex), FSlotIndex(std::move(SlotIndex)) {
    NoteSlotIndex();
  }

  int GetSubIndex() const { return FSubIndex; }
  int GetFactIndex() const { return FFactIndex; }
  const String& GetSlotIndex() const { return FSlotIndex; }
  void SetSubIndex(int Value) { FSubIndex = Value; }
  void SetFactIndex(int Value) { FFactIndex = Value; }
  void SetSlotIndex(const String& Value) {
    FSlotIndex = Value;
    FLayoutSeen = nullptr;
    NoteSlotIndex();
  }
  // Whether the coordinates name a pattern's fact rather than a slot.
  bool IsPatternBinding() const { return FPatternBinding; }

  // All three coordinates equal; Other must be a TBindingInfo or descend from it.
  virtual bool Equals(const TObject* Other) const;
  // The layout the slot's position was last worked out for, and that
  // position (-1 for a slot the layout lacks).
  const void* GetLayoutSeen() const { return FLayoutSeen; }
  int GetSlotPosition() const { return FSlotPosition; }
  String ToString() const override;
  void Assign(const TPersistent* Source) override;

 protected:
  friend class TTavoContext;
  friend const ITavoValue& ReadSlot(TContextFact& Fact, const TBindingInfo& Info);
  int FSubIndex = NoSubIndex;
  int FFactIndex = 0;
  String FSlotIndex;
  // The slot's position, worked out once for the layout it was found in.
  mutable const void* FLayoutSeen = nullptr;
  mutable int FSlotPosition = -1;
  bool FPatternBinding = false;

 private:
  void NoteSlotIndex() { FPatternBinding = FSlotIndex == SPatternBinding; }
};

// A named value in a context; with coordinates instead of a value, where a
// rule's variable lies in its token. The name is an interned text, so that
// a variable finds its binding by one comparison.
class TBinding : public TBindingInfo {
  TAVO_CLASS(TBinding, TBindingInfo)
 public:
  TBinding() = default;
  TBinding(StringView Name, int FactIndex, String SlotIndex, int SubIndex)
      : TBindingInfo(FactIndex, std::move(SlotIndex), SubIndex), FName(InternName(Name)) {}
  TBinding(StringView Name, ITavoValue Value)
      : TBindingInfo(LocalBindingIndex, SLocalBinding, NoSubIndex), FValue(std::move(Value)), FName(InternName(Name)) {}

  StringView GetName() const { return FName.View(); }
  TSharedText* GetNameText() const { return FName.Get(); }
  const ITavoValue& GetValue() const { return FValue; }
  void SetValue(ITavoValue Value) { FValue = std::move(Value); }

  bool Equals(const TObject* Other) const override;
  String ToString() const override;

 private:
  friend class TTavoContext;
  static TSharedTextRef InternName(StringView Name) { return TSharedTextRef::Adopt(TSharedText::Intern(Name)); }

  ITavoValue FValue;
  TSharedTextRef FName;
};

// The slot names of a deffunction's frame: its parameters, then the
// variables its body binds, each an interned text. Variables of the body
// carry their position here as a hint.
class TFrameLayout {
 public:
  // The position of Name, added when new; -1 when the frame is full.
  int Add(StringView Name);
  int IndexOf(StringView Name) const;
  int Count() const { return int(FNames.size()); }
  TSharedText* GetName(int Index) const { return FNames[size_t(Index)].Get(); }
  void Clear() { FNames.clear(); }

 private:
  std::vector<TSharedTextRef> FNames;
};

class TFramePool;

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

// What evaluation needs of a fact: its id and its slot values, by name or
// by position. Positions belong to a layout, which a caller identifies by
// GetSlotLayout to learn when a position it worked out still holds. Facts
// derive from it.
class TContextFact : public TCloneableObject {
 public:
  virtual int GetID() const = 0;
  virtual const ITavoValue& GetValue(StringView Name) = 0;
  virtual const void* GetSlotLayout() const = 0;
  // The position of the slot of that name in the fact's layout, or -1.
  virtual int GetSlotPosition(StringView Name) const = 0;
  virtual const ITavoValue& GetValueAt(int Position) = 0;
  // The value at Position of Layout in one call, when the fact follows that
  // layout and holds a value there; null sends the caller the general way.
  virtual const ITavoValue* PeekSlot(const void* Layout, int Position) const {
    (void)Layout;
    (void)Position;
    return nullptr;
  }
};
using IContextFact = TRef<TContextFact>;

// The value of the slot that Info names in Fact, its sub-index aside. The
// slot's position is worked out once per layout and kept in Info, so that
// every later read goes by position.
const ITavoValue& ReadSlot(TContextFact& Fact, const TBindingInfo& Info);

// What evaluation needs of a partial match: its facts by position. Tokens
// derive from it.
class TContextToken : public TCloneableObject {
 public:
  virtual int GetCount() const = 0;
  virtual TContextFact* GetContextFact(int Index) const = 0;
};
using IContextToken = TRef<TContextToken>;

// A scope of evaluation. Scopes live on the machine stack or come from
// Push; a deffunction's scope is a frame whose bindings are taken by
// position from a pool that the root of the chain owns, so that a call
// allocates nothing. Named bindings of any other name go into a table made
// the first time one is added.
class TTavoContext : public TPersistent {
  TAVO_CLASS(TTavoContext, TPersistent)
 public:
  TTavoContext(TTavoContext* Parent = nullptr, IReasoner* Engine = nullptr);
  ~TTavoContext() override;
  TTavoContext(const TTavoContext&) = delete;
  TTavoContext& operator=(const TTavoContext&) = delete;

  IReasoner* GetEngine() const { return FEngine; }
  TTavoContext* GetParent() const { return FParent; }
  // The named bindings of this scope, frame slots aside.
  const TBindings& GetBindings() const;

  // Makes this scope the frame of Layout: one empty binding for each of its
  // names. Closed by the destructor.
  void OpenFrame(const TFrameLayout& Layout);
  int GetFrameCount() const { return FFrameCount; }
  TBinding& GetFrameBinding(int Index) const { return FFrame[Index]; }

  // The first scope up the chain that holds the name wins; null if none.
  TBinding* FindBinding(StringView Name) const;
  // The value bound to a variable value (dtVariable or dtMultiVariable),
  // through its frame hint when that names this scope's slot; null when
  // nothing holds the name.
  const ITavoValue* FindVariable(const TTavoValue& Variable) const;
  // bind of a variable value: SetVariable by its name, through its hint.
  void BindVariable(const TTavoValue& Variable, const ITavoValue& Value);
  // Looks only in the root of the chain.
  TBinding* FindGlobalBinding(StringView Name) const;
  // The bound value; "Unknown variable name: %s" when nothing holds it.
  const ITavoValue& GetVariable(StringView Name) const;
  // Replaces the value in this scope's own binding, else AddBinding.
  virtual void SetVariable(StringView Name, const ITavoValue& Value);
  // Changes the binding wherever it lies up the chain, so that bind in a
  // child changes the parent's variable; a new name goes into this scope.
  virtual void AddBinding(StringView Name, const ITavoValue& Value);
  // Frees any binding of the name up the chain and stores coordinates here.
  virtual void AddBinding(StringView Name, int FactIndex, const String& SlotName, int SubIndex);
  virtual void AddGlobalBinding(StringView Name, const ITavoValue& Value);
  // Always a new binding here, hiding any outer one.
  virtual void AddLocalBinding(StringView Name, const ITavoValue& Value);

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

  // The value at a variable's coordinates in the current token and fact,
  // this scope's or else those of the enclosing scope that holds them. A
  // value made on the way (a fact id, a member of a list) lands in Scratch.
  const ITavoValue& ResolveBindingInfo(const TBindingInfo& Info, ITavoValue& Scratch) const;

 private:
  // This scope's own binding of the name: a bound frame slot or a named
  // binding; null if none.
  TBinding* OwnBinding(StringView Name) const;
  // The frame slot of the name, bound or not; null if the frame lacks it.
  TBinding* FrameSlot(StringView Name) const;
  TBindings& Bindings();
  TFramePool& Pool();

  bool FReturning = false;
  ITavoValue FReturnValue;
  IReasoner* FEngine;
  std::unique_ptr<TBindings> FBindings;
  TTavoContext* FParent;
  TTavoContext* FRoot;
  // Frame slots, from the root's pool.
  TBinding* FFrame = nullptr;
  int FFrameCount = 0;
  int FSavedChunk = 0;
  int FSavedUsed = 0;
  std::unique_ptr<TFramePool> FPool;
  IContextFact FFact;
  IContextToken FToken;
  // The nearest enclosing scope that held a token or a fact when this one
  // was made: a deffunction called from a test evaluates its arguments in
  // a scope of its own and finds the node's match there.
  const TTavoContext* FMatchScope;
};

}  // namespace tavo
