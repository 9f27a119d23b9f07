// Arithmetic of the rule language: the operators, rounding, logarithms and
// the random numbers.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

TAVO_FUNCTION(TDivideFunction)

class TMinusFunction : public TTavoUserFunction {
  TAVO_FUNCTION_MEMBERS(TMinusFunction)
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

TAVO_FUNCTION(TModFunction)

class TPlusFunction : public TTavoUserFunction {
  TAVO_FUNCTION_MEMBERS(TPlusFunction)
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

class TTimesFunction : public TTavoUserFunction {
  TAVO_FUNCTION_MEMBERS(TTimesFunction)
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

TAVO_FUNCTION(TAbsFunction)
TAVO_FUNCTION(TIntegerDivideFunction)
TAVO_FUNCTION(TExpFunction)
TAVO_FUNCTION(TExptFunction)
TAVO_FUNCTION(TPiFunction)
TAVO_FUNCTION(TFloatFunction)
TAVO_FUNCTION(TIntegerFunction)
TAVO_FUNCTION(TMaxFunction)
TAVO_FUNCTION(TMinFunction)
TAVO_FUNCTION(TLogFunction)
TAVO_FUNCTION(TLog10Function)
// The second argument is the width of the range, not its upper end.
TAVO_FUNCTION(TRandomFunction)
TAVO_FUNCTION(TRandomizeFunction)
TAVO_FUNCTION(TRoundFunction)
TAVO_FUNCTION(TSqrtFunction)
TAVO_FUNCTION(TSeedFunction)

class TMathPackage : public TUserPackage {
  TAVO_CLASS(TMathPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
