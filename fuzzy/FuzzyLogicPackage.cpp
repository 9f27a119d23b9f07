#include "fuzzy/FuzzyLogicPackage.h"

#include <algorithm>
#include <cmath>

#include "engine/InferenceEngine.h"

namespace tavo {

namespace {

constexpr char16_t SFuzzySourceSyntax[] = u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression>";
constexpr char16_t SUniverseSourceSyntax[] =
    u" <fuzzy-type-expression> | <fuzzy-fact-expression> | <fuzzy-fact-id-expression>";

// The columns and the rows above the zero row of a plot.
constexpr int PlotColumns = 50;
constexpr int PlotRows = 20;
constexpr char16_t SPlotRuler[] = u"    |----|----|----|----|----|----|----|----|----|----|";
constexpr char16_t SPlotScale[] = u"%7.2f %9.2f %9.2f %9.2f %9.2f %9.2f";
// The mark of a plot given no characters at all.
constexpr char16_t DefaultPlotChar = u'*';

// Every curve of a shape function is made of this many steps a half.
constexpr int ShapeSteps = 7;

ITavoValue FloatValue(double Value) { return Make<TTavoValue>(Value); }
ITavoValue AtomValue(const String& Text) { return Make<TTavoValue>(Text, dtAtom); }
const ITavoValue& BooleanValue(bool Value) { return Value ? FCTrue : FCFalse; }
// A boolean argument: anything but FALSE turns a setting on.
bool IsOn(const ITavoValue& Value) { return !(Value && Value->Equals(FCFalse)); }

TTavoContext& ScopeOf(TTavoContext* Context) {
  if (!Context) throw ETavoException(Format(SNoContext, GetTavoTypeName(dtVariable)));
  return *Context;
}

// The names of the tags of Types in enumeration order, for SInvalidArgType.
String TypeNames(TTavoTypes Types) {
  String Result;
  Types.ForEach([&](TTavoType Type) {
    if (!Result.empty()) Result += u", ";
    Result += GetTavoTypeName(Type);
  });
  return Result;
}

[[noreturn]] void InvalidArgument(const ITavoValue& Value, TTavoTypes Accepted) {
  throw ETavoException(
      Format(SInvalidArgType, Value ? GetTavoTypeName(Value->GetDType()) : String(GetTavoTypeName(dtNone)),
             TypeNames(Accepted)));
}

// The fact of an id, or SNoSuchFact.
IFact FactOfId(TInferenceEngine& Engine, const ITavoValue& Id) {
  const int32_t Number = Id->GetAsInteger();
  IFact Fact = Engine.GetFacts()->GetFactByID(Number);
  if (!Fact) throw ETavoException(Format(SNoSuchFact, IntToStr(Number)));
  return Fact;
}

// The variable of a fuzzy defined type of the current module, or
// SUnknownTypeName.
IFuzzyVariable TypeVariable(TInferenceEngine& Engine, const ITavoValue& Name) {
  const String Text = Name->GetAsString();
  ITavoDefinedType Type = Engine.FindDefinedType(Text);
  if (!Type || !Type->GetFuzzyType()) throw ETavoException(Format(SUnknownTypeName, Text));
  return Type->GetFuzzyType();
}

// The variable a set belongs to, or SUndefinedFuzzyVariable.
IFuzzyVariable VariableOfSet(const IFuzzySet& Set) {
  if (!Set->GetVariable()) throw ETavoException(SUndefinedFuzzyVariable);
  return IFuzzyVariable(Set->GetVariable());
}

// The variable of a fact's first fuzzy slot: its type's, else that of the
// set it holds.
IFuzzyVariable FactVariable(const IFact& Fact) {
  const IFactTemplate& Template = Fact->GetTemplate();
  const ISlotLayout& Layout = Template ? Template->GetLayout() : ISlotLayout();
  for (int I = 0; Layout && I < Layout->Count(); ++I)
    if (Layout->GetSlot(I)->IsFuzzy()) {
      if (IFuzzyVariable Variable = Layout->GetSlot(I)->GetFuzzyVariable()) return Variable;
      break;
    }
  IFuzzySet Set = GetFuzzySlot(Fact);
  if (!Set) throw ETavoException(SNotFuzzyFact);
  return VariableOfSet(Set);
}

// Sets the engine's inference method for the time of one fuzzy assertion.
class TInferenceMethodScope {
 public:
  TInferenceMethodScope(TInferenceEngine& Engine, TFuzzyInferenceMethod Method)
      : FEngine(Engine), FFormer(Engine.GetFuzzyInferenceMethod()) {
    Engine.SetFuzzyInferenceMethod(Method);
  }
  ~TInferenceMethodScope() { FEngine.SetFuzzyInferenceMethod(FFormer); }
  TInferenceMethodScope(const TInferenceMethodScope&) = delete;
  TInferenceMethodScope& operator=(const TInferenceMethodScope&) = delete;

 private:
  TInferenceEngine& FEngine;
  TFuzzyInferenceMethod FFormer;
};

}  // namespace

// Reading sets

IFuzzySet GetFuzzySlot(const IFact& Fact) {
  const IFactTemplate& Template = Fact->GetTemplate();
  if (!Template) return nullptr;
  const ISlotLayout& Layout = Template->GetLayout();
  for (int I = 0; I < Layout->Count(); ++I) {
    const IFactSlot& Slot = Layout->GetSlot(I);
    if (!Slot->IsFuzzy()) continue;
    const ITavoValue& Value = Fact->GetValueAt(I);
    if (!Value) return nullptr;
    switch (Value->GetDType()) {
      case dtList: {
        const IValueVector& Items = Value->GetAsList();
        if (Items->GetValueCount() == 0 || !Items->Get(0)) return nullptr;
        return Items->Get(0)->GetAsFuzzy();
      }
      case dtInteger:
      case dtFloat: {
        IReasoner* Reasoner = Template->GetReasoner();
        if (!Reasoner) throw ETavoException(SUnknownEngine);
        return Reasoner->EvalFuzzyExpression(Slot->GetFuzzyVariable(), Value, nullptr)->GetAsFuzzy();
      }
      default:
        return Value->GetAsFuzzy();
    }
  }
  return nullptr;
}

IFuzzySet GetFuzzySetFromValue(TInferenceEngine& Engine, const ITavoValue& Value, TTavoContext* Context) {
  const ITavoValue Resolved = Value ? Value->Resolve(Context) : FCNil;
  IFact Fact;
  switch (Resolved->GetDType()) {
    case dtInteger:
    case dtFactId:
      Fact = FactOfId(Engine, Resolved);
      break;
    case dtFact:
      Fact = Resolved->GetAsFact();
      break;
    default:
      return Resolved->GetAsFuzzy();
  }
  IFuzzySet Set = GetFuzzySlot(Fact);
  if (!Set) throw ETavoException(SNotFuzzyFact);
  return Set;
}

// Plots

String FuzzyPlotText(const std::vector<IFuzzySet>& Sets, const String& Chars, double From, double To) {
  std::vector<String> Rows(PlotRows + 1, String(PlotColumns, u' '));
  const double Step = (To - From) / double(PlotColumns);
  String Legend;
  TIFuzzyVariable* Variable = nullptr;
  for (size_t I = 0; I < Sets.size(); ++I) {
    const TIFuzzySet& Set = *Sets[I];
    const char16_t Mark = Chars.empty() ? DefaultPlotChar : I < Chars.size() ? Chars[I] : Chars.back();
    Legend += u' ' + Set.GetName() + u'(' + Mark + u')';
    if (!Variable) Variable = Set.GetVariable();
    double X = From;
    for (int Column = 0; Column < PlotColumns; ++Column, X += Step) {
      const double Degree = std::clamp(Set.DegreeOfMembership(X), 0.0, 1.0);
      Rows[size_t(std::lround(Degree * PlotRows))][size_t(Column)] = Mark;
    }
  }
  String Text;
  if (Variable) Text += u"Fuzzy Variable: " + Variable->GetName() + u"\r\n";
  Text += u"Fuzzy Values:" + Legend + u"\r\n\r\n";
  for (int Row = PlotRows; Row >= 0; --Row)
    Text += Format(FuzzyFormatStr, double(Row) / PlotRows) + Rows[size_t(Row)] + u"\r\n";
  Text += String(SPlotRuler) + u"\r\n";
  const double Part = (To - From) / 5.0;
  Text += Format(SPlotScale, From, From + Part, From + 2 * Part, From + 3 * Part, From + 4 * Part, To) + u"\r\n\r\n";
  if (Variable)
    Text += Format(u"Universe of Discourse: From %0.2f to %.2f", Variable->GetMinimum(), Variable->GetMaximum()) +
            u"\r\n";
  return Text;
}

void PlotFuzzySet(TInferenceEngine& Engine, const String& Stream, const std::vector<IFuzzySet>& Sets,
                  const String& Chars, double From, double To) {
  Engine.PrintOut(Stream, FuzzyPlotText(Sets, Chars, From, To));
}

void PlotFuzzySet(TInferenceEngine& Engine, const String& Stream, const IFuzzySet& Set, const String& Chars,
                  double From, double To) {
  PlotFuzzySet(Engine, Stream, std::vector<IFuzzySet>{Set}, Chars, From, To);
}

// Families

TAVO_SETUP void TFuzzyFamilyFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetKindIndex(FKind);
}

void TFuzzyFamilyFunction::SetKindIndex(int Value) {
  if (Value < 0 || size_t(Value) >= FKinds.size()) throw EMekException(Format(SListIndexError, Value));
  FKind = Value;
  SetKindMetaData(*this, FKinds, Value);
}

void TFuzzyFamilyFunction::SetFunctionName(const String& Value) {
  TTavoUserFunction::SetFunctionName(Value);
  for (size_t I = 0; I < FKinds.size(); ++I)
    if (int(I) != FKind && Value == FKinds[I].Name) {
      SetKindIndex(int(I));
      return;
    }
}

void TFuzzyFamilyFunction::Assign(const TPersistent* Source) {
  const auto* Function = dynamic_cast<const TFuzzyFamilyFunction*>(Source);
  if (Function && Function->FKinds.data() == FKinds.data()) FKind = Function->FKind;
  TTavoUserFunction::Assign(Source);
}

// create-fuzzy-value

TAVO_SETUP void TCreateFuzzySetFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"create-fuzzy-value",
              u"Returns the fuzzy value of the fuzzy type (or of the fuzzy value's variable) that the expression "
              u"over its terms stands for",
              u" <fuzzy-variable-expression> <fuzzy-set-expression>", 2, AnyArgumentCount);
}

void TCreateFuzzySetFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const ITavoValue Source = FunCall.EvaluateArgument(0, Context);
  IFuzzyVariable Variable;
  switch (Source->GetDType()) {
    case dtAtom:
    case dtString:
      Variable = TypeVariable(Engine, Source);
      break;
    case dtFuzzy:
      Variable = VariableOfSet(Source->GetAsFuzzy());
      break;
    default:
      InvalidArgument(Source, {dtAtom, dtString, dtFuzzy});
  }
  // The expression as written: the evaluation resolves what it needs.
  IValueVector Expression = Make<TValueVector>();
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) Expression->Add(FunCall.GetArgument(I));
  Result = Engine.EvalFuzzyExpression(Variable, Make<TTavoValue>(Expression), Context);
  // A set made by a call belongs to no variable yet; it joins this one as a
  // copy, since the call may have given a set held elsewhere.
  if (Result && Result->GetDType() == dtFuzzy && !Result->GetAsFuzzy()->GetVariable()) {
    IFuzzySet Set = Result->GetAsFuzzy()->CloneSet();
    Set->SetVariable(Variable.Get());
    Result = Make<TTavoValue>(Set);
  }
}

// fuzzy-assert, fuzzy-assert-unconditional

namespace {

constexpr TFuzzyFunctionKind AssertKinds[] = {
    {u"fuzzy-assert",
     u"Asserts each fact; an equal fuzzy fact is united with it by the inference method named first, or the "
     u"engine's. Returns the id of the last fact asserted, or FALSE",
     u" [<fuzzy-inference-name>] <fact>+", 1, AnyArgumentCount},
    {u"fuzzy-assert-unconditional",
     u"Asserts each fact; an equal fuzzy fact is intersected with it by the inference method named first. "
     u"Returns the id of the last fact asserted, or FALSE",
     u" <fuzzy-inference-name> <fact>+", 1, AnyArgumentCount},
};

}  // namespace

TFuzzyAssertFunction::TFuzzyAssertFunction(TFuzzyAssertFunctionType Type) : TFuzzyFamilyFunction(Type, AssertKinds) {}

void TFuzzyAssertFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const bool Unconditional = GetType() == fafAssertUnconditional;
  TFuzzyInferenceMethod Method = Engine.GetFuzzyInferenceMethod();
  const ITavoValue Head = FunCall.EvaluateArgument(0, Context);
  int First = 0;
  if (TavoStringTypes.Contains(Head->GetDType())) {
    if (!IsFuzzyInference(Head->GetText(), Method))
      throw ETavoException(Format(SInvalidFuzzyInference, Head->GetText(), FuzzyInferenceSuffixNameList));
    First = 1;
  } else if (Unconditional) {
    throw ETavoException(Format(SInvalidFuzzyInference, Head->ToString(), FuzzyInferenceSuffixNameList));
  }
  TInferenceMethodScope Scope(Engine, Method);
  int Last = -1;
  for (int I = First; I < FunCall.GetArgumentCount(); ++I) {
    // The parsed fact stays as written: each assertion evaluates a copy.
    const ITavoValue Argument = I == 0 ? Head : FunCall.EvaluateArgument(I, Context);
    IFact Fact = Argument->GetAsFact()->ResolvedCopy(ScopeOf(Context));
    if (const int Id = Engine.Assert(Fact, Unconditional); Id != -1) Last = Id;
  }
  Result = Last == -1 ? FCFalse : Make<TTavoValue>(Last, dtFactId);
}

// fuzzy-union, fuzzy-intersection

namespace {

constexpr TFuzzyFunctionKind OperationKinds[] = {
    {u"fuzzy-union", u"Returns the union of the fuzzy values by the zadeh operation",
     u" <fuzzy-value-expression> <fuzzy-value-expression>+", 2, AnyArgumentCount},
    {u"fuzzy-union-x", u"Returns the union of the fuzzy values by the operation named first",
     u" <fuzzy-union-type-expression> <fuzzy-value-expression> <fuzzy-value-expression>+", 3, AnyArgumentCount},
    {u"fuzzy-intersection", u"Returns the intersection of the fuzzy values by the zadeh operation",
     u" <fuzzy-value-expression> <fuzzy-value-expression>+", 2, AnyArgumentCount},
    {u"fuzzy-intersection-x", u"Returns the intersection of the fuzzy values by the operation named first",
     u" <fuzzy-intersection-type-expression> <fuzzy-value-expression> <fuzzy-value-expression>+", 3,
     AnyArgumentCount},
};

}  // namespace

TFuzzyOperationFunction::TFuzzyOperationFunction(TFuzzyOperationFunctionType Type)
    : TFuzzyFamilyFunction(Type, OperationKinds) {}

void TFuzzyOperationFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const TFuzzyOperationFunctionType Type = GetType();
  const bool Union = Type == fofFuzzyUnion || Type == fofFuzzyUnionX;
  TFuzzyOperation Operation = foZadeh;
  int First = 0;
  if (Type == fofFuzzyUnionX || Type == fofFuzzyIntersectionX) {
    const String Name = FunCall.Argument(0, Context)->GetAsString();
    if (!IsFuzzyOperation(Name, Operation))
      throw ETavoException(
          Format(SInvalidTavoFuzzyOperation, Name, GetFunctionName(), JoinFuzzyNames(FuzzyOperationNames)));
    First = 1;
  }
  // The first set is never changed: the engine combines into a copy.
  Result = Make<TTavoValue>(GetFuzzySetFromValue(Engine, FunCall.GetArgument(First), Context));
  for (int I = First + 1; I < FunCall.GetArgumentCount(); ++I) {
    const ITavoValue Other = Make<TTavoValue>(GetFuzzySetFromValue(Engine, FunCall.GetArgument(I), Context));
    if (Union)
      Engine.FuzzyUnion(Result, Other, Operation);
    else
      Engine.FuzzyIntersection(Result, Other, Operation);
  }
}

// get-fs and the rest

namespace {

constexpr TFuzzyFunctionKind GetKinds[] = {
    {u"get-fs", u"Returns the points of the fuzzy set", SFuzzySourceSyntax, 1, 1},
    {u"get-fs-length", u"Returns the number of points of the fuzzy set", SFuzzySourceSyntax, 1, 1},
    {u"get-fs-x", u"Returns the x of the point of the fuzzy set at the index, from 0",
     u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression> <integer-expression> ", 2, 2},
    {u"get-fs-y", u"Returns the membership of the point of the fuzzy set at the index, from 0",
     u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression> <integer-expression> ", 2, 2},
    {u"get-fs-variable", u"Returns the name of the fuzzy variable of the fuzzy set, or nil when it has none",
     SFuzzySourceSyntax, 1, 1},
    {u"get-fs-value", u"Returns the membership of the number in the fuzzy set",
     u" <fact-expression> | <fact-id-expression> | <fuzzy-value-expression> <numeric-expression> ", 2, 2},
};

}  // namespace

TGetFuzzyFunction::TGetFuzzyFunction(TGetFuzzyFunctionType Type) : TFuzzyFamilyFunction(Type, GetKinds) {}

void TGetFuzzyFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const IFuzzySet Set = GetFuzzySetFromValue(Engine, FunCall.GetArgument(0), Context);
  switch (GetType()) {
    case gffGetFs: {
      ISingletonsVector Points = Make<TSingletonsVector>(dynamic_cast<ISingletonsParser*>(&Engine));
      for (int I = 0; I < Set->GetCount(); ++I) Points->Add(FloatValue(Set->GetX(I)), FloatValue(Set->GetY(I)));
      Result = Make<TTavoValue>(Points);
      break;
    }
    case gffGetFsLength:
      Result = Make<TTavoValue>(int32_t(Set->GetCount()), dtInteger);
      break;
    case gffGetFsX:
      Result = FloatValue(Set->GetX(FunCall.Argument(1, Context)->GetAsInteger()));
      break;
    case gffGetFsY:
      Result = FloatValue(Set->GetY(FunCall.Argument(1, Context)->GetAsInteger()));
      break;
    case gffGetFsVariable:
      Result = Set->GetVariable() ? AtomValue(Set->GetVariable()->GetName()) : FCNil;
      break;
    case gffGetFsValue:
      Result = FloatValue(Set->DegreeOfMembership(FunCall.Argument(1, Context)->GetAsNumeric()));
      break;
  }
}

// get-u and the rest

namespace {

constexpr TFuzzyFunctionKind UniverseKinds[] = {
    {u"get-u", u"Returns the universe of discourse of the fuzzy variable as text: from, to and units",
     SUniverseSourceSyntax, 1, 1},
    {u"get-u-from", u"Returns the lower limit of the universe of discourse of the fuzzy variable",
     SUniverseSourceSyntax, 1, 1},
    {u"get-u-to", u"Returns the upper limit of the universe of discourse of the fuzzy variable",
     SUniverseSourceSyntax, 1, 1},
    {u"get-u-units", u"Returns the units of the universe of discourse of the fuzzy variable", SUniverseSourceSyntax,
     1, 1},
};

}  // namespace

TUniverseOfDiscourseFunction::TUniverseOfDiscourseFunction(TUniverseOfDiscourseType Type)
    : TFuzzyFamilyFunction(Type, UniverseKinds) {}

void TUniverseOfDiscourseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const ITavoValue Source = FunCall.EvaluateArgument(0, Context);
  IFuzzyVariable Variable;
  switch (Source->GetDType()) {
    case dtAtom:
    case dtString:
      Variable = TypeVariable(Engine, Source);
      break;
    case dtFuzzy:
      Variable = VariableOfSet(Source->GetAsFuzzy());
      break;
    case dtInteger:
    case dtFactId:
      Variable = FactVariable(FactOfId(Engine, Source));
      break;
    case dtFact:
      Variable = FactVariable(Source->GetAsFact());
      break;
    default:
      InvalidArgument(Source, {dtAtom, dtString, dtInteger, dtFactId, dtFact, dtFuzzy});
  }
  switch (GetType()) {
    case uodGet:
      Result = Make<TTavoValue>(
          Format(u"%.4f - %.4f %s", Variable->GetMinimum(), Variable->GetMaximum(), Variable->GetUnits()), dtString);
      break;
    case uodGetFrom:
      Result = FloatValue(Variable->GetMinimum());
      break;
    case uodGetTo:
      Result = FloatValue(Variable->GetMaximum());
      break;
    case uodGetUnits:
      Result = Make<TTavoValue>(Variable->GetUnits(), dtString);
      break;
  }
}

// The engine's fuzzy settings

namespace {

constexpr TFuzzyFunctionKind AutoTermsKinds[] = {
    {u"get-fuzzy-auto-terms", u"Returns TRUE when new fuzzy types get the terms low, medium and high", u"", 0, 0},
    {u"set-fuzzy-auto-terms",
     u"Lets new fuzzy types get the terms low, medium and high (TRUE), or not; returns the former setting",
     u" <boolean-expression>", 1, 1},
};

constexpr TFuzzyFunctionKind ThresholdKinds[] = {
    {u"get-fuzzy-threshold", u"Returns the membership at or under which fuzzy values do not match", u"", 0, 0},
    {u"set-fuzzy-threshold",
     u"Sets the membership at or under which fuzzy values do not match, from 0 to 1; returns the former one",
     u" <numeric-expression>", 1, 1},
};

constexpr TFuzzyFunctionKind ActivationKinds[] = {
    {u"get-activation-threshold", u"Returns the strength under which a fuzzy match activates no rule", u"", 0, 0},
    {u"set-activation-threshold",
     u"Sets the strength under which a fuzzy match activates no rule, from 0 to 1; returns the former one",
     u" <numeric-expression>", 1, 1},
};

constexpr TFuzzyFunctionKind CorrelationKinds[] = {
    {u"get-fuzzy-correlation", u"Returns the name of the method by which a rule's strength shapes what it asserts",
     u"", 0, 0},
    {u"set-fuzzy-correlation",
     u"Sets the method by which a rule's strength shapes what it asserts, minimum or product; returns the former "
     u"one",
     u" <fuzzy-correlation-name>", 1, 1},
};

constexpr TFuzzyFunctionKind InferenceKinds[] = {
    {u"get-fuzzy-inference", u"Returns the name of the method by which a new fuzzy fact merges with an equal one",
     u"", 0, 0},
    {u"set-fuzzy-inference",
     u"Sets the method by which a new fuzzy fact merges with an equal one, min-max, sum, mean, product or "
     u"bounded-sum; returns the former one",
     u" <fuzzy-inference-name>", 1, 1},
};

}  // namespace

TRWFuzzyAutoTerms::TRWFuzzyAutoTerms(TFuzzyAutoTermsType Type) : TFuzzyFamilyFunction(Type, AutoTermsKinds) {}

void TRWFuzzyAutoTerms::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Result = BooleanValue(Engine.GetFuzzyAutoTerms());
  if (GetType() == fatSetFuzzyAutoTerms) Engine.SetFuzzyAutoTerms(IsOn(FunCall.EvaluateArgument(0, Context)));
}

TRWFuzzyThresholdFunction::TRWFuzzyThresholdFunction(TFuzzyThresholdType Type)
    : TFuzzyFamilyFunction(Type, ThresholdKinds) {}

void TRWFuzzyThresholdFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Result = FloatValue(Engine.GetFuzzyEqualsThreshold());
  if (GetType() == ftfSetFuzzyThreshold)
    Engine.SetFuzzyEqualsThreshold(float(FunCall.Argument(0, Context)->GetAsNumeric()));
}

TRWActivationThresholdFunction::TRWActivationThresholdFunction(TActivationThresholdType Type)
    : TFuzzyFamilyFunction(Type, ActivationKinds) {}

void TRWActivationThresholdFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Result = FloatValue(Engine.GetMinActivationStrength());
  if (GetType() == atfSetActivationThreshold)
    Engine.SetMinActivationStrength(float(FunCall.Argument(0, Context)->GetAsNumeric()));
}

TRWFuzzyCorrelationFunction::TRWFuzzyCorrelationFunction(TFuzzyCorrelationFunctionType Type)
    : TFuzzyFamilyFunction(Type, CorrelationKinds) {}

void TRWFuzzyCorrelationFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const ITavoValue Former = AtomValue(FuzzyCorrelationNames[Engine.GetFuzzyCorrelationMethod()]);
  if (GetType() == fcfSetCorrelation) {
    const String Name = FunCall.Argument(0, Context)->GetAsString();
    TFuzzyCorrelationMethod Method;
    if (!IsFuzzyCorrelation(Name, Method))
      throw ETavoException(Format(SInvalidFuzzyCorrelation, Name, FuzzyCorrelationSuffixNameList));
    Engine.SetFuzzyCorrelationMethod(Method);
  }
  Result = Former;
}

TRWFuzzyInferenceFunction::TRWFuzzyInferenceFunction(TFuzzyInferenceFunctionType Type)
    : TFuzzyFamilyFunction(Type, InferenceKinds) {}

void TRWFuzzyInferenceFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const ITavoValue Former = AtomValue(FuzzyInferenceNames[Engine.GetFuzzyInferenceMethod()]);
  if (GetType() == fifSetInference) {
    const String Name = FunCall.Argument(0, Context)->GetAsString();
    TFuzzyInferenceMethod Method;
    if (!IsFuzzyInference(Name, Method))
      throw ETavoException(Format(SInvalidFuzzyInference, Name, FuzzyInferenceSuffixNameList));
    Engine.SetFuzzyInferenceMethod(Method);
  }
  Result = Former;
}

// moment-defuzzify and the rest

namespace {

constexpr TFuzzyFunctionKind DefuzzifyKinds[] = {
    {u"moment-defuzzify", u"Returns the centre of gravity of the fuzzy set", SFuzzySourceSyntax, 1, 1},
    {u"maximum-defuzzify", u"Returns the mean of the points of the fuzzy set where its membership is largest",
     SFuzzySourceSyntax, 1, 1},
    {u"is-undecidable", u"Returns TRUE when the fuzzy set has nothing to defuzzify: no points or no area",
     u" <fact-id-expression> | <fact-expression> | <fuzzy-value-expression> ", 1, 1},
    {u"get-compatibility-index", u"Returns the height of the fuzzy set, its largest membership",
     u" <fact-id-expression> | <fact-expression> | <fuzzy-value-expression> ", 1, 1},
};

}  // namespace

TDefuzzifyFunction::TDefuzzifyFunction(TDefuzzifyFunctionType Type) : TFuzzyFamilyFunction(Type, DefuzzifyKinds) {}

void TDefuzzifyFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const IFuzzySet Set = GetFuzzySetFromValue(Engine, FunCall.GetArgument(0), Context);
  switch (GetType()) {
    case dftMoment:
      Result = FloatValue(Set->MomentDefuzzify());
      break;
    case dftMaximum:
      Result = FloatValue(Set->MaximumDefuzzify());
      break;
    case dftUndecidable:
      // A set tells only once it has been defuzzified.
      Set->MomentDefuzzify();
      Result = BooleanValue(Set->Undecidable());
      break;
    case dftCompatibilityIndex:
      Result = FloatValue(Set->GetCompatibilityIndex());
      break;
  }
}

// plot-fuzzy-value

TAVO_SETUP void TPlotFuzzySetFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"plot-fuzzy-value",
              u"Plots the fuzzy values from the lower to the upper limit to the logical name, each with its "
              u"character of the plot characters",
              u" <io-stream-identifier-string-expression> <plot-chars-string-expression> "
              u"<low-limit-numeric-expression> <high-limit-numeric-expression> <fuzzy-value-expression>+",
              5, AnyArgumentCount);
}

void TPlotFuzzySetFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String Stream = FunCall.Argument(0, Context)->GetAsString();
  const String Chars = FunCall.Argument(1, Context)->GetAsString();
  const double From = FunCall.Argument(2, Context)->GetAsNumeric();
  const double To = FunCall.Argument(3, Context)->GetAsNumeric();
  std::vector<IFuzzySet> Sets;
  for (int I = 4; I < FunCall.GetArgumentCount(); ++I) {
    // A list, as a fuzzy multislot holds, plots each of its members.
    const ITavoValue Value = FunCall.EvaluateArgument(I, Context);
    if (Value->GetDType() == dtList) {
      for (const ITavoValue& Item : *Value->GetAsList()) Sets.push_back(GetFuzzySetFromValue(Engine, Item, Context));
    } else {
      Sets.push_back(GetFuzzySetFromValue(Engine, Value, Context));
    }
  }
  PlotFuzzySet(Engine, Stream, Sets, Chars, From, To);
  Result = FCNil;
}

// s, z, pi, tri, beta

namespace {

constexpr TFuzzyFunctionKind ShapeKinds[] = {
    {u"s", u"Returns a fuzzy set rising from 0 at the first number to 1 at the second, an s-curve",
     u" <numeric-expression> <numeric-expression> ", 2, 2},
    {u"z", u"Returns a fuzzy set falling from 1 at the first number to 0 at the second, a z-curve",
     u" <numeric-expression> <numeric-expression> ", 2, 2},
    {u"pi", u"Returns a bell-shaped fuzzy set around the center, of the range each side, or from left to right",
     u" <center-numeric-expression> <range-numeric-expression> | <left-numeric-expression> "
     u"<center-numeric-expression> <right-numeric-expression> ",
     2, 3},
    {u"tri", u"Returns a triangular fuzzy set, 0 at left and right and 1 at the center",
     u" <left-numeric-expression> <center-numeric-expression> <right-numeric-expression> ", 3, 3},
    {u"beta", u"Returns a beta-curve fuzzy set around the center, of the range each side",
     u" <center-numeric-expression> <range-numeric-expression> [ <inflection-numeric-expression> [ "
     u"<weight-numeric-expression> ]]",
     2, 4},
};

}  // namespace

TCreateFuzzyShapeFunction::TCreateFuzzyShapeFunction(TFuzzyShapeType Type) : TFuzzyFamilyFunction(Type, ShapeKinds) {}

void TCreateFuzzyShapeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  IFuzzySet Set = Make<TTavoFuzzySet>();
  if (IFuzzyParser* Parser = Context ? dynamic_cast<IFuzzyParser*>(Context->GetEngine()) : nullptr)
    Set->SetParser(Parser);
  auto Number = [&](int Index) { return FunCall.Argument(Index, Context)->GetAsNumeric(); };
  const int Count = FunCall.GetArgumentCount();
  const double A = Number(0);
  const double B = Number(1);
  const double Middle = A + (B - A) / 2;
  switch (GetType()) {
    case fsGrowthShape:
      Set->SCurve(ShapeSteps, true, A, B, Middle);
      break;
    case fsDeclineShape:
      Set->SCurve(ShapeSteps, false, A, B, Middle);
      break;
    case fsPIShape:
      if (Count == 2)
        Set->PI(ShapeSteps, B, A);
      else
        Set->PI(ShapeSteps, A, Number(2), B);
      break;
    case fsTriangleShape:
      Set->Triangle(A, B, Number(2));
      break;
    case fsBetaShape:
      // Without an inflection it lies midway between the center and the range.
      if (Count == 2)
        Set->Beta(ShapeSteps, B, A, B + (A - B) / 2);
      else if (Count == 3)
        Set->Beta(ShapeSteps, B, A, Number(2));
      else
        Set->Beta(ShapeSteps, B, A, Number(2), Number(3));
      break;
  }
  Result = Make<TTavoValue>(Set);
}

// The package

void TFuzzyLogicPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TCreateFuzzySetFunction>());
  for (TFuzzyAssertFunctionType Type : {fafAssert, fafAssertUnconditional})
    Functions.Add(Make<TFuzzyAssertFunction>(Type));
  for (TFuzzyOperationFunctionType Type : {fofFuzzyUnion, fofFuzzyUnionX, fofFuzzyIntersection, fofFuzzyIntersectionX})
    Functions.Add(Make<TFuzzyOperationFunction>(Type));
  for (TGetFuzzyFunctionType Type : {gffGetFs, gffGetFsLength, gffGetFsX, gffGetFsY, gffGetFsVariable, gffGetFsValue})
    Functions.Add(Make<TGetFuzzyFunction>(Type));
  for (TUniverseOfDiscourseType Type : {uodGet, uodGetFrom, uodGetTo, uodGetUnits})
    Functions.Add(Make<TUniverseOfDiscourseFunction>(Type));
  for (TFuzzyAutoTermsType Type : {fatGetFuzzyAutoTerms, fatSetFuzzyAutoTerms})
    Functions.Add(Make<TRWFuzzyAutoTerms>(Type));
  for (TFuzzyThresholdType Type : {ftfGetFuzzyThreshold, ftfSetFuzzyThreshold})
    Functions.Add(Make<TRWFuzzyThresholdFunction>(Type));
  for (TActivationThresholdType Type : {atfGetActivationThreshold, atfSetActivationThreshold})
    Functions.Add(Make<TRWActivationThresholdFunction>(Type));
  for (TFuzzyCorrelationFunctionType Type : {fcfGetCorrelation, fcfSetCorrelation})
    Functions.Add(Make<TRWFuzzyCorrelationFunction>(Type));
  for (TFuzzyInferenceFunctionType Type : {fifGetInference, fifSetInference})
    Functions.Add(Make<TRWFuzzyInferenceFunction>(Type));
  for (TDefuzzifyFunctionType Type : {dftMoment, dftMaximum, dftUndecidable, dftCompatibilityIndex})
    Functions.Add(Make<TDefuzzifyFunction>(Type));
  Functions.Add(Make<TPlotFuzzySetFunction>());
  for (TFuzzyShapeType Type : {fsGrowthShape, fsDeclineShape, fsPIShape, fsTriangleShape, fsBetaShape})
    Functions.Add(Make<TCreateFuzzyShapeFunction>(Type));
}

}  // namespace tavo
