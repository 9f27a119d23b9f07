// The engine's own fuzzy classes over the fuzzy library, and how a fuzzy
// set meets the engine's values.
#pragma once

#include "core/TavoValue.h"
#include "fuzzylib/MekFuzzyLogic.h"

namespace tavo {

// Whether Set matches Value. A number matches where the set's membership
// at it is above the threshold of the set's variable (0 for a set without
// one); a fuzzy value, or a set, where the two sets meet above that
// threshold; anything else never does. Every fuzzy value of the engine
// compares through here, whatever made its set.
bool FuzzyMatches(const TIFuzzySet& Set, const TCloneableObject* Value);
// How strongly Set matches Value, 0 to 1: the membership at a number, the
// height where two sets meet, 0 for anything else.
TFzyFloat FuzzyDegree(const TIFuzzySet& Set, const TCloneableObject* Value);

// The engine's fuzzy set: a library set that also compares with values.
class TTavoFuzzySet : public TIFuzzySet {
  TAVO_CLASS(TTavoFuzzySet, TIFuzzySet)
 public:
  using TIFuzzySet::TIFuzzySet;
  bool Equals(const TCloneableObject* Other) const override { return FuzzyMatches(*this, Other); }
  TFzyFloat FuzzyEquals(const TCloneableObject* Other) const override { return FuzzyDegree(*this, Other); }
  // A set of a variable reads as what it was made from over the
  // variable's terms ("hot", "very hot", "hot cut 0.5"), which reads back
  // as the same set; any other set as its points.
  String ToString() const override {
    if (GetVariable())
      if (String Text = Description(); !Text.empty()) return Text;
    return TIFuzzySet::ToString();
  }
};

// The variable that a fuzzy defined type owns; its terms are the engine's
// sets.
class TTavoFuzzyVariable : public TIFuzzyVariable {
  TAVO_CLASS(TTavoFuzzyVariable, TIFuzzyVariable)
 public:
  explicit TTavoFuzzyVariable(String Name = String()) : TIFuzzyVariable(std::move(Name)) {}

 protected:
  IFuzzySet CreateFuzzySet(const String& Name) override { return Make<TTavoFuzzySet>(Name); }
};

}  // namespace tavo
