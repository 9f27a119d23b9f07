#include "knowledge/TavoFacts.h"

namespace tavo {

TFact::TFact(const IFactTemplate& Template) : FTemplate(Template) {}

TFact::TFact(const IFactTemplate& Template, const IFact& Source) : FTemplate(Template) {
  if (Source) Assign(Source.Get());
}

void TFact::CheckTemplate() const {
  if (!FTemplate) throw ETavoException(SNoTemplate);
}

const TStringList<int>& TFact::GetSlotNames() const {
  CheckTemplate();
  return FTemplate->GetSlotNames();
}

const TFactValueHashtableEntry& TFact::NewEntry(StringView Name, const IFactSlot& Slot) {
  const ITavoValue& Default = Slot->GetSlotDefault();
  TFactValueHashtableEntry Entry{Default ? Default->CloneValue() : nullptr, Slot};
  String Key(Name);
  FValues.AddOrSetValue(Key, Entry);
  return *FValues.Find(Key);
}

const ITavoValue& TFact::GetValue(StringView Name) {
  CheckTemplate();
  if (const TFactValueHashtableEntry* Entry = FValues.Find(Name)) return Entry->Value;
  IFactSlot Slot;
  if (!FTemplate->ContainsSlot(Name, Slot)) throw ETavoException(Format(SInvalidSlotName, Name));
  return NewEntry(Name, Slot).Value;
}

ITavoValue TFact::ContainsKey(StringView Name) {
  CheckTemplate();
  TFactValueHashtableEntry* Entry = FValues.Find(Name);
  if (Entry && Entry->Slot && Entry->Slot->GetTemplateName() == FTemplate->GetTemplateName())
    return Entry->Value;
  IFactSlot Slot;
  if (!FTemplate->ContainsSlot(Name, Slot)) return nullptr;
  if (Entry) {
    Entry->Slot = Slot;
    return Entry->Value;
  }
  return NewEntry(Name, Slot).Value;
}

void TFact::StoreValue(const String& Name, const ITavoValue& Value, const IFactSlot& Slot) {
  FValues.AddOrSetValue(Name, TFactValueHashtableEntry{Value, Slot});
}

void TFact::SetValue(const String& Name, const ITavoValue& Value) {
  CheckTemplate();
  IReasoner* Reasoner = FTemplate->GetReasoner();
  bool Dynamic = Reasoner && Reasoner->GetTypeChecks().Contains(tcDynamic);
  TFactValueHashtableEntry* Entry = FValues.Find(Name);
  if (!Entry || (Dynamic && (!Entry->Slot ||
                             Entry->Slot->GetTemplateName() != FTemplate->GetTemplateName()))) {
    IFactSlot Slot;
    if (!FTemplate->ContainsSlot(Name, Slot)) throw ETavoException(Format(SInvalidSlotName, Name));
    if (!Entry) {
      FValues.Add(Name, TFactValueHashtableEntry{Value ? Value : FCNil, Slot});
      Entry = FValues.Find(Name);
    } else {
      Entry->Slot = Slot;
    }
  }
  if (Dynamic && Entry->Slot && !Entry->Slot->IsValid(Value)) {
    TTavoTypes Types = Entry->Slot->GetSlotType();
    if (Value && Value->GetDType() == dtInteger && Types.Contains(dtFloat)) {
      Value->SetAsFloat(Value->GetAsInteger());
    } else if (Value && (Value->GetDType() == dtAtom || Value->GetDType() == dtString) &&
               Types.Contains(dtFuzzy)) {
      // The text becomes a set of the slot's variable once the fuzzy library
      // parses expressions.
      throw ETavoException(Format(SParseTypeError, u"fuzzy values"));
    } else {
      throw ETavoException(Entry->Slot->GetInvalidValueString(Value));
    }
  }
  Entry->Value = Value;
}

void TFact::SetTemplate(const IFactTemplate& Value) {
  if (Value == FTemplate) return;
  if (!Value) {
    FValues.Clear();
  } else if (FTemplate) {
    for (const auto& Item : FTemplate->GetSlots()) {
      IFactSlot NewSlot;
      if (Value->ContainsSlot(Item.Key, NewSlot)) {
        if (TFactValueHashtableEntry* Entry = FValues.Find(Item.Key)) Entry->Slot = NewSlot;
      } else {
        FValues.Remove(Item.Key);
      }
    }
  }
  FTemplate = Value;
  if (!FTemplate) return;
  for (const auto& Item : FTemplate->GetSlots()) {
    if (FValues.ContainsKey(Item.Key)) continue;
    const ITavoValue& Default = Item.Value->GetSlotDefault();
    FValues.Add(Item.Key, TFactValueHashtableEntry{Default ? Default->CloneValue() : nullptr, nullptr});
  }
}

void TFact::AssignValues(const IFact& Fact) {
  if (!FTemplate || !Fact->FTemplate) throw ETavoException(SNoTemplate);
  if (FTemplate != Fact->FTemplate)
    throw ETavoException(Format(SFactTemplatesDifferent, FTemplate->GetTemplateName(),
                                Fact->FTemplate->GetTemplateName()));
  FValues.Clear();
  for (const auto& Item : Fact->FValues)
    FValues.Add(Item.Key, TFactValueHashtableEntry{Item.Value.Value ? Item.Value.Value->CloneValue() : nullptr,
                                                   nullptr});
}

bool TFact::Equals(const TCloneableObject* Other) const {
  if (Other == this) return true;
  auto* Fact = dynamic_cast<const TFact*>(Other);
  if (!Fact || !FTemplate || Fact->FTemplate != FTemplate) return false;
  auto* Self = const_cast<TFact*>(this);
  auto* Theirs = const_cast<TFact*>(Fact);
  const TStringList<int>& Names = FTemplate->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I) {
    const String& Name = Names.Get(I);
    if (FTemplate->GetSlot(Name)->IsFuzzy()) continue;
    const ITavoValue& Mine = Self->GetValue(Name);
    const ITavoValue& Other = Theirs->GetValue(Name);
    if (Mine != Other && (!Mine || !Mine->Equals(Other))) return false;
  }
  return true;
}

int32_t TFact::GetHashCode() const {
  if (!FTemplate) return 0;
  auto* Self = const_cast<TFact*>(this);
  String Text;
  const TStringList<int>& Names = FTemplate->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I) {
    const ITavoValue& Value = Self->GetValue(Names.Get(I));
    if (Value) Text += Value->GetToString();
  }
  return int32_t(uint32_t(FTemplate->GetHashCode()) * 31u + uint32_t(CalculateHash(Text, 1)));
}

String TFact::SlotText(StringView Name) const {
  const TFactValueHashtableEntry* Entry = FValues.Find(Name);
  if (!Entry || !Entry->Value) return String();
  return TrimRight(Entry->Value->GetToString());
}

String TFact::ToString() const {
  String Result = u"(";
  if (!FTemplate) {
    for (const auto& Item : FValues) {
      Result += u' ';
      if (Item.Value.Value) Result += Item.Value.Value->GetToString();
    }
    return Result + u")";
  }
  Result += FTemplate->GetTemplateName();
  if (FTemplate->IsOrdered()) {
    String Data = SlotText(SDefaultSlotName);
    if (!Data.empty()) Result += u' ' + Data;
  } else {
    const TStringList<int>& Names = FTemplate->GetSlotNames();
    for (int I = 0; I < Names.Count(); ++I) {
      String Value = SlotText(Names.Get(I));
      if (!Value.empty()) Result += u" (" + Names.Get(I) + u' ' + Value + u')';
    }
  }
  return Result + u")";
}

String TFact::GetToIDString() const {
  IReasoner* Reasoner = FTemplate ? FTemplate->GetReasoner() : nullptr;
  String Id = IntToStr(FID);
  if (Reasoner) {
    size_t Width = IntToStr(Reasoner->GetFactIdCounter()).size();
    if (FID >= 0 && Id.size() < Width) Id.insert(0, Width - Id.size(), u'0');
  }
  return u"f-" + Id + u' ' + ToString();
}

void TFact::Assign(const TPersistent* Source) {
  auto* Fact = dynamic_cast<const TFact*>(Source);
  if (!Fact) {
    TCloneableObject::Assign(Source);
    return;
  }
  if (Fact == this) return;
  IReasoner* Mine = FTemplate ? FTemplate->GetReasoner() : nullptr;
  IReasoner* Theirs = Fact->FTemplate ? Fact->FTemplate->GetReasoner() : nullptr;
  if (FTemplate && Fact->FTemplate && FTemplate != Fact->FTemplate && Mine && Theirs && Mine != Theirs)
    // Across engines the fact is parsed anew from its text by this engine.
    throw ETavoException(Format(SParseTypeError, u"facts"));
  FTemplate = Fact->FTemplate;
  FValues.Clear();
  for (const auto& Item : Fact->FValues)
    SetValue(Item.Key, Item.Value.Value ? Item.Value.Value->CloneValue() : nullptr);
  FID = Fact->FID;
  FTag = Fact->FTag;
}

ICloneableObject TFact::Clone() const { return CloneFact(); }

IFact TFact::CloneFact() const {
  IFact Result = Make<TFact>(FTemplate);
  Result->Assign(this);
  return Result;
}

const IFact& ResolveFact(TTavoContext& Context, const IFact& Fact) {
  const IFactTemplate& Template = Fact->GetTemplate();
  if (!Template) throw ETavoException(SNoTemplate);
  bool Fuzzy = Template->IsFuzzy();
  const TStringList<int>& Names = Template->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I) {
    const String& Name = Names.Get(I);
    const ITavoValue& Slot = Fact->GetValue(Name);
    ITavoValue Value = Slot ? Slot->Resolve(&Context) : Slot;
    if (!Fuzzy && Value && Value->GetDType() == dtList) {
      // A resolved list value may be a shared one: expand into a new value.
      Value = Make<TTavoValue>(Context.ExpandList(Value->GetAsList()));
    }
    // The fuzzy slots of a fuzzy template become sets of their variables once
    // fuzzy expressions are evaluated.
    Fact->SetValue(Name, Value);
  }
  return Fact;
}

}  // namespace tavo
