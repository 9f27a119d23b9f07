#include "knowledge/TavoFacts.h"

#include <algorithm>
#include <cstddef>
#include <new>

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

TFact::TValueBlock* TFact::TValueBlock::Create(const ISlotLayout& Layout) {
  static_assert(sizeof(TValueBlock) % alignof(ITavoValue) == 0);
  const size_t Count = size_t(Layout->Count());
  void* Memory = ::operator new(sizeof(TValueBlock) + Count * sizeof(ITavoValue));
  auto* Block = new (Memory) TValueBlock{Layout};
  for (size_t I = 0; I < Count; ++I) new (Block->Values() + I) ITavoValue();
  return Block;
}

void TFact::TValueBlock::Destroy(TValueBlock* Block) noexcept {
  const size_t Count = size_t(Block->Layout->Count());
  for (size_t I = 0; I < Count; ++I) Block->Values()[I].~ITavoValue();
  Block->Layout.~ISlotLayout();
  ::operator delete(Block);
}

void TFact::Sync() const {
  const ISlotLayout& Current = FTemplate->GetLayout();
  if (FBlock && Current == FBlock->Layout) return;
  std::unique_ptr<TValueBlock, TBlockDeleter> Block(TValueBlock::Create(Current));
  if (FBlock)
    for (int I = 0; I < Layout()->Count(); ++I) {
      if (!Values()[I]) continue;
      int Position = Current->IndexOf(Layout()->GetSlot(I)->GetName());
      if (Position >= 0) Block->Values()[Position] = std::move(Values()[I]);
    }
  FBlock = std::move(Block);
}

const void* TFact::GetSlotLayout() const {
  if (!FTemplate) return nullptr;
  Sync();
  return Layout().Get();
}

int TFact::GetSlotPosition(StringView Name) const { return FTemplate ? FTemplate->IndexOfSlot(Name) : -1; }

int TFact::PositionOf(StringView Name) const {
  CheckTemplate();
  Sync();
  return Layout()->IndexOf(Name);
}

const ITavoValue& TFact::ValueAt(int Position) {
  ITavoValue& Value = Values()[Position];
  if (!Value) {
    const ITavoValue& Default = Layout()->GetSlot(Position)->GetSlotDefault();
    if (Default) Value = Default->CloneValue();
  }
  return Value;
}

const ITavoValue& TFact::GetValue(StringView Name) {
  int Position = PositionOf(Name);
  if (Position < 0) throw ETavoException(Format(SInvalidSlotName, Name));
  return ValueAt(Position);
}

const ITavoValue& TFact::GetValueAt(int Position) {
  CheckTemplate();
  Sync();
  if (Position < 0 || Position >= Layout()->Count()) throw EMekException(Format(SListIndexError, Position));
  return ValueAt(Position);
}

ITavoValue TFact::ContainsKey(StringView Name) {
  int Position = PositionOf(Name);
  return Position < 0 ? nullptr : ValueAt(Position);
}

void TFact::StoreValue(StringView Name, const ITavoValue& Value, const IFactSlot& /*Slot*/) {
  int Position = PositionOf(Name);
  if (Position < 0) throw ETavoException(Format(SInvalidSlotName, Name));
  Values()[Position] = Value;
}

void TFact::StoreValueAt(int Position, const ITavoValue& Value) {
  CheckTemplate();
  Sync();
  if (Position < 0 || Position >= Layout()->Count()) throw EMekException(Format(SListIndexError, Position));
  Values()[Position] = Value;
}

void TFact::SetValue(StringView Name, const ITavoValue& Value) {
  int Position = PositionOf(Name);
  if (Position < 0) throw ETavoException(Format(SInvalidSlotName, Name));
  SetValueAt(Position, Value);
}

void TFact::SetValueAt(int Position, const ITavoValue& Value) {
  CheckTemplate();
  Sync();
  if (Position < 0 || Position >= Layout()->Count()) throw EMekException(Format(SListIndexError, Position));
  IReasoner* Reasoner = FTemplate->GetReasoner();
  const IFactSlot& Slot = Layout()->GetSlot(Position);
  if (Reasoner && Reasoner->GetTypeChecks().Contains(tcDynamic) && !Slot->IsValid(Value)) {
    TTavoTypes Types = Slot->GetSlotType();
    if (Value && Value->GetDType() == dtInteger && Types.Contains(dtFloat)) {
      Value->SetAsFloat(Value->GetAsInteger());
    } else if (Value && (Value->GetDType() == dtAtom || Value->GetDType() == dtString) &&
               Types.Contains(dtFuzzy)) {
      // The text is an expression over the terms of the slot's variable;
      // the value itself becomes the set.
      IFuzzyVariable Variable = Slot->GetFuzzyVariable();
      if (!Variable) throw ETavoException(SNeedFuzzyType);
      Value->SetAsFuzzy(Variable->Parse(Value->GetAsString()));
    } else {
      throw ETavoException(Slot->GetInvalidValueString(Value));
    }
  }
  // A slot is written for good: nothing written reads as nil.
  Values()[Position] = Value ? Value : FCNil;
}

int TFact::GetValueCount() const {
  if (!FTemplate || !FBlock) return 0;
  Sync();
  int Count = 0;
  for (int I = 0; I < Layout()->Count(); ++I) Count += Values()[I] ? 1 : 0;
  return Count;
}

void TFact::SetTemplate(const IFactTemplate& Value) {
  if (Value == FTemplate) return;
  if (FTemplate) Sync();
  FTemplate = Value;
  if (!FTemplate) {
    FBlock.reset();
    return;
  }
  // The values follow the new layout by name, and the new slots are filled.
  Sync();
  for (int I = 0; I < Layout()->Count(); ++I)
    if (!Values()[I]) {
      const ITavoValue& Default = Layout()->GetSlot(I)->GetSlotDefault();
      Values()[I] = Default ? Default->CloneValue() : FCNil;
    }
}

void TFact::AssignValues(const IFact& Fact) {
  if (!FTemplate || !Fact->FTemplate) throw ETavoException(SNoTemplate);
  if (FTemplate != Fact->FTemplate)
    throw ETavoException(Format(SFactTemplatesDifferent, FTemplate->GetTemplateName(),
                                Fact->FTemplate->GetTemplateName()));
  Sync();
  Fact->Sync();
  for (int I = 0; I < Layout()->Count(); ++I) {
    const ITavoValue& Theirs = Fact->Values()[I];
    Values()[I] = Theirs ? Theirs->CloneValue() : nullptr;
  }
}

bool TFact::Equals(const TCloneableObject* Other) const {
  if (Other == this) return true;
  auto* Fact = dynamic_cast<const TFact*>(Other);
  if (!Fact || !FTemplate || Fact->FTemplate != FTemplate) return false;
  auto* Self = const_cast<TFact*>(this);
  auto* Theirs = const_cast<TFact*>(Fact);
  Self->Sync();
  Theirs->Sync();
  for (int I = 0; I < Layout()->Count(); ++I) {
    if (Layout()->GetSlot(I)->IsFuzzy()) continue;
    const ITavoValue& Mine = Self->ValueAt(I);
    const ITavoValue& Other = Theirs->ValueAt(I);
    if (Mine != Other && (!Mine || !Mine->Equals(Other))) return false;
  }
  return true;
}

int32_t TFact::GetHashCode() const {
  if (!FTemplate) return 0;
  auto* Self = const_cast<TFact*>(this);
  Sync();
  // The values' texts, end to end, in a buffer that each thread keeps.
  thread_local String Text;
  Text.clear();
  for (int I = 0; I < Layout()->Count(); ++I)
    if (const ITavoValue& Value = Self->ValueAt(I)) Value->AppendText(Text);
  int32_t Hash = CalculateHash(Text, 1);
  if (Text.capacity() > 4096) String().swap(Text);
  return int32_t(uint32_t(FTemplate->GetHashCode()) * 31u + uint32_t(Hash));
}

String TFact::SlotText(int Position) const {
  const ITavoValue& Value = Values()[Position];
  if (!Value) return String();
  return TrimRight(Value->GetToString());
}

String TFact::ToString() const {
  String Result = u"(";
  if (!FTemplate) return Result + u")";
  Sync();
  Result += FTemplate->GetTemplateName();
  if (FTemplate->IsOrdered()) {
    String Data = SlotText(Layout()->IndexOf(SDefaultSlotName));
    if (!Data.empty()) Result += u' ' + Data;
  } else {
    for (int I = 0; I < Layout()->Count(); ++I) {
      String Value = SlotText(I);
      if (!Value.empty()) Result += u" (" + Layout()->GetSlot(I)->GetName() + u' ' + Value + u')';
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
  FBlock.reset();
  if (FTemplate) {
    Fact->Sync();
    Sync();
    // Written values only, each through the checks of SetValue.
    for (int I = 0; I < Layout()->Count(); ++I)
      if (const ITavoValue& Value = Fact->Values()[I]) SetValueAt(I, Value->CloneValue());
  }
  FID = Fact->FID;
  SetTag(Fact->GetTag());
}

ICloneableObject TFact::Clone() const { return CloneFact(); }

IFact TFact::CloneFact() const {
  IFact Result = Make<TFact>(FTemplate);
  Result->Assign(this);
  return Result;
}

namespace {

// A slot's value once resolved, made fit for slot I of Template: a list is
// spliced into a new value, and a fuzzy slot takes a set of its own.
ITavoValue FitSlotValue(TTavoContext& Context, const IFactTemplate& Template, bool Fuzzy, int I, ITavoValue Value) {
  if (!Fuzzy && Value && Value->GetDType() == dtList) {
    // A resolved list value may be a shared one: expand into a new value.
    Value = Make<TTavoValue>(Context.ExpandList(Value->GetAsList()));
  }
  if (Fuzzy) {
    const IFactSlot& Slot = Template->GetLayout()->GetSlot(I);
    IFuzzyVariable Variable = Slot->GetFuzzyVariable();
    const bool OneFuzzyItem = Value && Value->GetDType() == dtList && Value->GetAsList()->GetValueCount() == 1 &&
                              Value->GetAsList()->Get(0) && Value->GetAsList()->Get(0)->GetDType() == dtFuzzy;
    if (Slot->GetSlotType().Contains(dtFuzzy) && !(Value && Value->GetDType() == dtFuzzy) && !OneFuzzyItem) {
      IReasoner* Reasoner = Template->GetReasoner();
      const bool WasList = Value && Value->GetDType() == dtList;
      if (Reasoner) Value = Reasoner->EvalFuzzyExpression(Variable, Value, &Context);
      if (Slot->GetSlotType().Contains(dtList) && !WasList && Value) {
        IValueVector One = Make<TValueVector>();
        One->Add(Value);
        Value = Make<TTavoValue>(One);
      }
    } else if (Value && Value->GetDType() == dtFuzzy && Variable && !Value->GetAsFuzzy()->GetVariable()) {
      // The set may be shared, a global's say: the fact takes a copy of
      // its own that belongs to the slot's variable.
      IFuzzySet Own = Value->GetAsFuzzy()->CloneSet();
      Own->SetVariable(Variable.Get());
      Value = Make<TTavoValue>(Own);
    }
  }
  return Value;
}

}  // namespace

const IFact& ResolveFact(TTavoContext& Context, const IFact& Fact) {
  const IFactTemplate& Template = Fact->GetTemplate();
  if (!Template) throw ETavoException(SNoTemplate);
  bool Fuzzy = Template->IsFuzzy();
  const int Count = Template->GetLayout()->Count();
  for (int I = 0; I < Count; ++I) {
    const ITavoValue& Slot = Fact->GetValueAt(I);
    ITavoValue Value = Slot ? Slot->Resolve(&Context) : Slot;
    Fact->SetValueAt(I, FitSlotValue(Context, Template, Fuzzy, I, std::move(Value)));
  }
  return Fact;
}

IFact TFact::ResolvedCopy(TTavoContext& Context) const {
  if (!FTemplate) throw ETavoException(SNoTemplate);
  IFact Result = Make<TFact>(FTemplate);
  Result->SetTag(GetTag());
  Sync();
  const bool Fuzzy = FTemplate->IsFuzzy();
  const int Count = Layout()->Count();
  for (int I = 0; I < Count; ++I) {
    // What CloneFact and ResolveFact do, in one pass: a written value that
    // resolves to itself is copied, a slot never written starts from a copy
    // of its default, and a computed value is taken as it comes.
    const ITavoValue& Written = Values()[I];
    ITavoValue Value;
    if (Written) {
      Value = Written->Resolve(&Context);
      if (Value.Get() == Written.Get()) Value = Written->CloneValue();
    } else if (const ITavoValue& Default = Layout()->GetSlot(I)->GetSlotDefault()) {
      Value = Default->CloneValue();
      Value = Value->Resolve(&Context);
    }
    Result->SetValueAt(I, FitSlotValue(Context, FTemplate, Fuzzy, I, std::move(Value)));
  }
  return Result;
}

}  // namespace tavo
