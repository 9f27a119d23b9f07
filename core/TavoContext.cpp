#include "core/TavoContext.h"

namespace tavo {

// TBindingInfo

bool TBindingInfo::Equals(const TObject* Other) const {
  const TBindingInfo* Info = dynamic_cast<const TBindingInfo*>(Other);
  return Info && Info->FSubIndex == FSubIndex && Info->FFactIndex == FFactIndex &&
         Info->FSlotIndex == FSlotIndex;
}

String TBindingInfo::ToString() const {
  String Result = u"FactIdx=" + IntToStr(FFactIndex) + u" SlotIdx=" + FSlotIndex;
  if (FSubIndex != NoSubIndex) Result += u" SubIdx=" + IntToStr(FSubIndex);
  return Result;
}

void TBindingInfo::Assign(const TPersistent* Source) {
  if (const TBindingInfo* Info = dynamic_cast<const TBindingInfo*>(Source)) {
    FSubIndex = Info->FSubIndex;
    FFactIndex = Info->FFactIndex;
    FSlotIndex = Info->FSlotIndex;
    return;
  }
  TPersistent::Assign(Source);
}

// TBinding

bool TBinding::Equals(const TObject* Other) const {
  const TBinding* Binding = dynamic_cast<const TBinding*>(Other);
  if (!Binding || !TBindingInfo::Equals(Other) || Binding->FName != FName) return false;
  if (Binding->FValue == FValue) return true;
  return FValue && FValue->Equals(Binding->FValue);
}

String TBinding::ToString() const {
  String Result = u"name=" + FName;
  if (FValue) Result += u" value=" + FValue->GetToString();
  return Result + u" " + TBindingInfo::ToString();
}

// TBindings

TBindings::~TBindings() {
  FClearing = true;
  TInherited::Clear();
}

void TBindings::Add(TBinding* Binding) { AddOrSetValue(Binding->GetName(), Binding); }

void TBindings::Clear() {
  FClearing = true;
  try {
    TInherited::Clear();
  } catch (...) {
    FClearing = false;
    throw;
  }
  FClearing = false;
  if (FOwner) FOwner->Notify(nullptr, tnCleared);
}

void TBindings::KeyNotify(const String&, TCollectionNotification) {}

void TBindings::ValueNotify(TBinding* const& Binding, TCollectionNotification Action) {
  if (!Binding) return;
  if (Action == cnAdded) {
    if (FOwner && !FClearing) FOwner->Notify(Binding, tnAdded);
    return;
  }
  if (FOwner && !FClearing) FOwner->Notify(Binding, tnDeleted);
  if (Action == cnRemoved) delete Binding;
}

// TTavoContext

TTavoContext::TTavoContext(TTavoContext* Parent, IReasoner* Engine)
    : FEngine(Engine), FBindings(this), FParent(Parent) {}

TTavoContext::~TTavoContext() = default;

TBinding* TTavoContext::FindBinding(StringView Name) const {
  for (const TTavoContext* Context = this; Context; Context = Context->FParent)
    if (TBinding* const* Binding = Context->FBindings.Find(Name)) return *Binding;
  return nullptr;
}

TBinding* TTavoContext::FindGlobalBinding(StringView Name) const {
  const TTavoContext* Root = this;
  while (Root->FParent) Root = Root->FParent;
  TBinding* const* Binding = Root->FBindings.Find(Name);
  return Binding ? *Binding : nullptr;
}

const ITavoValue& TTavoContext::GetVariable(StringView Name) const {
  TBinding* Binding = FindBinding(Name);
  if (!Binding) throw ETavoException(Format(SUnknownVariable, Name));
  return Binding->GetValue();
}

void TTavoContext::SetVariable(const String& Name, const ITavoValue& Value) {
  if (TBinding* const* Binding = FBindings.Find(Name)) {
    (*Binding)->SetValue(Value);
    return;
  }
  AddBinding(Name, Value);
}

void TTavoContext::AddBinding(const String& Name, const ITavoValue& Value) {
  if (TBinding* Binding = FindBinding(Name)) {
    Binding->SetValue(Value);
    return;
  }
  FBindings.Add(new TBinding(Name, Value));
}

void TTavoContext::AddBinding(const String& Name, int FactIndex, const String& SlotName, int SubIndex) {
  // The old binding of the name goes from the scope that holds it, so that
  // no table is left pointing at a freed binding.
  for (TTavoContext* Context = this; Context; Context = Context->FParent)
    if (Context->FBindings.ContainsKey(Name)) {
      Context->FBindings.Remove(Name);
      break;
    }
  FBindings.Add(new TBinding(Name, FactIndex, SlotName, SubIndex));
}

void TTavoContext::AddGlobalBinding(const String& Name, const ITavoValue& Value) {
  if (TBinding* Binding = FindGlobalBinding(Name)) {
    Binding->SetValue(Value);
    return;
  }
  TTavoContext* Root = this;
  while (Root->FParent) Root = Root->FParent;
  Root->FBindings.Add(new TBinding(Name, Value));
}

void TTavoContext::AddLocalBinding(const String& Name, const ITavoValue& Value) {
  FBindings.Add(new TBinding(Name, Value));
}

void TTavoContext::SetReturnValue(const ITavoValue& Value) {
  FReturnValue = Value;
  FReturning = true;
}

void TTavoContext::ClearReturnValue() {
  FReturning = false;
  FReturnValue.Reset();
}

void TTavoContext::Clear() { FBindings.Clear(); }

void TTavoContext::Notify(TBinding*, TTableNotification Action) {
  if (Action == tnCleared) ClearReturnValue();
}

TTavoContext* TTavoContext::Push() { return new TTavoContext(this, FEngine); }

TTavoContext* TTavoContext::Pop() {
  if (!FParent) return this;
  FParent->FReturning = FReturning;
  FParent->FReturnValue = FReturnValue;
  return FParent;
}

void TTavoContext::Assign(const TPersistent* Source) {
  if (auto* Context = dynamic_cast<const TTavoContext*>(Source)) {
    FReturning = Context->FReturning;
    FReturnValue = Context->FReturnValue ? Context->FReturnValue->CloneValue() : nullptr;
    return;
  }
  TPersistent::Assign(Source);
}

IValueVector TTavoContext::ExpandList(const IValueVector& Vector) {
  IValueVector Result = Make<TValueVector>();
  Result->Reserve(Vector->GetValueCount());
  for (const ITavoValue& Item : *Vector) {
    Result->Add(Item->Resolve(this));
    const ITavoValue& Last = Result->Last();
    if (Last && Last->GetDType() == dtList) {
      IValueVector Inner = Last->GetAsList();
      Result->Delete(Result->GetValueCount() - 1);
      Result->Append(ExpandList(Inner));
    }
  }
  return Result;
}

namespace {

void FlattenInto(const IValueVector& Vector, TValueVector& Result) {
  for (const ITavoValue& Item : *Vector) {
    if (Item && Item->GetDType() == dtList)
      FlattenInto(Item->GetAsList(), Result);
    else
      Result.Add(Item);
  }
}

}  // namespace

IValueVector TTavoContext::FlattenList(const IValueVector& Vector) {
  IValueVector Result = Make<TValueVector>();
  FlattenInto(Vector, *Result);
  return Result;
}

ITavoValue TTavoContext::ResolveBindingInfo(const TBindingInfo& Info) const {
  int TokenCount = FToken ? FToken->GetCount() : 0;
  TContextFact* Fact = nullptr;
  if (Info.GetFactIndex() == TokenCount && FFact)
    Fact = FFact.Get();
  else if (FToken)
    Fact = FToken->GetContextFact(Info.GetFactIndex());
  if (!Fact) throw ETavoException(Format(SCorruptedVariable, Info.ToString()));
  if (Info.GetSlotIndex() == SPatternBinding) return Make<TTavoValue>(Fact->GetID(), dtFactId);
  const ITavoValue& Value = Fact->GetValue(Info.GetSlotIndex());
  if (Info.GetSubIndex() == NoSubIndex) return Value;
  return Value->GetAsList()->Get(Info.GetSubIndex());
}

}  // namespace tavo
