#include "core/TavoFuzzy.h"

namespace tavo {

namespace {

// The set a fuzzy value or a set stands for, or null.
const TFuzzySet* SetOf(const TCloneableObject* Value) {
  if (const auto* Set = dynamic_cast<const TFuzzySet*>(Value)) return Set;
  const auto* Held = dynamic_cast<const TTavoValue*>(Value);
  if (Held && Held->GetDType() == dtFuzzy) return Held->GetAsFuzzy().Get();
  return nullptr;
}

// The number a value stands for, when it is an integer or a float.
bool NumberOf(const TCloneableObject* Value, TFzyFloat& Number) {
  const auto* Held = dynamic_cast<const TTavoValue*>(Value);
  if (!Held || (Held->GetDType() != dtInteger && Held->GetDType() != dtFloat)) return false;
  Number = Held->GetAsNumeric();
  return true;
}

}  // namespace

bool FuzzyMatches(const TIFuzzySet& Set, const TCloneableObject* Value) {
  // A set without a variable compares with the threshold 0, as every
  // value made by a shape or from points has no variable.
  const TFzyFloat Threshold = Set.GetFuzzyEqualsThreshold();
  if (const TFuzzySet* Other = SetOf(Value)) {
    TFuzzyIterateState State;
    State.Threshold = Threshold;
    return Set.Iterate(*Other, FuzzyOperatorMinThreshold, State);
  }
  TFzyFloat Number;
  return NumberOf(Value, Number) && Threshold < Set.DegreeOfMembership(Number);
}

TFzyFloat FuzzyDegree(const TIFuzzySet& Set, const TCloneableObject* Value) {
  if (const TFuzzySet* Other = SetOf(Value)) {
    TFuzzyIterateState State;
    Set.Iterate(*Other, FuzzyOperatorMaxOfMin, State);
    return State.Degree;
  }
  TFzyFloat Number;
  return NumberOf(Value, Number) ? Set.DegreeOfMembership(Number) : 0;
}

}  // namespace tavo
