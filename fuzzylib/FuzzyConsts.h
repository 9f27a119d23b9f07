// Constants of the fuzzy library that the engine's settings name.
#pragma once

namespace tavo {

// How a new fuzzy fact merges with an equal one.
enum TFuzzyInferenceMethod { fimMinMax, fimSum, fimMean, fimProduct, fimBoundedSum };
// How a rule's strength shapes the fuzzy value it asserts.
enum TFuzzyCorrelationMethod { fcmMinimum, fcmProduct };

}  // namespace tavo
