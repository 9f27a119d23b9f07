// The engine's own fuzzy classes over the fuzzy library.
#pragma once

#include "fuzzylib/MekFuzzyLogic.h"

namespace tavo {

// The variable that a fuzzy defined type owns.
class TTavoFuzzyVariable : public TIFuzzyVariable {
  TAVO_CLASS(TTavoFuzzyVariable, TIFuzzyVariable)
 public:
  explicit TTavoFuzzyVariable(String Name = String()) : TIFuzzyVariable(std::move(Name)) {}
};

}  // namespace tavo
