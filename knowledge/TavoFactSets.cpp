#include "knowledge/TavoFactSets.h"

namespace tavo {

namespace {

TComponent* ComponentOf(IReasoner* Engine) { return dynamic_cast<TComponent*>(Engine); }

}  // namespace

// TFactSetFacts

int TFactSetFacts::IndexOfData(const TFact* Fact) const {
  for (int I = 0; I < Count(); ++I)
    if (GetData(I).Get() == Fact) return I;
  return -1;
}

// TFactSet

TFactSet::TFocus::TFocus(const TFactSet& Set, bool Force) : Engine(Set.FEngine), Previous(Set.FocusModule(Force)) {}

TFactSet::TFocus::~TFocus() {
  if (Previous && Engine) Engine->RestoreModule(Previous);
}

TFactSet::TFactSet(TComponent* Owner) : TComponent(Owner), FFactSetName(u"FactSet") {
  if (auto* Engine = dynamic_cast<IReasoner*>(Owner)) {
    FHome = Engine;
    FreeNotification(Owner);
    SetEngine(Engine);
  }
}

TFactSet::TFactSet(TComponent* Owner, const String& Name, const String& Comment) : TFactSet(Owner) {
  FFactSetName = Name.empty() ? String(u"FactSet") : Name;
  FComment = Comment;
}

TFactSet::~TFactSet() {
  Destroying();
  SetEngine(nullptr);
  if (FHome) FHome->RemoveFactSet(this);
}

void TFactSet::SetFactSetName(const String& Value) {
  FFactSetName = Value.empty() ? String(u"FactSet") : Value;
}

IModule TFactSet::FocusModule(bool Force) const {
  if (!FEngine) return nullptr;
  return FEngine->FocusFactSetModule(FModule, Force);
}

void TFactSet::SetEngineNoParse(IReasoner* Value) {
  if (Value == FEngine) return;
  if (FEngine && !GetComponentState().Contains(csLoading)) {
    TFocus Focus(*this, !IsDestroying());
    // Out of the old engine's sets without coming back here.
    IReasoner* Old = std::exchange(FEngine, nullptr);
    try {
      Old->RemoveFactSet(this);
    } catch (...) {
      FEngine = Old;
      throw;
    }
    FEngine = Old;
  }
  if (TComponent* Old = ComponentOf(FEngine); Old && Old != ComponentOf(FHome)) RemoveFreeNotification(Old);
  FEngine = Value;
  if (TComponent* New = ComponentOf(FEngine)) FreeNotification(New);
}

void TFactSet::ForgetEngine() {
  if (TComponent* Old = ComponentOf(FEngine); Old && Old != ComponentOf(FHome)) RemoveFreeNotification(Old);
  FEngine = nullptr;
}

void TFactSet::SetEngine(IReasoner* Value) {
  SetEngineNoParse(Value);
  // Parsed facts belong to their engine's templates.
  for (int I = 0; I < FFacts.Count(); ++I) FFacts.SetData(I, nullptr);
  if (!FEngine || IsDestroying()) return;
  TFocus Focus(*this, true);
  if (!FEngine->HoldsFactSet(this)) FEngine->AddFactSet(this);
  ParseLines();
}

void TFactSet::ParseLines() {
  if (!FEngine || GetComponentState().Contains(csLoading)) return;
  for (int I = 0; I < FFacts.Count(); ++I) FFacts.SetData(I, FEngine->ParseFact(FFacts.Get(I)));
}

void TFactSet::SetModule(const String& Value) {
  if (Value == FModule) return;
  if (GetComponentState().Contains(csLoading)) {
    FModule = Value;
    return;
  }
  IReasoner* Engine = FEngine;
  // An unknown module raises here, before anything moves.
  if (Engine && !Value.empty() && Value != SMainModuleName) {
    IModule Back = Engine->FocusFactSetModule(Value, true);
    if (Back) Engine->RestoreModule(Back);
  }
  SetEngine(nullptr);
  FModule = Value;
  SetEngine(Engine);
}

int TFactSet::AddFact(const IFact& Fact) {
  return FFacts.AddObject(Fact ? Fact->ToString() : String(), nullptr, Fact);
}

int TFactSet::AddFact(const String& Text) { return FFacts.AddObject(Text, nullptr, nullptr); }

IFact TFactSet::GetFact(int Index) {
  IFact Fact = FFacts.GetData(Index);
  if (!Fact && FEngine && !GetComponentState().Contains(csLoading) && !FFacts.Get(Index).empty()) {
    TFocus Focus(*this, true);
    Fact = FEngine->ParseFact(FFacts.Get(Index));
    FFacts.SetData(Index, Fact);
  }
  return Fact;
}

void TFactSet::SetFact(int Index, const IFact& Fact) { FFacts.SetData(Index, Fact); }

void TFactSet::ClearFact(int Index) {
  FFacts.Put(Index, String());
  FFacts.SetData(Index, nullptr);
}

void TFactSet::Remove(const TFact* Fact) {
  int Index = IndexOf(Fact);
  if (Index >= 0) FFacts.Delete(Index);
}

void TFactSet::SetFacts(const TStrings& Lines) {
  FFacts.Clear();
  for (int I = 0; I < Lines.Count(); ++I) FFacts.AddObject(Lines.Get(I), nullptr, nullptr);
  if (!FEngine || GetComponentState().Contains(csLoading)) return;
  TFocus Focus(*this, true);
  for (int I = 0; I < FFacts.Count(); ++I) FFacts.SetData(I, FEngine->ParseFact(FFacts.Get(I) + u"\r\n"));
}

void TFactSet::Reset() {
  if (!FEngine) return;
  TFocus Focus(*this, true);
  auto* Context = dynamic_cast<TTavoContext*>(FEngine->GetGlobalContext());
  for (int I = 0; I < FFacts.Count(); ++I) {
    // A fresh copy each time, so that calls and globals in slots are
    // evaluated at every reset.
    IFact Entry = GetFact(I);
    // An entry emptied when its template went asserts nothing.
    if (!Entry) continue;
    IFact Fact = Entry->CloneFact();
    if (Context) ResolveFact(*Context, Fact);
    FEngine->Assert(Fact, false);
  }
}

void TFactSet::Reload() {
  if (!FEngine) return;
  {
    TFocus Focus(*this, true);
    if (!FEngine->HoldsFactSet(this)) FEngine->AddFactSet(this);
  }
  Reset();
}

TFactSet* TFactSet::Clone(TComponent* Owner) const {
  auto* Copy = new TFactSet(Owner);
  try {
    Copy->Assign(this);
  } catch (...) {
    delete Copy;
    throw;
  }
  return Copy;
}

// Name, comment, module and lines are copied; facts are cloned when both
// sets share an engine, and read anew from the lines otherwise.
void TFactSet::Assign(const TPersistent* Source) {
  auto* Set = dynamic_cast<const TFactSet*>(Source);
  if (!Set) {
    TComponent::Assign(Source);
    return;
  }
  if (Set == this) return;
  FFactSetName = Set->FFactSetName;
  FComment = Set->FComment;
  IReasoner* Engine = FEngine;
  SetEngineNoParse(nullptr);
  FModule = Set->FModule;
  FFacts.Clear();
  const bool Shared = Engine && Engine == Set->FEngine;
  for (int I = 0; I < Set->FFacts.Count(); ++I) {
    const IFact& Fact = Set->FFacts.GetData(I);
    FFacts.AddObject(Set->FFacts.Get(I), nullptr, Shared && Fact ? Fact->CloneFact() : nullptr);
  }
  SetEngineNoParse(Engine);
  if (Engine && !Shared) {
    TFocus Focus(*this, true);
    if (!Engine->HoldsFactSet(this)) Engine->AddFactSet(this);
    ParseLines();
  }
}

void TFactSet::Notification(TComponent* Component, TOperation Operation) {
  TComponent::Notification(Component, Operation);
  if (Operation == opRemove && Component && Component == ComponentOf(FHome)) FHome = nullptr;
  if (Operation == opRemove && Component && Component == ComponentOf(FEngine)) {
    // The engine goes: its sets and templates go with it.
    FEngine = nullptr;
    for (int I = 0; I < FFacts.Count(); ++I) FFacts.SetData(I, nullptr);
  }
}

String TFactSet::ToString() const {
  if (FEngine)
    if (String Text = FEngine->PrettyPrint(*this); !Text.empty()) return Text;
  String Result = u"(deffacts ";
  if (!FModule.empty() && FModule != SMainModuleName) Result += FModule + u"::";
  Result += FFactSetName;
  if (!FComment.empty()) Result += u" \"" + FComment + u"\"";
  for (int I = 0; I < FFacts.Count(); ++I) Result += u"\r\n" + String(IndentString) + FFacts.Get(I);
  return Result + u")";
}

}  // namespace tavo
