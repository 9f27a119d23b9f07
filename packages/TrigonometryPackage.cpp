#include "packages/TrigonometryPackage.h"

#include <cmath>
#include <numbers>

namespace tavo {

namespace {

constexpr double Pi = std::numbers::pi;

constexpr char16_t SNumericArgument[] = u" <numeric-expression>";
constexpr char16_t SPointArguments[] = u" <numeric-expression-X> <numeric-expression-Y>";
constexpr char16_t SMultifieldArguments[] = u" <multifield-expression-1> <multifield-expression-2>";

ITavoValue FloatValue(double Value) { return Make<TTavoValue>(Value); }

double NumericArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsNumeric();
}

enum TDistanceKind { dkEuclidean, dkSquared, dkManhattan };

// Two points as multifields of coordinates, walked in order.
double Distance(TDistanceKind Kind, const String& Name, TFunctionCall& FunCall, TTavoContext* Context) {
  const IValueVector First = FunCall.Argument(0, Context)->GetAsList();
  const IValueVector Second = FunCall.Argument(1, Context)->GetAsList();
  const int Count = First->GetValueCount();
  if (Second->GetValueCount() != Count) throw ETavoException(SMultifieldLengthMismatch);
  double Sum = 0;
  bool Finite = true;
  bool Numbers = true;
  for (int I = 0; I < Count; ++I) {
    const double A = First->Get(I)->GetAsNumeric();
    const double B = Second->Get(I)->GetAsNumeric();
    Finite = Finite && std::isfinite(A) && std::isfinite(B);
    Numbers = Numbers && !std::isnan(A) && !std::isnan(B);
    const double Difference = A - B;
    Sum += Kind == dkManhattan ? std::fabs(Difference) : Difference * Difference;
  }
  if (Kind == dkEuclidean) Sum = std::sqrt(Sum);
  // The coordinates stand for themselves in the trap: one infinity or NaN
  // among them lets the result through.
  const double Representative = !Numbers ? NAN : !Finite ? INFINITY : 0;
  return TrapFloat(Name, Sum, {Representative});
}

}  // namespace

TAVO_SETUP void TACosFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acos", u"Returns the inverse cosine, from 0 to pi, of a number from -1 to 1", SNumericArgument, 1, 1);
}

void TACosFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::acos(X), {X}));
}

TAVO_SETUP void TACosHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acosh", u"Returns the inverse hyperbolic cosine of a number of at least 1", SNumericArgument, 1, 1);
}

void TACosHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::acosh(X), {X}));
}

TAVO_SETUP void TACotFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acot", u"Returns the inverse cotangent, atan (1 / x), and pi / 2 at 0", SNumericArgument, 1, 1);
}

void TACotFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X == 0 ? Pi / 2 : std::atan(1 / X), {X}));
}

TAVO_SETUP void TACotHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acoth", u"Returns the inverse hyperbolic cotangent, atanh (1 / x), of a number outside -1 to 1",
              SNumericArgument, 1, 1);
}

void TACotHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::atanh(1 / X), {X}, X == 1 || X == -1));
}

TAVO_SETUP void TACscFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acsc", u"Returns the inverse cosecant, asin (1 / x), of a number outside -1 to 1", SNumericArgument, 1,
              1);
}

void TACscFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::asin(1 / X), {X}));
}

TAVO_SETUP void TACscHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"acsch", u"Returns the inverse hyperbolic cosecant, asinh (1 / x)", SNumericArgument, 1, 1);
}

void TACscHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::asinh(1 / X), {X}, X == 0));
}

TAVO_SETUP void TASecFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"asec", u"Returns the inverse secant, acos (1 / x), of a number outside -1 to 1", SNumericArgument, 1,
              1);
}

void TASecFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::acos(1 / X), {X}));
}

TAVO_SETUP void TASecHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"asech", u"Returns the inverse hyperbolic secant, acosh (1 / x), of a number above 0 up to 1",
              SNumericArgument, 1, 1);
}

void TASecHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::acosh(1 / X), {X}, X == 0));
}

TAVO_SETUP void TASinFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"asin", u"Returns the inverse sine, from -pi / 2 to pi / 2, of a number from -1 to 1", SNumericArgument,
              1, 1);
}

void TASinFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::asin(X), {X}));
}

TAVO_SETUP void TASinHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"asinh", u"Returns the inverse hyperbolic sine", SNumericArgument, 1, 1);
}

void TASinHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::asinh(X), {X}));
}

TAVO_SETUP void TATanFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"atan", u"Returns the arctangent, from -pi / 2 to pi / 2", SNumericArgument, 1, 1);
}

void TATanFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::atan(X), {X}));
}

TAVO_SETUP void TATanHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"atanh", u"Returns the inverse hyperbolic tangent of a number between -1 and 1", SNumericArgument, 1, 1);
}

void TATanHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::atanh(X), {X}, X == 1 || X == -1));
}

TAVO_SETUP void TCosFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"cos", u"Returns the cosine of an angle in radians", SNumericArgument, 1, 1);
}

void TCosFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::cos(X), {X}));
}

TAVO_SETUP void TCosHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"cosh", u"Returns the hyperbolic cosine", SNumericArgument, 1, 1);
}

void TCosHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::cosh(X), {X}));
}

TAVO_SETUP void TCotFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"cot", u"Returns the cotangent of an angle in radians, 1 / tan", SNumericArgument, 1, 1);
}

void TCotFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::tan(X), {X}, std::tan(X) == 0));
}

TAVO_SETUP void TCotHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"coth", u"Returns the hyperbolic cotangent, 1 / tanh", SNumericArgument, 1, 1);
}

void TCotHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::tanh(X), {X}, X == 0));
}

TAVO_SETUP void TCscFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"csc", u"Returns the cosecant of an angle in radians, 1 / sin", SNumericArgument, 1, 1);
}

void TCscFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::sin(X), {X}, std::sin(X) == 0));
}

TAVO_SETUP void TCscHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"csch", u"Returns the hyperbolic cosecant, 1 / sinh", SNumericArgument, 1, 1);
}

void TCscHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::sinh(X), {X}, X == 0));
}

TAVO_SETUP void TSecFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sec", u"Returns the secant of an angle in radians, 1 / cos", SNumericArgument, 1, 1);
}

void TSecFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::cos(X), {X}, std::cos(X) == 0));
}

TAVO_SETUP void TSecHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sech", u"Returns the hyperbolic secant, 1 / cosh", SNumericArgument, 1, 1);
}

void TSecHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, 1 / std::cosh(X), {X}));
}

TAVO_SETUP void TSinFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sin", u"Returns the sine of an angle in radians", SNumericArgument, 1, 1);
}

void TSinFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::sin(X), {X}));
}

TAVO_SETUP void TSinHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"sinh", u"Returns the hyperbolic sine", SNumericArgument, 1, 1);
}

void TSinHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::sinh(X), {X}));
}

TAVO_SETUP void TTanFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"tan", u"Returns the tangent of an angle in radians, sin / cos", SNumericArgument, 1, 1);
}

void TTanFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::tan(X), {X}));
}

TAVO_SETUP void TTanHFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"tanh", u"Returns the hyperbolic tangent", SNumericArgument, 1, 1);
}

void TTanHFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, std::tanh(X), {X}));
}

TAVO_SETUP void TCycleRadFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"cycle-rad", u"Converts cycles to radians: radians = 2 pi * cycles", SNumericArgument, 1, 1);
}

void TCycleRadFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * (2 * Pi), {X}));
}

TAVO_SETUP void TRadCycleFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rad-cycle", u"Converts radians to cycles: cycles = radians / (2 pi)", SNumericArgument, 1, 1);
}

void TRadCycleFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X / (2 * Pi), {X}));
}

TAVO_SETUP void TDegRadFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"deg-rad", u"Converts degrees to radians: radians = degrees * (pi / 180)", SNumericArgument, 1, 1);
}

void TDegRadFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * (Pi / 180), {X}));
}

TAVO_SETUP void TRadDegFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rad-deg", u"Converts radians to degrees: degrees = radians * (180 / pi)", SNumericArgument, 1, 1);
}

void TRadDegFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * (180 / Pi), {X}));
}

TAVO_SETUP void TGradRadFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"grad-rad", u"Converts grads to radians: radians = grads * (pi / 200)", SNumericArgument, 1, 1);
}

void TGradRadFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * (Pi / 200), {X}));
}

TAVO_SETUP void TRadGradFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rad-grad", u"Converts radians to grads: grads = radians * (200 / pi)", SNumericArgument, 1, 1);
}

void TRadGradFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * (200 / Pi), {X}));
}

TAVO_SETUP void TDegGradFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"deg-grad", u"Converts degrees to grads: grads = degrees * (10 / 9)", SNumericArgument, 1, 1);
}

void TDegGradFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * 10 / 9, {X}));
}

TAVO_SETUP void TGradDegFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"grad-deg", u"Converts grads to degrees: degrees = grads * (9 / 10)", SNumericArgument, 1, 1);
}

void TGradDegFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(TrapFloat(FFunctionName, X * 9 / 10, {X}));
}

TAVO_SETUP void TATan2Function::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"atan2", u"Returns the arctangent of Y / X, from -pi to pi in the quadrant of the point (X, Y)",
              SPointArguments, 2, 2);
}

void TATan2Function::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  const double Y = NumericArgument(FunCall, 1, Context);
  // The library takes Y first.
  Result = FloatValue(TrapFloat(FFunctionName, std::atan2(Y, X), {X, Y}));
}

TAVO_SETUP void THypotenuseFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"hypotenuse", u"Returns the square root of X squared plus Y squared", SPointArguments, 2, 2);
}

void THypotenuseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const double X = NumericArgument(FunCall, 0, Context);
  const double Y = NumericArgument(FunCall, 1, Context);
  // Scaled on the way, so that only a hypotenuse beyond the doubles overflows.
  Result = FloatValue(TrapFloat(FFunctionName, std::hypot(X, Y), {X, Y}));
}

TAVO_SETUP void TDistanceFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"distance", u"Returns the Euclidean distance of two points given as multifields of coordinates",
              SMultifieldArguments, 2, 2);
}

void TDistanceFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FloatValue(Distance(dkEuclidean, FFunctionName, FunCall, Context));
}

TAVO_SETUP void TDistanceSqrFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"distance-sqr", u"Returns the square of the Euclidean distance of two points", SMultifieldArguments, 2,
              2);
}

void TDistanceSqrFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FloatValue(Distance(dkSquared, FFunctionName, FunCall, Context));
}

TAVO_SETUP void TDistanceManhattanFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"distance-manhattan", u"Returns the sum of the absolute differences of the coordinates of two points",
              SMultifieldArguments, 2, 2);
}

void TDistanceManhattanFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = FloatValue(Distance(dkManhattan, FFunctionName, FunCall, Context));
}

void TTrigonometryPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();

  Functions.Add(Make<TACosFunction>());
  Functions.Add(Make<TACosHFunction>());
  Functions.Add(Make<TACotFunction>());
  Functions.Add(Make<TACotHFunction>());
  Functions.Add(Make<TACscFunction>());
  Functions.Add(Make<TACscHFunction>());
  Functions.Add(Make<TASecFunction>());
  Functions.Add(Make<TASecHFunction>());
  Functions.Add(Make<TASinFunction>());
  Functions.Add(Make<TASinHFunction>());
  Functions.Add(Make<TATanFunction>());
  Functions.Add(Make<TATanHFunction>());
  Functions.Add(Make<TCosFunction>());
  Functions.Add(Make<TCosHFunction>());
  Functions.Add(Make<TCotFunction>());
  Functions.Add(Make<TCotHFunction>());
  Functions.Add(Make<TCscFunction>());
  Functions.Add(Make<TCscHFunction>());
  Functions.Add(Make<TSecFunction>());
  Functions.Add(Make<TSecHFunction>());
  Functions.Add(Make<TSinFunction>());
  Functions.Add(Make<TSinHFunction>());
  Functions.Add(Make<TTanFunction>());
  Functions.Add(Make<TTanHFunction>());
  Functions.Add(Make<TCycleRadFunction>());
  Functions.Add(Make<TRadCycleFunction>());
  Functions.Add(Make<TDegRadFunction>());
  Functions.Add(Make<TRadDegFunction>());
  Functions.Add(Make<TGradRadFunction>());
  Functions.Add(Make<TRadGradFunction>());
  Functions.Add(Make<TDegGradFunction>());
  Functions.Add(Make<TGradDegFunction>());
  Functions.Add(Make<TATan2Function>());
  Functions.Add(Make<THypotenuseFunction>());
  Functions.Add(Make<TDistanceFunction>());
  Functions.Add(Make<TDistanceSqrFunction>());
  Functions.Add(Make<TDistanceManhattanFunction>());
}

}  // namespace tavo
