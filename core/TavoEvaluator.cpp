#include "core/TavoEvaluator.h"

#if defined(__linux__)
#include <pthread.h>
#endif

#include "common/MekSanitizer.h"
#include "core/TavoFuzzy.h"
#include "core/TavoVectors.h"

namespace tavo {

namespace {

// Deffunction calls being executed on this thread.
thread_local int FunctionDepth = 0;

// The lowest stack address that evaluation may reach on this thread: the
// end of the stack plus a margin for the handlers, printing and error
// reporting that still run when the guard fires.
constexpr size_t StackMargin = 256 * 1024;
thread_local const char* StackLimit = nullptr;

// The top of this thread's stack, where known.
thread_local const char* StackTop = nullptr;

const char* FindStackLimit() {
  const char* Here = static_cast<const char*>(__builtin_frame_address(0));
  StackTop = Here;
#if defined(__linux__)
  pthread_attr_t Attributes;
  if (pthread_getattr_np(pthread_self(), &Attributes) == 0) {
    void* Base = nullptr;
    size_t Size = 0;
    int Status = pthread_attr_getstack(&Attributes, &Base, &Size);
    pthread_attr_destroy(&Attributes);
    if (Status == 0 && Size > 2 * StackMargin) {
      StackTop = static_cast<const char*>(Base) + Size;
      return static_cast<const char*>(Base) + StackMargin;
    }
  }
#endif
  // Unknown bounds: a megabyte below the first probe.
  return Here - 1024 * 1024;
}

// The address sanitizer clears the marks of the frames that an exception
// leaves only within 64 MB of the stack; from deeper down it leaves them,
// and reports errors that are none in the frames that come after. Clear
// them before raising.
[[noreturn]] void RaiseStackExhausted(const TFunctionCall& Call) {
#if defined(TAVO_ADDRESS_SANITIZER)
  const char* Here = static_cast<const char*>(__builtin_frame_address(0));
  if (StackTop > Here) __asan_unpoison_memory_region(Here, size_t(StackTop - Here));
#endif
  throw ETavoException(Format(SStackExhausted, FunctionDepth, Call.GetName()));
}

// The result of Evaluate as a reference of its own: taken from Scratch,
// or shared with the expression or binding it came from.
inline ITavoValue Take(const ITavoValue& Value, ITavoValue& Scratch) {
  return &Value == &Scratch ? std::move(Scratch) : Value;
}


// The fuzzy set that literal points stand for, each coordinate resolved
// in Context and read as a number.
ITavoValue ResolveSingletons(const TSingletonsVector& Points, TObject* Context) {
  IFuzzySet Set = Make<TTavoFuzzySet>();
  ITavoValue Result = Make<TTavoValue>(Set);
  if (auto* Parser = dynamic_cast<IFuzzyParser*>(Points.GetParser())) Set->SetParser(Parser);
  Set->BeginUpdate();
  try {
    for (int I = 0; I < Points.GetCount(); ++I) {
      const double X = Points.GetXValues(I)->Resolve(Context)->GetAsNumeric();
      const double Y = Points.GetYValues(I)->Resolve(Context)->GetAsNumeric();
      Set->AddPoint(X, Y);
    }
  } catch (...) {
    Set->EndUpdate();
    throw;
  }
  Set->EndUpdate();
  return Result;
}

}  // namespace

void CheckStack(const TFunctionCall& Call) {
  char Probe;
  if (!StackLimit) StackLimit = FindStackLimit();
  if (&Probe < StackLimit) RaiseStackExhausted(Call);
}

const ITavoValue& Evaluate(const ITavoValue& Expression, TTavoContext* Context, ITavoValue& Scratch) {
  TTavoValue& Value = *Expression;
  // A value of a class of the host's may resolve in its own way; so may
  // one made without the factory, which has no mark either.
  if (!Value.IsPlainClass()) {
    Scratch = Value.Resolve(Context);
    if (!Scratch) Scratch = FCNil;
    return Scratch;
  }
  switch (Value.GetDType()) {
    case dtVariable:
    case dtMultiVariable: {
      if (!Context) throw ETavoException(Format(SNoContext, GetTavoTypeName(Value.GetDType())));
      const ITavoValue* Bound = Context->FindVariable(Value);
      if (!Bound || !*Bound) throw ETavoException(Format(SCorruptedVariable, Value.GetText()));
      return *Bound;
    }
    case dtFunCall:
      if (auto* Call = static_cast<TFunctionCall*>(Value.GetValue().VInterface)) {
        Call->Execute(Context, Scratch);
        if (!Scratch) Scratch = FCNil;
        return Scratch;
      }
      return Expression;
    case dtObject:
      if (Value.HoldsBindingInfo()) {
        auto* Info = static_cast<TBindingInfo*>(Value.GetValue().VObject);
        if (!Context) throw ETavoException(Format(SNoContext, GetTavoTypeName(dtObject)));
        const ITavoValue& Resolved = Context->ResolveBindingInfo(*Info, Scratch);
        return Resolved ? Resolved : FCNil;
      }
      return Expression;
    default:
      // Literal points stay points here, out of the way of the constants
      // that come here by the million: whatever takes a fuzzy value turns
      // them into their set by Resolve (a fuzzy slot, a fuzzy function's
      // argument, a fuzzy expression).
      return Expression;
  }
}

namespace {

// The call a value of a call holds, when it is bound to its function; the
// ways without values answer only for bound calls, and guard the stack as
// the general way does.
TFunctionCall* BoundCall(const TTavoValue& Value) {
  auto* Call = static_cast<TFunctionCall*>(Value.GetValue().VInterface);
  if (!Call || !Call->GetUserFunction()) return nullptr;
  CheckStack(*Call);
  return Call;
}

}  // namespace

bool EvaluateNumber(const ITavoValue& Expression, TTavoContext* Context, TNumber& Result) {
  const TTavoValue* Value = Expression.Get();
  if (!Value->IsPlainClass()) return false;
  ITavoValue Scratch;
  switch (Value->GetDType()) {
    case dtVariable: {
      if (!Context) return false;
      const ITavoValue* Bound = Context->FindVariable(*Value);
      if (!Bound || !*Bound) return false;
      Value = Bound->Get();
      break;
    }
    case dtFunCall: {
      TFunctionCall* Call = BoundCall(*Value);
      return Call && Call->GetUserFunction()->CallNumericChecked(*Call, Context, Result);
    }
    case dtObject: {
      if (!Value->HoldsBindingInfo() || !Context) return false;
      const ITavoValue& Resolved =
          Context->ResolveBindingInfo(*static_cast<TBindingInfo*>(Value->GetValue().VObject), Scratch);
      if (!Resolved) return false;
      Value = Resolved.Get();
      break;
    }
    default:
      break;
  }
  const TTavoType Type = Value->GetDType();
  if (TavoIntegerTypes.Contains(Type)) {
    Result.Integer = Value->GetValue().VInteger;
    Result.IsFloat = false;
    return true;
  }
  if (Type == dtFloat) {
    Result.Float = Value->GetValue().VExtended;
    Result.IsFloat = true;
    return true;
  }
  return false;
}

bool EvaluateTruth(const ITavoValue& Expression, TTavoContext* Context, bool& Result) {
  const TTavoValue* Value = Expression.Get();
  if (!Value || !Value->IsPlainClass() || Value->GetDType() != dtFunCall) return false;
  TFunctionCall* Call = BoundCall(*Value);
  return Call && Call->GetUserFunction()->CallTruthChecked(*Call, Context, Result);
}

// TTavoValue

ITavoValue TTavoValue::Resolve(TObject* Context) {
  switch (GetDType()) {
    case dtVariable:
    case dtMultiVariable: {
      auto* Scope = dynamic_cast<TTavoContext*>(Context);
      if (!Scope) throw ETavoException(Format(SNoContext, GetTavoTypeName(GetDType())));
      const ITavoValue* Bound = Scope->FindVariable(*this);
      if (!Bound || !*Bound) throw ETavoException(Format(SCorruptedVariable, GetText()));
      return *Bound;
    }
    case dtFunCall:
      if (auto* Call = static_cast<TFunctionCall*>(FValue.VInterface)) return Call->Execute(Context);
      break;
    case dtObject:
      if (HoldsBindingInfo()) {
        auto* Info = static_cast<TBindingInfo*>(FValue.VObject);
        auto* Scope = dynamic_cast<TTavoContext*>(Context);
        if (!Scope) throw ETavoException(Format(SNoContext, GetTavoTypeName(GetDType())));
        ITavoValue Scratch;
        return Scope->ResolveBindingInfo(*Info, Scratch);
      }
      break;
    case dtSingletons:
      if (auto* Points = static_cast<TSingletonsVector*>(FValue.VInterface)) return ResolveSingletons(*Points, Context);
      break;
    default:
      break;
  }
  return ITavoValue(this);
}

// TFunctionCall

ITavoValue TFunctionCall::EvaluateArgument(int Index, TTavoContext* Context) const {
  ITavoValue Scratch;
  return Take(Evaluate(GetArgument(Index), Context, Scratch), Scratch);
}

const ITavoValue& TFunctionCall::EvaluateArgument(int Index, TTavoContext* Context, ITavoValue& Scratch) const {
  return Evaluate(GetArgument(Index), Context, Scratch);
}

void TFunctionCall::Bind() {
  IUserFunction Function;
  if (!FReasoner || !FReasoner->ContainsUserFunction(GetName(), Function))
    throw ETavoException(Format(SNoSuchFunction, GetName()));
  SetUserFunction(Function);
}

void TFunctionCall::Execute(TTavoContext* Context, ITavoValue& Result) {
  // Built-in calls recurse too: a reset in a fact set's slot runs resets.
  CheckStack(*this);
  if (!FUserFunction) Bind();
  Result.Reset();
  FUserFunction->CallChecked(*this, Context, Result);
}

void TFunctionCall::Execute(TObject* Context, ITavoValue& Result) {
  TTavoContext* Scope = dynamic_cast<TTavoContext*>(Context);
  if (Context && !Scope) {
    // The function's own entry names the wrong kind of context.
    if (!FUserFunction) Bind();
    FUserFunction->Call(IFunCall(this), Context, Result);
    return;
  }
  Execute(Scope, Result);
}

ITavoValue TFunctionCall::Execute(TObject* Context) {
  ITavoValue Result;
  Execute(Context, Result);
  return Result;
}

ITavoValue TFunctionCall::SimpleExecute(TTavoContext* Context) {
  if (!FUserFunction) throw ETavoException(Format(SNoSuchFunction, GetName()));
  ITavoValue Result;
  FUserFunction->CallChecked(*this, Context, Result);
  return Result;
}

// TInterpretedFunction

namespace {

template <class TVisit>
void VisitValues(const ITavoValue& Value, TVisit& Visit) {
  if (!Value) return;
  Visit(*Value);
  if (Value->GetDType() == dtFunCall) {
    if (auto* Call = static_cast<TFunctionCall*>(Value->GetValue().VInterface))
      for (int I = 0; I < Call->GetArgumentCount(); ++I) VisitValues(Call->GetArgument(I), Visit);
  } else if (Value->GetDType() == dtList) {
    if (auto* List = static_cast<TValueVector*>(Value->GetValue().VInterface))
      for (const ITavoValue& Item : *List) VisitValues(Item, Visit);
  }
}

}  // namespace

const TFrameLayout& TInterpretedFunction::GetLayout() {
  if (FLayoutReady) return FLayout;
  FLayout.Clear();
  FParameterSlots.clear();
  for (const ITavoValue& Parameter : FArguments) FParameterSlots.push_back(FLayout.Add(Parameter->GetText()));
  // The variables that bind sets in the body.
  auto AddBound = [this](TTavoValue& Value) {
    if (Value.GetDType() != dtFunCall) return;
    auto* Call = static_cast<TFunctionCall*>(Value.GetValue().VInterface);
    if (Call && Call->GetName() == u"bind" && Call->GetArgumentCount() > 0) {
      const ITavoValue& Target = Call->GetArgument(0);
      if (Target && TavoVariableTypes.Contains(Target->GetDType())) FLayout.Add(Target->GetText());
    }
  };
  for (const ITavoValue& Statement : FStatements) VisitValues(Statement, AddBound);
  auto SetHint = [this](TTavoValue& Value) {
    if (!TavoVariableTypes.Contains(Value.GetDType())) return;
    int Index = FLayout.IndexOf(Value.GetText());
    Value.SetFrameIndex(uint16_t(Index + 1));
  };
  for (const ITavoValue& Statement : FStatements) VisitValues(Statement, SetHint);
  FLayoutReady = true;
  return FLayout;
}

void TInterpretedFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  CheckStack(FunCall);
  if (FunctionDepth >= MaxFunctionDepth)
    throw ETavoException(Format(SRecursionTooDeep, MaxFunctionDepth, FunCall.GetName()));
  struct TDepth {
    TDepth() { ++FunctionDepth; }
    ~TDepth() { --FunctionDepth; }
  } Depth;

  // A call from outside any scope gets a root of its own.
  std::unique_ptr<TTavoContext> Root;
  if (!Context) {
    Root = std::make_unique<TTavoContext>(nullptr, nullptr);
    Context = Root.get();
  }
  TTavoContext Child(Context, Context->GetEngine());
  Child.OpenFrame(GetLayout());
  struct THandBack {
    TTavoContext& Scope;
    ~THandBack() { Scope.Pop(); }
  } HandBack{Child};

  // Parameters and statements are read through the list's own index checks:
  // a call with fewer arguments than parameters fails there, extra
  // arguments are ignored. Arguments are evaluated in the new scope, where
  // the parameters before them are bound already.
  ITavoValue Scratch;
  for (int I = 0; I < GetArgumentCount(); ++I) {
    const ITavoValue& Parameter = FArguments.Get(I);
    StringView Name = Parameter->GetText();
    switch (Parameter->GetDType()) {
      case dtAtom:
        Child.SetVariable(Name, FCNil);
        break;
      case dtVariable:
        // A parameter always binds in the new frame, hiding any outer one.
        // Read anew each time: evaluating an argument may redefine the
        // function, and the frame keeps the layout it was opened with.
        if (int Slot = size_t(I) < FParameterSlots.size() ? FParameterSlots[size_t(I)] : -1;
            Slot >= 0 && Slot < Child.GetFrameCount() &&
            Child.GetFrameBinding(Slot).GetNameText() == Parameter->GetSharedText())
          Child.GetFrameBinding(Slot).SetValue(Take(Evaluate(FunCall.GetArgument(I), &Child, Scratch), Scratch));
        else
          Child.AddLocalBinding(Name, Take(Evaluate(FunCall.GetArgument(I), &Child, Scratch), Scratch));
        break;
      default: {
        IValueVector Rest = Make<TValueVector>();
        for (int J = I; J < FunCall.GetArgumentCount(); ++J) Rest->Add(FunCall.EvaluateArgument(J, &Child));
        Child.AddLocalBinding(Name, Make<TTavoValue>(Rest));
        break;
      }
    }
  }
  for (const ITavoValue& Statement : FStatements) {
    EvaluateInto(Statement, &Child, Result);
    if (Child.GetReturning()) {
      Result = Child.GetReturnValue();
      Child.ClearReturnValue();
      break;
    }
  }
  // A body without statements gives nil; the last result is resolved once
  // more, which turns a returned variable into its value.
  if (FStatements.Count() > 0 && Result) {
    const ITavoValue& Final = Evaluate(Result, &Child, Scratch);
    if (&Final != &Result) Result = Take(Final, Scratch);
  } else {
    Result = FCNil;
  }
}

// TTavoContext

const ITavoValue& ReadSlot(TContextFact& Fact, const TBindingInfo& Info) {
  if (const ITavoValue* Value = Fact.PeekSlot(Info.FLayoutSeen, Info.FSlotPosition)) return *Value;
  const void* Layout = Fact.GetSlotLayout();
  if (Info.FLayoutSeen != Layout || !Layout) {
    Info.FSlotPosition = Fact.GetSlotPosition(Info.GetSlotIndex());
    Info.FLayoutSeen = Layout;
  }
  return Info.FSlotPosition >= 0 ? Fact.GetValueAt(Info.FSlotPosition) : Fact.GetValue(Info.GetSlotIndex());
}

const ITavoValue& TTavoContext::ResolveBindingInfo(const TBindingInfo& Info, ITavoValue& Scratch) const {
  const TTavoContext& Scope = FToken || FFact || !FMatchScope ? *this : *FMatchScope;
  int TokenCount = Scope.FToken ? Scope.FToken->GetCount() : 0;
  TContextFact* Fact = nullptr;
  if (Info.GetFactIndex() == TokenCount && Scope.FFact)
    Fact = Scope.FFact.Get();
  else if (Scope.FToken)
    Fact = Scope.FToken->GetContextFact(Info.GetFactIndex());
  if (!Fact) throw ETavoException(Format(SCorruptedVariable, Info.ToString()));
  if (Info.IsPatternBinding()) return Scratch = Make<TTavoValue>(Fact->GetID(), dtFactId);
  const ITavoValue& Value = ReadSlot(*Fact, Info);
  if (Info.GetSubIndex() == NoSubIndex) return Value;
  return Scratch = Value->GetAsList()->Get(Info.GetSubIndex());
}

}  // namespace tavo
