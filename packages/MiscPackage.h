// Miscellaneous functions of the rule language: listings of what the engine
// holds. More join the package as their constructs arrive.
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

class TMiscPackage : public TUserPackage {
  TAVO_CLASS(TMiscPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
