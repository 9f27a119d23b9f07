// Facts: a template, an id and a table of slot values.
#pragma once

#include "core/TavoContext.h"
#include "knowledge/TavoFactTemplate.h"

namespace tavo {

using TFactEvent = std::function<void(TObject* Sender, const IFact& Fact)>;

// One entry of a fact's table: the value, and the slot it was filled for
// (null when that is not known), which tells a replaced template apart.
struct TFactValueHashtableEntry {
  ITavoValue Value;
  IFactSlot Slot;
};

using TFactValues = TMekStringHashTable<TFactValueHashtableEntry>;

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
  // Entries follow the new template's slots by name; the others go.
  virtual void SetTemplate(const IFactTemplate& Value);

  // The slot's value; a slot never written gets a clone of its default.
  const ITavoValue& GetValue(StringView Name) override;
  // The slot's value, or null for a slot the template lacks.
  ITavoValue ContainsKey(StringView Name);
  // Stores the very value passed. With dynamic checks an integer for a
  // float slot becomes a float in place, and an invalid value raises.
  virtual void SetValue(const String& Name, const ITavoValue& Value);
  // Puts a value in the table as it is, with no checks: the road of
  // defaults that the template fills in.
  void StoreValue(const String& Name, const ITavoValue& Value, const IFactSlot& Slot);
  const TFactValues& GetSlotValues() const { return FValues; }
  const TStringList<int>& GetSlotNames() const;
  // Clones of the other fact's values, which must be of the same template.
  virtual void AssignValues(const IFact& Fact);

  // Same template object and strictly equal values, fuzzy slots aside.
  bool Equals(const TCloneableObject* Other) const override;
  int32_t GetHashCode() const override;
  String ToString() const override;
  // "f-" and the id, zero-padded to the width of the engine's fact counter,
  // then the fact.
  String GetToIDString() const;

  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override;
  ICloneableObject Clone() const override;
  IFact CloneFact() const;

 private:
  const TFactValueHashtableEntry& NewEntry(StringView Name, const IFactSlot& Slot);
  void CheckTemplate() const;
  // The value text of a slot for printing: empty for a slot never written.
  String SlotText(StringView Name) const;

  TFactValues FValues{11};
  int FID = -1;
  IFactTemplate FTemplate;
};

// Evaluates the slot values of a fact in place, in Context: each value is
// resolved, and in a fact of a template without fuzzy slots a list is
// expanded so that lists within it are spliced in. Gives the same fact.
const IFact& ResolveFact(TTavoContext& Context, const IFact& Fact);

}  // namespace tavo
