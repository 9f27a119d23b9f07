#include "packages/BusinessPackage.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace tavo {

namespace {

void CheckTiming(TPaymentTime Timing) {
  if (Timing != ptEndOfPeriod && Timing != ptStartOfPeriod)
    throw ETavoException(Format(SPaymentTimeOutOfRange, int(Timing)));
}

void CheckRate(double Rate) {
  if (!(Rate > -1)) throw ETavoException(Format(SInvalidRate, Rate));
}

void CheckPeriod(int Period, int Last) {
  if (Period < 1 || Period > Last) throw ETavoException(Format(SPeriodOutOfRange, Period, Last));
}

void CheckLife(int Life) {
  if (Life < 1) throw ETavoException(Format(SInvalidAssetLife, Life));
}

// A division whose divisor the arguments can make 0, raised as the float
// unit's trap under the name of the function that divides.
double Quotient(double Dividend, double Divisor, const char16_t* Name) {
  if (Divisor == 0 && Dividend != 0 && !std::isnan(Dividend)) throw ETavoException(Format(SFloatDivisionByZero, Name));
  return Dividend / Divisor;
}

// 1 + r for payments at the start of the period, when each earns interest
// a period longer, else 1.
double Due(double Rate, TPaymentTime Timing) { return Timing == ptStartOfPeriod ? 1 + Rate : 1; }

// (1 + r)^n, and ((1 + r)^n - 1) / r with its limit n at r = 0, both
// through log1p and expm1 so that rates near 0 keep their digits.
double Growth(double Rate, double Periods) { return std::exp(Periods * std::log1p(Rate)); }

double Annuity(double Rate, double Periods) {
  return Rate == 0 ? Periods : std::expm1(Periods * std::log1p(Rate)) / Rate;
}

// The derivative of Annuity by the rate; near 0 its first terms, where the
// closed form would cancel away its digits.
double AnnuitySlope(double Rate, double Periods) {
  const double N = Periods;
  if (std::fabs(Rate) < 1e-8) return N * (N - 1) / 2 + N * (N - 1) * (N - 2) / 6 * Rate;
  return (N * Growth(Rate, N - 1) - Annuity(Rate, N)) / Rate;
}

// The present value of one unit paid at the end of each of n periods,
// (1 - (1 + r)^-n) / r, with its limit n at r = 0, and its derivative by
// the rate; near 0 the derivative's first terms, where the closed form
// would cancel away its digits.
double Discounted(double Rate, double Periods) {
  return Rate == 0 ? Periods : -std::expm1(-Periods * std::log1p(Rate)) / Rate;
}

double DiscountedSlope(double Rate, double Periods) {
  const double N = Periods;
  if (std::fabs(Rate) < 1e-8) return -N * (N + 1) / 2 + N * (N + 1) * (N + 2) / 3 * Rate;
  return (N * Growth(Rate, -N - 1) - Discounted(Rate, N)) / Rate;
}

// A rate equation at one rate: its value, its derivative by the rate, and
// the size of its terms, against which the value counts as 0.
struct TRateEquation {
  double Value;
  double Slope;
  double Scale;
};

// Newton's search for a root of Equation from Start, keeping the rate above
// -1: a step that would cross -1 goes halfway there instead, and a step that
// leaves the equation's numbers is halved back until it stays within them.
// Only a full step counts towards convergence, and only where the value is
// 0 within FinanceResidual of the terms' size.
template <class F>
bool SearchRate(double Start, F&& Equation, double& Found) {
  double Rate = Start;
  for (int Step = 0; Step < FinanceIterations; ++Step) {
    const TRateEquation At = Equation(Rate);
    if (At.Value == 0) {
      Found = Rate;
      return true;
    }
    if (!std::isfinite(At.Value) || !std::isfinite(At.Slope) || At.Slope == 0) break;
    double Next = Rate - At.Value / At.Slope;
    bool Damped = false;
    if (!(Next > -1)) {
      Next = (Rate - 1) / 2;
      Damped = true;
    }
    for (int Halving = 0; Halving < 60 && !std::isfinite(Equation(Next).Value); ++Halving) {
      Next = (Rate + Next) / 2;
      Damped = true;
    }
    if (!Damped && std::fabs(Next - Rate) <= FinanceTolerance * std::max(1.0, std::fabs(Next))) {
      const TRateEquation Landed = Equation(Next);
      Found = Next;
      return std::fabs(Landed.Value) <= FinanceResidual * Landed.Scale;
    }
    Rate = Next;
  }
  return false;
}

}  // namespace

TPaymentTime PaymentTimeOf(const String& Text) {
  if (SameText(Text, u"ptEndOfPeriod")) return ptEndOfPeriod;
  if (SameText(Text, u"ptStartOfPeriod")) return ptStartOfPeriod;
  throw ETavoException(Format(SInvalidPaymentTime, Text));
}

double FutureValue(double Rate, int Periods, double Payment, double PresentValue, TPaymentTime Timing) {
  CheckTiming(Timing);
  CheckRate(Rate);
  return -(PresentValue * Growth(Rate, Periods) + Payment * Due(Rate, Timing) * Annuity(Rate, Periods));
}

double PresentValue(double Rate, int Periods, double Payment, double FutureValue, TPaymentTime Timing) {
  CheckTiming(Timing);
  CheckRate(Rate);
  return -(FutureValue + Payment * Due(Rate, Timing) * Annuity(Rate, Periods)) / Growth(Rate, Periods);
}

double Payment(double Rate, int Periods, double PresentValue, double FutureValue, TPaymentTime Timing) {
  CheckTiming(Timing);
  CheckRate(Rate);
  return Quotient(-(FutureValue + PresentValue * Growth(Rate, Periods)), Due(Rate, Timing) * Annuity(Rate, Periods),
                  u"payment");
}

double NumberOfPeriods(double Rate, double Payment, double PresentValue, double FutureValue, TPaymentTime Timing) {
  CheckTiming(Timing);
  CheckRate(Rate);
  if (Rate == 0) return Quotient(-(PresentValue + FutureValue), Payment, u"number-of-periods");
  // pv g + a (g - 1) + fv = 0 with g = (1 + r)^n and a = pmt (1 + r t) / r.
  const double A = Payment * Due(Rate, Timing) / Rate;
  const double Ratio = Quotient(A - FutureValue, A + PresentValue, u"number-of-periods");
  if (Ratio == 0) throw ETavoException(Format(SFloatDivisionByZero, u"number-of-periods"));
  return std::log(Ratio) / std::log1p(Rate);
}

double InterestRate(int Periods, double Payment, double PresentValue, double FutureValue, TPaymentTime Timing) {
  CheckTiming(Timing);
  const double N = Periods;
  const double T = Timing == ptStartOfPeriod ? 1 : 0;
  // The equation in future values, and divided by (1 + r)^n in present
  // values: Newton's steps go well on the first for small rates and long
  // terms, on the second for high rates, where its terms stay bounded.
  //   pv + pmt (1 + r t) (1 - (1 + r)^-n) / r + fv (1 + r)^-n = 0
  auto InFutureValues = [&](double Rate) {
    const double A = Annuity(Rate, N);
    const double G = Growth(Rate, N);
    const double Value = PresentValue * G + Payment * Due(Rate, Timing) * A + FutureValue;
    const double Slope =
        PresentValue * N * G / (1 + Rate) + Payment * (T * A + Due(Rate, Timing) * AnnuitySlope(Rate, N));
    const double Scale =
        std::fabs(PresentValue * G) + std::fabs(Payment * Due(Rate, Timing) * A) + std::fabs(FutureValue);
    return TRateEquation{Value, Slope, Scale};
  };
  auto InPresentValues = [&](double Rate) {
    const double B = Discounted(Rate, N);
    const double V = Growth(Rate, -N);
    const double Value = PresentValue + Payment * Due(Rate, Timing) * B + FutureValue * V;
    const double Slope =
        Payment * (T * B + Due(Rate, Timing) * DiscountedSlope(Rate, N)) - FutureValue * N * V / (1 + Rate);
    const double Scale =
        std::fabs(PresentValue) + std::fabs(Payment * Due(Rate, Timing) * B) + std::fabs(FutureValue * V);
    return TRateEquation{Value, Slope, Scale};
  };
  double Rate;
  if (SearchRate(InterestRateStart, InFutureValues, Rate) || SearchRate(InterestRateStart, InPresentValues, Rate))
    return Rate;
  throw ETavoException(Format(SNoConvergence, u"interest-rate", FinanceIterations));
}

double InterestPayment(double Rate, int Period, int Periods, double PresentValue, double FutureValue,
                       TPaymentTime Timing) {
  CheckPeriod(Period, Periods);
  const double Each = Payment(Rate, Periods, PresentValue, FutureValue, Timing);
  // The interest of a period falls on the balance owed through it: after
  // Period - 1 payments at the end, or for payments at the start, after
  // the payment that opens the period; that interest is paid with the next
  // payment, so the first one carries none.
  if (Timing == ptEndOfPeriod)
    return -Rate * (PresentValue * Growth(Rate, Period - 1) + Each * Annuity(Rate, Period - 1));
  if (Period == 1) return 0;
  return -Rate * (PresentValue * Growth(Rate, Period - 2) + Each * (1 + Rate) * Annuity(Rate, Period - 2) + Each);
}

double PeriodPayment(double Rate, int Period, int Periods, double PresentValue, double FutureValue,
                     TPaymentTime Timing) {
  const double Interest = InterestPayment(Rate, Period, Periods, PresentValue, FutureValue, Timing);
  return Payment(Rate, Periods, PresentValue, FutureValue, Timing) - Interest;
}

double NetPresentValue(double Rate, const std::vector<double>& CashFlows, TPaymentTime Timing) {
  CheckTiming(Timing);
  CheckRate(Rate);
  double Sum = 0;
  double Time = Timing == ptEndOfPeriod ? 1 : 0;
  for (double Flow : CashFlows) Sum += Flow / Growth(Rate, Time++);
  return Sum;
}

double InternalRateOfReturn(double Guess, const std::vector<double>& CashFlows) {
  CheckRate(Guess);
  const bool Gains = std::any_of(CashFlows.begin(), CashFlows.end(), [](double Flow) { return Flow > 0; });
  const bool Losses = std::any_of(CashFlows.begin(), CashFlows.end(), [](double Flow) { return Flow < 0; });
  if (!Gains || !Losses) throw ETavoException(SNoSignChange);
  auto Equation = [&](double Rate) {
    TRateEquation At{0, 0, 0};
    double Time = 0;
    for (double Flow : CashFlows) {
      const double Discounted = Flow / Growth(Rate, Time);
      At.Value += Discounted;
      At.Slope -= Time * Discounted / (1 + Rate);
      At.Scale += std::fabs(Discounted);
      ++Time;
    }
    return At;
  };
  double Rate;
  if (SearchRate(Guess, Equation, Rate)) return Rate;
  throw ETavoException(Format(SNoConvergence, u"internal-rate-of-return", FinanceIterations));
}

double SLNDepreciation(double Cost, double Salvage, int Life) {
  CheckLife(Life);
  return (Cost - Salvage) / Life;
}

double SYDDepreciation(double Cost, double Salvage, int Life, int Period) {
  CheckLife(Life);
  CheckPeriod(Period, Life);
  const double Years = Life;
  return (Cost - Salvage) * (Years - Period + 1) / (Years * (Years + 1) / 2);
}

double DoubleDecliningBalance(double Cost, double Salvage, int Life, int Period) {
  CheckLife(Life);
  CheckPeriod(Period, Life);
  const double Rate = 2.0 / Life;
  double Book = Cost;
  double Depreciation = 0;
  for (int P = 1; P <= Period; ++P) {
    Depreciation = std::max(0.0, std::min(Book * Rate, Book - Salvage));
    Book -= Depreciation;
  }
  return Depreciation;
}

namespace {

ITavoValue FloatValue(double Value) { return Make<TTavoValue>(Value); }

// The arguments of a call, read in order as its argument string names them,
// each also kept for the trap on the result.
class TReader {
 public:
  TReader(TFunctionCall& FunCall, TTavoContext* Context) : FCall(FunCall), FContext(Context) {}
  double Number() { return Keep(FCall.Argument(FNext++, FContext)->GetAsNumeric()); }
  int Integer() { return int(Keep(FCall.Argument(FNext++, FContext)->GetAsInteger())); }
  TPaymentTime Timing() { return PaymentTimeOf(FCall.Argument(FNext++, FContext)->GetAsString()); }
  template <class T>
  T Next();
  std::vector<double> Flows() {
    const IValueVector List = FCall.Argument(FNext++, FContext)->GetAsList();
    std::vector<double> Result;
    for (int I = 0; I < List->GetValueCount(); ++I) Result.push_back(Keep(List->Get(I)->GetAsNumeric()));
    return Result;
  }
  // The result as a float value, after the float unit's traps.
  ITavoValue Result(const String& Name, double Value) const { return FloatValue(TrapFloat(Name, Value, FRead)); }
  // Reads the routine's parameters from the arguments in their order, by
  // their types, and gives the routine's result.
  template <class... A>
  ITavoValue Apply(const String& Name, double (*Routine)(A...)) {
    // A braced list is evaluated from left to right: the arguments are
    // read in the routine's order.
    std::tuple<std::decay_t<A>...> Arguments{Next<std::decay_t<A>>()...};
    return Result(Name, std::apply(Routine, Arguments));
  }

 private:
  double Keep(double Value) {
    FRead.push_back(Value);
    return Value;
  }
  TFunctionCall& FCall;
  TTavoContext* FContext;
  int FNext = 0;
  std::vector<double> FRead;
};

template <>
double TReader::Next<double>() {
  return Number();
}
template <>
int TReader::Next<int>() {
  return Integer();
}
template <>
TPaymentTime TReader::Next<TPaymentTime>() {
  return Timing();
}
template <>
std::vector<double> TReader::Next<std::vector<double>>() {
  return Flows();
}

}  // namespace

// The number of parameters of a routine.
template <class... A>
constexpr int ParameterCount(double (*)(A...)) {
  return int(sizeof...(A));
}

// A function that reads the parameters of Routine from its arguments, in
// order, and gives the routine's result through the float traps. It takes
// as many arguments as the routine has parameters, no more and no fewer.
#define TAVO_ROUTINE_FUNCTION(ClassName, Name, Comment, ArgumentString, Routine)                                     \
  TAVO_DEFINE_FUNCTION(ClassName, Name, Comment, ArgumentString, ParameterCount(&Routine), ParameterCount(&Routine), \
                       Result = TReader(FunCall, Context).Apply(FFunctionName, &Routine))

TAVO_ROUTINE_FUNCTION(
    TDoubleDecliningBalanceFunction, u"double-declining-balance",
    u"Returns the depreciation of an asset in a period by twice the straight-line rate on its book value",
    u" <cost> <salvage> <life> <period>", DoubleDecliningBalance)
TAVO_ROUTINE_FUNCTION(TFutureValueFunction, u"future-value",
                      u"Returns the future value of an investment of periodic payments at a fixed rate",
                      u" <rate> <num-periods> <payment> <present-value> <payment time>", FutureValue)
TAVO_ROUTINE_FUNCTION(TInterestPaymentFunction, u"interest-payment",
                      u"Returns the interest in one period's payment of a loan",
                      u" <rate> <period> <num-periods> <present-value> <future-value> <payment time>", InterestPayment)
TAVO_ROUTINE_FUNCTION(TInterestRateFunction, u"interest-rate",
                      u"Returns the rate per period at which the payments turn the present value into "
                      u"the future value",
                      u" <num-periods> <payment> <present-value> <future-value> <payment time>", InterestRate)
TAVO_ROUTINE_FUNCTION(TInternalRateOfReturnFunction, u"internal-rate-of-return",
                      u"Returns the rate at which cash flows, one per period from the first at time 0, are worth 0 now",
                      u" <guess> <cash-flows multifield>", InternalRateOfReturn)
TAVO_ROUTINE_FUNCTION(TNetPresentValueFunction, u"net-present-value",
                      u"Returns the present value of cash flows, one per period, at a discount rate",
                      u" <rate> <cash-flows multifield> <payment time>", NetPresentValue)
TAVO_ROUTINE_FUNCTION(
    TNumberOfPeriodsFunction, u"number-of-periods",
    u"Returns the number of periods in which the payments turn the present value into the future value",
    u" <rate> <payment> <present-value> <future-value> <payment time>", NumberOfPeriods)
TAVO_ROUTINE_FUNCTION(TPaymentFunction, u"payment",
                      u"Returns the fixed payment per period that turns the present value into the future value",
                      u" <rate> <num-periods> <present-value> <future-value> <payment time>", Payment)
TAVO_ROUTINE_FUNCTION(TPeriodPaymentFunction, u"period-payment",
                      u"Returns the principal in one period's payment of a loan",
                      u" <rate> <period> <num-periods> <present-value> <future-value> <payment time>", PeriodPayment)
TAVO_ROUTINE_FUNCTION(TPresentValueFunction, u"present-value",
                      u"Returns what periodic payments and a future value are worth now at a fixed rate",
                      u" <rate> <num-periods> <payment> <future-value> <payment time>", PresentValue)
TAVO_ROUTINE_FUNCTION(TSLNDepreciationFunction, u"sln-depreciation",
                      u"Returns the straight-line depreciation of an asset in one period", u" <cost> <salvage> <life>",
                      SLNDepreciation)
TAVO_ROUTINE_FUNCTION(TSYDDepreciationFunction, u"syd-depreciation",
                      u"Returns the sum-of-years'-digits depreciation of an asset in a period",
                      u" <cost> <salvage> <life> <period>", SYDDepreciation)

#undef TAVO_ROUTINE_FUNCTION

void TBusinessPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TDoubleDecliningBalanceFunction>());
  Functions.Add(Make<TFutureValueFunction>());
  Functions.Add(Make<TInterestPaymentFunction>());
  Functions.Add(Make<TInterestRateFunction>());
  Functions.Add(Make<TInternalRateOfReturnFunction>());
  Functions.Add(Make<TNetPresentValueFunction>());
  Functions.Add(Make<TNumberOfPeriodsFunction>());
  Functions.Add(Make<TPaymentFunction>());
  Functions.Add(Make<TPeriodPaymentFunction>());
  Functions.Add(Make<TPresentValueFunction>());
  Functions.Add(Make<TSLNDepreciationFunction>());
  Functions.Add(Make<TSYDDepreciationFunction>());
}

}  // namespace tavo
