#include "packages/BusinessPackage.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// Cents on sums of thousands: far below what the functions print.
constexpr double Close = 1e-9;

// Textbook forms, written apart from the routines: the payment that repays a
// loan by the end of n periods, and the value of n equal payments at the
// end of each period, at the end of the last.
double LoanPayment(double Rate, int N, double Loan) { return Loan * Rate / (1 - std::pow(1 + Rate, -N)); }
double AnnuityValue(double Rate, int N, double Each) { return Each * (std::pow(1 + Rate, N) - 1) / Rate; }

// The first root of a function between Low and High by bisection.
template <class F>
double Bisect(F&& Function, double Low, double High) {
  for (int I = 0; I < 200; ++I) {
    const double Middle = (Low + High) / 2;
    if ((Function(Low) < 0) == (Function(Middle) < 0))
      Low = Middle;
    else
      High = Middle;
  }
  return (Low + High) / 2;
}

TEST(BusinessRoutinesTest, AnnuitiesAgreeWithTheTextbookFormsAndTheSigns) {
  for (double Rate : {0.005, 0.01, 0.08, 0.25}) {
    for (int N : {1, 12, 360}) {
      const double Loan = 250000;
      // A loan received is repaid by payments made: the signs differ.
      EXPECT_NEAR(Payment(Rate, N, Loan, 0, ptEndOfPeriod), -LoanPayment(Rate, N, Loan), Close * Loan);
      // Payments at the start earn one period more, so each is smaller.
      EXPECT_NEAR(Payment(Rate, N, Loan, 0, ptStartOfPeriod), -LoanPayment(Rate, N, Loan) / (1 + Rate),
                  Close * Loan);
      const double Saved = AnnuityValue(Rate, N, 100);
      EXPECT_NEAR(FutureValue(Rate, N, -100, 0, ptEndOfPeriod), Saved, Close * Saved);
      EXPECT_NEAR(FutureValue(Rate, N, -100, 0, ptStartOfPeriod), Saved * (1 + Rate), Close * Saved);
      const double Grown = 1000 * std::pow(1 + Rate, N);
      EXPECT_NEAR(FutureValue(Rate, N, 0, -1000, ptEndOfPeriod), Grown, Close * Grown);
      EXPECT_NEAR(PresentValue(Rate, N, 0, 1000, ptEndOfPeriod), -1000 / std::pow(1 + Rate, N), Close);
      EXPECT_NEAR(PresentValue(Rate, N, -LoanPayment(Rate, N, Loan), 0, ptEndOfPeriod), Loan, Close * Loan);
    }
  }
  // At a rate of 0 the payments simply add up.
  EXPECT_DOUBLE_EQ(Payment(0, 10, 1000, 0, ptEndOfPeriod), -100);
  EXPECT_DOUBLE_EQ(Payment(0, 10, 1000, 0, ptStartOfPeriod), -100);
  EXPECT_DOUBLE_EQ(FutureValue(0, 4, -25, -100, ptEndOfPeriod), 200);
  EXPECT_DOUBLE_EQ(NumberOfPeriods(0, -100, 1000, 0, ptEndOfPeriod), 10);
  // A rate too small to show in (1 + r) is still not 0.
  EXPECT_NEAR(FutureValue(1e-17, 1, 0, -1e17, ptEndOfPeriod), 1e17 + 1, 1e-3);
}

TEST(BusinessRoutinesTest, RatesAndPeriodsAreFoundBackFromThePayment) {
  for (TPaymentTime Timing : {ptEndOfPeriod, ptStartOfPeriod}) {
    for (double Rate : {-0.02, 0.0, 1e-7, 0.0045, 0.07, 0.6}) {
      for (int N : {2, 30, 240}) {
        const double Each = Payment(Rate, N, 10000, -2000, Timing);
        EXPECT_NEAR(InterestRate(N, Each, 10000, -2000, Timing), Rate, 1e-10) << Rate << " " << N;
        // Where the loan grows by many orders, the balloon is lost in the
        // digits of the payment, and the term with it.
        if (std::pow(1 + Rate, N) > 1e4) continue;
        EXPECT_NEAR(NumberOfPeriods(Rate, Each, 10000, -2000, Timing), N, 1e-8) << Rate << " " << N;
        EXPECT_NEAR(FutureValue(Rate, N, Each, 10000, Timing), -2000, Close * 1e4);
      }
    }
  }
  // Payments that do not come out even take a fraction of a period.
  const double Periods = NumberOfPeriods(0.01, -1000, 10000, 0, ptEndOfPeriod);
  EXPECT_NEAR(Periods, -std::log(1 - 10000 * 0.01 / 1000) / std::log(1.01), 1e-12);
}

TEST(BusinessRoutinesTest, EachPaymentSplitsIntoTheInterestAndThePrincipalOfTheSchedule) {
  const double Rate = 0.015;
  const int N = 24;
  const double Loan = 18000;
  const double Balloon = -3000;
  for (TPaymentTime Timing : {ptEndOfPeriod, ptStartOfPeriod}) {
    const double Each = Payment(Rate, N, Loan, Balloon, Timing);
    // The schedule walked period by period: what is owed, as a positive
    // amount, earns interest through each period and shrinks by each
    // payment; interest is paid as it falls due.
    double Owed = Loan;
    double Principal = 0;
    for (int Period = 1; Period <= N; ++Period) {
      double Interest;
      if (Timing == ptStartOfPeriod) {
        // The payment opens the period and pays the interest of the last.
        Interest = Period == 1 ? 0 : Owed * Rate / (1 + Rate);
        Owed += Each;
        Owed *= 1 + Rate;
      } else {
        Interest = Owed * Rate;
        Owed = Owed * (1 + Rate) + Each;
      }
      const double PaidInterest = InterestPayment(Rate, Period, N, Loan, Balloon, Timing);
      const double PaidPrincipal = PeriodPayment(Rate, Period, N, Loan, Balloon, Timing);
      EXPECT_NEAR(PaidInterest, -Interest, 1e-8) << Timing << " " << Period;
      EXPECT_NEAR(PaidInterest + PaidPrincipal, Each, 1e-9);
      Principal += PaidPrincipal;
    }
    EXPECT_NEAR(Owed, -Balloon, 1e-7) << "what remains is the balloon";
    // The payments repay the loan less what the balloon is worth after the
    // last of them; with payments at the start the last period's interest
    // is still to come then.
    const double Left = Timing == ptStartOfPeriod ? -Balloon / (1 + Rate) : -Balloon;
    EXPECT_NEAR(Principal, -(Loan - Left), 1e-7);
  }
  EXPECT_EQ(InterestPayment(0.1, 1, 2, 1000, 0, ptStartOfPeriod), 0) << "the first payment precedes any interest";
  EXPECT_DOUBLE_EQ(InterestPayment(0.1, 1, 2, 1000, 0, ptEndOfPeriod), -100);
}

TEST(BusinessRoutinesTest, CashFlowsAreDiscountedFromTheEndOrTheStartOfTheirPeriods) {
  const std::vector<double> Flows{-1000, 300, 400, 500, 200};
  double AtEnd = 0;
  for (size_t I = 0; I < Flows.size(); ++I) AtEnd += Flows[I] / std::pow(1.08, double(I + 1));
  EXPECT_NEAR(NetPresentValue(0.08, Flows, ptEndOfPeriod), AtEnd, 1e-10);
  EXPECT_NEAR(NetPresentValue(0.08, Flows, ptStartOfPeriod), AtEnd * 1.08, 1e-10);
  EXPECT_NEAR(NetPresentValue(0.1, {100, 100}, ptEndOfPeriod), 100 / 1.1 + 100 / 1.21, 1e-12);
  EXPECT_EQ(NetPresentValue(0.1, {}, ptEndOfPeriod), 0);

  auto Worth = [&](double Rate) { return NetPresentValue(Rate, Flows, ptStartOfPeriod); };
  const double Expected = Bisect(Worth, 0, 1);
  for (double Guess : {-0.5, 0.0, 0.1, 2.0}) EXPECT_NEAR(InternalRateOfReturn(Guess, Flows), Expected, 1e-12);
  EXPECT_NEAR(InternalRateOfReturn(0.1, {-100, 110}), 0.1, 1e-14);
  EXPECT_NEAR(InternalRateOfReturn(0.1, {-100, 0, 0, 0, 50}), std::pow(0.5, 0.25) - 1, 1e-14) << "a loss";
  EXPECT_NEAR(InternalRateOfReturn(0.1, {100, -110}), 0.1, 1e-14) << "a loan taken turns the signs round";
}

TEST(BusinessRoutinesTest, DepreciationsShareOutCostLessSalvage) {
  EXPECT_DOUBLE_EQ(SLNDepreciation(1000, 100, 9), 100);
  double Digits = 0;
  double Declining = 0;
  for (int Period = 1; Period <= 8; ++Period) {
    const double Year = SYDDepreciation(30000, 2000, 8, Period);
    EXPECT_DOUBLE_EQ(Year, 28000.0 * (8 - Period + 1) / 36);
    Digits += Year;
    Declining += DoubleDecliningBalance(30000, 2000, 8, Period);
    EXPECT_GE(30000 - Declining, 2000 - 1e-9) << "the book value stays above the salvage";
  }
  EXPECT_NEAR(Digits, 28000, 1e-9);
  EXPECT_DOUBLE_EQ(DoubleDecliningBalance(30000, 2000, 8, 1), 7500);
  EXPECT_DOUBLE_EQ(DoubleDecliningBalance(30000, 2000, 8, 3), 30000 * 0.75 * 0.75 * 0.25);
  // A high salvage ends the depreciation early.
  EXPECT_DOUBLE_EQ(DoubleDecliningBalance(1000, 500, 5, 2), 100);
  EXPECT_EQ(DoubleDecliningBalance(1000, 500, 5, 3), 0);
  EXPECT_DOUBLE_EQ(DoubleDecliningBalance(1000, 100, 1, 1), 900) << "a life of 1 takes all at once";
}

TEST(BusinessRoutinesTest, InputsTheFormulasCannotTakeRaise) {
  EXPECT_EQ(FailureOf([] { SYDDepreciation(1000, 0, 5, 0); }), u"Period 0 is outside 1 to 5");
  EXPECT_EQ(FailureOf([] { DoubleDecliningBalance(1000, 0, 5, 6); }), u"Period 6 is outside 1 to 5");
  EXPECT_EQ(FailureOf([] { SLNDepreciation(1000, 0, 0); }), u"Invalid life 0, an asset's life is at least 1 period");
  EXPECT_EQ(FailureOf([] { InterestPayment(0.1, 13, 12, 1000, 0, ptEndOfPeriod); }), u"Period 13 is outside 1 to 12");
  EXPECT_EQ(FailureOf([] { FutureValue(-1, 1, 0, 1, ptEndOfPeriod); }), u"Invalid rate -1, a rate must be above -1");
  EXPECT_EQ(FailureOf([] { Payment(0.1, 1, 1, 0, TPaymentTime(2)); }), u"Payment time out of range: 2");
  EXPECT_EQ(FailureOf([] { Payment(0.1, 0, 1000, 0, ptEndOfPeriod); }), u"Floating point division by zero in payment");
  EXPECT_EQ(FailureOf([] { NumberOfPeriods(0, 0, 1000, 0, ptEndOfPeriod); }),
            u"Floating point division by zero in number-of-periods");
  EXPECT_EQ(FailureOf([] { InternalRateOfReturn(0.1, {1, 2, 3}); }),
            u"Cash flows without both a positive and a negative amount have no internal rate of return");
  EXPECT_EQ(FailureOf([] { InternalRateOfReturn(0.1, {}); }),
            u"Cash flows without both a positive and a negative amount have no internal rate of return");
  // Payments and values all received: no rate makes them balance.
  EXPECT_EQ(FailureOf([] { InterestRate(10, 100, 100, 100, ptEndOfPeriod); }),
            u"interest-rate found no solution within 100 iterations");
  EXPECT_EQ(PaymentTimeOf(u"PTSTARTOFPERIOD"), ptStartOfPeriod);
  EXPECT_EQ(FailureOf([] { PaymentTimeOf(u"end"); }),
            u"Invalid payment time \"end\", expected ptEndOfPeriod or ptStartOfPeriod");
}

TEST(BusinessPackageTest, FunctionsReadTheirArgumentsAndComeWithTheBusinessPackageOnly) {
  TInferenceEngine Engine;
  auto Eval = [&](const char16_t* Text) { return Engine.ParseNExecuteFunCall(Text); };
  const ITavoValue Each = Eval(u"(payment 0.01 360 100000 0 ptEndOfPeriod)");
  EXPECT_EQ(Each->GetDType(), dtFloat);
  EXPECT_NEAR(Each->GetAsNumeric(), -LoanPayment(0.01, 360, 100000), 1e-9);
  EXPECT_EQ(Eval(u"(sln-depreciation 1000 100 9)")->ToString(), u"100.0000");
  EXPECT_DOUBLE_EQ(Eval(u"(syd-depreciation 1000 100 9.9 \"1\")")->GetAsNumeric(), 900.0 * 9 / 45)
      << "life and period go through the integer reader";
  EXPECT_EQ(FailureOf([&] { Eval(u"(future-value 0.1 10 -100 0 \"ptEndOfPeriod\")"); }), u"(no failure)");
  EXPECT_EQ(FailureOf([&] { Eval(u"(future-value 0.1 10 -100 0 0)"); }),
            u"Invalid payment time \"0\", expected ptEndOfPeriod or ptStartOfPeriod");
  EXPECT_EQ(FailureOf([&] { Eval(u"(present-value 0.1 10 -100 ptEndOfPeriod)"); }),
            u"Too few arguments for present-value");
  EXPECT_EQ(FailureOf([&] { Eval(u"(net-present-value 0.1 100 ptEndOfPeriod)"); }),
            u"Not a list type.  Value (100) is a dtInteger type");

  const char16_t* Names[] = {u"double-declining-balance", u"future-value", u"interest-payment", u"interest-rate",
                             u"internal-rate-of-return", u"net-present-value", u"number-of-periods", u"payment",
                             u"period-payment", u"present-value", u"sln-depreciation", u"syd-depreciation"};
  IUserFunction Function;
  for (const char16_t* Name : Names) EXPECT_TRUE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pBusiness);
  Engine.SetPackages(Packages);
  for (const char16_t* Name : Names) EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  EXPECT_TRUE(Engine.ContainsUserFunction(u"sin", Function)) << "the trigonometry package stays";
}

}  // namespace
}  // namespace tavo
