// The fuzzy functions of the rule language: shapes that make sets, fuzzy
// values of a type from expressions, fuzzy assertion, union and
// intersection, reading sets and universes, defuzzification, plots, and the
// engine's fuzzy settings.
#pragma once

#include <span>
#include <vector>

#include "packages/TavoPackages.h"
#include "core/TavoFuzzy.h"

namespace tavo {

class TInferenceEngine;

// The fuzzy set an argument stands for: a fuzzy value or points as they
// are, a fact or a fact id (an integer too) by its first fuzzy slot.
// SNoSuchFact for an id without a fact, SNotFuzzyFact for a fact without a
// fuzzy slot, SNotCorrectType for any other value.
IFuzzySet GetFuzzySetFromValue(TInferenceEngine& Engine, const ITavoValue& Value, TTavoContext* Context);
// The set of the first fuzzy slot of Fact, by the template's slot order; a
// list gives its first member, a number the set of the slot's variable that
// is true at that number alone. Null when the fact has no fuzzy slot.
IFuzzySet GetFuzzySlot(const IFact& Fact);

// The plot of sets over From to To: 21 rows of membership by 50 columns,
// each set drawn with its character of Chars (the last one for the sets
// beyond, '*' for an empty text); a later set overwrites an earlier one.
String FuzzyPlotText(const std::vector<IFuzzySet>& Sets, const String& Chars, double From, double To);
// Prints the plot through the engine's output on Stream.
void PlotFuzzySet(TInferenceEngine& Engine, const String& Stream, const std::vector<IFuzzySet>& Sets,
                  const String& Chars, double From, double To);
void PlotFuzzySet(TInferenceEngine& Engine, const String& Stream, const IFuzzySet& Set, const String& Chars,
                  double From, double To);

// What one member of a function family is called and how.
using TFuzzyFunctionKind = TFunctionMetaData;

// A class that serves several functions, one kind each. Setting the kind
// sets the name, help text, syntax and counts from the family's table; a
// name that the table knows sets the kind, so that a function read back by
// its name serves as it did.
class TFuzzyFamilyFunction : public TTavoUserFunction {
  TAVO_CLASS(TFuzzyFamilyFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void SetFunctionName(const String& Value) override;
  using TTavoUserFunction::Assign;
  // A function of the same family takes the source's kind as well, even
  // under a name of its own.
  void Assign(const TPersistent* Source) override;

 protected:
  TFuzzyFamilyFunction(int Kind, std::span<const TFuzzyFunctionKind> Kinds) : FKind(Kind), FKinds(Kinds) {}
  int GetKindIndex() const { return FKind; }
  void SetKindIndex(int Value);

 private:
  int FKind;
  std::span<const TFuzzyFunctionKind> FKinds;
};

// One family class: its kind enumeration as Type, the first kind by default.
#define TAVO_FUZZY_FAMILY(ClassName, TypeName, DefaultKind)                                \
  class ClassName : public TFuzzyFamilyFunction {                                          \
    TAVO_CLASS(ClassName, TFuzzyFamilyFunction)                                            \
   public:                                                                                 \
    explicit ClassName(TypeName Type = DefaultKind);                                       \
    TypeName GetType() const { return TypeName(GetKindIndex()); }                          \
    void SetType(TypeName Value) { SetKindIndex(Value); }                                  \
    void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override; \
    using TTavoUserFunction::Call;                                                         \
  };

enum TFuzzyAssertFunctionType { fafAssert, fafAssertUnconditional };
// fuzzy-assert, fuzzy-assert-unconditional: facts asserted with an inference
// method of their own; an equal fuzzy fact is united with the new one, or
// intersected when unconditional.
TAVO_FUZZY_FAMILY(TFuzzyAssertFunction, TFuzzyAssertFunctionType, fafAssert)

enum TFuzzyOperationFunctionType { fofFuzzyUnion, fofFuzzyUnionX, fofFuzzyIntersection, fofFuzzyIntersectionX };
// fuzzy-union, fuzzy-intersection and their -x forms, which name the
// operation first.
TAVO_FUZZY_FAMILY(TFuzzyOperationFunction, TFuzzyOperationFunctionType, fofFuzzyUnion)

enum TGetFuzzyFunctionType { gffGetFs, gffGetFsLength, gffGetFsX, gffGetFsY, gffGetFsVariable, gffGetFsValue };
// get-fs and the rest: the points of a set, one of them, its variable, its
// membership at a number.
TAVO_FUZZY_FAMILY(TGetFuzzyFunction, TGetFuzzyFunctionType, gffGetFs)

enum TUniverseOfDiscourseType { uodGet, uodGetFrom, uodGetTo, uodGetUnits };
// get-u and the rest: the universe of a fuzzy type, of a fuzzy value's
// variable, or of a fact's first fuzzy slot.
TAVO_FUZZY_FAMILY(TUniverseOfDiscourseFunction, TUniverseOfDiscourseType, uodGet)

// The engine's fuzzy settings. Each setter gives the setting it replaced.
enum TFuzzyAutoTermsType { fatGetFuzzyAutoTerms, fatSetFuzzyAutoTerms };
TAVO_FUZZY_FAMILY(TRWFuzzyAutoTerms, TFuzzyAutoTermsType, fatGetFuzzyAutoTerms)
enum TFuzzyThresholdType { ftfGetFuzzyThreshold, ftfSetFuzzyThreshold };
TAVO_FUZZY_FAMILY(TRWFuzzyThresholdFunction, TFuzzyThresholdType, ftfGetFuzzyThreshold)
enum TActivationThresholdType { atfGetActivationThreshold, atfSetActivationThreshold };
TAVO_FUZZY_FAMILY(TRWActivationThresholdFunction, TActivationThresholdType, atfGetActivationThreshold)
enum TFuzzyCorrelationFunctionType { fcfGetCorrelation, fcfSetCorrelation };
TAVO_FUZZY_FAMILY(TRWFuzzyCorrelationFunction, TFuzzyCorrelationFunctionType, fcfGetCorrelation)
enum TFuzzyInferenceFunctionType { fifGetInference, fifSetInference };
TAVO_FUZZY_FAMILY(TRWFuzzyInferenceFunction, TFuzzyInferenceFunctionType, fifGetInference)

enum TDefuzzifyFunctionType { dftMoment, dftMaximum, dftUndecidable, dftCompatibilityIndex };
// moment-defuzzify, maximum-defuzzify, is-undecidable,
// get-compatibility-index.
TAVO_FUZZY_FAMILY(TDefuzzifyFunction, TDefuzzifyFunctionType, dftMoment)

enum TFuzzyShapeType { fsGrowthShape, fsDeclineShape, fsPIShape, fsTriangleShape, fsBetaShape };
// s, z, pi, tri, beta: a new set of no variable in a shape, in 7 steps per
// curve.
TAVO_FUZZY_FAMILY(TCreateFuzzyShapeFunction, TFuzzyShapeType, fsGrowthShape)

#undef TAVO_FUZZY_FAMILY

// create-fuzzy-value: a fuzzy value of a type's variable from an
// expression over its terms.
TAVO_FUNCTION(TCreateFuzzySetFunction)

// plot-fuzzy-value: the plot of fuzzy values to a logical name.
TAVO_FUNCTION(TPlotFuzzySetFunction)

class TFuzzyLogicPackage : public TUserPackage {
  TAVO_CLASS(TFuzzyLogicPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
