#include "packages/TavoPackages.h"

#include <algorithm>
#include <cmath>

#include "engine/InferenceEngine.h"

namespace tavo {

TInferenceEngine& EngineOf(const TFunctionCall& FunCall, TTavoContext* Context) {
  IReasoner* Reasoner = Context ? Context->GetEngine() : nullptr;
  if (!Reasoner) Reasoner = FunCall.GetReasoner();
  auto* Engine = RepeatedCast<TInferenceEngine>(Reasoner);
  if (!Engine) throw ETavoException(SUnknownEngine);
  return *Engine;
}

ITavoValue ResolvedArgument(const TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  ITavoValue Value = FunCall.EvaluateArgument(Index, Context);
  if (Value->GetDType() == dtSingletons) Value = Value->Resolve(Context);
  return Value;
}

double TrapFloat(const String& Name, double Result, std::span<const double> Arguments, bool AtPole) {
  if (std::isnan(Result)) {
    if (std::none_of(Arguments.begin(), Arguments.end(), [](double X) { return std::isnan(X); }))
      throw ETavoException(Format(SFloatInvalidOperation, Name));
  } else if (std::isinf(Result)) {
    if (std::all_of(Arguments.begin(), Arguments.end(), [](double X) { return std::isfinite(X); }))
      throw ETavoException(Format(AtPole ? SFloatDivisionByZero : SFloatOverflow, Name));
  }
  return Result;
}

TAVO_SETUP void SetKindMetaData(TTavoUserFunction& Function, std::span<const TFunctionMetaData> Kinds, int Kind) {
  if (Kind < 0 || size_t(Kind) >= Kinds.size()) return;
  const TFunctionMetaData& Row = Kinds[size_t(Kind)];
  Function.SetMetaData(Row.Name, Row.Comment, Row.ArgumentString, Row.MinArgumentCount, Row.MaxArgumentCount);
}

// TTavoInnerFunction

TTavoInnerFunction::TTavoInnerFunction(TObject* Owner) : FOwner(Owner) {
  if (auto* Component = dynamic_cast<TComponent*>(Owner)) {
    FNexus = std::make_unique<TTavoFunctionNexus>(this);
    FNexus->FreeNotification(Component);
  }
}

TTavoInnerFunction::~TTavoInnerFunction() = default;

void TTavoInnerFunction::Notification(TComponent* Component, TOperation Operation) {
  if (Operation == opRemove && Component == FOwner) FOwner = nullptr;
}

void TTavoInnerFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  if (auto* Function = dynamic_cast<TCustomUserFunction*>(FOwner)) {
    Function->Call(IFunCall(&FunCall), Context, Result);
    return;
  }
  if (!FOwner && !OnCall) throw ETavoException(Format(SNoSuchFunction, FFunctionName));
  if (OnCall) OnCall(this, IFunCall(&FunCall), Context, Result);
}

// TCustomUserFunction

TCustomUserFunction::TCustomUserFunction(TComponent* AOwner)
    : TComponent(AOwner), FInnerFunction(Make<TTavoInnerFunction>(this)) {}

TCustomUserFunction::~TCustomUserFunction() { SetEngine(nullptr); }

void TCustomUserFunction::SetEngine(TInferenceEngine* Value) {
  if (Value == FEngine) return;
  if (FEngine) {
    FInnerFunction->DeleteReasoner(FEngine);
    RemoveFreeNotification(FEngine);
  }
  FEngine = Value;
  if (FEngine) {
    FreeNotification(FEngine);
    if (!GetFunctionName().empty()) FInnerFunction->AddReasoner(FEngine);
  }
}

void TCustomUserFunction::SetMinArgumentCount(int Value) {
  FInnerFunction->SetMinArgumentCount(Value);
  FInnerFunction->SetArgumentString(CreateArgumentExpressions(
      GetArgumentString(), FInnerFunction->GetMinArgumentCount(), FInnerFunction->GetMaxArgumentCount()));
}

void TCustomUserFunction::SetMaxArgumentCount(int Value) {
  FInnerFunction->SetMaxArgumentCount(Value);
  FInnerFunction->SetArgumentString(CreateArgumentExpressions(
      GetArgumentString(), FInnerFunction->GetMinArgumentCount(), FInnerFunction->GetMaxArgumentCount()));
}

void TCustomUserFunction::Call(const IFunCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  Result = FCNil;
  if (OnCall) OnCall(this, FunCall, Context, Result);
}

void TCustomUserFunction::Notification(TComponent* Component, TOperation Operation) {
  TComponent::Notification(Component, Operation);
  // The engine has already dropped its functions when it goes.
  if (Operation == opRemove && Component == FEngine) FEngine = nullptr;
}

String CreateArgumentExpressions(StringView OldText, int Min, int Max, int Limit) {
  String Result;
  if (Min > Max || Max == 0) return Result;
  int Open = 0;
  if (Min == 0) {
    Result += u'[';
    ++Open;
  }
  size_t From = 0;
  for (int I = 0; I < Max && I < Limit; ++I) {
    size_t Start = OldText.find(u'<', From);
    size_t End = Start == StringView::npos ? StringView::npos : OldText.find(u'>', Start);
    if (End != StringView::npos) {
      Result += u' ';
      Result += OldText.substr(Start, End - Start + 1);
      From = End + 1;
    } else {
      Result += u" <expression>";
      From = OldText.size();
    }
    if (I + 1 >= Min && Max - 1 > I) {
      Result += u" [";
      ++Open;
    }
  }
  Result.append(size_t(Open), u']');
  return TrimLeft(Result);
}

// TUserFunctionList

int TUserFunctionList::IndexOf(const IUserFunction& Function) const {
  auto It = std::find(FItems.begin(), FItems.end(), Function);
  return It == FItems.end() ? -1 : int(It - FItems.begin());
}

int TUserFunctionList::Add(const IUserFunction& Function) {
  if (int Index = IndexOf(Function); Index >= 0) return Index;
  FItems.push_back(Function);
  if (FPackage) FPackage->FunctionNotification(Function, true);
  return Count() - 1;
}

void TUserFunctionList::Delete(int Index) {
  IUserFunction Function = Get(Index);
  if (FPackage) FPackage->FunctionNotification(Function, false);
  FItems.erase(FItems.begin() + Index);
}

void TUserFunctionList::Clear() {
  while (!FItems.empty()) Delete(Count() - 1);
}

String TUserFunctionList::ToString() const {
  String Result;
  for (const IUserFunction& Function : FItems) Result += Function->GetFunctionName() + u"\r\n";
  return Result;
}

// TUserPackage

TUserPackage::TUserPackage(TComponent* AOwner) : TComponent(AOwner) {}

TUserPackage::~TUserPackage() {
  // The functions leave every engine that still holds them.
  while (!FReasoners.empty()) RemoveReasoner(FReasoners.back());
  FFunctions.Clear();
}

void TUserPackage::AfterConstruction() {
  TComponent::AfterConstruction();
  if (auto* Reasoner = dynamic_cast<IReasoner*>(GetOwner())) AddReasoner(Reasoner);
  CreateFunctions();
}

void TUserPackage::CreateFunctions() {
  if (OnCreateFunctions) OnCreateFunctions(this);
}

void TUserPackage::Reset() {
  FFunctions.Clear();
  CreateFunctions();
}

int TUserPackage::IndexOf(StringView Name) const {
  for (int I = 0; I < FFunctions.Count(); ++I)
    if (FFunctions.Get(I)->GetFunctionName() == Name) return I;
  return -1;
}

void TUserPackage::AddReasoner(IReasoner* Reasoner) {
  if (!Reasoner || std::find(FReasoners.begin(), FReasoners.end(), Reasoner) != FReasoners.end()) return;
  FReasoners.push_back(Reasoner);
  AddFunctions(Reasoner);
}

void TUserPackage::RemoveReasoner(IReasoner* Reasoner) {
  auto It = std::find(FReasoners.begin(), FReasoners.end(), Reasoner);
  if (It == FReasoners.end()) return;
  FReasoners.erase(It);
  RemoveFunctions(Reasoner);
}

void TUserPackage::SetEngine(TInferenceEngine* Value) {
  if (Value == FEngine) return;
  if (FEngine) {
    RemoveReasoner(FEngine);
    RemoveFreeNotification(FEngine);
  }
  FEngine = Value;
  if (FEngine) {
    AddReasoner(FEngine);
    FreeNotification(FEngine);
  }
}

void TUserPackage::Notification(TComponent* Component, TOperation Operation) {
  TComponent::Notification(Component, Operation);
  if (Operation != opRemove || !FEngine || Component != FEngine) return;
  // The engine has already dropped its functions when it goes: only the
  // package's own record of it is left to forget.
  std::erase(FReasoners, static_cast<IReasoner*>(FEngine));
  FEngine = nullptr;
}

void TUserPackage::FunctionNotification(const IUserFunction& Function, bool Added) {
  if (Added)
    AddReasoners(Function);
  else
    RemoveReasoners(Function);
}

void TUserPackage::AddFunctions(IReasoner* Reasoner) {
  for (int I = 0; I < FFunctions.Count(); ++I) FFunctions.Get(I)->AddReasoner(Reasoner);
}

void TUserPackage::RemoveFunctions(IReasoner* Reasoner) {
  for (int I = 0; I < FFunctions.Count(); ++I) FFunctions.Get(I)->DeleteReasoner(Reasoner);
  if (FEngine && Reasoner == static_cast<IReasoner*>(FEngine)) FEngine = nullptr;
}

void TUserPackage::AddReasoners(const IUserFunction& Function) {
  for (IReasoner* Reasoner : FReasoners) Function->AddReasoner(Reasoner);
}

void TUserPackage::RemoveReasoners(const IUserFunction& Function) {
  for (IReasoner* Reasoner : FReasoners) Function->DeleteReasoner(Reasoner);
}

}  // namespace tavo
