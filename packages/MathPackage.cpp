#include "packages/MathPackage.h"

#include "core/TavoEvaluator.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <mutex>
#include <numbers>
#include <random>

namespace tavo {

namespace {

// The processor's own failures of integer division, raised where the
// hardware would trap.
constexpr char16_t SDivByZero[] = u"Division by zero";
constexpr char16_t SIntOverflow[] = u"Integer overflow";




// Nearest integer, ties to even, then into 32 bits as every integer
// conversion of the engine does.
int32_t RoundToInt32(double Value) {
  double Whole = std::floor(Value);
  double Fraction = Value - Whole;
  if (Fraction > 0.5 || (Fraction == 0.5 && std::fmod(Whole, 2.0) != 0)) Whole += 1;
  return TruncToInt32(Whole);
}

ITavoValue IntegerValue(int32_t Value) { return Make<TTavoValue>(Value, dtInteger); }
ITavoValue FloatValue(double Value) { return Make<TTavoValue>(Value); }

enum TArithmetic { arAdd, arSubtract, arMultiply };

// The result is a float once any argument is one, and an integer otherwise.
// Integers accumulate exactly in 64 bits for as long as a double would hold
// the total exactly too, so the answer is the one of double arithmetic; past
// that, or at the first argument read from text, the sum goes on in a
// double. Both roads of evaluation feed the arguments in here, so that
// they agree to the bit.
class TAccumulator {
 public:
  explicit TAccumulator(TArithmetic Operation) : FOperation(Operation), FWhole(Operation == arMultiply ? 1 : 0) {}

  // An argument of an integer kind.
  void AddInteger(int64_t Number) {
    if (FInDouble) {
      AddDouble(double(Number), false);
      return;
    }
    constexpr int64_t Exact = int64_t(1) << 53;
    int64_t Next;
    if (FOperation == arMultiply) {
      if (__builtin_mul_overflow(FWhole, Number, &Next)) Next = Exact + 1;
    } else if (FOperation == arAdd || FIndex == 0) {
      Next = FWhole + Number;
    } else {
      Next = FWhole - Number;
    }
    if (Next <= Exact && Next >= -Exact) {
      FWhole = Next;
      ++FIndex;
      return;
    }
    // Beyond exact doubles: redo this step in double arithmetic.
    FTotal = double(FWhole);
    FInDouble = true;
    Apply(double(Number));
  }
  // Any other argument, read as a number; IsFloat for a float.
  void AddDouble(double Number, bool IsFloat) {
    if (!FInDouble) {
      FTotal = double(FWhole);
      FInDouble = true;
    }
    if (IsFloat) FIsFloat = true;
    Apply(Number);
  }
  TNumber Result() const {
    TNumber Answer;
    if (!FInDouble) {
      Answer.Integer = int32_t(uint32_t(uint64_t(FWhole)));
    } else if (FIsFloat) {
      Answer.Float = FTotal;
      Answer.IsFloat = true;
    } else {
      Answer.Integer = RoundToInt32(FTotal);
    }
    return Answer;
  }

 private:
  void Apply(double Number) {
    if (FOperation == arMultiply)
      FTotal *= Number;
    else if (FOperation == arAdd || FIndex == 0)
      FTotal += Number;
    else
      FTotal -= Number;
    ++FIndex;
  }

  TArithmetic FOperation;
  int64_t FWhole;
  double FTotal = 0;
  int FIndex = 0;
  bool FInDouble = false;
  bool FIsFloat = false;
};

ITavoValue NumberValue(const TNumber& Number) {
  return Number.IsFloat ? FloatValue(Number.Float) : IntegerValue(Number.Integer);
}

void Accumulate(TArithmetic Operation, TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TAccumulator Sum(Operation);
  const int Count = FunCall.GetArgumentCount();
  for (int I = 0; I < Count; ++I) {
    TArgument Value = FunCall.Argument(I, Context);
    const TTavoType Type = Value->GetDType();
    if (TavoIntegerTypes.Contains(Type))
      Sum.AddInteger(Value->GetValue().VInteger);
    else
      Sum.AddDouble(Value->GetAsNumeric(), Type == dtFloat);
  }
  Result = NumberValue(Sum.Result());
}

// The same without making values, when every argument is a number.
bool AccumulateNumbers(TArithmetic Operation, const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) {
  TAccumulator Sum(Operation);
  const int Count = FunCall.GetArgumentCount();
  for (int I = 0; I < Count; ++I) {
    TNumber Number;
    if (!EvaluateNumber(FunCall.GetArgument(I), Context, Number)) return false;
    if (Number.IsFloat)
      Sum.AddDouble(Number.Float, true);
    else
      Sum.AddInteger(Number.Integer);
  }
  Result = Sum.Result();
  return true;
}

// The first of equals leads; a float leader makes the result a float for good.
void Extreme(bool Greatest, TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  double Leader;
  bool IsFloat;
  {
    TArgument First = FunCall.Argument(0, Context);
    Leader = First->GetAsNumeric();
    IsFloat = First->GetDType() == dtFloat;
  }
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    TArgument Value = FunCall.Argument(I, Context);
    double Number = Value->GetAsNumeric();
    if (Greatest ? Number > Leader : Number < Leader) {
      Leader = Number;
      if (Value->GetDType() == dtFloat) IsFloat = true;
    }
  }
  Result = IsFloat ? FloatValue(Leader) : IntegerValue(RoundToInt32(Leader));
}

void CheckDivisor(int32_t Dividend, int32_t Divisor) {
  if (Divisor == 0) throw EMekException(SDivByZero);
  if (Divisor == -1 && Dividend == std::numeric_limits<int32_t>::min()) throw EMekException(SIntOverflow);
}

double NumericArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsNumeric();
}

int32_t IntegerArgument(TFunctionCall& FunCall, int Index, TTavoContext* Context) {
  return FunCall.Argument(Index, Context)->GetAsInteger();
}

// One generator for the process; engines on other threads share it.
class TRandomSource {
 public:
  void Seed(uint32_t Value) {
    std::lock_guard<std::mutex> Lock(FLock);
    FGenerator.seed(Value);
  }
  // Uniform from 0 to Range - 1; an empty range gives 0.
  int64_t Next(int64_t Range) {
    if (Range <= 0) return 0;
    std::lock_guard<std::mutex> Lock(FLock);
    return std::uniform_int_distribution<int64_t>(0, Range - 1)(FGenerator);
  }

 private:
  std::mutex FLock;
  std::mt19937 FGenerator{std::random_device{}()};
};

TRandomSource& RandomSource() {
  static TRandomSource Source;
  return Source;
}

}  // namespace

TAVO_SETUP void TDivideFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"/", u"Returns the first argument divided by each of the others, as a float",
           u" <numeric-expression>+", 1, AnyArgumentCount);
}

void TDivideFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  double Quotient = NumericArgument(FunCall, 0, Context);
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) Quotient /= NumericArgument(FunCall, I, Context);
  Result = FloatValue(Quotient);
}

TAVO_DEFINE_FUNCTION(TMinusFunction, u"-", u"Returns the first argument minus each of the others",
                     u" <numeric-expression>+", 1, AnyArgumentCount, Accumulate(arSubtract, FunCall, Context, Result))

bool TMinusFunction::CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) {
  return AccumulateNumbers(arSubtract, FunCall, Context, Result);
}

TAVO_SETUP void TModFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"mod", u"Returns the remainder of the first argument divided by the second",
           u" <integer-expression> <integer-expression>", 2, 2);
}

void TModFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Dividend = IntegerArgument(FunCall, 0, Context);
  int32_t Divisor = IntegerArgument(FunCall, 1, Context);
  CheckDivisor(Dividend, Divisor);
  Result = IntegerValue(Dividend % Divisor);
}

TAVO_DEFINE_FUNCTION(TPlusFunction, u"+", u"Returns the sum of its arguments", u" <numeric-expression>+", 0,
                     AnyArgumentCount, Accumulate(arAdd, FunCall, Context, Result))

bool TPlusFunction::CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) {
  return AccumulateNumbers(arAdd, FunCall, Context, Result);
}

TAVO_DEFINE_FUNCTION(TTimesFunction, u"*", u"Returns the product of its arguments", u" <numeric-expression>+", 0,
                     AnyArgumentCount, Accumulate(arMultiply, FunCall, Context, Result))

bool TTimesFunction::CallNumeric(const TFunctionCall& FunCall, TTavoContext* Context, TNumber& Result) {
  return AccumulateNumbers(arMultiply, FunCall, Context, Result);
}

TAVO_SETUP void TAbsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"abs", u"Returns the absolute value of its argument", u" <numeric-expression>", 1, 1);
}

void TAbsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  ITavoValue Value = FunCall.EvaluateArgument(0, Context);
  if (Value->GetDType() == dtInteger) {
    int32_t Number = Value->GetAsInteger();
    // The lowest integer has no positive twin and stays as it is.
    Result = IntegerValue(Number < 0 ? int32_t(0u - uint32_t(Number)) : Number);
  } else if (Value->GetDType() == dtFloat) {
    Result = FloatValue(std::fabs(Value->GetAsNumeric()));
  } else {
    throw ETavoException(Format(SMissingNumeric, FFunctionName));
  }
}

TAVO_SETUP void TIntegerDivideFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"div", u"Returns the first argument divided by each of the others, truncated to an integer",
           u" <integer-expression>+", 1, AnyArgumentCount);
}

void TIntegerDivideFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int32_t Quotient = IntegerArgument(FunCall, 0, Context);
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) {
    int32_t Divisor = IntegerArgument(FunCall, I, Context);
    CheckDivisor(Quotient, Divisor);
    Quotient /= Divisor;
  }
  Result = IntegerValue(Quotient);
}

TAVO_DEFINE_FUNCTION(TExpFunction, u"exp", u"Returns e raised to the power of its argument", u" <numeric-expression>",
                     1, 1, Result = FloatValue(std::exp(NumericArgument(FunCall, 0, Context))))

TAVO_SETUP void TExptFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"**", u"Returns the first argument raised to the power of the second",
           u" <numeric-expression> <numeric-expression>", 2, 2);
}

void TExptFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  double Base = NumericArgument(FunCall, 0, Context);
  Result = FloatValue(std::pow(Base, NumericArgument(FunCall, 1, Context)));
}

TAVO_DEFINE_FUNCTION(TPiFunction, u"PI", u"Returns the number pi", u"", 0, 0, Result = FloatValue(std::numbers::pi))

TAVO_DEFINE_FUNCTION(TFloatFunction, u"float", u"Returns its argument as a float", u" <numeric-expression>", 1, 1,
                     Result = FloatValue(NumericArgument(FunCall, 0, Context)))

TAVO_DEFINE_FUNCTION(TIntegerFunction, u"integer", u"Returns its argument as an integer, truncated toward zero",
                     u" <numeric-expression>", 1, 1, Result = IntegerValue(IntegerArgument(FunCall, 0, Context)))

TAVO_DEFINE_FUNCTION(TMaxFunction, u"max", u"Returns the greatest of its arguments", u" <numeric-expression>+", 1,
                     AnyArgumentCount, Extreme(true, FunCall, Context, Result))

TAVO_DEFINE_FUNCTION(TMinFunction, u"min", u"Returns the smallest of its arguments", u" <numeric-expression>+", 1,
                     AnyArgumentCount, Extreme(false, FunCall, Context, Result))

TAVO_DEFINE_FUNCTION(TLogFunction, u"log", u"Returns the natural logarithm of its argument", u" <numeric-expression>",
                     1, 1, Result = FloatValue(std::log(NumericArgument(FunCall, 0, Context))))

TAVO_DEFINE_FUNCTION(TLog10Function, u"log10", u"Returns the base 10 logarithm of its argument",
                     u" <numeric-expression>", 1, 1,
                     Result = FloatValue(std::log10(NumericArgument(FunCall, 0, Context))))

TAVO_SETUP void TRandomFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"random",
           u"Returns a random integer from the low end (default 0) within a range of the given width "
           u"(default 65536)",
           u" [[<low-integer-expression>] <high-integer-expression>]", 0, 2);
}

void TRandomFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  int64_t Low = 0;
  int64_t Range = 65536;
  if (FunCall.GetArgumentCount() == 1) {
    Range = IntegerArgument(FunCall, 0, Context);
  } else if (FunCall.GetArgumentCount() == 2) {
    Low = IntegerArgument(FunCall, 0, Context);
    Range = IntegerArgument(FunCall, 1, Context);
  }
  Result = IntegerValue(int32_t(uint32_t(uint64_t(Low + RandomSource().Next(Range)))));
}

TAVO_SETUP void TRandomizeFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"randomize", u"Seeds the random numbers from the clock, or with the given seed",
           u" [<seed-integer-expression> ]", 0, 1);
}

void TRandomizeFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  if (FunCall.GetArgumentCount() == 0)
    RandomSource().Seed(uint32_t(std::chrono::system_clock::now().time_since_epoch().count()));
  else
    RandomSource().Seed(uint32_t(IntegerArgument(FunCall, 0, Context)));
  Result = FCTrue;
}

TAVO_DEFINE_FUNCTION(TRoundFunction, u"round", u"Returns its argument rounded to the nearest integer, ties to even",
                     u" <numeric-expression>", 1, 1,
                     Result = IntegerValue(RoundToInt32(NumericArgument(FunCall, 0, Context))))

TAVO_DEFINE_FUNCTION(TSqrtFunction, u"sqrt", u"Returns the square root of its argument", u" <numeric-expression>", 1, 1,
                     Result = FloatValue(std::sqrt(NumericArgument(FunCall, 0, Context))))

TAVO_SETUP void TSeedFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"seed", u"Seeds the random numbers with the given integer", u" <integer-expression>", 1, 1);
}

void TSeedFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  RandomSource().Seed(uint32_t(IntegerArgument(FunCall, 0, Context)));
  Result = FCTrue;
}

void TMathPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TDivideFunction>());
  Functions.Add(Make<TMinusFunction>());
  Functions.Add(Make<TModFunction>());
  Functions.Add(Make<TPlusFunction>());
  Functions.Add(Make<TTimesFunction>());
  Functions.Add(Make<TAbsFunction>());
  Functions.Add(Make<TIntegerDivideFunction>());
  Functions.Add(Make<TExpFunction>());
  Functions.Add(Make<TExptFunction>());
  Functions.Add(Make<TPiFunction>());
  Functions.Add(Make<TFloatFunction>());
  Functions.Add(Make<TIntegerFunction>());
  Functions.Add(Make<TMaxFunction>());
  Functions.Add(Make<TMinFunction>());
  Functions.Add(Make<TLogFunction>());
  Functions.Add(Make<TLog10Function>());
  Functions.Add(Make<TRandomFunction>());
  Functions.Add(Make<TRandomizeFunction>());
  Functions.Add(Make<TRoundFunction>());
  Functions.Add(Make<TSqrtFunction>());
  Functions.Add(Make<TSeedFunction>());
}

}  // namespace tavo
