#include "packages/StandardPackage.h"

#include "language/TavoStreamToken.h"
#include "packages/StringPackage.h"

#include "core/TavoEvaluator.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {




bool IsValue(const ITavoValue& Value, const ITavoValue& Constant) { return Value && Value->Equals(Constant); }

const ITavoValue& BooleanValue(bool Value) { return Value ? FCTrue : FCFalse; }

TTavoContext& ScopeOf(TTavoContext* Context) {
  if (!Context) throw ETavoException(Format(SNoContext, GetTavoTypeName(dtVariable)));
  return *Context;
}

// Evaluates arguments First up to Last - 1, each value becoming the result.
// A pending return ends the walk with the return value as result; the
// return state stays in the context for the enclosing construct. True when
// a return ended it.
bool EvaluateBody(TFunctionCall& FunCall, int First, int Last, TTavoContext* Context, ITavoValue& Result) {
  for (int I = First; I < Last; ++I) {
    EvaluateInto(FunCall.GetArgument(I), Context, Result);
    if (Context && Context->GetReturning()) {
      Result = Context->GetReturnValue();
      return true;
    }
  }
  return false;
}

String MessageOf(const std::exception& Error) {
  if (auto* Known = dynamic_cast<const EMekException*>(&Error)) return Known->Message();
  return Utf8ToString(Error.what());
}

// The comparisons evaluate every argument, even once the answer is known.

template <class TSame>
bool AllMatchFirst(TFunctionCall& FunCall, TTavoContext* Context, TSame Same) {
  const ITavoValue First = FunCall.EvaluateArgument(0, Context);
  bool Result = true;
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    const ITavoValue Value = FunCall.EvaluateArgument(I, Context);
    if (Result && !Same(First, Value)) Result = false;
  }
  return Result;
}

template <class TSame>
bool NoneMatchesFirst(TFunctionCall& FunCall, TTavoContext* Context, TSame Same) {
  const ITavoValue First = FunCall.EvaluateArgument(0, Context);
  bool Result = true;
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    const ITavoValue Value = FunCall.EvaluateArgument(I, Context);
    if (Result && Same(First, Value)) Result = false;
  }
  return Result;
}

template <class TOrdered>
bool EachBeforeNext(TFunctionCall& FunCall, TTavoContext* Context, TOrdered Ordered) {
  double Previous = FunCall.Argument(0, Context)->GetAsNumeric();
  bool Result = true;
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    const double Current = FunCall.Argument(I, Context)->GetAsNumeric();
    if (Result && !Ordered(Previous, Current)) Result = false;
    Previous = Current;
  }
  return Result;
}

// Reads every argument as a number without making a value (see
// EvaluateNumber) and compares each against the first or, when Chained,
// against the one before it: false when some argument is not a number of
// that kind.
template <class TPair>
bool NumbersCompare(const TFunctionCall& FunCall, TTavoContext* Context, bool Chained, TPair Pair, bool& Result) {
  TNumber Number;
  if (!EvaluateNumber(FunCall.GetArgument(0), Context, Number)) return false;
  double Anchor = Number.AsDouble();
  Result = true;
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    if (!EvaluateNumber(FunCall.GetArgument(I), Context, Number)) return false;
    const double Current = Number.AsDouble();
    if (Result && !Pair(Anchor, Current)) Result = false;
    if (Chained) Anchor = Current;
  }
  return true;
}

// The numeric comparisons read their arguments as numbers first; when some
// argument is not a number of that kind, General answers the general way.
template <class TPair, class TGeneral>
bool CompareNumbers(const TFunctionCall& FunCall, TTavoContext* Context, bool Chained, TPair Pair, TGeneral General) {
  bool Result;
  return NumbersCompare(FunCall, Context, Chained, Pair, Result) ? Result : General();
}

template <class TOrdered>
bool EachBeforeNextNumber(TFunctionCall& FunCall, TTavoContext* Context, TOrdered Ordered) {
  return CompareNumbers(FunCall, Context, true, Ordered, [&] { return EachBeforeNext(FunCall, Context, Ordered); });
}

bool NumberEqual(double A, double B) { return A == B; }
bool NumberUnequal(double A, double B) { return !(A == B); }
bool Greater(double A, double B) { return A > B; }
bool GreaterOrEqual(double A, double B) { return A >= B; }
bool Less(double A, double B) { return A < B; }
bool LessOrEqual(double A, double B) { return A <= B; }

// and and or by the truth of each argument in turn, up to the first that
// settles the answer (Settling), as the general way evaluates them.
bool TruthOfEach(const TFunctionCall& FunCall, TTavoContext* Context, bool Settling, bool& Result) {
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) {
    bool Each;
    if (!EvaluateTruth(FunCall.GetArgument(I), Context, Each)) return false;
    if (Each == Settling) {
      Result = Settling;
      return true;
    }
  }
  Result = !Settling;
  return true;
}

bool StrictlyEqual(const ITavoValue& A, const ITavoValue& B) { return A->Equals(B); }
bool NumericallyEqual(const ITavoValue& A, const ITavoValue& B) { return A->GetAsNumeric() == B->GetAsNumeric(); }

// False for a word that names no watch.
bool WatchesOf(const String& Word, TConstructWatches& Watches) {
  static const struct {
    const char16_t* Word;
    TConstructWatches Watches;
  } Words[] = {{u"all", TavoAllWatches},
               {u"rules", {cwRule}},
               {u"facts", {cwFact}},
               {u"focus", {cwFocus}},
               {u"activations", {cwActivation}},
               {u"compilations", {cwCompilation}},
               {u"statistics", {cwStatistics}}};
  for (const auto& Entry : Words)
    if (Word == Entry.Word) {
      Watches = Entry.Watches;
      return true;
    }
  return false;
}

constexpr char16_t SWatchSyntax[] = u"all|rules|facts|focus|activations|compilations|statistics";

void AppendPrintText(String& Text, const ITavoValue& Value) {
  switch (Value->GetDType()) {
    case dtAtom:
      if (Value->GetText() == u"crlf")
        Text += u"\r\n";
      else
        Text += Value->GetText();
      break;
    case dtString:
    case dtInteger:
    case dtFloat:
      Text += Value->GetAsString();
      break;
    case dtList:
      Text += u"(" + Value->GetToString() + u")";
      break;
    default:
      Text += Value->GetToString();
      break;
  }
}

}  // namespace

// if

TAVO_SETUP void TIfFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"if",
              u"Evaluates the first argument.  If the first argument is TRUE, then it executes the expressions "
              u"after the \"then\" keyword.  If the first argument is FALSE and the \"else\" keyword is present, "
              u"it executes the expressions after the \"else\" keyword",
              u"<predicate-expression> then <expression>+ [else <expression>+]", 2, AnyArgumentCount);
}

void TIfFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  if (!IsValue(FunCall.GetArgument(1), FCThen)) throw ETavoException(Format(SSyntaxError, SMissingThen));
  const bool Condition = !IsFalse(FunCall.Argument(0, Context).Get());
  const int Count = FunCall.GetArgumentCount();
  Result = FCFalse;
  if (!Condition) {
    for (int I = 3; I < Count; ++I)
      if (IsValue(FunCall.GetArgument(I), FCElse)) {
        EvaluateBody(FunCall, I + 1, Count, Context, Result);
        break;
      }
    return;
  }
  for (int I = 2; I < Count; ++I) {
    ITavoValue Value = FunCall.EvaluateArgument(I, Context);
    if (IsValue(Value, FCElse)) return;
    if (Context && Context->GetReturning()) {
      Result = Context->GetReturnValue();
      return;
    }
    Result = std::move(Value);
  }
}

// while

TAVO_SETUP void TWhileFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"while",
              u"Evaluates the expressions after the condition, and the optional \"do\" keyword, again and again "
              u"for as long as the condition is not FALSE",
              u"<boolean-expression> [do] <expression>*", 2, AnyArgumentCount);
}

void TWhileFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const int Count = FunCall.GetArgumentCount();
  const int First = Count > 1 && IsValue(FunCall.GetArgument(1), FCDo) ? 2 : 1;
  EvaluateInto(FunCall.GetArgument(0), Context, Result);
  while (!IsFalse(Result)) {
    if (EvaluateBody(FunCall, First, Count, Context, Result)) return;
    EvaluateInto(FunCall.GetArgument(0), Context, Result);
  }
}

// foreach

TAVO_SETUP void TForEachFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"foreach",
              u"Binds the variable to each item of the list in turn and evaluates the expressions for each",
              u"<variable-name> <list-expression> <expression>*", 2, AnyArgumentCount);
}

void TForEachFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // The loop variable is usually not bound yet, so a variable gives its
  // name rather than its value.
  const ITavoValue& Variable = FunCall.GetArgument(0);
  String Name = TavoVariableTypes.Contains(Variable->GetDType()) ? Variable->GetAsString()
                                                                 : FunCall.Argument(0, Context)->GetAsString();
  if (!Name.empty() && Name[0] == u'?') Name.erase(0, 1);
  TTavoContext& Scope = ScopeOf(Context);
  const IValueVector List = FunCall.Argument(1, Context)->GetAsList();
  const int Count = FunCall.GetArgumentCount();
  Result = FCNil;
  for (int I = 0; I < List->GetValueCount(); ++I) {
    ITavoValue Item = List->Get(I)->Resolve(Context);
    Scope.SetVariable(Name, Item ? Item : FCNil);
    if (EvaluateBody(FunCall, 2, Count, Context, Result)) return;
  }
}

// try

TAVO_SETUP void TTryFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"try",
              u"Evaluates the expressions; those after \"finally\" run in any case, and those after \"catch\" or "
              u"\"except\" run after an error, whose message is in ?__ERROR",
              u"[<expression>*] [finally [<expression>*>] [catch|except [<expression>*]]", 1, AnyArgumentCount);
}

void TTryFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const int Count = FunCall.GetArgumentCount();
  int Finally = -1;
  for (int I = 0; I < Count && Finally < 0; ++I)
    if (IsValue(FunCall.GetArgument(I), FCFinally)) Finally = I;
  int Catch = -1;
  for (int I = Finally + 1; I < Count && Catch < 0; ++I)
    if (IsValue(FunCall.GetArgument(I), FCCatch) || IsValue(FunCall.GetArgument(I), FCExcept)) Catch = I;
  if (Finally < 0 && Catch < 0) throw ETavoException(SMissingCatchStatement);

  const int BodyEnd = Finally >= 0 ? Finally : Catch;
  const int FinallyEnd = Catch >= 0 ? Catch : Count;
  try {
    try {
      EvaluateBody(FunCall, 0, BodyEnd, Context, Result);
    } catch (...) {
      if (Finally >= 0) EvaluateBody(FunCall, Finally + 1, FinallyEnd, Context, Result);
      throw;
    }
    if (Finally >= 0) EvaluateBody(FunCall, Finally + 1, FinallyEnd, Context, Result);
  } catch (const EAbort&) {
    throw;
  } catch (const std::exception& Error) {
    Result = FCFalse;
    ScopeOf(Context).SetVariable(u"__ERROR", Make<TTavoValue>(MessageOf(Error), dtString));
    if (Catch >= 0) EvaluateBody(FunCall, Catch + 1, Count, Context, Result);
  }
}

// throw

TAVO_SETUP void TThrowFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"throw", u"Raises an error with the given text as its message", u"<lexeme-expression>", 1, 1);
}

void TThrowFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // A plain failure, not one of the engine's own.
  throw EMekException(FunCall.Argument(0, Context)->GetAsString());
}

// return

TAVO_SETUP void TReturnFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"return",
              u"Ends the current deffunction, loop or rule action, giving the argument's value if there is one",
              u"[<expression>]", 0, 1);
}

void TReturnFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // Left unevaluated: the construct that takes the return resolves it.
  ITavoValue Value = FunCall.GetArgumentCount() == 0 ? FCPopFocus : FunCall.GetArgument(0);
  ScopeOf(Context).SetReturnValue(Value);
  Result = std::move(Value);
}

// bind

TAVO_SETUP void TBindFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"bind", u"Binds the variable to the value of the expression and returns the value",
              u"<variable> <expression>", 2, 2);
}

void TBindFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EvaluateInto(FunCall.GetArgument(1), Context, Result);
  ScopeOf(Context).BindVariable(*FunCall.GetArgument(0), Result);
}

// and, or, not

TAVO_SETUP void TAndFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"and",
              u"Returns TRUE if no argument is FALSE; it evaluates from left to right and stops at the first FALSE",
              u"<expression>*", 0, AnyArgumentCount);
}

void TAndFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I)
    if (IsFalse(FunCall.Argument(I, Context).Get())) {
      Result = FCFalse;
      return;
    }
  Result = FCTrue;
}

bool TAndFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return TruthOfEach(FunCall, Context, false, Result);
}

TAVO_SETUP void TOrFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"or",
              u"Returns TRUE at the first argument that is not FALSE, evaluating from left to right, and FALSE "
              u"if there is none",
              u"<expression>*", 0, AnyArgumentCount);
}

void TOrFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I)
    if (!IsFalse(FunCall.Argument(I, Context).Get())) {
      Result = FCTrue;
      return;
    }
  Result = FCFalse;
}

bool TOrFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return TruthOfEach(FunCall, Context, true, Result);
}

TAVO_SETUP void TNotFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"not", u"Returns TRUE if the argument is FALSE, and FALSE otherwise", u"<expression>", 1, 1);
}

void TNotFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(IsFalse(FunCall.Argument(0, Context).Get()));
}

bool TNotFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  if (!EvaluateTruth(FunCall.GetArgument(0), Context, Result)) return false;
  Result = !Result;
  return true;
}

// Equality and order

TAVO_SETUP void TEqFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"eq", u"Returns TRUE if the first argument equals all the others in type and value",
              u"<expression> <expression>+", 1, AnyArgumentCount);
}

void TEqFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(AllMatchFirst(FunCall, Context, StrictlyEqual));
}

TAVO_SETUP void TEqStarFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"eq*",
              u"Returns TRUE if the first argument equals all the others, each read as the first one's type",
              u"<expression> <expression>+", 1, AnyArgumentCount);
}

void TEqStarFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(
      AllMatchFirst(FunCall, Context, [](const ITavoValue& A, const ITavoValue& B) { return A->EqualsStar(B); }));
}

TAVO_SETUP void TNeqFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"neq", u"Returns TRUE if the first argument equals none of the others in type and value",
              u"<expression> <expression>*", 1, AnyArgumentCount);
}

void TNeqFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(NoneMatchesFirst(FunCall, Context, StrictlyEqual));
}

TAVO_SETUP void TEqualsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"=", u"Returns TRUE if the first argument is numerically equal to all the others",
              u"<numeric-expression> <numeric-expression>+", 1, AnyArgumentCount);
}

void TEqualsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(CompareNumbers(FunCall, Context, false, NumberEqual,
                                      [&] { return AllMatchFirst(FunCall, Context, NumericallyEqual); }));
}

bool TEqualsFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, false, NumberEqual, Result);
}

TAVO_SETUP void TNotEqualsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"<>", u"Returns TRUE if the first argument is numerically equal to none of the others",
              u"<numeric-expression> <numeric-expression>*", 1, AnyArgumentCount);
}

void TNotEqualsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(CompareNumbers(FunCall, Context, false, NumberUnequal,
                                      [&] { return NoneMatchesFirst(FunCall, Context, NumericallyEqual); }));
}

bool TNotEqualsFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, false, NumberUnequal, Result);
}

TAVO_SETUP void TGtFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u">", u"Returns TRUE if each argument is greater than the one after it",
              u"<numeric-expression> <numeric-expression>+", 2, AnyArgumentCount);
}

void TGtFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(EachBeforeNextNumber(FunCall, Context, Greater));
}

bool TGtFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, true, Greater, Result);
}

TAVO_SETUP void TGtOrEqFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u">=", u"Returns TRUE if each argument is greater than or equal to the one after it",
              u"<numeric-expression> <numeric-expression>+", 2, AnyArgumentCount);
}

void TGtOrEqFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(EachBeforeNextNumber(FunCall, Context, GreaterOrEqual));
}

bool TGtOrEqFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, true, GreaterOrEqual, Result);
}

TAVO_SETUP void TLtFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"<", u"Returns TRUE if each argument is less than the one after it",
              u"<numeric-expression> <numeric-expression>+", 2, AnyArgumentCount);
}

void TLtFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(EachBeforeNextNumber(FunCall, Context, Less));
}

bool TLtFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, true, Less, Result);
}

TAVO_SETUP void TLtOrEqFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"<=", u"Returns TRUE if each argument is less than or equal to the one after it",
              u"<numeric-expression> <numeric-expression>+", 2, AnyArgumentCount);
}

void TLtOrEqFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(EachBeforeNextNumber(FunCall, Context, LessOrEqual));
}

bool TLtOrEqFunction::CallTruth(const TFunctionCall& FunCall, TTavoContext* Context, bool& Result) {
  return NumbersCompare(FunCall, Context, true, LessOrEqual, Result);
}

// __get-var

TAVO_SETUP void TExtractGlobalFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"__get-var", u"Returns the value bound to the variable, or nil when it is not bound",
              u"<variable-name>", 1, 1);
}

void TExtractGlobalFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  if (TavoVariableTypes.Contains(FunCall.GetArgument(0)->GetDType())) {
    Result = FunCall.EvaluateArgument(0, Context);
    return;
  }
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  TBinding* Binding = Context ? Context->FindBinding(Name) : nullptr;
  Result = Binding && Binding->GetValue() ? Binding->GetValue() : FCNil;
}

// gensym*

TAVO_SETUP void TGenSymStarFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"gensym*", u"Returns a new symbol of the form genN", u"", 0, 0);
}

void TGenSymStarFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(EngineOf(FunCall, Context).GenerateSymbol(u"gen"), dtAtom);
}

// store, fetch, clear-storage

TAVO_SETUP void TStoreFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"store", u"Stores the value under the name in the engine's storage; nil removes the name",
              u"<variable-name> <value>", 2, 2);
}

void TStoreFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FunCall.EvaluateArgument(1, Context);
  if (Result == FCNil) Result.Reset();
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  TEngineVariables& Storage = *EngineOf(FunCall, Context).GetStorage();
  if (Result)
    Storage.AddOrSetValue(Name, Result);
  else if (Storage.ContainsKey(Name))
    Storage.Remove(Name);
}

TAVO_SETUP void TFetchFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"fetch", u"Returns the value stored under the name, or nil when there is none",
              u"<lexeme-expression>", 1, 1);
}

void TFetchFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  if (!EngineOf(FunCall, Context).GetStorage()->TryGetValue(Name, Result) || !Result) Result = FCNil;
}

TAVO_SETUP void TClearStorageFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"clear-storage", u"Removes every value from the engine's storage", u"", 0, 0);
}

void TClearStorageFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).GetStorage()->Clear();
}

// run, halt, exit, version

TAVO_SETUP void TRunFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"run",
              u"Fires rules until the agenda is empty, halt is called, or the given number of rules have fired, "
              u"and returns the number fired",
              u"[<integer-expression>]", 0, 1);
}

void TRunFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const int Fired =
      FunCall.GetArgumentCount() > 0 ? Engine.Run(FunCall.Argument(0, Context)->GetAsInteger()) : Engine.Run();
  Result = Make<TTavoValue>(int32_t(Fired), dtInteger);
}

TAVO_SETUP void THaltFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"halt", u"Stops the firing of rules once the current rule has finished", u"", 0, 0);
}

void THaltFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).SetHalt(true);
  Result = FCTrue;
}

TAVO_SETUP void TExitFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"exit", u"Ends the execution at once and without a message", u"", 0, 0);
}

void TExitFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FCTrue;
  throw EExit();
}

TAVO_SETUP void TVersionFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"version", u"Returns the version of the engine", u"", 0, 0);
}

void TVersionFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(double(EngineOf(FunCall, Context).GetVersion()));
}

// watch, unwatch

TAVO_SETUP void TWatchFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"watch", u"Turns on the trace of the given kind of event", SWatchSyntax, 1, 1);
}

void TWatchFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String Word = FunCall.Argument(0, Context)->GetAsString();
  TConstructWatches Watches;
  if (!WatchesOf(Word, Watches)) throw ETavoException(Format(SCannotWatch, Word));
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Engine.SetWatch(Engine.GetWatch() + Watches);
  Result = FCTrue;
}

TAVO_SETUP void TUnwatchFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"unwatch", u"Turns off the trace of the given kind of event", SWatchSyntax, 1, 1);
}

void TUnwatchFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String Word = FunCall.Argument(0, Context)->GetAsString();
  TConstructWatches Watches;
  if (!WatchesOf(Word, Watches)) throw ETavoException(Format(SCannotUnWatch, Word));
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Engine.SetWatch(Engine.GetWatch() - Watches);
  Result = FCTrue;
}

// printout

TAVO_SETUP void TPrintOutFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"printout",
              u"Prints the expressions to the logical name without separators; the atom crlf starts a new line",
              u"<logical-name> <expression>*", 0, AnyArgumentCount);
}

void TPrintOutFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FCNil;
  const int Count = FunCall.GetArgumentCount();
  if (Count == 0) return;
  const String OutID = FunCall.Argument(0, Context)->GetAsString();
  // A local buffer, not a field: an argument may itself call printout.
  String Text;
  for (int I = 1; I < Count; ++I) AppendPrintText(Text, FunCall.Argument(I, Context).Get());
  EngineOf(FunCall, Context).PrintOut(OutID, Text);
}

// reset, clear

TAVO_SETUP void TResetFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"reset", u"Resets the expert system: facts cleared, the initial fact asserted, globals bound anew",
              u"", 0, 0);
}

// assert

TAVO_SETUP void TAssertFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"assert", u"Asserts each fact, its slots evaluated first; gives the id of the last one, or FALSE",
              u"<fact>*", 0, AnyArgumentCount);
}

void TAssertFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  int Id = -1;
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) {
    // The parsed fact stays as written: each assertion evaluates a copy.
    IFact Fact = FunCall.Argument(I, Context)->GetAsFact()->ResolvedCopy(ScopeOf(Context));
    Id = Engine.Assert(Fact, false);
  }
  if (Id == -1)
    Result = FCFalse;
  else
    Result = Make<TTavoValue>(Id, dtFactId);
}

void TResetFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).Reset();
  Result = FCTrue;
}

TAVO_SETUP void TClearFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"clear", u"Removes all knowledge but the built-in functions and the globals", u"", 0, 0);
}

void TClearFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).Clear();
  Result = FCTrue;
}

// format, read, readline

TAVO_SETUP void TFormatFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"format", u"Formats the expressions by the control string and prints the text unless the logical name is nil",
              u"<logical-name> <string-expression> <expression>*", 2, AnyArgumentCount);
}

void TFormatFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  ITavoValue OutID = FunCall.EvaluateArgument(0, Context);
  String Control = FunCall.Argument(1, Context)->GetAsString();
  IValueVector Items = Make<TValueVector>();
  for (int I = 2; I < FunCall.GetArgumentCount(); ++I) Items->Add(FunCall.EvaluateArgument(I, Context));
  String Text = CLIPSFormat(Control, Items);
  if (!OutID->Equals(FCNil)) EngineOf(FunCall, Context).PrintOut(OutID->GetAsString(), Text);
  Result = Make<TTavoValue>(Text, dtString);
}

namespace {

String InputName(TFunctionCall& FunCall, TTavoContext* Context) {
  return FunCall.GetArgumentCount() > 0 ? FunCall.Argument(0, Context)->GetAsString() : String(u"t");
}

}  // namespace

TAVO_SETUP void TReadFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"read", u"Reads one token from the logical name, standard input by default", u"[<logical-name>]", 0, 1);
}

void TReadFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = EngineOf(FunCall, Context).ReadToken(InputName(FunCall, Context))->Value();
}

TAVO_SETUP void TReadLineFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"readline", u"Reads one line from the logical name, standard input by default", u"[<logical-name>]", 0, 1);
}

// With no input left the answer is the end-of-file symbol, as read gives.
// The engine's ReadLine gives an empty line at the end of a stream, which
// cannot be told from an empty line of the text, so the end of the stream
// it would read (a named one, else the batch being read) is tested here
// first. A host's OnReadLine reports its end as that symbol's text.
void TReadLineFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  String Name = InputName(FunCall, Context);
  TGTextStream* Source = nullptr;
  if (Name != u"t" && !Name.empty())
    if (TGTextStream* const* Stream = Engine.GetIOStreams()->Find(Name)) Source = *Stream;
  if (!Source) Source = Engine.GetInputStream();
  if (Source && Source->IsEof()) {
    Result = FCEOF;
    return;
  }
  String Line = Engine.ReadLine(Name);
  Result = Line == FCEOF->GetText() ? FCEOF : Make<TTavoValue>(std::move(Line), dtString);
}

// TStandardPackage

void TStandardPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TIfFunction>());
  Functions.Add(Make<TWhileFunction>());
  Functions.Add(Make<TForEachFunction>());
  Functions.Add(Make<TTryFunction>());
  Functions.Add(Make<TThrowFunction>());
  Functions.Add(Make<TReturnFunction>());
  Functions.Add(Make<TBindFunction>());
  Functions.Add(Make<TAndFunction>());
  Functions.Add(Make<TOrFunction>());
  Functions.Add(Make<TNotFunction>());
  Functions.Add(Make<TEqFunction>());
  Functions.Add(Make<TEqStarFunction>());
  Functions.Add(Make<TNeqFunction>());
  Functions.Add(Make<TEqualsFunction>());
  Functions.Add(Make<TNotEqualsFunction>());
  Functions.Add(Make<TGtFunction>());
  Functions.Add(Make<TGtOrEqFunction>());
  Functions.Add(Make<TLtFunction>());
  Functions.Add(Make<TLtOrEqFunction>());
  Functions.Add(Make<TExtractGlobalFunction>());
  Functions.Add(Make<TGenSymStarFunction>());
  Functions.Add(Make<TStoreFunction>());
  Functions.Add(Make<TFetchFunction>());
  Functions.Add(Make<TClearStorageFunction>());
  Functions.Add(Make<TRunFunction>());
  Functions.Add(Make<THaltFunction>());
  Functions.Add(Make<TExitFunction>());
  Functions.Add(Make<TVersionFunction>());
  Functions.Add(Make<TFocusModuleFunction>(fmfFocus));
  Functions.Add(Make<TFocusModuleFunction>(fmfClearFocusStack));
  Functions.Add(Make<TFocusModuleFunction>(fmfGetFocus));
  Functions.Add(Make<TFocusModuleFunction>(fmfGetFocusStack));
  Functions.Add(Make<TFocusModuleFunction>(fmfPopFocus));
  Functions.Add(Make<TCurrentModuleFunction>(cmfGetCurrentModule));
  Functions.Add(Make<TCurrentModuleFunction>(cmfSetCurrentModule));
  Functions.Add(Make<TWatchFunction>());
  Functions.Add(Make<TUnwatchFunction>());
  Functions.Add(Make<TAssertFunction>());
  Functions.Add(Make<TAssertStringFunction>());
  Functions.Add(Make<TRetractFunction>());
  Functions.Add(Make<TRetractStringFunction>());
  Functions.Add(Make<TModifyFunction>());
  Functions.Add(Make<TDuplicateFunction>());
  Functions.Add(Make<TGetSlotValueFunction>());
  Functions.Add(Make<TGetFactDuplicationFunction>());
  Functions.Add(Make<TSetFactDuplicationFunction>());
  Functions.Add(Make<TDoBackwardChainingFunction>());
  Functions.Add(Make<TResetFunction>());
  Functions.Add(Make<TClearFunction>());
  Functions.Add(Make<TLoadFunction>());
  Functions.Add(Make<TSaveFunction>());
  Functions.Add(Make<TLoadFactsFunction>());
  Functions.Add(Make<TSaveFactsFunction>());
  Functions.Add(Make<TPrintOutFunction>());
  Functions.Add(Make<TFormatFunction>());
  Functions.Add(Make<TReadFunction>());
  Functions.Add(Make<TReadLineFunction>());
  Functions.Add(Make<TOpenFunction>());
  Functions.Add(Make<TCloseFunction>());
  Functions.Add(Make<TBatchFunction>());
  Functions.Add(Make<TDribbleOnFunction>());
  Functions.Add(Make<TDribbleOffFunction>());
  Functions.Add(Make<TRemoveFunction>());
  Functions.Add(Make<TRenameFunction>());
  for (int Type = fftIsFileExists; Type <= fftReplaceFilePath; ++Type)
    Functions.Add(Make<TFileFunction>(TFileFunctionType(Type)));
  for (int Type = dftGetCurrentDir; Type <= dftDirDelim; ++Type)
    Functions.Add(Make<TDirectoryFunction>(TDirectoryFunctionType(Type)));
  for (int Type = pftGetHomePath; Type <= pftGetTempPath; ++Type)
    Functions.Add(Make<TPathFunction>(TPathFunctionType(Type)));
  for (int Type = osvGetOSName; Type <= osvGetOSMinorVersion; ++Type)
    Functions.Add(Make<TOSVersionFunction>(TOSVersionFunctionType(Type)));
  Functions.Add(Make<TCreateMFFunction>());
  Functions.Add(Make<TDeleteMFFunction>());
  Functions.Add(Make<TExplodeMFFunction>());
  Functions.Add(Make<TFirstMFFunction>());
  Functions.Add(Make<TImplodeMFFunction>());
  Functions.Add(Make<TInsertMFFunction>());
  Functions.Add(Make<TLengthMFFunction>());
  Functions.Add(Make<TMemberFunction>());
  Functions.Add(Make<TMemberMFFunction>());
  Functions.Add(Make<TNthMFFunction>());
  Functions.Add(Make<TReplaceMFFunction>());
  Functions.Add(Make<TRestMFFunction>());
  Functions.Add(Make<TSubSeqMFFunction>());
  Functions.Add(Make<TSubSetpMFFunction>());
}

}  // namespace tavo
