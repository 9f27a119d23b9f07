#include "engine/InferenceEngine.h"

#include <chrono>
#include <cmath>

namespace tavo {

TInferenceEngine::TInferenceEngine(TComponent* AOwner)
    : TComponent(AOwner), FModules(this, true), FFocusStack(this, false) {
  FVersion = 5.0f;
  FParserMaxErrors = 10;
  FFuzzyEqualsThreshold = 0.01f;
  FResetGlobals = true;
  // The main module; Initialize makes its objects current.
  IModule Main = Make<TModule>(this, true);
  AddModule(Main);
  // Pushed directly: no event, no watch line.
  FFocusStack.Insert(0, Main);
  FFuzzyAutoTerms = true;
  FPackages = TavoAllPackages;
  FTypeChecks = {tcStatic};
  AddDefaultPackages();
  // The initial fact is asserted here once facts exist.
}

TInferenceEngine::~TInferenceEngine() {
  UnhookEvents();
  FCurrentModule.Reset();
  FFocusStack.Clear();
  for (int I = 0; I < FModules.Count(); ++I) {
    FModules.Get(I)->Release();
    // A host may still hold a module: it must not call back into a dead engine.
    FModules.Get(I)->DetachEngine();
  }
  FModules.Clear();
}

void TInferenceEngine::UnhookEvents() {
  OnPrintOut = nullptr;
  OnReadLine = nullptr;
  OnAddDefaultPackages = nullptr;
  OnStartInference = nullptr;
  OnEndInference = nullptr;
  OnPushFocus = nullptr;
  OnPopFocus = nullptr;
  OnChangeCurrentModule = nullptr;
  OnAddModule = nullptr;
  OnRemoveModule = nullptr;
  OnClear = nullptr;
  OnReset = nullptr;
}

void TInferenceEngine::AddDefaultPackages() {
  // The function packages of FPackages are created here, in their fixed
  // order, as they arrive.
  if (OnAddDefaultPackages) OnAddDefaultPackages(this);
}

void TInferenceEngine::SetPackages(TFunctionPackages Value) {
  if (Value == FPackages) return;
  FPackages = Value;
  AddDefaultPackages();
}

void TInferenceEngine::SetStrategy(TSearchStrategy Value) {
  // A different strategy re-sorts the agenda's activations once an agenda
  // holds them.
  FStrategy = Value;
}

// Symbols and the lock.

String TInferenceEngine::GenerateSymbol(const String& Prefix) {
  return Prefix + IntToStr(FSymbolIndex++);
}

void TInferenceEngine::SetSymbolIndex(int Value) {
  if (Value > FSymbolIndex)
    FSymbolIndex = Value;
  else
    ++FSymbolIndex;
}

void TInferenceEngine::Lock() {
  if (!FCriticalSection) FCriticalSection = std::make_unique<std::recursive_mutex>();
  FCriticalSection->lock();
}

void TInferenceEngine::Unlock() {
  if (FCriticalSection) FCriticalSection->unlock();
}

// Modules and focus.

int TInferenceEngine::AddModule(const IModule& Module) {
  int Existing = FModules.IndexOf(Module->GetName());
  if (Existing >= 0 && !Module->GetName().empty()) RemoveModule(FModules.Get(Existing));
  int Index;
  if (Module->IsMain()) {
    FModules.Insert(0, Module);
    Index = 0;
  } else {
    Index = FModules.Add(Module);
  }
  Module->Release();
  Module->Initialize();
  if (OnAddModule) OnAddModule(this, Module);
  return Index;
}

void TInferenceEngine::RemoveModule(const IModule& Module) {
  IModule Keep = Module;
  if (OnRemoveModule) OnRemoveModule(this, Keep);
  Keep->Release();
  for (int I = FFocusStack.Count() - 1; I >= 0; --I)
    if (FFocusStack.Get(I) == Keep) FFocusStack.Delete(I);
  FModules.Remove(Keep);
  if (FModules.Count() == 0)
    FCurrentModule.Reset();
  else
    SetCurrentModule(FModules.Get(0));
}

void TInferenceEngine::RenameModule(const String& OldName, const String& NewName) {
  if (OldName == NewName) return;
  int Index = FModules.IndexOf(OldName);
  if (Index < 0) return;
  if (FModules.IndexOf(NewName) >= 0) throw ETavoException(Format(SDuplicateModuleNames, NewName));
  FModules.Get(Index)->SetName(NewName);
}

void TInferenceEngine::RenameDefinedType(const String& /*OldName*/, const String& /*NewName*/) {
  // The collection of defined types rekeys here once modules hold one.
}

void TInferenceEngine::SetCurrentModule(const IModule& Module) {
  if (Module == FCurrentModule) return;
  FCurrentModule = Module;
  if (Module) Module->FocusModule();
  DoChangeCurrentModule();
}

void TInferenceEngine::DoChangeCurrentModule() {
  if (OnChangeCurrentModule) OnChangeCurrentModule(this);
}

IModule TInferenceEngine::PeekFocus() const {
  return FFocusStack.Count() > 0 ? FFocusStack.Get(0) : IModule();
}

void TInferenceEngine::PushFocus(const IModule& Module) {
  if (FFocusStack.Count() > 0 && FFocusStack.Get(0) == Module) return;
  FFocusStack.Insert(0, Module);
  if (Watching(cwFocus)) {
    if (FFocusStack.Count() == 1)
      PrintOut(u"==> Focus " + Module->GetName() + u"\r\n");
    else
      PrintOut(u"==> Focus " + Module->GetName() + u" from " + FFocusStack.Get(1)->GetName() +
               u"\r\n");
  }
  if (Module == FCurrentModule)
    DoChangeCurrentModule();
  else
    SetCurrentModule(Module);
  if (OnPushFocus) OnPushFocus(this, Module);
}

void TInferenceEngine::PushFocus(StringView Name) {
  int Index = FModules.IndexOf(Name);
  if (Index < 0) throw ETavoException(Format(SNoSuchModule, Name));
  PushFocus(IModule(FModules.Get(Index)));
}

IModule TInferenceEngine::PopFocus() {
  if (FFocusStack.Count() == 0) return IModule();
  IModule Popped = FFocusStack.Get(0);
  FFocusStack.Delete(0);
  if (FFocusStack.Count() > 0)
    SetCurrentModule(FFocusStack.Get(0));
  else
    FHalt = true;
  if (Watching(cwFocus)) {
    // Only the last pop has the other arrow.
    if (FFocusStack.Count() > 0)
      PrintOut(u"==> Focus " + Popped->GetName() + u" to " + FFocusStack.Get(0)->GetName() +
               u"\r\n");
    else
      PrintOut(u"<== Focus " + Popped->GetName() + u"\r\n");
  }
  if (OnPopFocus) OnPopFocus(this, Popped);
  return Popped;
}

// Output.

void TInferenceEngine::PrintOut(const String& OutID, const String& Text) {
  if (OutID.empty() || OutID == u"t") {
    // Without a handler the text is lost without a word.
    if (OnPrintOut) OnPrintOut(this, OutID, Text);
    return;
  }
  // No named stream holds this name. Deliberately asymmetric: with a handler
  // nothing happens at all, without one it is an error.
  if (!OnPrintOut) throw ETavoException(Format(SNoSuchFunction, u"printout"));
}

// The run cycle.

int TInferenceEngine::GetAgendaCount() const {
  // Activations arrive with the agenda of each module; until then every
  // agenda is empty.
  return 0;
}

int TInferenceEngine::GetFactCount() const {
  // Facts arrive with each module's fact list.
  return 0;
}

double TInferenceEngine::ClockSeconds() {
  // A monotonic clock: a run's span never goes negative, even across midnight.
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

int TInferenceEngine::Run(int MaxFirings) {
  BeginInference();
  IModule Top = PeekFocus();
  if (Top && Top != FCurrentModule) SetCurrentModule(Top);
  while (!FHalt && PeekFocus() && FStatNumRulesFired < MaxFirings) {
    RunFiringLoop(MaxFirings);
    if (GetAgendaCount() == 0) PopFocus();
  }
  int Result = FStatNumRulesFired;
  EndInference();
  return Result;
}

void TInferenceEngine::RunFiringLoop(int MaxFirings) {
  while (GetAgendaCount() > 0 && !FHalt && FStatNumRulesFired < MaxFirings) {
    Lock();
    try {
      // The lock may have let a host empty the agenda.
      // Firing activation 0 arrives with activations.
      IModule Top = PeekFocus();
      if (Top && Top != FCurrentModule) SetCurrentModule(Top);
    } catch (...) {
      Unlock();
      throw;
    }
    Unlock();
  }
}

void TInferenceEngine::BeginInference() {
  if (OnStartInference) OnStartInference(this);
  FStatRunTime = ClockSeconds();
  FStatNumRulesFired = 0;
  FStatMaxFacts = GetFactCount();
  FStatMeanFacts = 0;
  FStatMaxActivations = GetAgendaCount();
  FStatMeanActivations = 0;
  FHalt = false;
  if (FFocusStack.Count() == 0) PushFocus(FModules.Get(0));
}

void TInferenceEngine::EndInference() {
  if (FWatch.Contains(cwStatistics)) {
    FStatRunTime = std::fabs(ClockSeconds() - FStatRunTime);
    if (FStatNumRulesFired > 0) {
      FStatMeanFacts /= float(FStatNumRulesFired);
      FStatMeanActivations /= float(FStatNumRulesFired);
      if (OnPrintOut) PrintStatistics();
    }
  }
  if (OnEndInference) OnEndInference(this, FStatNumRulesFired);
}

void TInferenceEngine::PrintStatistics() {
  PrintOut(Format(u"%d rules fired.     Run time is %.4f seconds\r\n", FStatNumRulesFired,
                  FStatRunTime));
  if (FStatRunTime != 0)
    PrintOut(Format(u"%.4f rules per second\r\n", FStatNumRulesFired / FStatRunTime));
  else
    PrintOut(Format(u"%d rules per second\r\n", FStatNumRulesFired));
  PrintOut(Format(u"%.4f mean number of facts (%d maximum)\r\n", FStatMeanFacts, FStatMaxFacts));
  PrintOut(Format(u"%.4f mean number of activations (%d maximum)\r\n", FStatMeanActivations,
                  FStatMaxActivations));
}

}  // namespace tavo
