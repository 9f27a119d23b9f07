// The evaluator: how a value becomes the datum it stands for. Variables,
// calls, deffunction bodies and binding coordinates all resolve here, so
// that the hot path of evaluation reads and is tuned in one place.
#pragma once

#include "core/TavoFunctions.h"

namespace tavo {

// Expression evaluated in Context. The result is borrowed: the expression
// itself, the value a variable is bound to, or Scratch, which takes the
// result of a call. It stays valid until the next evaluation that may
// rebind the variable; a caller that keeps it across one copies it. A call
// that gives nothing reads as nil.
const ITavoValue& Evaluate(const ITavoValue& Expression, TTavoContext* Context, ITavoValue& Scratch);

// Expression as a number, without making a value: a literal integer or
// float, a variable or a slot that holds one, or a call whose function
// answers by CallNumeric. False for anything else, and the caller takes
// the general way, which evaluates Expression again: nothing that answers
// here has side effects. The integer kinds read as integers, as arithmetic
// reads them.
bool EvaluateNumber(const ITavoValue& Expression, TTavoContext* Context, TNumber& Result);

// The truth of a call whose function answers by CallTruth, the same way:
// false when it cannot be had so, and the caller evaluates Expression.
bool EvaluateTruth(const ITavoValue& Expression, TTavoContext* Context, bool& Result);

// Expression evaluated into Result, which must not hold the expression.
inline void EvaluateInto(const ITavoValue& Expression, TTavoContext* Context, ITavoValue& Result) {
  const ITavoValue& Value = Evaluate(Expression, Context, Result);
  if (&Value != &Result) Result = Value;
}

// The deepest nesting of deffunction calls; the machine stack is guarded
// apart from it, and usually ends a runaway recursion first.
inline constexpr int MaxFunctionDepth = 100000;

// Raises a clear error instead of overflowing the machine stack when less
// than a safe margin of it is left. Cheap: one comparison.
void CheckStack(const TFunctionCall& Call);

}  // namespace tavo
