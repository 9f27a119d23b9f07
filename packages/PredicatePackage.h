// Type tests of the rule language: whether a value is of some types, the
// name of its type, and whether a number is even or odd.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// A type test: TRUE when the evaluated argument's tag is one of its types.
// No value is converted: 1.0 is no integer, an atom no string.
class TVerifyTypePFunction : public TTavoUserFunction {
  TAVO_CLASS(TVerifyTypePFunction, TTavoUserFunction)
 public:
  explicit TVerifyTypePFunction(const String& Name = String(), TTavoTypes Types = {})
      : TTavoUserFunction(Name), FTypes(Types) {}
  TTavoTypes GetTypes() const { return FTypes; }
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;

 private:
  TTavoTypes FTypes;
};

// get-type: the name of the argument's type tag as a symbol, as dtInteger.
TAVO_FUNCTION(TGetValueTypeFunction)

// evenp and oddp read the argument as an integer, a float truncated.
TAVO_FUNCTION(TEvenPFunction)

TAVO_FUNCTION(TOddPFunction)

class TPredicatePackage : public TUserPackage {
  TAVO_CLASS(TPredicatePackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
