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

// A function of one number, X: Formula gives the result, and AtPole tells
// the float unit's traps whether X is a pole of the formula.
#define TAVO_NUMBER_FUNCTION(ClassName, Name, Comment, Formula, AtPole)       \
  TAVO_DEFINE_FUNCTION(ClassName, Name, Comment, SNumericArgument, 1, 1,      \
                       const double X = NumericArgument(FunCall, 0, Context); \
                       Result = FloatValue(TrapFloat(FFunctionName, Formula, {X}, AtPole)))

// A function of a point, X then Y: Formula gives the result.
#define TAVO_POINT_FUNCTION(ClassName, Name, Comment, Formula)                \
  TAVO_DEFINE_FUNCTION(ClassName, Name, Comment, SPointArguments, 2, 2,       \
                       const double X = NumericArgument(FunCall, 0, Context); \
                       const double Y = NumericArgument(FunCall, 1, Context); \
                       Result = FloatValue(TrapFloat(FFunctionName, Formula, {X, Y})))

// The circular and hyperbolic functions, their inverses and reciprocals.
TAVO_NUMBER_FUNCTION(TACosFunction, u"acos", u"Returns the inverse cosine, from 0 to pi, of a number from -1 to 1",
                     std::acos(X), false)
TAVO_NUMBER_FUNCTION(TACosHFunction, u"acosh", u"Returns the inverse hyperbolic cosine of a number of at least 1",
                     std::acosh(X), false)
TAVO_NUMBER_FUNCTION(TACotFunction, u"acot", u"Returns the inverse cotangent, atan (1 / x), and pi / 2 at 0",
                     X == 0 ? Pi / 2 : std::atan(1 / X), false)
TAVO_NUMBER_FUNCTION(TACotHFunction, u"acoth",
                     u"Returns the inverse hyperbolic cotangent, atanh (1 / x), of a number outside -1 to 1",
                     std::atanh(1 / X), X == 1 || X == -1)
TAVO_NUMBER_FUNCTION(TACscFunction, u"acsc", u"Returns the inverse cosecant, asin (1 / x), of a number outside -1 to 1",
                     std::asin(1 / X), false)
TAVO_NUMBER_FUNCTION(TACscHFunction, u"acsch", u"Returns the inverse hyperbolic cosecant, asinh (1 / x)",
                     std::asinh(1 / X), X == 0)
TAVO_NUMBER_FUNCTION(TASecFunction, u"asec", u"Returns the inverse secant, acos (1 / x), of a number outside -1 to 1",
                     std::acos(1 / X), false)
TAVO_NUMBER_FUNCTION(TASecHFunction, u"asech",
                     u"Returns the inverse hyperbolic secant, acosh (1 / x), of a number above 0 up to 1",
                     std::acosh(1 / X), X == 0)
TAVO_NUMBER_FUNCTION(TASinFunction, u"asin",
                     u"Returns the inverse sine, from -pi / 2 to pi / 2, of a number from -1 to 1", std::asin(X), false)
TAVO_NUMBER_FUNCTION(TASinHFunction, u"asinh", u"Returns the inverse hyperbolic sine", std::asinh(X), false)
TAVO_NUMBER_FUNCTION(TATanFunction, u"atan", u"Returns the arctangent, from -pi / 2 to pi / 2", std::atan(X), false)
TAVO_NUMBER_FUNCTION(TATanHFunction, u"atanh", u"Returns the inverse hyperbolic tangent of a number between -1 and 1",
                     std::atanh(X), X == 1 || X == -1)
TAVO_NUMBER_FUNCTION(TCosFunction, u"cos", u"Returns the cosine of an angle in radians", std::cos(X), false)
TAVO_NUMBER_FUNCTION(TCosHFunction, u"cosh", u"Returns the hyperbolic cosine", std::cosh(X), false)
TAVO_NUMBER_FUNCTION(TCotFunction, u"cot", u"Returns the cotangent of an angle in radians, 1 / tan", 1 / std::tan(X),
                     std::tan(X) == 0)
TAVO_NUMBER_FUNCTION(TCotHFunction, u"coth", u"Returns the hyperbolic cotangent, 1 / tanh", 1 / std::tanh(X), X == 0)
TAVO_NUMBER_FUNCTION(TCscFunction, u"csc", u"Returns the cosecant of an angle in radians, 1 / sin", 1 / std::sin(X),
                     std::sin(X) == 0)
TAVO_NUMBER_FUNCTION(TCscHFunction, u"csch", u"Returns the hyperbolic cosecant, 1 / sinh", 1 / std::sinh(X), X == 0)
TAVO_NUMBER_FUNCTION(TSecFunction, u"sec", u"Returns the secant of an angle in radians, 1 / cos", 1 / std::cos(X),
                     std::cos(X) == 0)
TAVO_NUMBER_FUNCTION(TSecHFunction, u"sech", u"Returns the hyperbolic secant, 1 / cosh", 1 / std::cosh(X), false)
TAVO_NUMBER_FUNCTION(TSinFunction, u"sin", u"Returns the sine of an angle in radians", std::sin(X), false)
TAVO_NUMBER_FUNCTION(TSinHFunction, u"sinh", u"Returns the hyperbolic sine", std::sinh(X), false)
TAVO_NUMBER_FUNCTION(TTanFunction, u"tan", u"Returns the tangent of an angle in radians, sin / cos", std::tan(X), false)
TAVO_NUMBER_FUNCTION(TTanHFunction, u"tanh", u"Returns the hyperbolic tangent", std::tanh(X), false)

// The units of angles.
TAVO_NUMBER_FUNCTION(TCycleRadFunction, u"cycle-rad", u"Converts cycles to radians: radians = 2 pi * cycles",
                     X * (2 * Pi), false)
TAVO_NUMBER_FUNCTION(TRadCycleFunction, u"rad-cycle", u"Converts radians to cycles: cycles = radians / (2 pi)",
                     X / (2 * Pi), false)
TAVO_NUMBER_FUNCTION(TDegRadFunction, u"deg-rad", u"Converts degrees to radians: radians = degrees * (pi / 180)",
                     X * (Pi / 180), false)
TAVO_NUMBER_FUNCTION(TRadDegFunction, u"rad-deg", u"Converts radians to degrees: degrees = radians * (180 / pi)",
                     X * (180 / Pi), false)
TAVO_NUMBER_FUNCTION(TGradRadFunction, u"grad-rad", u"Converts grads to radians: radians = grads * (pi / 200)",
                     X * (Pi / 200), false)
TAVO_NUMBER_FUNCTION(TRadGradFunction, u"rad-grad", u"Converts radians to grads: grads = radians * (200 / pi)",
                     X * (200 / Pi), false)
TAVO_NUMBER_FUNCTION(TDegGradFunction, u"deg-grad", u"Converts degrees to grads: grads = degrees * (10 / 9)",
                     X * 10 / 9, false)
TAVO_NUMBER_FUNCTION(TGradDegFunction, u"grad-deg", u"Converts grads to degrees: degrees = grads * (9 / 10)",
                     X * 9 / 10, false)

// The library takes Y first.
TAVO_POINT_FUNCTION(TATan2Function, u"atan2",
                    u"Returns the arctangent of Y / X, from -pi to pi in the quadrant of the point (X, Y)",
                    std::atan2(Y, X))
// Scaled on the way, so that only a hypotenuse beyond the doubles overflows.
TAVO_POINT_FUNCTION(THypotenuseFunction, u"hypotenuse", u"Returns the square root of X squared plus Y squared",
                    std::hypot(X, Y))

// The distances of two points given as multifields of coordinates.
TAVO_DEFINE_FUNCTION(TDistanceFunction, u"distance",
                     u"Returns the Euclidean distance of two points given as multifields of coordinates",
                     SMultifieldArguments, 2, 2,
                     Result = FloatValue(Distance(dkEuclidean, FFunctionName, FunCall, Context)))
TAVO_DEFINE_FUNCTION(TDistanceSqrFunction, u"distance-sqr",
                     u"Returns the square of the Euclidean distance of two points", SMultifieldArguments, 2, 2,
                     Result = FloatValue(Distance(dkSquared, FFunctionName, FunCall, Context)))
TAVO_DEFINE_FUNCTION(TDistanceManhattanFunction, u"distance-manhattan",
                     u"Returns the sum of the absolute differences of the coordinates of two points",
                     SMultifieldArguments, 2, 2,
                     Result = FloatValue(Distance(dkManhattan, FFunctionName, FunCall, Context)))

#undef TAVO_NUMBER_FUNCTION
#undef TAVO_POINT_FUNCTION

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
