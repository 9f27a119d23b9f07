// Fact templates (the deftemplate construct) and their slots.
#pragma once

#include <vector>

#include "common/MekHashTables.h"
#include "common/MekStringList.h"
#include "knowledge/TavoDefinedType.h"

namespace tavo {

class TFactTemplate;
using TFactTemplateEvent = std::function<void(TObject* Sender, const IFactTemplate& Template)>;

// One slot of a template: a name, the allowed tags, a default, optionally a
// defined type, and whether the default is computed anew for each fact.
class TFactSlot : public TCloneableObject {
  TAVO_CLASS(TFactSlot, TCloneableObject)
 public:
  explicit TFactSlot(TFactTemplate* Owner = nullptr) : FOwner(Owner) {}
  ~TFactSlot() override;

  TFactTemplate* GetOwner() const { return FOwner; }
  const String& GetName() const { return FName; }
  // A new name enters the owner's tables.
  virtual void SetName(const String& Value);
  String GetTemplateName() const;
  const ITavoValue& GetSlotDefault() const { return FSlotDefault; }
  // Keeps a clone (constants by reference) and watches it for changes.
  virtual void SetSlotDefault(const ITavoValue& Value);
  TTavoTypes GetSlotType() const { return FSlotType; }
  // Fuzzy mixes only with the multislot kinds; a default that no longer
  // fits is replaced by a valid one.
  virtual void SetSlotType(TTavoTypes Value);
  const ITavoDefinedType& GetExtendedTypeInfo() const { return FExtendedTypeInfo; }
  // The fuzzy variable of the slot's defined type, or null.
  IFuzzyVariable GetFuzzyVariable() const;
  virtual void SetExtendedTypeInfo(const ITavoDefinedType& Value);
  bool GetDefaultDynamic() const { return FDefaultDynamic; }
  void SetDefaultDynamic(bool Value) { FDefaultDynamic = Value; }
  bool IsFuzzy() const { return FSlotType.Contains(dtFuzzy); }
  bool IsMulti() const { return FSlotType.Contains(dtMultiSlot); }

  virtual ITavoValue CreateValidDefault(bool IsMulti) const;
  bool IsValid(const ITavoValue& Value) const;
  // Why Value does not fit, as "... for NAME slot", or empty text.
  String GetInvalidValueString(const ITavoValue& Value) const;

  bool Equals(const TCloneableObject* Other) const override;
  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override;
  String ToString() const override;

 protected:
  // The default's change event: a changed default must stay valid.
  virtual void ValueChanged(const ITavoValue& Value);

 private:
  friend class TFactTemplate;
  bool DynamicChecks() const;
  void WatchDefault(bool Watch);

  TFactTemplate* FOwner;
  ITavoValue FSlotDefault;
  String FName;
  TTavoTypes FSlotType;
  ITavoDefinedType FExtendedTypeInfo;
  bool FDefaultDynamic = false;
};

using TFactTemplateSlots = TMekStringHashTable<IFactSlot>;

// The slots of a template by position, in slot-name order: what a fact's
// value array follows. A new layout is made whenever the slots change, so a
// fact tells by one comparison whether its array still fits.
class TSlotLayout : public TCountedObject {
 public:
  int Count() const { return int(FSlots.size()); }
  const IFactSlot& GetSlot(int Position) const { return FSlots[size_t(Position)]; }
  // The position of the slot of that name, or -1.
  int IndexOf(StringView Name) const;

 private:
  friend class TFactTemplate;
  std::vector<IFactSlot> FSlots;
};
using ISlotLayout = TRef<TSlotLayout>;

class TFactTemplate : public TModuleConstruct {
  TAVO_CLASS(TFactTemplate, TModuleConstruct)
 public:
  // An engine owner makes the engine's current module the template's home.
  explicit TFactTemplate(TObject* Owner = nullptr);
  TFactTemplate(TObject* Owner, const String& Name);
  // A copy of Source under a new name and comment; Source becomes the
  // parent when it has the same owner.
  TFactTemplate(TObject* Owner, const IFactTemplate& Source, const String& Comment, const String& Name);
  ~TFactTemplate() override;

  TObject* GetAOwner() const { return FOwner; }
  // The owner as an engine, or null.
  IReasoner* GetReasoner() const { return RepeatedCast<IReasoner>(FOwner); }
  const String& GetTemplateName() const { return FTemplateName; }
  virtual void SetTemplateName(const String& Value);
  const String& GetComment() const { return FComment; }
  virtual void SetComment(const String& Value) { FComment = Value; }
  bool IsBackwardChaining() const { return FBackwardChaining; }
  virtual void SetBackwardChaining(bool Value) { FBackwardChaining = Value; }
  const IFactTemplate& GetParent() const { return FParent; }
  virtual void SetParent(const IFactTemplate& Value) { FParent = Value; }
  // True for a template whose one slot is the "__Data" multislot.
  bool IsOrdered() const { return FOrdered; }

  // Slots. Names are kept sorted, and every walk that counts goes by them.
  int GetSlotCount() const { return FFactSlots.Count(); }
  const IFactSlot& GetSlot(StringView Name) const;
  const TFactTemplateSlots& GetSlots() const { return FFactSlots; }
  const TStringList<int>& GetSlotNames() const { return FFactSlotNames; }
  bool ContainsSlot(StringView Name) const { return FFactSlots.ContainsKey(Name); }
  // The slots by position; a new object after every change of the slots.
  const ISlotLayout& GetLayout() const;
  // The layout as it stands, null before it is first asked for.
  const void* PeekLayout() const { return FLayout.Get(); }
  // The position of the slot of that name in the current layout, or -1.
  int IndexOfSlot(StringView Name) const { return GetLayout()->IndexOf(Name); }
  bool ContainsSlot(StringView Name, IFactSlot& Slot) const { return FFactSlots.TryGetValue(Name, Slot); }
  // The first slot whose defined type is this very object, or null.
  IFactSlot ContainsType(const ITavoDefinedType& Type) const;
  virtual IFactSlot AddSlot(const String& Name, const ITavoValue& Default);
  virtual IFactSlot AddMultiSlot(const String& Name, const ITavoValue& Default);
  // A new slot of this template, assigned from Slot.
  virtual IFactSlot AddSlot(const IFactSlot& Slot);
  // Replaces the entry of Name, whose slot must bear that name.
  virtual void SetSlot(const String& Name, const IFactSlot& Slot);
  virtual void RemoveSlot(const String& Name);
  virtual void ClearSlots();
  // Adds each slot of Template by name, with a clone of its default.
  void AssignSlots(const IFactTemplate& Template);

  virtual IFact NewFact();
  // Gives a new fact of this template its defaults, in slot-name order; a
  // default-dynamic is evaluated for each fact.
  virtual void FillFactWithDefaults(const IFact& Fact);

  bool IsFuzzy() const;
  // Hashes the name and the slot names, not the defaults.
  int32_t GetHashCode() const override;
  bool Equals(const TCloneableObject* Other) const override;
  using TModuleConstruct::Assign;
  void Assign(const TPersistent* Source) override;
  ICloneableObject Clone() const override;
  IFactTemplate Clone(TObject* Owner) const;
  String ToString() const override;
  // The text of one slot definition.
  virtual String SlotToString(const TFactSlot& Slot) const;

 protected:
  friend class TFactSlot;
  // The slot tables follow a slot's new name; the caches go stale.
  virtual void NewSlotName(TFactSlot* Slot, const String& Name);
  // The template keeps its own copy of a call given as default.
  virtual void NewSlotDefault(TFactSlot* Slot, ITavoValue& Value);
  virtual void NewSlotType(TFactSlot* Slot, TTavoTypes& Types);

 private:
  void SlotsChanged();
  void ReleaseSlots();

  bool FBackwardChaining = false;
  IFactTemplate FParent;
  String FComment;
  TFactTemplateSlots FFactSlots;
  String FTemplateName;
  bool FOrdered = false;
  TObject* FOwner;
  mutable bool FNeedIsFuzzy = true;
  mutable bool FIsFuzzy = false;
  mutable bool FNeedHashCode = true;
  mutable int32_t FHashCode = 0;
  TStringList<int> FFactSlotNames;
  mutable ISlotLayout FLayout;
};

}  // namespace tavo
