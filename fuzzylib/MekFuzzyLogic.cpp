#include "fuzzylib/MekFuzzyLogic.h"

namespace tavo {

void TIFuzzyVariable::Assign(const TPersistent* Source) {
  if (auto* Variable = dynamic_cast<const TIFuzzyVariable*>(Source)) {
    FName = Variable->FName;
    FMinimum = Variable->FMinimum;
    FMaximum = Variable->FMaximum;
    FUnits = Variable->FUnits;
    FFuzzyEqualsThreshold = Variable->FFuzzyEqualsThreshold;
    FParser = Variable->FParser;
    return;
  }
  TCloneableObject::Assign(Source);
}

bool TIFuzzyVariable::Equals(const TCloneableObject* Other) const {
  auto* Variable = dynamic_cast<const TIFuzzyVariable*>(Other);
  if (!Variable) return false;
  if (Variable == this) return true;
  return Variable->FName == FName && FloatEquals(Variable->FMinimum, FMinimum, 0.0001) &&
         FloatEquals(Variable->FMaximum, FMaximum, 0.0001) && Variable->FUnits == FUnits;
}

}  // namespace tavo
