// The standard package's functions on facts: asserting and retracting from
// values and from text, modifying and duplicating, reading a slot, and the
// engine's fact duplication setting. Every one goes through the engine, so
// that the network sees each change.
#include "engine/InferenceEngine.h"
#include "core/TavoEvaluator.h"
#include "packages/StandardPackage.h"

namespace tavo {

namespace {

// An id or a fact value as the fact of the current module, or null.
IFact FactOf(TInferenceEngine& Engine, const ITavoValue& Value) {
  if (!Value) return nullptr;
  if (Value->GetDType() == dtFact) return Value->GetAsFact();
  if (!TavoNumericTypes.Contains(Value->GetDType()) && Value->GetDType() != dtFactId) return nullptr;
  return Engine.GetFacts()->GetFactByID(int(Value->GetAsInteger()));
}

TTavoContext* Scope(TTavoContext* Context) {
  if (!Context) throw ETavoException(Format(SNoContext, GetTavoTypeName(dtVariable)));
  return Context;
}

// The fact that argument 0 names, or "No Such Fact" with what it gave.
IFact FactArgument(TInferenceEngine& Engine, TFunctionCall& FunCall, TTavoContext* Context) {
  ITavoValue Id = FunCall.EvaluateArgument(0, Context);
  IFact Fact = FactOf(Engine, Id);
  if (!Fact) throw ETavoException(Format(SNoSuchFact, Id ? Id->GetAsString() : String()));
  return Fact;
}

ITavoValue IdResult(int Id) { return Id == -1 ? FCFalse : Make<TTavoValue>(Id, dtFactId); }

// The (slot value) pairs of arguments 1 on, resolved and stored in Fact.
void ChangeSlots(TFunctionCall& FunCall, TTavoContext* Context, const IFact& Fact) {
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    const ITavoValue& Pair = FunCall.GetArgument(I);
    if (!Pair || Pair->GetDType() != dtList || Pair->GetAsList()->GetValueCount() < 2)
      throw ETavoException(Format(SBadSlotValue, Pair ? Pair->ToString() : String()));
    const IValueVector& Items = Pair->GetAsList();
    String Name = Items->Get(0)->GetAsString();
    ITavoValue Value;
    EvaluateInto(Items->Get(1), Context, Value);
    const IFactSlot& Slot = Fact->GetTemplate()->GetSlot(Name);
    // A multislot takes a new list of its own.
    if (Slot->IsMulti()) {
      IValueVector List = Make<TValueVector>();
      if (Value && Value->GetDType() == dtList)
        List->Append(Value->GetAsList());
      else if (Value)
        List->Add(Value);
      Value = Make<TTavoValue>(List);
    }
    Fact->SetValue(Name, Value);
  }
  ResolveFact(*Context, Fact);
}

}  // namespace

TAVO_SETUP void TAssertStringFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"assert-string", u"Asserts each fact read from a string; gives the id of the last one, or FALSE",
              u"<string-expression>*", 1, AnyArgumentCount);
}

void TAssertStringFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  int Id = -1;
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Id = Engine.Assert(FunCall.Argument(I, Context)->GetAsString());
  Result = IdResult(Id);
}

TAVO_SETUP void TRetractFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"retract", u"Retracts the facts of the ids given, or every fact for *", u"*|<fact-index>*", 1,
              AnyArgumentCount);
}

void TRetractFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  ITavoValue First = FunCall.EvaluateArgument(0, Context);
  if (First && First->GetDType() == dtAtom && First->GetAsString() == u"*") {
    Engine.ClearFacts(Engine.GetCurrentModule());
    Result = FCTrue;
    return;
  }
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) {
    ITavoValue Value = I == 0 ? First : FunCall.EvaluateArgument(I, Context);
    IFact Fact = FactOf(Engine, Value);
    if (!Fact) throw ETavoException(Format(SUnableFindFact, Value ? int(Value->GetAsInteger()) : -1));
    Engine.RetractFact(Fact);
  }
  Result = FCTrue;
}

TAVO_SETUP void TRetractStringFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"retract-string", u"Retracts the fact equal to each one read from a string", u"<fact-string>", 0,
              AnyArgumentCount);
}

void TRetractStringFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Engine.Retract(FunCall.Argument(I, Context)->GetAsString());
  Result = FCTrue;
}

TAVO_SETUP void TModifyFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"modify",
              u"Modifies the fact specified by the fact index.  It assigns new values to the slots of the facts.  "
              u"Note that the fact is retracted and then asserted by this function",
              u"<fact-index> (<slot-name> <expression>)+", 1, AnyArgumentCount);
}

void TModifyFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  IFact Fact = FactArgument(Engine, FunCall, Context);
  Engine.BeginFactModify(Fact);
  try {
    ChangeSlots(FunCall, Scope(Context), Fact);
  } catch (...) {
    Engine.EndFactModify(Fact);
    throw;
  }
  Result = IdResult(Engine.EndFactModify(Fact));
}

TAVO_SETUP void TDuplicateFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"duplicate", u"Asserts a copy of the fact of the index with the slots given changed",
              u"<fact-index> (<slot-name> <expression>)*", 2, AnyArgumentCount);
}

void TDuplicateFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  IFact Fact = FactArgument(Engine, FunCall, Context);
  IFact Copy = Fact->CloneFact();
  ChangeSlots(FunCall, Scope(Context), Copy);
  Result = IdResult(Engine.Assert(Copy, false));
}

TAVO_SETUP void TGetSlotValueFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-slot-value", u"Gives the value of a slot of a fact, the ordered slot when no name is given",
              u"<fact-id-expression>|<fact-expression> [<slot-name-expression> ]", 1, 2);
}

void TGetSlotValueFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  IFact Fact = FactArgument(Engine, FunCall, Context);
  String Name = FunCall.GetArgumentCount() > 1 ? FunCall.Argument(1, Context)->GetAsString() : String(SDefaultSlotName);
  Result = Fact->GetValue(Name);
}

TAVO_SETUP void TGetFactDuplicationFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-fact-duplication", u"Gives TRUE when an equal fact is refused, FALSE when equal facts may stand side by side",
              u"", 0, 0);
}

void TGetFactDuplicationFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  // The same sense as set-fact-duplication's argument.
  Result = EngineOf(FunCall, Context).GetFactDuplication() ? FCFalse : FCTrue;
}

TAVO_SETUP void TSetFactDuplicationFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"set-fact-duplication", u"TRUE refuses a fact equal to one that stands, FALSE lets equal facts stand side by side; gives the former setting",
              u"<boolean-expression>", 1, 1);
}

void TSetFactDuplicationFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // The argument has the opposite sense to the engine's FactDuplication:
  // TRUE keeps duplicates out. A saved expert system restores the setting
  // through this call, and writes it so.
  const bool Former = !Engine.GetFactDuplication();
  ITavoValue Value = FunCall.EvaluateArgument(0, Context);
  Engine.SetFactDuplication(Value && Value->Equals(FCFalse));
  Result = Former ? FCTrue : FCFalse;
}

TAVO_SETUP void TDoBackwardChainingFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"do-backward-chaining",
              u"Lets rules ask for facts of the named templates: a rule waiting for one asserts a goal fact of "
              u"need- and the name",
              u"<fact-template-name>*", 0, AnyArgumentCount);
}

void TDoBackwardChainingFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) {
    ITavoValue Argument = FunCall.EvaluateArgument(I, Context);
    const String Name = Argument ? Argument->GetAsString() : String();
    if (Name == u"test" || Name == u"not") throw ETavoException(Format(SBackChainCE, Name));
    IFactTemplate Template = Engine.CreateFactTemplate(Name);
    Template->SetBackwardChaining(true);
    // A goal template that exists already stays: rules on it may hold it,
    // and a second call for a name changes nothing.
    const String GoalName = SBackChainPrefix + Name;
    if (Engine.FindFactTemplate(GoalName)) continue;
    IFactTemplate Goal = Make<TFactTemplate>(&Engine, Template, u"Goal seeker for " + Name, GoalName);
    Goal->SetParent(nullptr);
    // The copy took the flag over from its source, but goals are not asked
    // for: a pattern on a goal never asks, so it needs neither a fact
    // before it nor the ban on function calls that lets a goal's slots be
    // filled from a pattern.
    Goal->SetBackwardChaining(false);
    Engine.GetFactTemplates()->AddOrSetValue(GoalName, Goal);
  }
  Result = FCTrue;
}

}  // namespace tavo
