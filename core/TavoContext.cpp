#include "core/TavoContext.h"

#include <algorithm>

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
    FLayoutSeen = nullptr;
    NoteSlotIndex();
    return;
  }
  TPersistent::Assign(Source);
}

// TBinding

bool TBinding::Equals(const TObject* Other) const {
  const TBinding* Binding = dynamic_cast<const TBinding*>(Other);
  if (!Binding || !TBindingInfo::Equals(Other) || Binding->GetName() != GetName()) return false;
  if (Binding->FValue == FValue) return true;
  return FValue && FValue->Equals(Binding->FValue);
}

String TBinding::ToString() const {
  String Result = u"name=" + String(FName.View());
  if (FValue) Result += u" value=" + FValue->GetToString();
  return Result + u" " + TBindingInfo::ToString();
}

// TBindings

TBindings::~TBindings() {
  FClearing = true;
  TInherited::Clear();
}

void TBindings::Add(TBinding* Binding) { AddOrSetValue(String(Binding->GetName()), Binding); }

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

// TFrameLayout

int TFrameLayout::Add(StringView Name) {
  if (int Index = IndexOf(Name); Index >= 0) return Index;
  if (FNames.size() >= 0xFFFF) return -1;
  FNames.push_back(TSharedTextRef::Adopt(TSharedText::Intern(Name)));
  return int(FNames.size()) - 1;
}

int TFrameLayout::IndexOf(StringView Name) const {
  for (size_t I = 0; I < FNames.size(); ++I)
    if (FNames[I].View() == Name) return int(I);
  return -1;
}

// TFramePool: frame slots taken and given back in stack order. Chunks keep
// each frame contiguous and every binding where it is while in use.

class TFramePool {
 public:
  TBinding* Take(int Count, int& SavedChunk, int& SavedUsed) {
    SavedChunk = FChunk;
    SavedUsed = FUsed;
    if (FChunks.empty() || FUsed + Count > FChunks[size_t(FChunk)].Size) {
      if (!FChunks.empty()) ++FChunk;
      if (size_t(FChunk) == FChunks.size()) {
        FChunks.push_back(NewChunk(Count));
      } else if (FChunks[size_t(FChunk)].Size < Count) {
        // Chunks past the current one are free: a larger one takes the place.
        FChunks[size_t(FChunk)] = NewChunk(Count);
      }
      FUsed = 0;
    }
    TBinding* Result = FChunks[size_t(FChunk)].Items.get() + FUsed;
    FUsed += Count;
    return Result;
  }
  void Give(int SavedChunk, int SavedUsed) {
    FChunk = SavedChunk;
    FUsed = SavedUsed;
  }

 private:
  struct TChunk {
    std::unique_ptr<TBinding[]> Items;
    int Size = 0;
  };
  static TChunk NewChunk(int Count) {
    TChunk Chunk;
    Chunk.Size = std::max(Count, 256);
    Chunk.Items = std::make_unique<TBinding[]>(size_t(Chunk.Size));
    for (int I = 0; I < Chunk.Size; ++I) {
      Chunk.Items[size_t(I)].SetFactIndex(LocalBindingIndex);
      Chunk.Items[size_t(I)].SetSlotIndex(SLocalBinding);
    }
    return Chunk;
  }

  std::vector<TChunk> FChunks;
  int FChunk = 0;
  int FUsed = 0;
};

// TTavoContext

TTavoContext::TTavoContext(TTavoContext* Parent, IReasoner* Engine)
    : FEngine(Engine),
      FParent(Parent),
      FRoot(Parent ? Parent->FRoot : this),
      FMatchScope(!Parent ? nullptr : Parent->FToken || Parent->FFact ? Parent : Parent->FMatchScope) {}

TTavoContext::~TTavoContext() {
  if (FFrame) {
    for (int I = 0; I < FFrameCount; ++I) FFrame[I].FValue.Reset();
    FRoot->FPool->Give(FSavedChunk, FSavedUsed);
  }
}

namespace {

const TBindings& EmptyBindings() {
  static const TBindings* Empty = new TBindings(nullptr);
  return *Empty;
}

}  // namespace

const TBindings& TTavoContext::GetBindings() const { return FBindings ? *FBindings : EmptyBindings(); }

TBindings& TTavoContext::Bindings() {
  if (!FBindings) FBindings = std::make_unique<TBindings>(this);
  return *FBindings;
}

TFramePool& TTavoContext::Pool() {
  if (!FRoot->FPool) FRoot->FPool = std::make_unique<TFramePool>();
  return *FRoot->FPool;
}

void TTavoContext::OpenFrame(const TFrameLayout& Layout) {
  int Count = Layout.Count();
  if (FFrame || Count == 0) return;
  FFrame = Pool().Take(Count, FSavedChunk, FSavedUsed);
  FFrameCount = Count;
  for (int I = 0; I < Count; ++I) {
    TBinding& Slot = FFrame[I];
    TSharedText* Name = Layout.GetName(I);
    if (Slot.FName.Get() != Name) {
      Name->AddReference();
      Slot.FName = TSharedTextRef::Adopt(Name);
    }
  }
}

TBinding* TTavoContext::FrameSlot(StringView Name) const {
  for (int I = 0; I < FFrameCount; ++I)
    if (FFrame[I].GetName() == Name) return &FFrame[I];
  return nullptr;
}

TBinding* TTavoContext::OwnBinding(StringView Name) const {
  if (TBinding* Slot = FrameSlot(Name); Slot && Slot->FValue) return Slot;
  if (!FBindings) return nullptr;
  TBinding* const* Binding = FBindings->Find(Name);
  return Binding ? *Binding : nullptr;
}

TBinding* TTavoContext::FindBinding(StringView Name) const {
  for (const TTavoContext* Context = this; Context; Context = Context->FParent)
    if (TBinding* Binding = Context->OwnBinding(Name)) return Binding;
  return nullptr;
}

// Scope by scope, as FindBinding: where the variable's hint names a slot of
// the scope's frame, that slot is the scope's binding of the name, bound or
// not, and the frame needs no search.
const ITavoValue* TTavoContext::FindVariable(const TTavoValue& Variable) const {
  TSharedText* Name = Variable.GetValue().VText;
  const int Hint = Variable.GetFrameIndex();
  for (const TTavoContext* Context = this; Context; Context = Context->FParent) {
    if (Hint > 0 && Hint <= Context->FFrameCount) {
      TBinding& Slot = Context->FFrame[Hint - 1];
      if (Slot.FName.Get() == Name) {
        if (Slot.FValue) return &Slot.FValue;
        if (!Context->FBindings) continue;
      }
    }
    if (TBinding* Binding = Context->OwnBinding(Name->View())) return &Binding->FValue;
  }
  return nullptr;
}

void TTavoContext::BindVariable(const TTavoValue& Variable, const ITavoValue& Value) {
  TSharedText* Name = Variable.GetSharedText();
  if (!Name) {
    SetVariable(Variable.GetAsString(), Value);
    return;
  }
  if (int Hint = Variable.GetFrameIndex(); Hint > 0 && Hint <= FFrameCount) {
    TBinding& Slot = FFrame[Hint - 1];
    if (Slot.FName.Get() == Name && Slot.FValue) {
      Slot.FValue = Value;
      return;
    }
  }
  SetVariable(Name->View(), Value);
}

TBinding* TTavoContext::FindGlobalBinding(StringView Name) const { return FRoot->OwnBinding(Name); }

const ITavoValue& TTavoContext::GetVariable(StringView Name) const {
  TBinding* Binding = FindBinding(Name);
  if (!Binding) throw ETavoException(Format(SUnknownVariable, Name));
  return Binding->GetValue();
}

void TTavoContext::SetVariable(StringView Name, const ITavoValue& Value) {
  if (TBinding* Binding = OwnBinding(Name)) {
    Binding->SetValue(Value);
    return;
  }
  AddBinding(Name, Value);
}

void TTavoContext::AddBinding(StringView Name, const ITavoValue& Value) {
  if (TBinding* Binding = FindBinding(Name)) {
    Binding->SetValue(Value);
    return;
  }
  AddLocalBinding(Name, Value);
}

void TTavoContext::AddBinding(StringView Name, int FactIndex, const String& SlotName, int SubIndex) {
  // The old binding of the name goes from the scope that holds it, so that
  // no table is left pointing at a freed binding.
  for (TTavoContext* Context = this; Context; Context = Context->FParent) {
    if (TBinding* Slot = Context->FrameSlot(Name); Slot && Slot->FValue) {
      Slot->FValue.Reset();
      break;
    }
    if (Context->FBindings && Context->FBindings->ContainsKey(Name)) {
      Context->FBindings->Remove(String(Name));
      break;
    }
  }
  Bindings().Add(new TBinding(Name, FactIndex, SlotName, SubIndex));
}

void TTavoContext::AddGlobalBinding(StringView Name, const ITavoValue& Value) {
  if (TBinding* Binding = FindGlobalBinding(Name)) {
    Binding->SetValue(Value);
    return;
  }
  FRoot->AddLocalBinding(Name, Value);
}

void TTavoContext::AddLocalBinding(StringView Name, const ITavoValue& Value) {
  if (TBinding* Slot = FrameSlot(Name)) {
    Slot->FValue = Value;
    return;
  }
  Bindings().Add(new TBinding(Name, Value));
}

void TTavoContext::SetReturnValue(const ITavoValue& Value) {
  FReturnValue = Value;
  FReturning = true;
}

void TTavoContext::ClearReturnValue() {
  FReturning = false;
  FReturnValue.Reset();
}

void TTavoContext::Clear() {
  for (int I = 0; I < FFrameCount; ++I) FFrame[I].FValue.Reset();
  if (FBindings)
    FBindings->Clear();
  else
    Notify(nullptr, tnCleared);
}

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

}  // namespace tavo
