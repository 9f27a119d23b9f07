#include "knowledge/TavoFactTemplate.h"

#include "core/TavoHelperFunctions.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

IFuzzyVariable TFactSlot::GetFuzzyVariable() const {
  return FExtendedTypeInfo ? FExtendedTypeInfo->GetFuzzyType() : IFuzzyVariable();
}

namespace {

String TypesText(TTavoTypes Types) { return UpperCase(SetToString(Types)); }

}  // namespace

// TFactSlot

TFactSlot::~TFactSlot() { WatchDefault(false); }

String TFactSlot::GetTemplateName() const { return FOwner ? FOwner->GetTemplateName() : String(); }

bool TFactSlot::DynamicChecks() const {
  IReasoner* Reasoner = FOwner ? FOwner->GetReasoner() : nullptr;
  return Reasoner && Reasoner->GetTypeChecks().Contains(tcDynamic);
}

void TFactSlot::WatchDefault(bool Watch) {
  // The shared constants are never watched: they are not the slot's own.
  if (!FSlotDefault || IsValueConstant(FSlotDefault)) return;
  if (Watch)
    FSlotDefault->SetOnChange([this](const ITavoValue& Value) { ValueChanged(Value); });
  else
    FSlotDefault->SetOnChange(nullptr);
}

void TFactSlot::ValueChanged(const ITavoValue& Value) {
  if (DynamicChecks() && !IsValid(Value))
    throw ETavoException(Format(SInvalidValue, Value->GetToString(), FName));
}

void TFactSlot::SetName(const String& Value) {
  if (Value == FName) return;
  CheckConstructName(Value);
  if (FOwner) FOwner->NewSlotName(this, Value);
  FName = Value;
}

void TFactSlot::SetSlotDefault(const ITavoValue& Value) {
  if (Value && FOwner && DynamicChecks() && !IsValid(Value))
    throw ETavoException(Format(SInvalidSlotDefault, Value->GetToString()));
  WatchDefault(false);
  ITavoValue Kept = !Value || IsValueConstant(Value) ? Value : Value->CloneValue();
  if (FOwner) FOwner->NewSlotDefault(this, Kept);
  FSlotDefault = Kept;
  WatchDefault(true);
}

void TFactSlot::SetSlotType(TTavoTypes Value) {
  if (Value == FSlotType) return;
  if (Value.Contains(dtFuzzy) && !(Value - TTavoTypes{dtFuzzy} - TavoMultiSlotTypes).Empty())
    throw ETavoException(SCannotMixFuzzy);
  if (FOwner) FOwner->NewSlotType(this, Value);
  FSlotType = Value;
  if (FExtendedTypeInfo && FExtendedTypeInfo->GetImplicit()) FExtendedTypeInfo->SetBaseTypes(Value);
  if (!FSlotDefault || !IsValid(FSlotDefault)) SetSlotDefault(CreateValidDefault(IsMulti()));
}

void TFactSlot::SetExtendedTypeInfo(const ITavoDefinedType& Value) {
  if (Value == FExtendedTypeInfo) return;
  TTavoTypes Types = Value ? Value->GetBaseTypes() : TTavoTypes();
  if (FOwner) FOwner->NewSlotType(this, Types);
  FExtendedTypeInfo = Value;
  if (FName == SDefaultSlotName) Types = Types + TavoMultiSlotTypes;
  SetSlotType(Types);
}

ITavoValue TFactSlot::CreateValidDefault(bool IsMulti) const {
  if (FExtendedTypeInfo) return FExtendedTypeInfo->CreateValidDefault(IsMulti);
  if (IsMulti) return FCNilList->CloneValue();
  ITavoValue Result = Make<TTavoValue>();
  if (FSlotType.Contains(dtAtom))
    Result->SetAsAtom(String());
  else if (FSlotType.Contains(dtString))
    Result->SetAsString(String());
  else if (FSlotType.Contains(dtInteger))
    Result->SetAsInteger(0);
  else if (FSlotType.Contains(dtFloat))
    Result->SetAsFloat(0.0);
  else if (FSlotType.Contains(dtObject))
    Result->SetAsObject(nullptr);
  else if (FSlotType.Contains(dtExternalAddress))
    Result->SetAsExternalAddress(nullptr);
  else if (FSlotType.Contains(dtFuzzy))
    return FCNil;
  else if (FSlotType.Contains(dtFactId))
    Result->SetAsFactId(0);
  else if (FSlotType.Contains(dtFact))
    Result->SetInterface(dtFact, nullptr);
  else if (FSlotType.Contains(dtDescriptor))
    Result->SetAsDescriptor(0);
  else if (FSlotType.Contains(dtClass))
    Result->SetAsClass(nullptr);
  return Result;
}

bool TFactSlot::IsValid(const ITavoValue& Value) const {
  if (!Value) return true;
  if (Value == FCNil && !FSlotType.Contains(dtList)) return true;
  if (Value == FCNilList && FSlotType.Contains(dtList)) return true;
  if (FExtendedTypeInfo) return FExtendedTypeInfo->IsValid(Value);
  TTavoTypes Allowed = TavoAlwaysValidTypes + FSlotType;
  if (!Allowed.Contains(Value->GetDType())) return false;
  if (Value->GetDType() == dtList)
    for (const ITavoValue& Member : *Value->GetAsList())
      if (Member && !Allowed.Contains(Member->GetDType())) return false;
  return true;
}

String TFactSlot::GetInvalidValueString(const ITavoValue& Value) const {
  String Reason;
  if (FExtendedTypeInfo) {
    Reason = FExtendedTypeInfo->GetInvalidValueString(Value);
  } else if (Value) {
    TTavoTypes Allowed = FSlotType + TTavoTypes{dtVariable, dtFunCall, dtMultiVariable};
    TTavoType Type = Value->GetDType();
    if (!Allowed.Contains(Type)) {
      Reason = Format(SNotCorrectType, TypesText(FSlotType), Value->GetToString(), GetTavoTypeName(Type));
    } else if (Type == dtList) {
      for (const ITavoValue& Member : *Value->GetAsList()) {
        if (!Member || Allowed.Contains(Member->GetDType())) continue;
        Reason = Format(SNotCorrectType, TypesText(FSlotType), Value->GetToString(),
                        GetTavoTypeName(Member->GetDType()) + u" (" + Member->GetToString() + u")");
        break;
      }
    }
  }
  if (Reason.empty()) return Reason;
  return Format(SInvalidSlotValue, Reason, FName);
}

bool TFactSlot::Equals(const TCloneableObject* Other) const {
  auto* Slot = dynamic_cast<const TFactSlot*>(Other);
  if (!Slot) return false;
  if (Slot == this) return true;
  if (Slot->FName != FName || Slot->FSlotType != FSlotType) return false;
  if (Slot->FExtendedTypeInfo != FExtendedTypeInfo &&
      !(FExtendedTypeInfo && FExtendedTypeInfo->Equals(Slot->FExtendedTypeInfo.Get())))
    return false;
  if (Slot->FSlotDefault == FSlotDefault) return true;
  if (!FSlotDefault || !Slot->FSlotDefault) return false;
  try {
    return FSlotDefault->EqualsStar(Slot->FSlotDefault);
  } catch (const ETavoException&) {
    // Defaults that cannot even be read as one another's kind differ.
    return false;
  }
}

void TFactSlot::Assign(const TPersistent* Source) {
  auto* Slot = dynamic_cast<const TFactSlot*>(Source);
  if (!Slot) {
    TCloneableObject::Assign(Source);
    return;
  }
  if (Slot == this) return;
  FDefaultDynamic = Slot->FDefaultDynamic;
  SetTag(Slot->GetTag());
  IReasoner* Mine = FOwner ? FOwner->GetReasoner() : nullptr;
  IReasoner* Theirs = Slot->FOwner ? Slot->FOwner->GetReasoner() : nullptr;
  ITavoDefinedType Local;
  if (Mine && Theirs && Mine != Theirs && Slot->FExtendedTypeInfo)
    Local = Mine->FindDefinedType(Slot->FExtendedTypeInfo->GetName());
  if (Local) {
    // Across engines the slot takes this engine's type of that name and
    // keeps its own default. A default that needs parsing again (a call, a
    // fact, a fuzzy value) is parsed by this engine once it has a parser.
    SetExtendedTypeInfo(Local);
    SetSlotType(Slot->FSlotType);
  } else {
    FExtendedTypeInfo = Slot->FExtendedTypeInfo;
    FSlotType = Slot->FSlotType;
    SetSlotDefault(Slot->FSlotDefault);
  }
  SetName(Slot->FName);
}

String TFactSlot::ToString() const {
  if (FOwner) return FOwner->SlotToString(*this);
  return (IsMulti() ? u"(multislot " : u"(slot ") + FName + u")";
}

// TFactTemplate

TFactTemplate::TFactTemplate(TObject* Owner) : FOwner(Owner) {
  FFactSlotNames.SetCaseSensitive(true);
  FFactSlotNames.SetSorted(true);
  if (IReasoner* Reasoner = GetReasoner()) TModuleConstruct::SetModule(Reasoner->GetCurrentModule());
}

TFactTemplate::TFactTemplate(TObject* Owner, const String& Name) : TFactTemplate(Owner) {
  CheckConstructName(Name);
  FTemplateName = Name;
}

TFactTemplate::TFactTemplate(TObject* Owner, const IFactTemplate& Source, const String& Comment,
                             const String& Name)
    : TFactTemplate(Owner) {
  if (Source) Assign(Source.Get());
  CheckConstructName(Name);
  FTemplateName = Name;
  FComment = Comment;
  FNeedHashCode = true;
  if (Source && Source->FOwner == FOwner) FParent = Source;
}

TFactTemplate::~TFactTemplate() { ReleaseSlots(); }

void TFactTemplate::ReleaseSlots() {
  // Slots may outlive the template; they must not point back at it.
  for (const auto& Item : FFactSlots)
    if (Item.Value && Item.Value->FOwner == this) Item.Value->FOwner = nullptr;
}

void TFactTemplate::SetTemplateName(const String& Value) {
  if (Value == FTemplateName) return;
  CheckConstructName(Value);
  String OldName = FTemplateName;
  FTemplateName = Value;
  FNeedHashCode = true;
  try {
    if (IReasoner* Reasoner = GetReasoner()) Reasoner->RenameFactTemplate(OldName, Value);
  } catch (...) {
    FTemplateName = OldName;
    throw;
  }
}

int TSlotLayout::IndexOf(StringView Name) const {
  // Slots are few and in name order: a binary search by name.
  size_t Low = 0, High = FSlots.size();
  while (Low < High) {
    size_t Middle = (Low + High) / 2;
    int Order = CompareStr(FSlots[Middle]->GetName(), Name);
    if (Order == 0) return int(Middle);
    if (Order < 0)
      Low = Middle + 1;
    else
      High = Middle;
  }
  return -1;
}

const ISlotLayout& TFactTemplate::GetLayout() const {
  if (!FLayout) {
    ISlotLayout Layout = Make<TSlotLayout>();
    Layout->FSlots.reserve(size_t(FFactSlotNames.Count()));
    for (int I = 0; I < FFactSlotNames.Count(); ++I) Layout->FSlots.push_back(GetSlot(FFactSlotNames.Get(I)));
    FLayout = std::move(Layout);
  }
  return FLayout;
}

void TFactTemplate::SlotsChanged() {
  FLayout.Reset();
  FNeedHashCode = true;
  FNeedIsFuzzy = true;
  FOrdered = FFactSlots.Count() < 2 && FFactSlots.ContainsKey(StringView(SDefaultSlotName));
}

void TFactTemplate::NewSlotName(TFactSlot* Slot, const String& Name) {
  IFactSlot Keep(Slot);
  if (!Slot->GetName().empty()) {
    int Index = FFactSlotNames.IndexOf(Slot->GetName());
    if (Index >= 0) FFactSlotNames.Delete(Index);
    FFactSlots.Remove(Slot->GetName());
  }
  FFactSlotNames.Add(Name);
  FFactSlots.AddOrSetValue(Name, Keep);
  SlotsChanged();
}

void TFactTemplate::NewSlotDefault(TFactSlot* /*Slot*/, ITavoValue& Value) {
  if (Value && Value->GetDType() == dtFunCall && Value->GetValue().VInterface)
    Value->SetInterface(dtFunCall, Value->GetValue().VInterface->Clone());
}

void TFactTemplate::NewSlotType(TFactSlot* /*Slot*/, TTavoTypes& /*Types*/) { FNeedIsFuzzy = true; }

const IFactSlot& TFactTemplate::GetSlot(StringView Name) const {
  const IFactSlot* Slot = FFactSlots.Find(Name);
  if (!Slot) throw ETavoException(Format(SInvalidSlotName, Name));
  return *Slot;
}

IFactSlot TFactTemplate::ContainsType(const ITavoDefinedType& Type) const {
  for (int I = 0; I < FFactSlotNames.Count(); ++I) {
    const IFactSlot& Slot = GetSlot(FFactSlotNames.Get(I));
    if (Slot->GetExtendedTypeInfo() == Type) return Slot;
  }
  return nullptr;
}

IFactSlot TFactTemplate::AddSlot(const String& Name, const ITavoValue& Default) {
  if (!Default) throw ETavoException(SBadSlotType);
  if (Default->GetDType() == dtList) throw ETavoException(SInvalidSlotDefault);
  if (const IFactSlot* Existing = FFactSlots.Find(Name)) {
    const ITavoValue& Present = (*Existing)->GetSlotDefault();
    if (Present && Present->GetDType() == dtList) throw ETavoException(SInvalidExistingMultiSlotChange);
    (*Existing)->SetSlotDefault(Default);
    return *Existing;
  }
  IFactSlot Slot = Make<TFactSlot>(this);
  Slot->SetSlotType(TavoSlotTypes);
  Slot->SetSlotDefault(Default);
  Slot->SetName(Name);
  return Slot;
}

IFactSlot TFactTemplate::AddMultiSlot(const String& Name, const ITavoValue& Default) {
  if (!Default) throw ETavoException(SBadSlotType);
  if (Default->GetDType() != dtList)
    throw ETavoException(Format(SInvalidDefaultMultislotValue, Default->GetToString()));
  if (Trim(Name).empty()) throw ETavoException(SBadSlotName);
  if (const IFactSlot* Existing = FFactSlots.Find(Name)) {
    const ITavoValue& Present = (*Existing)->GetSlotDefault();
    if (Present && Present->GetDType() != dtList) throw ETavoException(SInvalidExistingSlotChange);
    (*Existing)->SetSlotDefault(Default);
    return *Existing;
  }
  IFactSlot Slot = Make<TFactSlot>(this);
  Slot->SetSlotType(TavoSlotTypes + TavoMultiSlotTypes);
  Slot->SetSlotDefault(Default);
  Slot->SetName(Name);
  return Slot;
}

IFactSlot TFactTemplate::AddSlot(const IFactSlot& Slot) {
  IFactSlot Result = Make<TFactSlot>(this);
  Result->Assign(Slot.Get());
  return Result;
}

void TFactTemplate::SetSlot(const String& Name, const IFactSlot& Slot) {
  if (!Slot || Slot->GetName() != Name)
    throw ETavoException(Format(SNoIndexNameMatch, Name, Slot ? Slot->GetName() : String()));
  FFactSlots.AddOrSetValue(Name, Slot);
  FLayout.Reset();
}

void TFactTemplate::RemoveSlot(const String& Name) {
  IFactSlot Slot;
  if (!FFactSlots.TryGetValue(Name, Slot)) throw ETavoException(Format(SInvalidSlotName, Name));
  FFactSlots.Remove(Name);
  int Index = FFactSlotNames.IndexOf(Name);
  if (Index >= 0) FFactSlotNames.Delete(Index);
  if (Slot->FOwner == this) Slot->FOwner = nullptr;
  SlotsChanged();
}

void TFactTemplate::ClearSlots() {
  ReleaseSlots();
  FFactSlots.Clear();
  FFactSlotNames.Clear();
  SlotsChanged();
}

void TFactTemplate::AssignSlots(const IFactTemplate& Template) {
  const TStringList<int>& Names = Template->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I) {
    const IFactSlot& Slot = Template->GetSlot(Names.Get(I));
    const ITavoValue& Default = Slot->GetSlotDefault();
    ITavoValue Copy = Default ? Default->CloneValue() : FCNil;
    if (Copy->GetDType() == dtList)
      AddMultiSlot(Names.Get(I), Copy);
    else
      AddSlot(Names.Get(I), Copy);
  }
}

IFact TFactTemplate::NewFact() { return Make<TFact>(IFactTemplate(this)); }

void TFactTemplate::FillFactWithDefaults(const IFact& Fact) {
  if (!Fact->GetTemplate()) throw ETavoException(SNoTemplate);
  if (Fact->GetTemplate().Get() != this)
    throw ETavoException(Format(SFactTemplatesDifferent, Fact->GetTemplate()->GetTemplateName(), FTemplateName));
  IReasoner* Reasoner = GetReasoner();
  // Positions follow slot-name order. The layout is held: a dynamic default
  // may change the slots while it is evaluated.
  ISlotLayout Layout = GetLayout();
  for (int I = 0; I < Layout->Count(); ++I) {
    const IFactSlot& Slot = Layout->GetSlot(I);
    const ITavoValue& Default = Slot->GetSlotDefault();
    ITavoValue Copy = Default ? Default->CloneValue() : nullptr;
    if (Slot->GetDefaultDynamic() && Reasoner && Copy)
      Fact->SetValue(Slot->GetName(), Copy->Resolve(Reasoner->GetGlobalContext()));
    else
      Fact->StoreValue(Slot->GetName(), Copy, Slot);
  }
}

bool TFactTemplate::IsFuzzy() const {
  if (FNeedIsFuzzy) {
    FIsFuzzy = false;
    for (const auto& Item : FFactSlots) FIsFuzzy = FIsFuzzy || (Item.Value && Item.Value->IsFuzzy());
    FNeedIsFuzzy = false;
  }
  return FIsFuzzy;
}

int32_t TFactTemplate::GetHashCode() const {
  if (FNeedHashCode) {
    FHashCode = CalculateHash(FTemplateName + FFactSlotNames.GetText(), 1);
    FNeedHashCode = false;
  }
  return FHashCode;
}

bool TFactTemplate::Equals(const TCloneableObject* Other) const {
  if (Other == this) return true;
  auto* Template = dynamic_cast<const TFactTemplate*>(Other);
  if (!Template || Template->GetSlotCount() != GetSlotCount() ||
      Template->FTemplateName != FTemplateName)
    return false;
  for (int I = 0; I < FFactSlotNames.Count(); ++I) {
    const IFactSlot* Theirs = Template->FFactSlots.Find(FFactSlotNames.Get(I));
    if (!Theirs || !GetSlot(FFactSlotNames.Get(I))->Equals(Theirs->Get())) return false;
  }
  return true;
}

void TFactTemplate::Assign(const TPersistent* Source) {
  auto* Template = dynamic_cast<const TFactTemplate*>(Source);
  if (!Template) {
    TModuleConstruct::Assign(Source);
    return;
  }
  if (Template == this) return;
  FBackwardChaining = Template->FBackwardChaining;
  FComment = Template->FComment;
  SetTemplateName(Template->FTemplateName);
  if (!Template->FParent || Template->FParent->FOwner == FOwner) FParent = Template->FParent;
  ClearSlots();
  const TStringList<int>& Names = Template->FFactSlotNames;
  for (int I = 0; I < Names.Count(); ++I) AddSlot(Template->GetSlot(Names.Get(I)));
  FOrdered = Template->FOrdered;
}

ICloneableObject TFactTemplate::Clone() const {
  IFactTemplate Result = Make<TFactTemplate>(FOwner);
  // Named apart first, so that the engine does not take the copy for the
  // original while it is being filled; the name then follows the source.
  Result->FTemplateName = FTemplateName + u" Copy";
  Result->Assign(this);
  return Result;
}

IFactTemplate TFactTemplate::Clone(TObject* Owner) const {
  IFactTemplate Result = Make<TFactTemplate>(Owner);
  Result->Assign(this);
  return Result;
}

String TFactTemplate::SlotToString(const TFactSlot& Slot) const {
  return (Slot.IsMulti() ? u"(multislot " : u"(slot ") + Slot.GetName() + u")";
}

String TFactTemplate::ToString() const {
  if (IReasoner* Reasoner = GetReasoner())
    if (String Text = Reasoner->PrettyPrint(IFactTemplate(const_cast<TFactTemplate*>(this))); !Text.empty()) return Text;
  String Result = u"(deftemplate " + FTemplateName;
  if (!FComment.empty()) Result += u" \"" + FComment + u"\"";
  for (int I = 0; I < FFactSlotNames.Count(); ++I)
    Result += u"\r\n" + String(IndentString) + GetSlot(FFactSlotNames.Get(I))->ToString();
  return Result + u")";
}

}  // namespace tavo
