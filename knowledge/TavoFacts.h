// Facts: a template, an id and a table of slot values.
#pragma once

#include "core/TavoContext.h"
#include "knowledge/TavoFactTemplate.h"

namespace tavo {

using TFactEvent = std::function<void(TObject* Sender, const IFact& Fact)>;
// Two facts about to be combined; a handler that does the combining
// itself sets Done.
using TFactCombineEvent = std::function<void(TObject* Sender, const IFact& Fact1, const IFact& Fact2, bool& Done)>;

// A fact holds one value per slot of its template's layout, by position; a
// null entry is a slot not yet written, which gets a clone of its default
// when it is first read. When the template's slots change, the values follow
// their slots by name at the next access.
class TFact : public TContextFact {
  TAVO_CLASS(TFact, TContextFact)
 public:
  // A new fact has id -1 and no values: they appear as they are read, or
  // when the template fills them in.
  explicit TFact(const IFactTemplate& Template = nullptr);
  TFact(const IFactTemplate& Template, const IFact& Source);

  int GetID() const override { return FID; }
  virtual void SetID(int Value) { FID = Value; }
  const IFactTemplate& GetTemplate() const { return FTemplate; }
  // Values follow the new template's slots by name; the others go, and the
  // new slots get clones of their defaults.
  virtual void SetTemplate(const IFactTemplate& Value);

  // The slot's value; a slot never written gets a clone of its default.
  const ITavoValue& GetValue(StringView Name) override;
  // The same by position in the template's current layout.
  const ITavoValue& GetValueAt(int Position) override;
  const void* GetSlotLayout() const override;
  int GetSlotPosition(StringView Name) const override;
  // The slot's value, or null for a slot the template lacks.
  ITavoValue ContainsKey(StringView Name);
  // Stores the very value passed. With dynamic checks an integer for a
  // float slot becomes a float in place, and an invalid value raises.
  virtual void SetValue(StringView Name, const ITavoValue& Value);
  void SetValueAt(int Position, const ITavoValue& Value);
  // Puts a value in as it is, with no checks: the road of defaults that the
  // template fills in.
  void StoreValue(StringView Name, const ITavoValue& Value, const IFactSlot& Slot);
  void StoreValueAt(int Position, const ITavoValue& Value);
  // The value written at Position of Layout, when the fact follows its
  // template's current layout and that is Layout; null otherwise, and the
  // caller takes the general road. The matcher reads slots through it.
  const ITavoValue* PeekValueAt(const void* Layout, int Position) const {
    if (!FBlock || FBlock->Layout.Get() != Layout || Position < 0 || !FTemplate || FTemplate->PeekLayout() != Layout)
      return nullptr;
    const ITavoValue& Value = FBlock->Values()[Position];
    return Value ? &Value : nullptr;
  }
  const ITavoValue* PeekSlot(const void* Layout, int Position) const override {
    return PeekValueAt(Layout, Position);
  }
  // How many slots have been written so far.
  int GetValueCount() const;
  const TStringList<int>& GetSlotNames() const;
  // Clones of the other fact's values, which must be of the same template.
  virtual void AssignValues(const IFact& Fact);

  // Same template object and strictly equal values, fuzzy slots aside.
  bool Equals(const TCloneableObject* Other) const override;
  // The template's hash and the text of the values, streamed without
  // building the fact's text.
  int32_t GetHashCode() const override;
  // The hash the fact list computed when it took the fact in.
  int32_t GetListedHash() const { return FListedHash; }
  void SetListedHash(int32_t Value) { FListedHash = Value; }
  String ToString() const override;
  // "f-" and the id, zero-padded to the width of the engine's fact counter,
  // then the fact.
  String GetToIDString() const;

  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override;
  ICloneableObject Clone() const override;
  IFact CloneFact() const;
  // A copy whose values are resolved in Context, as CloneFact followed by
  // ResolveFact gives it, in one pass: how a parsed fact is asserted.
  IFact ResolvedCopy(TTavoContext& Context) const;

 private:
  void CheckTemplate() const;
  // Brings the value array in line with the template's current layout.
  void Sync() const;
  int PositionOf(StringView Name) const;
  const ITavoValue& ValueAt(int Position);
  // The value text of a slot for printing: empty for a slot never written.
  String SlotText(int Position) const;

  // The layout the values follow, and the values right behind it in the
  // same block.
  struct TValueBlock {
    ISlotLayout Layout;
    ITavoValue* Values() { return reinterpret_cast<ITavoValue*>(this + 1); }
    static TValueBlock* Create(const ISlotLayout& Layout);
    static void Destroy(TValueBlock* Block) noexcept;
  };
  struct TBlockDeleter {
    void operator()(TValueBlock* Block) const noexcept { TValueBlock::Destroy(Block); }
  };
  const ISlotLayout& Layout() const { return FBlock->Layout; }
  ITavoValue* Values() const { return FBlock->Values(); }

  int FID = -1;
  int32_t FListedHash = 0;
  IFactTemplate FTemplate;
  mutable std::unique_ptr<TValueBlock, TBlockDeleter> FBlock;
};

// The value of the slot that Info names in Fact: by position without a
// call when the fact and Info agree on the layout, else the general road.
inline const ITavoValue& ReadSlot(TFact& Fact, const TBindingInfo& Info) {
  if (const ITavoValue* Value = Fact.PeekValueAt(Info.GetLayoutSeen(), Info.GetSlotPosition())) return *Value;
  return ReadSlot(static_cast<TContextFact&>(Fact), Info);
}

// Evaluates the slot values of a fact in place, in Context: each value is
// resolved, and in a fact of a template without fuzzy slots a list is
// expanded so that lists within it are spliced in. Gives the same fact.
const IFact& ResolveFact(TTavoContext& Context, const IFact& Fact);

}  // namespace tavo
