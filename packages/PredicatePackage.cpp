#include "packages/PredicatePackage.h"

namespace tavo {

namespace {

const ITavoValue& BooleanValue(bool Value) { return Value ? FCTrue : FCFalse; }

// The lowest bit decides, so negative numbers work as well.
bool IsOdd(TFunctionCall& FunCall, TTavoContext* Context) {
  return (uint32_t(FunCall.Argument(0, Context)->GetAsInteger()) & 1u) != 0;
}

}  // namespace

TAVO_SETUP void TVerifyTypePFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(GetFunctionName(), Format(SVerifyTypeComment, SetToString(FTypes)), u"<expression>", 1, 1);
}

void TVerifyTypePFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(FTypes.Contains(ResolvedArgument(FunCall, 0, Context)->GetDType()));
}

TAVO_SETUP void TGetValueTypeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-type", u"Returns the name of the type of its argument as a symbol, such as dtInteger",
              u" <expression> ", 1, 1);
}

void TGetValueTypeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(GetTavoTypeName(ResolvedArgument(FunCall, 0, Context)->GetDType()), dtAtom);
}

TAVO_SETUP void TEvenPFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"evenp", u"Returns TRUE if its argument, read as an integer, is even, else FALSE",
              u" <numeric-expression>", 1, 1);
}

void TEvenPFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(!IsOdd(FunCall, Context));
}

TAVO_SETUP void TOddPFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"oddp", u"Returns TRUE if its argument, read as an integer, is odd, else FALSE",
              u" <numeric-expression>", 1, 1);
}

void TOddPFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(IsOdd(FunCall, Context));
}

void TPredicatePackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TEvenPFunction>());
  Functions.Add(Make<TOddPFunction>());
  Functions.Add(Make<TGetValueTypeFunction>());
  Functions.Add(Make<TVerifyTypePFunction>(u"lexemep", TTavoTypes{dtAtom, dtString}));
  Functions.Add(Make<TVerifyTypePFunction>(u"numberp", TavoNumericTypes));
  Functions.Add(Make<TVerifyTypePFunction>(u"floatp", TTavoTypes{dtFloat}));
  Functions.Add(Make<TVerifyTypePFunction>(u"fuzzyp", TTavoTypes{dtFuzzy}));
  Functions.Add(Make<TVerifyTypePFunction>(u"integerp", TTavoTypes{dtInteger}));
  Functions.Add(Make<TVerifyTypePFunction>(u"stringp", TTavoTypes{dtString}));
  Functions.Add(Make<TVerifyTypePFunction>(u"symbolp", TTavoTypes{dtAtom}));
  Functions.Add(Make<TVerifyTypePFunction>(u"multifieldp", TTavoTypes{dtList}));
  Functions.Add(Make<TVerifyTypePFunction>(u"external-addressp", TTavoTypes{dtExternalAddress}));
  Functions.Add(Make<TVerifyTypePFunction>(u"objectp", TTavoTypes{dtObject}));
}

}  // namespace tavo
