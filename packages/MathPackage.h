// Arithmetic of the rule language: the operators, rounding, logarithms and
// the random numbers.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

class TDivideFunction : public TTavoUserFunction {
  TAVO_CLASS(TDivideFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TMinusFunction : public TTavoUserFunction {
  TAVO_CLASS(TMinusFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

class TModFunction : public TTavoUserFunction {
  TAVO_CLASS(TModFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TPlusFunction : public TTavoUserFunction {
  TAVO_CLASS(TPlusFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

class TTimesFunction : public TTavoUserFunction {
  TAVO_CLASS(TTimesFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
  bool CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) override;
};

class TAbsFunction : public TTavoUserFunction {
  TAVO_CLASS(TAbsFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TIntegerDivideFunction : public TTavoUserFunction {
  TAVO_CLASS(TIntegerDivideFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TExpFunction : public TTavoUserFunction {
  TAVO_CLASS(TExpFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TExptFunction : public TTavoUserFunction {
  TAVO_CLASS(TExptFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TPiFunction : public TTavoUserFunction {
  TAVO_CLASS(TPiFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TFloatFunction : public TTavoUserFunction {
  TAVO_CLASS(TFloatFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TIntegerFunction : public TTavoUserFunction {
  TAVO_CLASS(TIntegerFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TMaxFunction : public TTavoUserFunction {
  TAVO_CLASS(TMaxFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TMinFunction : public TTavoUserFunction {
  TAVO_CLASS(TMinFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TLogFunction : public TTavoUserFunction {
  TAVO_CLASS(TLogFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TLog10Function : public TTavoUserFunction {
  TAVO_CLASS(TLog10Function, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// The second argument is the width of the range, not its upper end.
class TRandomFunction : public TTavoUserFunction {
  TAVO_CLASS(TRandomFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TRandomizeFunction : public TTavoUserFunction {
  TAVO_CLASS(TRandomizeFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TRoundFunction : public TTavoUserFunction {
  TAVO_CLASS(TRoundFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSqrtFunction : public TTavoUserFunction {
  TAVO_CLASS(TSqrtFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSeedFunction : public TTavoUserFunction {
  TAVO_CLASS(TSeedFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TMathPackage : public TUserPackage {
  TAVO_CLASS(TMathPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
