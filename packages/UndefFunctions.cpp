// The miscellaneous package's functions that remove a construct by name:
// what rests on it goes with it, as the engine's collections see to.
#include "engine/InferenceEngine.h"
#include "packages/MiscPackage.h"

namespace tavo {

TAVO_SETUP void TUnDefTypeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"undeftype", u"Removes the defined type, and the templates that use it; FALSE when there is none",
              u"<defined-type-name-expression>", 1, 1);
}

void TUnDefTypeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TTavoDefinedTypes* Types = EngineOf(FunCall, Context).GetDefinedTypes();
  Result = Types && Types->Remove(FunCall.Argument(0, Context)->GetAsString()) ? FCTrue : FCFalse;
}

TAVO_SETUP void TUnDefRuleFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"undefrule", u"Removes the rule and its activations; FALSE when there is none", u" <rule-name>", 1, 1);
}

void TUnDefRuleFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  TRule* Rule = Engine.GetRules() ? Engine.GetRules()->Find(Name) : nullptr;
  Result = FCFalse;
  if (!Rule || !Engine.GetRules()->Remove(Name, Rule)) return;
  // A rule that removes itself is freed once its firing is over.
  Engine.RemoveRule(Rule);
  Result = FCTrue;
}

TAVO_SETUP void TUnDefFactsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"undeffacts", u"Removes the fact set; its facts stay until the next reset; FALSE when there is none",
              u" <fact-set-name>", 1, 1);
}

void TUnDefFactsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TFactSets* Sets = EngineOf(FunCall, Context).GetFactSets();
  const int Index = Sets ? Sets->IndexOf(FunCall.Argument(0, Context)->GetAsString()) : -1;
  Result = FCFalse;
  if (Index < 0) return;
  TFactSet* Set = Sets->Get(Index);
  Sets->Remove(Set);
  delete Set;
  Result = FCTrue;
}

TAVO_SETUP void TUnDefFunctionFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"undeffunction", u"Removes the function from the engine; FALSE when there is none",
              u" <function-name>", 1, 1);
}

void TUnDefFunctionFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  IUserFunction Function;
  Result = FCFalse;
  if (!Engine.GetUserFunctions()->TryGetValue(Name, Function)) return;
  // The call being run lets go of its function, which is about to go.
  if (Name == FunCall.GetName()) FunCall.SetUserFunction(nullptr);
  Engine.GetUserFunctions()->RemoveFunction(Name);
  Result = FCTrue;
}

TAVO_SETUP void TUnDefTemplateFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"undeftemplate",
              u"Removes the fact template with its facts and the rules that match on it; FALSE when there is none",
              u" <fact-template-name>", 1, 1);
}

void TUnDefTemplateFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TFactTemplates* Templates = EngineOf(FunCall, Context).GetFactTemplates();
  Result = Templates && Templates->Remove(FunCall.Argument(0, Context)->GetAsString()) ? FCTrue : FCFalse;
}

}  // namespace tavo
