// Miscellaneous functions of the rule language: listings of what the engine
// holds, questions about its knowledge, its checking settings, guard and
// parse. More join the package as their constructs arrive.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// facts: the fact list of the current module, of a named one, or of all
// ("*"), narrowed by id range and count, and the total.
class TShowFactsFunction : public TTavoUserFunction {
  TAVO_CLASS(TShowFactsFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// agenda: the activations of a module, or of all ("*"), in agenda order.
class TAgendaFunction : public TTavoUserFunction {
  TAVO_CLASS(TAgendaFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// list-defrules: the names of the rules of a module, or of all ("*").
class TListRulesFunction : public TTavoUserFunction {
  TAVO_CLASS(TListRulesFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// One function class with the usual metadata and work; the family classes
// below add the member they serve.
#define TAVO_MISC_FUNCTION(ClassName)                                                      \
  class ClassName : public TTavoUserFunction {                                             \
    TAVO_CLASS(ClassName, TTavoUserFunction)                                               \
   public:                                                                                 \
    void InitMetaData() override;                                                          \
    void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override; \
    using TTavoUserFunction::Call;                                                         \
  };

// Listings of the current module, of a named one or of all ("*").
TAVO_MISC_FUNCTION(TListDefTypesFunction)
TAVO_MISC_FUNCTION(TListFactSetsFunction)
TAVO_MISC_FUNCTION(TListTemplatesFunction)
// Listings of what the engine holds as a whole.
TAVO_MISC_FUNCTION(TListFunctionsFunction)
TAVO_MISC_FUNCTION(TListDefModulesFunction)
TAVO_MISC_FUNCTION(TListFocusStackFunction)
// rules: the current module's rules, to a logical name.
TAVO_MISC_FUNCTION(TShowRulesFunction)

// Constraint checking, static (the parser's) and dynamic (slot values).
TAVO_MISC_FUNCTION(TGetDynamicCheckFunction)
TAVO_MISC_FUNCTION(TGetStaticCheckFunction)
TAVO_MISC_FUNCTION(TSetDynamicCheckFunction)
TAVO_MISC_FUNCTION(TSetStaticCheckFunction)

// set-reset-globals, setgen, guard, parse.
TAVO_MISC_FUNCTION(TResetGlobalsFunction)
TAVO_MISC_FUNCTION(TSetGenFunction)
TAVO_MISC_FUNCTION(TGuardFunction)
TAVO_MISC_FUNCTION(TTavoParseFunction)

// Removing constructs.
TAVO_MISC_FUNCTION(TUnDefTypeFunction)
TAVO_MISC_FUNCTION(TUnDefRuleFunction)
TAVO_MISC_FUNCTION(TUnDefFactsFunction)
TAVO_MISC_FUNCTION(TUnDefFunctionFunction)
TAVO_MISC_FUNCTION(TUnDefTemplateFunction)

#undef TAVO_MISC_FUNCTION

enum TListVariablesFunctionType { lvDefGlobals, lvBindings };

// list-defglobals and list-bindings: names and values, and the total.
class TListVariablesFunction : public TTavoUserFunction {
  TAVO_CLASS(TListVariablesFunction, TTavoUserFunction)
 public:
  explicit TListVariablesFunction(TListVariablesFunctionType Type = lvDefGlobals) : FType(Type) {}
  TListVariablesFunctionType GetType() const { return FType; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TListVariablesFunctionType FType;
};

enum TIsTavoStructFunctionType {
  sfIsBinding,
  sfIsDefType,
  sfIsDefFunction,
  sfIsDefGlobal,
  sfIsDefRule,
  sfIsDefFacts,
  sfIsDefTemplate
};

// is-binding, is-deftype and the rest: whether a name is known as that kind.
class TIsTavoStructFunction : public TTavoUserFunction {
  TAVO_CLASS(TIsTavoStructFunction, TTavoUserFunction)
 public:
  explicit TIsTavoStructFunction(TIsTavoStructFunctionType Type = sfIsBinding) : FType(Type) {}
  TIsTavoStructFunctionType GetType() const { return FType; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TIsTavoStructFunctionType FType;
};

enum TPrettyPrintFunctionType { ppfFactSet, ppfUserFunction, ppfFactTemplate, ppfRule, ppfDefType, ppfDefModule };

// ppdeffacts, ppdeffunction and the rest: a construct of the name, printed
// as rule-language text.
class TPrettyPrintFunction : public TTavoUserFunction {
  TAVO_CLASS(TPrettyPrintFunction, TTavoUserFunction)
 public:
  explicit TPrettyPrintFunction(TPrettyPrintFunctionType Type = ppfFactSet) : FType(Type) {}
  TPrettyPrintFunctionType GetType() const { return FType; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TPrettyPrintFunctionType FType;
};

class TMiscPackage : public TUserPackage {
  TAVO_CLASS(TMiscPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
