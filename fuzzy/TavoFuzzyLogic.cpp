// The engine's fuzzy operations: evaluating fuzzy expressions into sets of
// a variable, the default terms, the correlation of a rule's strength into
// the facts it asserts, and the combining of a new fuzzy fact with an
// equal one.
#include <charconv>
#include <cmath>

#include "core/TavoContext.h"
#include "core/TavoFuzzy.h"
#include "engine/InferenceEngine.h"
#include "matching/ActivationAgenda.h"

namespace tavo {

namespace {

ITavoValue FuzzyValue(const IFuzzySet& Set) { return Make<TTavoValue>(Set); }

// The variable's term for no membership at all, made when it is missing.
ITavoValue EmptyTerm(TIFuzzyVariable& Variable) {
  if (TIFuzzySet* Term = Variable.FindFuzzySet(SEmptyFuzzy)) return FuzzyValue(IFuzzySet(Term));
  return FuzzyValue(Variable.NewFuzzySet(SEmptyFuzzy));
}

bool IsText(const ITavoValue& Value) {
  return Value && (Value->GetDType() == dtAtom || Value->GetDType() == dtString);
}

bool IsNumber(const ITavoValue& Value) {
  return Value && (Value->GetDType() == dtInteger || Value->GetDType() == dtFloat);
}

// Whether a word of an expression is an operator: a hedge, a hedge with a
// number, or a keyword that combines two sets.
bool IsOperatorWord(const ITavoValue& Item) { return IsText(Item) && FuzzyPrecedence(Item->GetText()) > 0; }

// The words and values of an infix expression in postfix order: brackets
// group, and an operator leaves the stack for the output while the one on
// top binds more tightly. A bracket without its pair is let be.
std::vector<ITavoValue> ToPostfix(const IValueVector& Items) {
  std::vector<ITavoValue> Output;
  std::vector<ITavoValue> Stack;
  for (int I = 0; I < Items->GetValueCount(); ++I) {
    const ITavoValue& Item = Items->Get(I);
    if (!Item) continue;
    const TTavoType Type = Item->GetDType();
    if (IsText(Item) && Item->GetText() == u"[") {
      Stack.push_back(Item);
    } else if (IsText(Item) && Item->GetText() == u"]") {
      while (!Stack.empty() && !(IsText(Stack.back()) && Stack.back()->GetText() == u"[")) {
        Output.push_back(Stack.back());
        Stack.pop_back();
      }
      if (!Stack.empty()) Stack.pop_back();
    } else if (IsOperatorWord(Item)) {
      const int Precedence = FuzzyPrecedence(Item->GetText());
      while (!Stack.empty() && !(IsText(Stack.back()) && Stack.back()->GetText() == u"[") &&
             FuzzyPrecedence(Stack.back()->GetText()) > Precedence) {
        Output.push_back(Stack.back());
        Stack.pop_back();
      }
      Stack.push_back(Item);
    } else if (IsText(Item) || IsNumber(Item) || Type == dtVariable || Type == dtFunCall ||
               Type == dtSingletons || Type == dtMultiVariable) {
      Output.push_back(Item);
    } else if (Type == dtFuzzy) {
      // A hedge must not touch a shared term.
      Output.push_back(FuzzyValue(Item->GetAsFuzzy()->CloneSet()));
    } else {
      throw ETavoException(Format(SInvalidFuzzyToken, Item->ToString()));
    }
  }
  while (!Stack.empty()) {
    Output.push_back(Stack.back());
    Stack.pop_back();
  }
  return Output;
}

// A fuzzy value made anew, so that a change does not reach a shared set.
ITavoValue Detached(const ITavoValue& Value) { return FuzzyValue(Value->GetAsFuzzy()->CloneSet()); }

// The fuzzy operation that an inference method combines with.
TFuzzyOperation OperationOf(TFuzzyInferenceMethod Method) {
  switch (Method) {
    case fimSum:
      return foSum;
    case fimMean:
      return foMean;
    case fimProduct:
      return foProduct;
    case fimBoundedSum:
      return foBoundedSum;
    default:
      return foZadeh;
  }
}

}  // namespace

ITavoValue TInferenceEngine::EvalFuzzyExpression(const IFuzzyVariable& Variable, const ITavoValue& Value,
                                                 TTavoContext* Context) {
  if (!Value) {
    if (!Variable) throw ETavoException(SUndefinedFuzzyVariable);
    return EmptyTerm(*Variable);
  }
  switch (Value->GetDType()) {
    case dtFuzzy:
      return Value;
    case dtAtom:
    case dtString: {
      if (!Variable) throw ETavoException(SUndefinedFuzzyVariable);
      const String Text = Value->GetAsString();
      if (Text.empty() || Text == SEmptyFuzzy) return EmptyTerm(*Variable);
      if (TIFuzzySet* Term = Variable->FindFuzzySet(Text)) return FuzzyValue(IFuzzySet(Term));
      // A text of several words ("very hot") is an expression of its own.
      if (Text.find_first_of(u" \t\r\n[]") != String::npos) return EvalFuzzyExpression(Variable, Text, Context);
      throw ETavoException(Format(SInvalidFuzzyExpression, Text));
    }
    case dtInteger:
    case dtFloat: {
      // A crisp number is the set that is true at that number alone.
      IFuzzySet Set = Make<TTavoFuzzySet>(Variable.Get(), Value->ToString());
      Set->SetParser(this);
      const double X = Value->GetAsNumeric();
      Set->Triangle(X, X, X);
      return FuzzyValue(Set);
    }
    case dtVariable:
    case dtMultiVariable: {
      if (!Context) return Value;
      ITavoValue Bound = Value->Resolve(Context);
      if (Bound && Bound->GetDType() == dtFuzzy) Bound = Detached(Bound);
      return EvalFuzzyExpression(Variable, Bound, Context);
    }
    case dtFunCall:
      if (!Context) return Value;
      return EvalFuzzyExpression(Variable, Value->Resolve(Context), Context);
    case dtSingletons: {
      const ISingletonsVector& Points = Value->GetAsSingletons();
      if (!Context) {
        // Points that still hold variables or calls stay as they are, so
        // that a compiled rule computes them when it runs.
        for (int I = 0; I < Points->GetCount(); ++I)
          if (!IsNumber(Points->GetXValues(I)) || !IsNumber(Points->GetYValues(I))) return Value;
      }
      ITavoValue Result = Value->Resolve(Context);
      if (Result && Result->GetDType() == dtFuzzy && Variable && !Result->GetAsFuzzy()->GetVariable())
        Result->GetAsFuzzy()->SetVariable(Variable.Get());
      return Result;
    }
    case dtList:
      break;
    default:
      throw ETavoException(Format(SInvalidFuzzyExpression, Value->ToString()));
  }
  const IValueVector& Items = Value->GetAsList();
  if (Items->GetValueCount() == 0) return FCNilList;
  if (Items->GetValueCount() == 1) return EvalFuzzyExpression(Variable, Items->Get(0), Context);
  // Several expressions at once: a list of their sets.
  bool AllLists = true;
  for (int I = 0; I < Items->GetValueCount() && AllLists; ++I)
    AllLists = Items->Get(I) && Items->Get(I)->GetDType() == dtList;
  if (AllLists) {
    IValueVector Results = Make<TValueVector>();
    for (int I = 0; I < Items->GetValueCount(); ++I) {
      ITavoValue One = EvalFuzzyExpression(Variable, Items->Get(I), Context);
      if (One == FCNil) return FCNil;
      Results->Add(One);
    }
    return Make<TTavoValue>(Results);
  }
  // Numbers wait on the stack as numbers, for a hedge that takes one; any
  // other operand is a set by the time it is used.
  std::vector<ITavoValue> Stack;
  auto PopSet = [&](StringView Word) {
    if (Stack.empty()) throw ETavoException(Format(SMissingFuzzyOperand, Word));
    ITavoValue Operand = std::move(Stack.back());
    Stack.pop_back();
    if (Operand->GetDType() != dtFuzzy) Operand = EvalFuzzyExpression(Variable, Operand, Context);
    if (!Operand || Operand->GetDType() != dtFuzzy)
      throw ETavoException(Format(SInvalidFuzzyExpression, Operand ? Operand->ToString() : String(Word)));
    return Operand;
  };
  for (const ITavoValue& Item : ToPostfix(Items)) {
    TFuzzyHedge Hedge;
    TBaseFuzzyHedge BaseHedge;
    bool Union;
    TFuzzyOperation Operation;
    if (IsText(Item) && IsFuzzyHedge(Item->GetText(), Hedge)) {
      ITavoValue Operand = Detached(PopSet(Item->GetText()));
      Operand->GetAsFuzzy()->ApplyHedge(Hedge);
      Stack.push_back(Operand);
    } else if (IsText(Item) && IsFuzzyHedgeOperator(Item->GetText(), BaseHedge)) {
      if (Stack.empty() || !IsNumber(Stack.back()))
        throw ETavoException(Format(SMissingFuzzyOperand, Item->GetText()));
      const double Number = Stack.back()->GetAsNumeric();
      Stack.pop_back();
      ITavoValue Operand = Detached(PopSet(Item->GetText()));
      Operand->GetAsFuzzy()->Hedge(BaseHedge, Number);
      Stack.push_back(Operand);
    } else if (IsText(Item) && IsFuzzyKeyword(Item->GetText(), Union, Operation)) {
      ITavoValue Right = PopSet(Item->GetText());
      ITavoValue Left = Detached(PopSet(Item->GetText()));
      if (Union)
        Left->GetAsFuzzy()->Union(*Right->GetAsFuzzy(), Operation);
      else
        Left->GetAsFuzzy()->Intersection(*Right->GetAsFuzzy(), Operation);
      Stack.push_back(Left);
    } else if (IsNumber(Item)) {
      Stack.push_back(Item);
    } else {
      ITavoValue Operand = EvalFuzzyExpression(Variable, Item, Context);
      if (Operand == FCNil) return FCNil;
      Stack.push_back(Operand);
    }
  }
  if (Stack.size() != 1) throw ETavoException(Format(SInvalidFuzzyExpression, Value->ToString()));
  ITavoValue Result = Stack.back();
  if (Result->GetDType() != dtFuzzy) Result = EvalFuzzyExpression(Variable, Result, Context);
  return Result;
}

ITavoValue TInferenceEngine::EvalFuzzyExpression(const IFuzzyVariable& Variable, const String& Text,
                                                 TTavoContext* Context) {
  return EvalFuzzyExpression(Variable, ParseValue(Text), Context);
}

IFuzzySet TInferenceEngine::ParseFuzzyExpression(TIFuzzyVariable& Variable, const String& Text) {
  ITavoValue Result = EvalFuzzyExpression(IFuzzyVariable(&Variable), Text, nullptr);
  if (!Result || Result->GetDType() != dtFuzzy) throw ETavoException(Format(SInvalidFuzzyExpression, Text));
  return Result->GetAsFuzzy();
}

void TInferenceEngine::AddDefaultFuzzyTerms(TIFuzzyVariable& Variable) {
  const double Min = Variable.GetMinimum();
  const double Max = Variable.GetMaximum();
  if (!Variable.FindFuzzySet(SLowFuzzyTerm)) {
    IFuzzySet Low = Variable.NewFuzzySet(SLowFuzzyTerm);
    Low->AddPoint(Min, 1.0);
    Low->AddPoint(Max, 0.0);
  }
  // The centre is half the width of the universe, which lies left of its
  // middle for a universe that does not start at 0; it is kept so.
  if (!Variable.FindFuzzySet(SMediumFuzzyTerm)) Variable.NewFuzzySet(SMediumFuzzyTerm)->Triangle(Min, (Max - Min) / 2, Max);
  if (!Variable.FindFuzzySet(SHighFuzzyTerm)) {
    IFuzzySet High = Variable.NewFuzzySet(SHighFuzzyTerm);
    High->AddPoint(Min, 0.0);
    High->AddPoint(Max, 1.0);
  }
}

namespace {

// Value's set, cloned, combined with Other's and stored back in Value;
// lists member by member.
void CombineValues(const ITavoValue& Value, const ITavoValue& Other, TFuzzyOperation Operation, bool Union) {
  if (!Value || !Other) return;
  if (Value->GetDType() == dtList && Other->GetDType() == dtList) {
    const IValueVector& Mine = Value->GetAsList();
    const IValueVector& Theirs = Other->GetAsList();
    for (int I = 0; I < Mine->GetValueCount() && I < Theirs->GetValueCount(); ++I)
      CombineValues(Mine->Get(I), Theirs->Get(I), Operation, Union);
    return;
  }
  IFuzzySet Set = Value->GetAsFuzzy()->CloneSet();
  if (Union)
    Set->Union(*Other->GetAsFuzzy(), Operation);
  else
    Set->Intersection(*Other->GetAsFuzzy(), Operation);
  Value->SetAsFuzzy(Set);
}

}  // namespace

void TInferenceEngine::FuzzyIntersection(const ITavoValue& Value, const ITavoValue& Other, TFuzzyOperation Operation) {
  CombineValues(Value, Other, Operation, false);
}

void TInferenceEngine::FuzzyUnion(const ITavoValue& Value, const ITavoValue& Other, TFuzzyOperation Operation) {
  CombineValues(Value, Other, Operation, true);
}

void TInferenceEngine::FuzzyOperation(const IFact& Fact, const IFact& Other, bool Union) {
  const IFactTemplate& Template = Fact->GetTemplate();
  if (Template != Other->GetTemplate())
    throw ETavoException(Format(SInvalidFuzzyUnionTemplate, Template ? Template->GetTemplateName() : String(),
                                Other->GetTemplate() ? Other->GetTemplate()->GetTemplateName() : String()));
  if (!Template || !Template->IsFuzzy()) throw ETavoException(SNotFuzzyFact);
  const TFuzzyOperation Operation = OperationOf(FFuzzyInferenceMethod);
  const ISlotLayout& Layout = Template->GetLayout();
  for (int I = 0; I < Layout->Count(); ++I) {
    if (!Layout->GetSlot(I)->IsFuzzy()) continue;
    const ITavoValue& Mine = Fact->GetValueAt(I);
    const ITavoValue& Theirs = Other->GetValueAt(I);
    if (Union)
      FuzzyUnion(Mine, Theirs, Operation);
    else
      FuzzyIntersection(Mine, Theirs, Operation);
  }
}

void TInferenceEngine::FuzzyCorrelation(const IFact& Fact, float Strength) {
  if (Strength == 1.0f) return;
  if (OnFuzzyCorrelation) {
    bool Done = false;
    OnFuzzyCorrelation(this, Fact, Strength, Done);
    if (Done) return;
  }
  // The minimum cuts the sets at the strength, the product scales them.
  const TBaseFuzzyHedge Hedge = FFuzzyCorrelationMethod == fcmProduct ? bfhScale : bfhCut;
  const IFactTemplate& Template = Fact->GetTemplate();
  if (!Template || !Template->IsFuzzy()) throw ETavoException(SNotFuzzyFact);
  // The strength as the shortest decimal that reads back as the same
  // float, so that the set's expression shows 0.33333334, not the digits
  // that widening a float adds.
  char Digits[32];
  const auto Written = std::to_chars(Digits, Digits + sizeof(Digits), Strength);
  double Level = Strength;
  std::from_chars(Digits, Written.ptr, Level);
  auto Shape = [&](const ITavoValue& Value) {
    if (!Value || Value->GetDType() != dtFuzzy) return;
    // The set may be a shared term: the fact takes a shaped copy.
    IFuzzySet Set = Value->GetAsFuzzy()->CloneSet();
    Set->Hedge(Hedge, Level);
    Value->SetAsFuzzy(Set);
  };
  const ISlotLayout& Layout = Template->GetLayout();
  for (int I = 0; I < Layout->Count(); ++I) {
    if (!Layout->GetSlot(I)->IsFuzzy()) continue;
    const ITavoValue& Value = Fact->GetValueAt(I);
    if (Value && Value->GetDType() == dtList) {
      IValueVector List = Value->GetAsList()->CloneVector();
      Value->SetAsList(List);
      for (int J = 0; J < List->GetValueCount(); ++J) Shape(List->Get(J));
    } else {
      Shape(Value);
    }
  }
}

void TInferenceEngine::FuzzyInference(const IFact& Fact, const IFact& Other) {
  if (OnFuzzyInference) {
    bool Done = false;
    OnFuzzyInference(this, Fact, Other, Done);
    if (Done) return;
  }
  FuzzyOperation(Fact, Other, true);
}

void TInferenceEngine::SetFuzzyEqualsThreshold(float Value) {
  if (Value == FFuzzyEqualsThreshold) return;
  FFuzzyEqualsThreshold = Value < 0 ? 0.0f : Value > 1 ? 1.0f : Value;
  for (const IModule& Module : FModules)
    if (TTavoDefinedTypes* Types = Module->GetDefinedTypes())
      for (const auto& Item : *Types)
        if (const IFuzzyVariable& Variable = Item.Value->GetFuzzyType())
          Variable->SetFuzzyEqualsThreshold(FFuzzyEqualsThreshold);
}

}  // namespace tavo
