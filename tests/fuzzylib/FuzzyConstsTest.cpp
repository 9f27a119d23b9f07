#include "fuzzylib/FuzzyConsts.h"

#include <gtest/gtest.h>

#include <set>

#include "common/MekFormat.h"

namespace tavo {
namespace {

// The engine maps its settings onto these ordinals.
static_assert(foZadeh == 0 && foMean == 1 && foMeanSqr == 2 && foMeanSqrt == 3 && foProduct == 4 && foBoundedSum == 5 &&
              foSum == 6);
static_assert(fimMinMax == 0 && fimBoundedSum == 4 && fcmMinimum == 0 && fcmProduct == 1);
static_assert(bfhScale == 2 && bfhCut == 7);

TEST(FuzzyConsts, NamesLookUpWithoutRegardToCase) {
  for (int I = 0; I < 7; ++I) {
    TFuzzyOperation Operation = foZadeh;
    EXPECT_TRUE(IsFuzzyOperation(UpperCase(FuzzyOperationNames[I]), Operation));
    EXPECT_EQ(Operation, I);
  }
  TFuzzyInferenceMethod Inference = fimMinMax;
  EXPECT_TRUE(IsFuzzyInference(u"Bounded-Sum", Inference));
  EXPECT_FALSE(IsFuzzyInference(u"min", Inference)) << "a failed look-up leaves its result alone";
  EXPECT_EQ(Inference, fimBoundedSum);
  TFuzzyCorrelationMethod Correlation = fcmMinimum;
  EXPECT_TRUE(IsFuzzyCorrelation(u"product", Correlation));
  EXPECT_FALSE(IsFuzzyCorrelation(u"", Correlation));
  EXPECT_EQ(Correlation, fcmProduct);
}

TEST(FuzzyConsts, KeywordsTellUnionFromIntersectionAndCarryTheOperation) {
  struct TCase {
    const char16_t* Text;
    bool Union;
    TFuzzyOperation Operation;
  };
  for (const TCase& Case :
       {TCase{u"and", false, foZadeh}, TCase{u"OR", true, foZadeh}, TCase{u"or-product", true, foProduct},
        TCase{u"and-bounded-sum", false, foBoundedSum}, TCase{u"And-Mean-Sqrt", false, foMeanSqrt}}) {
    bool Union = !Case.Union;
    TFuzzyOperation Operation = foSum;
    EXPECT_TRUE(IsFuzzyKeyword(Case.Text, Union, Operation)) << StringToUtf8(Case.Text);
    EXPECT_EQ(Union, Case.Union) << StringToUtf8(Case.Text);
    EXPECT_EQ(Operation, Case.Operation) << StringToUtf8(Case.Text);
    EXPECT_EQ(FuzzyKeyword(Case.Union, Case.Operation), LowerCase(Case.Text));
  }
  bool Union;
  TFuzzyOperation Operation;
  for (const char16_t* Text : {u"or-", u"and-max", u"andmean", u"nor", u"an", u"very"})
    EXPECT_FALSE(IsFuzzyKeyword(Text, Union, Operation)) << StringToUtf8(Text);
}

TEST(FuzzyConsts, EveryHedgeIsFoundByItsOwnLookUpOnly) {
  std::set<String> Names;
  for (const TFuzzyHedgeEntry& Entry : FuzzyHedgeTable) {
    EXPECT_TRUE(Names.insert(LowerCase(Entry.Name)).second) << "twice: " << StringToUtf8(Entry.Name);
    TFuzzyHedge Hedge = fhNot;
    TBaseFuzzyHedge Base = bfhPower;
    EXPECT_EQ(IsFuzzyHedge(Entry.Name, Hedge), !Entry.TakesNumber);
    EXPECT_EQ(IsFuzzyHedgeOperator(Entry.Name, Base), Entry.TakesNumber);
    EXPECT_EQ(Entry.TakesNumber ? int(Base) : int(Hedge), Entry.Hedge);
    EXPECT_EQ(Entry.TakesNumber ? BaseFuzzyHedgeName(Base) : FuzzyHedgeName(Hedge), Entry.Name);
    EXPECT_EQ(FuzzyPrecedence(Entry.Name), Entry.TakesNumber ? FuzzyHedgeOperatorPrecedence : FuzzyHedgePrecedence);
  }
  EXPECT_EQ(Names.size(), size_t(fhNorm + 1 + bfhCut + 1)) << "every hedge has a word";
  TFuzzyHedge Hedge;
  EXPECT_TRUE(IsFuzzyHedge(u"More-Or-Less", Hedge));
  EXPECT_EQ(Hedge, fhMoreOrLess);

  // Hedges bind tighter than "and", which binds tighter than "or".
  EXPECT_GT(FuzzyPrecedence(u"not"), FuzzyPrecedence(u"cut"));
  EXPECT_GT(FuzzyPrecedence(u"cut"), FuzzyPrecedence(u"and-mean"));
  EXPECT_GT(FuzzyPrecedence(u"and"), FuzzyPrecedence(u"or-sum"));
  EXPECT_GT(FuzzyPrecedence(u"or"), FuzzyPrecedence(u"hot"));
  EXPECT_EQ(FuzzyPrecedence(u"hot"), 0);
}

TEST(FuzzyConsts, NameListsForMessagesFollowTheTables) {
  EXPECT_EQ(JoinFuzzyNames(FuzzyInferenceNames), FuzzyInferenceSuffixNameList);
  EXPECT_EQ(JoinFuzzyNames(FuzzyCorrelationNames), FuzzyCorrelationSuffixNameList);
  EXPECT_EQ(JoinFuzzyNames(FuzzyOperationNames), u"zadeh, mean, mean-sqr, mean-sqrt, product, bounded-sum, or sum");
  EXPECT_EQ(JoinFuzzyNames(FuzzyOperationNames, 1), u"zadeh");
  EXPECT_EQ(JoinFuzzyNames(FuzzyOperationNames, 0), u"");
  // Plot rows are labelled in four characters.
  EXPECT_EQ(Format(FuzzyFormatStr, 1.0) + Format(FuzzyFormatStr, 0.05), u"1.000.05");
}

}  // namespace
}  // namespace tavo
