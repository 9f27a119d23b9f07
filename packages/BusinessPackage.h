// Financial functions of the rule language and the routines behind them.
//
// Money follows the usual spreadsheet signs: what is paid out is negative
// and what is received positive, so a loan taken (present value 1000) is
// repaid by negative payments, and an investment and its returns have
// opposite signs. A rate is per period and a number above -1. Payments
// fall at the end of each period unless the payment time says its start.
// Every annuity routine solves the one equation
//
//   pv (1 + r)^n + pmt (1 + r t) ((1 + r)^n - 1) / r + fv = 0
//
// (t is 1 for payments at the start, else 0; at r = 0 the fraction is n)
// for the quantity asked of it.
#pragma once

#include <vector>

#include "packages/TavoPackages.h"

namespace tavo {

// Any int is a value of the type, so that a routine can be handed one out
// of range and refuse it.
enum TPaymentTime : int { ptEndOfPeriod, ptStartOfPeriod };

// The payment time named by Text, ptEndOfPeriod or ptStartOfPeriod in any
// case; SInvalidPaymentTime for another text.
TPaymentTime PaymentTimeOf(const String& Text);

// The searches for a rate: Newton steps from the start value until a step
// moves the rate by at most FinanceTolerance (relative to rates above 1)
// and the equation is 0 within FinanceResidual of the size of its terms;
// SNoConvergence when FinanceIterations steps do not get there
// (interest-rate tries its equation in future values, then in present
// values, each with that many steps).
inline constexpr int FinanceIterations = 100;
inline constexpr double FinanceTolerance = 1e-12;
inline constexpr double FinanceResidual = 1e-9;
// The start of the search for interest-rate, which takes no guess.
inline constexpr double InterestRateStart = 0.1;

// The routines check what the formulas cannot take: a payment time out of
// range (SPaymentTimeOutOfRange), a rate at or below -1 (SInvalidRate), a
// period outside 1 to the number of periods or the life (SPeriodOutOfRange),
// a life below 1 (SInvalidAssetLife).
double FutureValue(double Rate, int Periods, double Payment, double PresentValue, TPaymentTime Timing);
double PresentValue(double Rate, int Periods, double Payment, double FutureValue, TPaymentTime Timing);
double Payment(double Rate, int Periods, double PresentValue, double FutureValue, TPaymentTime Timing);
// Fractional when the payments do not come out even.
double NumberOfPeriods(double Rate, double Payment, double PresentValue, double FutureValue, TPaymentTime Timing);
double InterestRate(int Periods, double Payment, double PresentValue, double FutureValue, TPaymentTime Timing);
// The interest and the principal in the payment of period Period (1 to
// Periods); the two add up to Payment. With payments at the start of the
// period, the first payment carries no interest.
double InterestPayment(double Rate, int Period, int Periods, double PresentValue, double FutureValue,
                       TPaymentTime Timing);
double PeriodPayment(double Rate, int Period, int Periods, double PresentValue, double FutureValue,
                     TPaymentTime Timing);
// One cash flow per period: at the end of periods 1, 2, ... or at the start
// of them, that is at 0, 1, ...
double NetPresentValue(double Rate, const std::vector<double>& CashFlows, TPaymentTime Timing);
// The rate at which the flows, the first at time 0, have a present value of
// 0; SNoSignChange unless there is an amount of each sign.
double InternalRateOfReturn(double Guess, const std::vector<double>& CashFlows);
double SLNDepreciation(double Cost, double Salvage, int Life);
double SYDDepreciation(double Cost, double Salvage, int Life, int Period);
// Twice the straight-line rate applied to the book value, never taking the
// book value below the salvage.
double DoubleDecliningBalance(double Cost, double Salvage, int Life, int Period);

// The functions of the rule language over the routines, one each.
TAVO_FUNCTION(TDoubleDecliningBalanceFunction)
TAVO_FUNCTION(TFutureValueFunction)
TAVO_FUNCTION(TInterestPaymentFunction)
TAVO_FUNCTION(TInterestRateFunction)
TAVO_FUNCTION(TInternalRateOfReturnFunction)
TAVO_FUNCTION(TNetPresentValueFunction)
TAVO_FUNCTION(TNumberOfPeriodsFunction)
TAVO_FUNCTION(TPaymentFunction)
TAVO_FUNCTION(TPeriodPaymentFunction)
TAVO_FUNCTION(TPresentValueFunction)
TAVO_FUNCTION(TSLNDepreciationFunction)
TAVO_FUNCTION(TSYDDepreciationFunction)

class TBusinessPackage : public TUserPackage {
  TAVO_CLASS(TBusinessPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
