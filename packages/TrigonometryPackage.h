// Angles, their units and distances. Every function reads its arguments as
// numbers and gives a float; angles are radians.
//
// The functions check no domain of their own. Their formulas run in double
// arithmetic, and where that arithmetic would trap on a machine that traps,
// the function raises the trap's failure instead of handing NaN or an
// infinity on: a result that is not a number from arguments that are
// numbers is an invalid operation (acos of 2), an infinite result at a pole
// of the formula is a division by zero (cot of 0), and an infinite result
// from finite arguments elsewhere is an overflow (cosh of 1000).
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

class TACosFunction : public TTavoUserFunction {
  TAVO_CLASS(TACosFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TACosHFunction : public TTavoUserFunction {
  TAVO_CLASS(TACosHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TACotFunction : public TTavoUserFunction {
  TAVO_CLASS(TACotFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TACotHFunction : public TTavoUserFunction {
  TAVO_CLASS(TACotHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TACscFunction : public TTavoUserFunction {
  TAVO_CLASS(TACscFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TACscHFunction : public TTavoUserFunction {
  TAVO_CLASS(TACscHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TASecFunction : public TTavoUserFunction {
  TAVO_CLASS(TASecFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TASecHFunction : public TTavoUserFunction {
  TAVO_CLASS(TASecHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TASinFunction : public TTavoUserFunction {
  TAVO_CLASS(TASinFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TASinHFunction : public TTavoUserFunction {
  TAVO_CLASS(TASinHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TATanFunction : public TTavoUserFunction {
  TAVO_CLASS(TATanFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TATanHFunction : public TTavoUserFunction {
  TAVO_CLASS(TATanHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCosFunction : public TTavoUserFunction {
  TAVO_CLASS(TCosFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCosHFunction : public TTavoUserFunction {
  TAVO_CLASS(TCosHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCotFunction : public TTavoUserFunction {
  TAVO_CLASS(TCotFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCotHFunction : public TTavoUserFunction {
  TAVO_CLASS(TCotHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCscFunction : public TTavoUserFunction {
  TAVO_CLASS(TCscFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCscHFunction : public TTavoUserFunction {
  TAVO_CLASS(TCscHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSecFunction : public TTavoUserFunction {
  TAVO_CLASS(TSecFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSecHFunction : public TTavoUserFunction {
  TAVO_CLASS(TSecHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSinFunction : public TTavoUserFunction {
  TAVO_CLASS(TSinFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TSinHFunction : public TTavoUserFunction {
  TAVO_CLASS(TSinHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TTanFunction : public TTavoUserFunction {
  TAVO_CLASS(TTanFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TTanHFunction : public TTavoUserFunction {
  TAVO_CLASS(TTanHFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TCycleRadFunction : public TTavoUserFunction {
  TAVO_CLASS(TCycleRadFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TRadCycleFunction : public TTavoUserFunction {
  TAVO_CLASS(TRadCycleFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TDegRadFunction : public TTavoUserFunction {
  TAVO_CLASS(TDegRadFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TRadDegFunction : public TTavoUserFunction {
  TAVO_CLASS(TRadDegFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TGradRadFunction : public TTavoUserFunction {
  TAVO_CLASS(TGradRadFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TRadGradFunction : public TTavoUserFunction {
  TAVO_CLASS(TRadGradFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TDegGradFunction : public TTavoUserFunction {
  TAVO_CLASS(TDegGradFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TGradDegFunction : public TTavoUserFunction {
  TAVO_CLASS(TGradDegFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TATan2Function : public TTavoUserFunction {
  TAVO_CLASS(TATan2Function, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class THypotenuseFunction : public TTavoUserFunction {
  TAVO_CLASS(THypotenuseFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TDistanceFunction : public TTavoUserFunction {
  TAVO_CLASS(TDistanceFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TDistanceSqrFunction : public TTavoUserFunction {
  TAVO_CLASS(TDistanceSqrFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TDistanceManhattanFunction : public TTavoUserFunction {
  TAVO_CLASS(TDistanceManhattanFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

class TTrigonometryPackage : public TUserPackage {
  TAVO_CLASS(TTrigonometryPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
