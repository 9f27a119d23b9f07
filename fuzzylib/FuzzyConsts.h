// Constants of the fuzzy library: its number type, the enumerations that the
// engine's settings and fuzzy expressions name, the words of those
// expressions with their look-ups, and the library's own messages.
#pragma once

#include <cstddef>

#include "common/MekStrings.h"

namespace tavo {

// Memberships and abscissae of fuzzy sets.
using TFzyFloat = double;

// How two memberships a and b combine. Union and intersection of each
// operation, as TFuzzySet applies them point by point:
//
//   operation     union                        intersection
//   zadeh         max(a, b)                    min(a, b)
//   mean          (a + b) / 2                  (a + b) / 2
//   mean-sqr      (a^2 + b^2) / 2              (a^2 + b^2) / 2
//   mean-sqrt     (sqrt a + sqrt b) / 2        (sqrt a + sqrt b) / 2
//   product       a + b - a b                  a b
//   bounded-sum   min(1, a + b)                max(0, a + b - 1)
//   sum           a + b, the set then scaled   a b
//                 down to a height of 1 when
//                 it rises above 1
//
// A mean does not tell "and" from "or", so the three means give the same
// set either way. Sum keeps the proportions of the added sets where
// bounded-sum clips them.
enum TFuzzyOperation { foZadeh, foMean, foMeanSqr, foMeanSqrt, foProduct, foBoundedSum, foSum };
// How a new fuzzy fact merges with an equal one.
enum TFuzzyInferenceMethod { fimMinMax, fimSum, fimMean, fimProduct, fimBoundedSum };
// How a rule's strength shapes the fuzzy value it asserts.
enum TFuzzyCorrelationMethod { fcmMinimum, fcmProduct };

// The hedges that stand before their operand: "very hot".
enum TFuzzyHedge { fhNot, fhVery, fhExtremely, fhSomewhat, fhMoreOrLess, fhSlightly, fhPlus, fhIntensify, fhNorm };
// The hedges that take a number and stand between their operand and the
// number: "hot cut 0.5". Correlation relies on bfhScale and bfhCut.
enum TBaseFuzzyHedge { bfhPower, bfhRoot, bfhScale, bfhShift, bfhNormTo, bfhAlphaCut, bfhFloor, bfhCut };

// Where the points of a set came from: a shape maker, whose arguments the
// set keeps for printing, or anything else.
enum TFuzzySetType { fstPoints, fstSCurve, fstZCurve, fstTriangle, fstPI, fstBeta };

// Every hedge of fuzzy expressions, in one place. Each maps every
// membership y of its operand, v being the hedge's number; results are
// clamped to [0, 1]. The transforms follow the curve, not just the points:
// a set is split where a transform has a corner (min(y, v) at y = v) and,
// for a curved transform, refined until the straight lines between the new
// points stay within 0.01 of the curve.
struct TFuzzyHedgeEntry {
  const char16_t* Name;
  bool TakesNumber;  // a TBaseFuzzyHedge when set, a TFuzzyHedge otherwise
  int Hedge;
};
inline constexpr TFuzzyHedgeEntry FuzzyHedgeTable[] = {
    // {name, takes a number, hedge}           membership y becomes
    {u"not", false, fhNot},                  // 1 - y
    {u"very", false, fhVery},                // y^2
    {u"extremely", false, fhExtremely},      // y^3
    {u"somewhat", false, fhSomewhat},        // y^0.5
    {u"more-or-less", false, fhMoreOrLess},  // y^0.5
    {u"slightly", false, fhSlightly},        // min(y^1.25, 1 - y^2), then norm: true of
                                             // the middling members only, not of the
                                             // fullest ones
    {u"plus", false, fhPlus},                // y^1.25
    {u"intensify", false, fhIntensify},      // 2 y^2 up to 0.5, 1 - 2 (1 - y)^2 above
    {u"norm", false, fhNorm},                // y / height, so that the height is 1;
                                             // a set of height 0 stays as it is
    {u"power", true, bfhPower},              // y^v, v > 0
    {u"root", true, bfhRoot},                // y^(1 / v), v > 0
    {u"scale", true, bfhScale},              // v y
    {u"shift", true, bfhShift},              // y + v
    {u"norm-to", true, bfhNormTo},           // v y / height: the height becomes v
    {u"alpha-cut", true, bfhAlphaCut},       // y where y >= v, else 0
    {u"floor", true, bfhFloor},              // max(y, v)
    {u"cut", true, bfhCut},                  // min(y, v)
};

// The words of a fuzzy expression bind by these precedences: named hedges
// tightest, then hedges with a number, then the intersections ("and",
// "and-<operation>") and last the unions ("or", "or-<operation>"). A
// keyword with an operation suffix combines by that operation, the plain
// ones by zadeh.
inline constexpr int FuzzyHedgePrecedence = 4;
inline constexpr int FuzzyHedgeOperatorPrecedence = 3;
inline constexpr int FuzzyIntersectionPrecedence = 2;
inline constexpr int FuzzyUnionPrecedence = 1;
inline constexpr char16_t SFuzzyAndKeyword[] = u"and";
inline constexpr char16_t SFuzzyOrKeyword[] = u"or";

// Names by ordinal.
inline constexpr const char16_t* FuzzyOperationNames[] = {u"zadeh",   u"mean",        u"mean-sqr", u"mean-sqrt",
                                                          u"product", u"bounded-sum", u"sum"};
inline constexpr const char16_t* FuzzyInferenceNames[] = {u"min-max", u"sum", u"mean", u"product", u"bounded-sum"};
inline constexpr const char16_t* FuzzyCorrelationNames[] = {u"minimum", u"product"};
// The names as messages list what was expected.
inline constexpr char16_t FuzzyInferenceSuffixNameList[] = u"min-max, sum, mean, product, or bounded-sum";
inline constexpr char16_t FuzzyCorrelationSuffixNameList[] = u"minimum, or product";

// The name of the empty set, which is also the text of a set without points.
inline constexpr char16_t SEmptyFuzzy[] = u"empty";
// The row label of a plot: four characters from 0.00 to 1.00.
inline constexpr char16_t FuzzyFormatStr[] = u"%4.2f";
// The terms that a new variable may get by default.
inline constexpr char16_t SLowFuzzyTerm[] = u"low";
inline constexpr char16_t SMediumFuzzyTerm[] = u"medium";
inline constexpr char16_t SHighFuzzyTerm[] = u"high";

// Failures of the library.
inline constexpr char16_t SFuzzyInvalidPoint[] =
    u"Invalid fuzzy point (%s, %s): x must be a number and y lie between 0 and 1";
inline constexpr char16_t SFuzzyInvalidSteps[] = u"A fuzzy curve needs 1 to 1000 steps, not %d";
inline constexpr char16_t SFuzzyInvalidTriangle[] = u"Invalid fuzzy triangle %s %s %s: its numbers must be finite";
inline constexpr char16_t SFuzzyInvalidSCurve[] =
    u"Invalid fuzzy %s curve from %s to %s with the inflection at %s: the three must ascend";
inline constexpr char16_t SFuzzyInvalidPI[] =
    u"Invalid fuzzy pi curve from %s to %s around %s: the centre must lie between";
inline constexpr char16_t SFuzzyInvalidPIWidth[] =
    u"Invalid fuzzy pi curve of width %s around %s: the width must not be negative";
inline constexpr char16_t SFuzzyInvalidBeta[] =
    u"Invalid fuzzy beta curve of width %s around %s with the inflection at %s and weight %s: width, inflection and "
    u"weight must be above 0";
inline constexpr char16_t SFuzzyInvalidOperation[] = u"Invalid fuzzy operation %d";
inline constexpr char16_t SFuzzyInvalidHedge[] = u"Invalid fuzzy hedge %d";
inline constexpr char16_t SFuzzyInvalidHedgeNumber[] = u"Invalid number %s for the fuzzy hedge %s";
inline constexpr char16_t SFuzzyTermExists[] = u"Fuzzy variable %s already has a term %s";
inline constexpr char16_t SFuzzyTermOfOther[] = u"Fuzzy set %s is already a term of the fuzzy variable %s";
inline constexpr char16_t SFuzzyNoParser[] = u"Fuzzy variable %s has no parser to read \"%s\"";

// Joins names for a message: "a, b, or c"; a single name stands alone.
String JoinFuzzyNames(const char16_t* const* Names, size_t Count);
template <size_t N>
String JoinFuzzyNames(const char16_t* const (&Names)[N]) {
  return JoinFuzzyNames(Names, N);
}

String FuzzyHedgeName(TFuzzyHedge Hedge);
String BaseFuzzyHedgeName(TBaseFuzzyHedge Hedge);

// The look-ups of fuzzy expressions and settings. Words compare without
// regard to case; the out arguments are set only on success.
bool IsFuzzyHedge(StringView Text, TFuzzyHedge& Hedge);
bool IsFuzzyHedgeOperator(StringView Text, TBaseFuzzyHedge& Hedge);
// "and" and "or", alone or with an operation name behind a hyphen
// ("or-product"). Union tells "or" from "and".
bool IsFuzzyKeyword(StringView Text, bool& Union, TFuzzyOperation& Operation);
bool IsFuzzyOperation(StringView Text, TFuzzyOperation& Operation);
bool IsFuzzyInference(StringView Text, TFuzzyInferenceMethod& Method);
bool IsFuzzyCorrelation(StringView Text, TFuzzyCorrelationMethod& Method);
// The precedence of a hedge, hedge operator or keyword; 0 for any other text.
int FuzzyPrecedence(StringView Text);
// The keyword that combines by Operation: "or", "and-mean" and so on.
String FuzzyKeyword(bool Union, TFuzzyOperation Operation);

}  // namespace tavo
