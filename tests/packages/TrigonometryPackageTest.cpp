#include "packages/TrigonometryPackage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

constexpr double Pi = std::numbers::pi;

class TrigonometryPackageTest : public ::testing::Test {
 protected:
  TrigonometryPackageTest() {
    Engine.SetPackages({});
    NewComponent<TTrigonometryPackage>(&Engine);
  }

  ITavoValue Run(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    return Call->Execute(&Context);
  }
  double Number(const char16_t* Name, double X) { return Run(Name, {Flt(X)})->GetAsNumeric(); }
  double Number(const char16_t* Name, double X, double Y) { return Run(Name, {Flt(X), Flt(Y)})->GetAsNumeric(); }
  String Failure(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    return FailureOf([&] { Run(Name, Arguments); });
  }

  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
};

TEST_F(TrigonometryPackageTest, CircularFunctionsMeetTheirIdentitiesAndInverses) {
  for (double X : {-2.5, -1.0, -0.3, 0.2, 0.7, 1.3, 3.0}) {
    const double S = Number(u"sin", X);
    const double C = Number(u"cos", X);
    EXPECT_NEAR(S * S + C * C, 1, 1e-15) << X;
    EXPECT_NEAR(Number(u"tan", X), S / C, 1e-12) << X;
    EXPECT_NEAR(Number(u"cot", X) * Number(u"tan", X), 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"csc", X) * S, 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"sec", X) * C, 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"atan2", C * 2, S * 2), X, 1e-14) << "X then Y, in every quadrant: " << X;
  }
  for (double X : {-1.4, -0.5, 0.1, 1.2}) {
    EXPECT_NEAR(Number(u"asin", Number(u"sin", X)), X, 1e-14) << X;
    EXPECT_NEAR(Number(u"atan", Number(u"tan", X)), X, 1e-14) << X;
    // The reciprocal inverses take their branch of atan (1 / x).
    EXPECT_NEAR(Number(u"acot", Number(u"cot", X)), X, 1e-14) << X;
    EXPECT_NEAR(Number(u"acsc", Number(u"csc", X)), X, 1e-14) << X;
  }
  for (double X : {0.1, 1.2, 2.0, 3.1}) {
    EXPECT_NEAR(Number(u"acos", Number(u"cos", X)), X, 1e-14) << X;
    EXPECT_NEAR(Number(u"asec", Number(u"sec", X)), X, 1e-14) << X;
  }
  EXPECT_DOUBLE_EQ(Number(u"acos", -1), Pi);
  EXPECT_DOUBLE_EQ(Number(u"asin", -1), -Pi / 2);
  EXPECT_DOUBLE_EQ(Number(u"acot", 0), Pi / 2) << "the cotangent of pi / 2 is 0";
}

TEST_F(TrigonometryPackageTest, HyperbolicFunctionsMeetTheirIdentitiesAndInverses) {
  for (double X : {-3.0, -0.8, 0.25, 1.5, 20.0}) {
    const double Sh = Number(u"sinh", X);
    const double Ch = Number(u"cosh", X);
    EXPECT_NEAR(Ch * Ch - Sh * Sh, 1, 1e-15 * Ch * Ch) << X;
    EXPECT_NEAR(Number(u"tanh", X), Sh / Ch, 1e-15) << X;
    EXPECT_NEAR(Number(u"coth", X) * Number(u"tanh", X), 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"csch", X) * Sh, 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"sech", X) * Ch, 1, 1e-14) << X;
    EXPECT_NEAR(Number(u"asinh", Sh), X, 1e-13) << X;
    EXPECT_NEAR(Number(u"acsch", Number(u"csch", X)), X, 1e-13) << X;
    EXPECT_NEAR(Number(u"acosh", Ch), std::fabs(X), 1e-13) << X;
    EXPECT_NEAR(Number(u"asech", Number(u"sech", X)), std::fabs(X), 1e-12) << X;
  }
  for (double X : {-2.0, -0.3, 0.6, 3.0}) {
    EXPECT_NEAR(Number(u"atanh", Number(u"tanh", X)), X, 1e-13) << X;
    EXPECT_NEAR(Number(u"acoth", Number(u"coth", X)), X, 1e-13) << X;
  }
  // Far out, the reciprocals of growing functions fade to 0 instead of failing.
  EXPECT_EQ(Number(u"csch", 1000), 0);
  EXPECT_EQ(Number(u"sech", -1000), 0);
}

TEST_F(TrigonometryPackageTest, UnitsConvertBothWays) {
  EXPECT_DOUBLE_EQ(Number(u"deg-rad", 180), Pi);
  EXPECT_DOUBLE_EQ(Number(u"rad-deg", Pi / 2), 90);
  EXPECT_DOUBLE_EQ(Number(u"grad-rad", 200), Pi);
  EXPECT_DOUBLE_EQ(Number(u"rad-grad", Pi), 200);
  EXPECT_DOUBLE_EQ(Number(u"cycle-rad", 1), 2 * Pi);
  EXPECT_DOUBLE_EQ(Number(u"rad-cycle", Pi), 0.5);
  EXPECT_DOUBLE_EQ(Number(u"deg-grad", 90), 100);
  EXPECT_DOUBLE_EQ(Number(u"grad-deg", 100), 90);
  for (double X : {-720.0, -1.0, 0.0, 33.3, 1e6}) {
    EXPECT_NEAR(Number(u"rad-deg", Number(u"deg-rad", X)), X, 1e-12 * std::max(1.0, std::fabs(X)));
    EXPECT_NEAR(Number(u"rad-grad", Number(u"grad-rad", X)), X, 1e-12 * std::max(1.0, std::fabs(X)));
    EXPECT_NEAR(Number(u"rad-cycle", Number(u"cycle-rad", X)), X, 1e-12 * std::max(1.0, std::fabs(X)));
    EXPECT_NEAR(Number(u"grad-deg", Number(u"deg-grad", X)), X, 1e-12 * std::max(1.0, std::fabs(X)));
  }
}

TEST_F(TrigonometryPackageTest, ResultsAreFloatsAndArgumentsAreNumbers) {
  EXPECT_EQ(Run(u"cos", {Int(0)})->GetDType(), dtFloat);
  EXPECT_EQ(Run(u"deg-grad", {Int(9)})->GetDType(), dtFloat);
  EXPECT_EQ(Run(u"hypotenuse", {Int(3), Int(4)})->ToString(), u"5.0000");
  EXPECT_EQ(Run(u"sin", {Str(u"0")})->ToString(), u"0.0000") << "the numeric reader takes a numeric text";
  EXPECT_EQ(Failure(u"sin", {Atom(u"x")}), u"Not a numeric type.  Value (x) is a dtAtom type");
  EXPECT_EQ(Failure(u"sin", {}), u"Too few arguments for sin");
  EXPECT_EQ(Failure(u"atan2", {Int(1)}), u"Too few arguments for atan2");
  EXPECT_EQ(Failure(u"hypotenuse", {Int(1), Int(2), Int(3)}), u"Too many arguments for hypotenuse");
}

TEST_F(TrigonometryPackageTest, ArgumentsOutsideTheDomainRaiseTheFloatTraps) {
  struct TCase {
    const char16_t* Name;
    double X;
    const char16_t* Message;
  };
  const TCase Cases[] = {
      {u"acos", 1.0000001, u"Invalid floating point operation in acos"},
      {u"asin", -2, u"Invalid floating point operation in asin"},
      {u"acosh", 0.5, u"Invalid floating point operation in acosh"},
      {u"atanh", 1.5, u"Invalid floating point operation in atanh"},
      {u"atanh", -1, u"Floating point division by zero in atanh"},
      {u"acoth", 0.5, u"Invalid floating point operation in acoth"},
      {u"acoth", 1, u"Floating point division by zero in acoth"},
      {u"acsc", 0.5, u"Invalid floating point operation in acsc"},
      {u"asec", 0, u"Invalid floating point operation in asec"},
      {u"asech", 2, u"Invalid floating point operation in asech"},
      {u"asech", -0.5, u"Invalid floating point operation in asech"},
      {u"asech", 0, u"Floating point division by zero in asech"},
      {u"acsch", 0, u"Floating point division by zero in acsch"},
      {u"cot", 0, u"Floating point division by zero in cot"},
      {u"csc", 0, u"Floating point division by zero in csc"},
      {u"coth", 0, u"Floating point division by zero in coth"},
      {u"csch", 0, u"Floating point division by zero in csch"},
      {u"sinh", 800, u"Floating point overflow in sinh"},
      {u"cosh", -800, u"Floating point overflow in cosh"},
      {u"deg-grad", 1.7e308, u"Floating point overflow in deg-grad"},
      {u"cycle-rad", -1e308, u"Floating point overflow in cycle-rad"},
      {u"sin", INFINITY, u"Invalid floating point operation in sin"},
  };
  for (const TCase& Case : Cases) EXPECT_EQ(Failure(Case.Name, {Flt(Case.X)}), Case.Message) << Case.X;
  // The edges of the domains still answer.
  EXPECT_DOUBLE_EQ(Number(u"acos", 1), 0);
  EXPECT_DOUBLE_EQ(Number(u"acosh", 1), 0);
  EXPECT_DOUBLE_EQ(Number(u"asec", -1), Pi);
  EXPECT_DOUBLE_EQ(Number(u"asech", 1), 0);
  // An infinite argument is no overflow of the function, and NaN passes on.
  EXPECT_EQ(Number(u"cosh", INFINITY), INFINITY);
  EXPECT_DOUBLE_EQ(Number(u"atan", -INFINITY), -Pi / 2);
  EXPECT_TRUE(std::isnan(Number(u"acos", NAN)));
  EXPECT_EQ(Failure(u"hypotenuse", {Flt(1.5e308), Flt(1.5e308)}), u"Floating point overflow in hypotenuse");
  EXPECT_DOUBLE_EQ(Run(u"hypotenuse", {Flt(3e300), Flt(4e300)})->GetAsNumeric(), 5e300)
      << "no overflow on the way to a result that fits";
}

TEST_F(TrigonometryPackageTest, DistancesWalkTheCoordinatesOfTwoPoints) {
  const ITavoValue Origin = List({Int(0), Int(0)});
  const ITavoValue Point = List({Int(3), Int(-4)});
  EXPECT_EQ(Run(u"distance", {Origin, Point})->ToString(), u"5.0000");
  EXPECT_EQ(Run(u"distance-sqr", {Origin, Point})->ToString(), u"25.0000");
  EXPECT_EQ(Run(u"distance-manhattan", {Origin, Point})->ToString(), u"7.0000");
  const ITavoValue A = List({Flt(1.5), Int(-2), Int(7), Str(u"4")});
  const ITavoValue B = List({Int(-1), Flt(0.5), Int(7), Int(1)});
  EXPECT_DOUBLE_EQ(Run(u"distance-sqr", {A, B})->GetAsNumeric(), 2.5 * 2.5 + 2.5 * 2.5 + 0 + 9);
  EXPECT_DOUBLE_EQ(Run(u"distance-manhattan", {B, A})->GetAsNumeric(), 2.5 + 2.5 + 0 + 3);
  EXPECT_EQ(Run(u"distance", {List({}), List({})})->ToString(), u"0.0000");
  EXPECT_EQ(Run(u"distance", {List({}), List({})})->GetDType(), dtFloat);

  const String Mismatch = u"Invalid multifield arguments, the two multifields must be of the same length";
  EXPECT_EQ(Failure(u"distance", {List({Int(1)}), List({Int(1), Int(2)})}), Mismatch);
  EXPECT_EQ(Failure(u"distance-manhattan", {List({Int(1), Int(2)}), List({})}), Mismatch);
  EXPECT_EQ(Failure(u"distance-sqr", {Int(1), List({Int(1)})}), u"Not a list type.  Value (1) is a dtInteger type");
  EXPECT_EQ(Failure(u"distance", {List({Atom(u"a")}), List({Int(1)})}),
            u"Not a numeric type.  Value (a) is a dtAtom type");
  EXPECT_EQ(Failure(u"distance-sqr", {List({Flt(1e200)}), List({Flt(-1e200)})}),
            u"Floating point overflow in distance-sqr");
}

TEST(TrigonometryPackageEngineTest, TheFunctionsComeWithTheTrigonometryPackageOnly) {
  TInferenceEngine Engine;
  IUserFunction Function;
  for (const char16_t* Name : {u"sin", u"acsch", u"grad-deg", u"atan2", u"distance-manhattan"})
    EXPECT_TRUE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  EXPECT_EQ(Engine.ParseNExecuteFunCall(u"(rad-deg (atan2 0 1))")->GetAsNumeric(), 90);
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pTrigonometry);
  Engine.SetPackages(Packages);
  for (const char16_t* Name : {u"sin", u"acsch", u"grad-deg", u"atan2", u"distance-manhattan"})
    EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  EXPECT_TRUE(Engine.ContainsUserFunction(u"sqrt", Function)) << "the math package stays";
}

}  // namespace
}  // namespace tavo
