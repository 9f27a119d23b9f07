#include "fuzzylib/MekFuzzyLogic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

IFuzzySet Points(std::initializer_list<TFuzzyPoint> List, const char16_t* Name = u"") {
  IFuzzySet Set = Make<TIFuzzySet>(String(Name));
  for (const TFuzzyPoint& P : List) Set->AddPoint(P.X, P.Y);
  return Set;
}

IFuzzySet Triangle(TFzyFloat Left, TFzyFloat Center, TFzyFloat Right) {
  IFuzzySet Set = Make<TIFuzzySet>();
  Set->Triangle(Left, Center, Right);
  return Set;
}

// Set against Expected at 201 x over [From, To] and at the x of Also's points.
void ExpectMemberships(const TFuzzySet& Set, const std::function<TFzyFloat(TFzyFloat)>& Expected, TFzyFloat Tolerance,
                       const std::string& What, std::initializer_list<const TFuzzySet*> Also = {}) {
  std::vector<TFzyFloat> Xs;
  for (int I = 0; I <= 200; ++I) Xs.push_back(-3 + 21.0 * I / 200);
  for (const TFuzzySet* Other : Also)
    for (const TFuzzyPoint& P : Other->GetPoints()) Xs.push_back(P.X);
  for (const TFzyFloat X : Xs) ASSERT_NEAR(Set.DegreeOfMembership(X), Expected(X), Tolerance) << What << " at " << X;
}

TEST(FuzzySet, MembershipInterpolatesAndKeepsTheEndValuesBeyond) {
  IFuzzySet Low = Points({{0, 1}, {10, 0}});
  EXPECT_DOUBLE_EQ(Low->DegreeOfMembership(2.5), 0.75);
  EXPECT_DOUBLE_EQ(Low->DegreeOfMembership(-50), 1);
  EXPECT_DOUBLE_EQ(Low->DegreeOfMembership(50), 0);
  EXPECT_DOUBLE_EQ(Make<TIFuzzySet>()->DegreeOfMembership(1), 0);

  // Points come in any order; equal x keep theirs and make a step, whose
  // own x has the larger membership.
  IFuzzySet Step = Points({{10, 0}, {5, 1}, {0, 0}, {5, 0.2}});
  EXPECT_EQ(Step->GetValuesToString(), u"(0.0000 0.0000) (5.0000 1.0000) (5.0000 0.2000) (10.0000 0.0000)");
  EXPECT_DOUBLE_EQ(Step->DegreeOfMembership(5), 1);
  EXPECT_DOUBLE_EQ(Step->DegreeOfMembership(7.5), 0.1);
  Step->SetX(0, 20);
  EXPECT_DOUBLE_EQ(Step->GetX(3), 20) << "a moved point takes its place";
}

TEST(FuzzySet, BadPointsAreRefusedAndLeaveTheSetAlone) {
  IFuzzySet Set = Points({{0, 0}, {1, 1}});
  EXPECT_EQ(FailureOf([&] { Set->AddPoint(2, 1.5); }),
            u"Invalid fuzzy point (2.0000, 1.5000): x must be a number and y lie between 0 and 1");
  EXPECT_NE(FailureOf([&] { Set->AddPoint(INFINITY, 0.5); }), u"(no failure)");
  EXPECT_NE(FailureOf([&] { Set->SetY(1, NAN); }), u"(no failure)");
  EXPECT_EQ(FailureOf([&] { Set->GetY(2); }), u"List index out of bounds (2)");
  EXPECT_EQ(Set->GetValuesToString(), u"(0.0000 0.0000) (1.0000 1.0000)");
}

TEST(FuzzySet, ShapesKeepTheirArgumentsUntilThePointsChange) {
  IFuzzySet Set = Triangle(0, 5, 10);
  EXPECT_EQ(Set->ToString(), u"((0.0000 0.0000) (5.0000 1.0000) (10.0000 0.0000))");
  EXPECT_EQ(Set->GetSetType(), fstTriangle);
  EXPECT_DOUBLE_EQ(Set->GetShapeArgument(2), 10);
  Set->BeginUpdate();
  Set->AddPoint(20, 0);
  EXPECT_EQ(Set->GetSetType(), fstTriangle) << "the change counts once the bracket closes";
  Set->EndUpdate();
  EXPECT_EQ(Set->GetSetType(), fstPoints);
  EXPECT_EQ(Set->GetShapeArgumentCount(), 0);
  Set->BeginUpdate();
  Set->AddPoint(30, 1);
  Set->Triangle(1, 2, 3);
  Set->EndUpdate();
  EXPECT_EQ(Set->GetSetType(), fstTriangle) << "a shape made last in a bracket stands";

  // A centre outside its feet still makes a set; three equal numbers a spike.
  EXPECT_EQ(Triangle(10, 5, 20)->GetValuesToString(), u"(5.0000 1.0000) (10.0000 0.0000) (20.0000 0.0000)");
  IFuzzySet Spike = Triangle(3, 3, 3);
  EXPECT_EQ(Spike->DegreeOfMembership(2.99) + Spike->DegreeOfMembership(3) + Spike->DegreeOfMembership(3.01), 1);
}

TEST(FuzzySet, SAndZCurvesRunThroughTheirInflection) {
  IFuzzySet S = Make<TIFuzzySet>(), Z = Make<TIFuzzySet>();
  S->SCurve(7, true, 0, 10, 5);
  Z->SCurve(7, false, 0, 10, 5);
  ASSERT_EQ(S->GetCount(), 15);
  EXPECT_EQ(Z->GetSetType(), fstZCurve);
  EXPECT_EQ(S->GetY(0) + S->GetX(14) + S->GetY(14), 11) << "from (0 0) to (10 1)";
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(5), 0.5);
  EXPECT_DOUBLE_EQ(S->GetY(1), 0.5 / 49) << "a parabola from alpha";
  for (int I = 0; I < 15; ++I) {
    EXPECT_TRUE(I == 0 || S->GetY(I) > S->GetY(I - 1)) << I;
    EXPECT_DOUBLE_EQ(Z->GetY(I), 1 - S->GetY(I));
  }
  S->SCurve(3, true, 0, 10, 2);
  EXPECT_DOUBLE_EQ(S->DegreeOfMembership(2), 0.5) << "an inflection off the middle";
  EXPECT_EQ(FailureOf([&] { S->SCurve(7, true, 10, 0, 5); }),
            u"Invalid fuzzy s curve from 10.0000 to 0.0000 with the inflection at 5.0000: the three must ascend");
  EXPECT_EQ(FailureOf([&] { S->SCurve(0, true, 0, 10, 5); }), u"A fuzzy curve needs 1 to 1000 steps, not 0");
  EXPECT_DOUBLE_EQ(S->GetShapeArgument(2), 2) << "a refused curve leaves the set as it was";
}

TEST(FuzzySet, PIAndBetaAreSymmetricBellsAroundTheirCentre) {
  IFuzzySet Pi = Make<TIFuzzySet>(), Wide = Make<TIFuzzySet>();
  Pi->PI(7, 20, 40, 30);
  Wide->PI(7, 10, 30);
  EXPECT_TRUE(Pi->SamePoints(*Wide, 1e-12));
  EXPECT_EQ(Wide->GetShapeArgumentCount(), 2);
  for (const auto& [X, Y] : {std::pair{20, 0.0}, {25, 0.5}, {30, 1.0}, {35, 0.5}, {40, 0.0}})
    EXPECT_DOUBLE_EQ(Pi->DegreeOfMembership(X), Y) << X;
  for (int I = 0, N = Pi->GetCount(); I < N; ++I) {
    EXPECT_NEAR(Pi->GetX(I) - 30, 30 - Pi->GetX(N - 1 - I), 1e-12);
    EXPECT_DOUBLE_EQ(Pi->GetY(I), Pi->GetY(N - 1 - I));
  }
  Pi->PI(7, 0, 4);
  EXPECT_EQ(Pi->GetValuesToString(), u"(4.0000 0.0000) (4.0000 1.0000) (4.0000 0.0000)");

  IFuzzySet Bell = Make<TIFuzzySet>();
  Bell->Beta(7, 10, 50, 5);
  EXPECT_EQ(Bell->GetCount(), 15);
  EXPECT_DOUBLE_EQ(Bell->DegreeOfMembership(50), 1);
  EXPECT_DOUBLE_EQ(Bell->DegreeOfMembership(40) + Bell->DegreeOfMembership(60), 0.4);
  Bell->Beta(2, 10, 50, 5, 3);
  EXPECT_DOUBLE_EQ(Bell->DegreeOfMembership(55), 0.25) << "the weight sharpens the bell";
  EXPECT_NE(FailureOf([&] { Bell->Beta(7, 0, 50, 5); }), u"(no failure)");
  EXPECT_NE(FailureOf([&] { Bell->PI(7, 10, 5, 0); }), u"(no failure)");
}

TEST(FuzzySet, NamedHedgesFollowTheirCurves) {
  const IFuzzySet Base = Triangle(0, 5, 10);
  auto Check = [&](TFuzzyHedge Hedge, TFzyFloat (*Curve)(TFzyFloat)) {
    ExpectMemberships(
        *Base->Hedge(Hedge), [&](TFzyFloat X) { return Curve(Base->DegreeOfMembership(X)); }, 0.011,
        StringToUtf8(FuzzyHedgeName(Hedge)));
  };
  Check(fhNot, [](TFzyFloat Y) { return 1 - Y; });
  Check(fhVery, [](TFzyFloat Y) { return Y * Y; });
  Check(fhExtremely, [](TFzyFloat Y) { return Y * Y * Y; });
  Check(fhSomewhat, [](TFzyFloat Y) { return std::sqrt(Y); });
  Check(fhMoreOrLess, [](TFzyFloat Y) { return std::sqrt(Y); });
  Check(fhPlus, [](TFzyFloat Y) { return std::pow(Y, 1.25); });
  Check(fhIntensify, [](TFzyFloat Y) { return Y <= 0.5 ? 2 * Y * Y : 1 - 2 * (1 - Y) * (1 - Y); });
  // Slightly, min(y^1.25, 1 - y^2), peaks at about 0.5808 before norm.
  Check(fhSlightly, [](TFzyFloat Y) { return std::min(std::pow(Y, 1.25), 1 - Y * Y) / 0.58079; });
  EXPECT_NEAR(Base->Hedge(fhSlightly)->GetCompatibilityIndex(), 1, 1e-12);
  EXPECT_EQ(Base->Hedge(fhNot)->GetCount(), 3) << "a straight transform needs no new points";

  IFuzzySet Half = Points({{0, 0}, {5, 0.5}, {10, 0.25}});
  Half->ApplyHedge(fhNorm);
  EXPECT_EQ(Half->GetValuesToString(), u"(0.0000 0.0000) (5.0000 1.0000) (10.0000 0.5000)");
}

TEST(FuzzySet, HedgesWithANumberKeepTheirCornersExact) {
  auto Hedged = [](TBaseFuzzyHedge Hedge, TFzyFloat Value) {
    IFuzzySet Set = Triangle(0, 5, 10);
    Set->Hedge(Hedge, Value);
    return Set->GetValuesToString();
  };
  EXPECT_EQ(Hedged(bfhCut, 0.5), u"(0.0000 0.0000) (2.5000 0.5000) (7.5000 0.5000) (10.0000 0.0000)");
  EXPECT_EQ(Hedged(bfhScale, 2), u"(0.0000 0.0000) (2.5000 1.0000) (7.5000 1.0000) (10.0000 0.0000)");
  EXPECT_EQ(Hedged(bfhShift, 0.5), u"(0.0000 0.5000) (2.5000 1.0000) (7.5000 1.0000) (10.0000 0.5000)");
  EXPECT_EQ(Hedged(bfhFloor, 0.2), u"(0.0000 0.2000) (1.0000 0.2000) (5.0000 1.0000) (9.0000 0.2000) (10.0000 0.2000)");
  EXPECT_EQ(Hedged(bfhNormTo, 0.4), u"(0.0000 0.0000) (5.0000 0.4000) (10.0000 0.0000)");
  EXPECT_EQ(Hedged(bfhPower, 2), Triangle(0, 5, 10)->Hedge(fhVery)->GetValuesToString());
  EXPECT_EQ(Hedged(bfhRoot, 2), Triangle(0, 5, 10)->Hedge(fhSomewhat)->GetValuesToString());
  // An alpha cut drops what lies under the cut, with vertical edges.
  EXPECT_EQ(Hedged(bfhAlphaCut, 0.6),
            u"(0.0000 0.0000) (3.0000 0.0000) (3.0000 0.6000) (5.0000 1.0000) (7.0000 0.6000) (7.0000 0.0000) "
            u"(10.0000 0.0000)");

  IFuzzySet Set = Triangle(0, 5, 10);
  EXPECT_EQ(FailureOf([&] { Set->Hedge(bfhPower, 0); }), u"Invalid number 0.0000 for the fuzzy hedge power");
  EXPECT_NE(FailureOf([&] { Set->Hedge(bfhCut, NAN); }), u"(no failure)");
  EXPECT_EQ(Set->GetSetType(), fstTriangle);
}

// Sets of many kinds against each other, steps included: zadeh must be
// exact everywhere, also where the sets cross between their points.
TEST(FuzzySet, ZadehUnionAndIntersectionAreExactBetweenThePoints) {
  const IFuzzySet Sets[] = {Triangle(0, 5, 10),         Triangle(5, 10, 15), Points({{0, 1}, {10, 0}}),
                            Points({{4, 0}, {8, 0.6}}), Triangle(6, 6, 6),   Points({{3, 0.3}, {3, 0.9}, {9, 0.1}}),
                            Make<TIFuzzySet>()};
  for (const IFuzzySet& A : Sets)
    for (const IFuzzySet& B : Sets) {
      IFuzzySet Union = A->CloneSet(), Intersection = A->CloneSet();
      Union->Union(*B);
      Intersection->Intersection(*B);
      auto Max = [&](TFzyFloat X) { return std::max(A->DegreeOfMembership(X), B->DegreeOfMembership(X)); };
      auto Min = [&](TFzyFloat X) { return std::min(A->DegreeOfMembership(X), B->DegreeOfMembership(X)); };
      ExpectMemberships(*Union, Max, 1e-9, "max", {A.Get(), B.Get()});
      ExpectMemberships(*Intersection, Min, 1e-9, "min", {A.Get(), B.Get()});
    }
  IFuzzySet Meet = Triangle(0, 5, 10);
  Meet->Intersection(*Triangle(5, 10, 15));
  EXPECT_EQ(Meet->GetValuesToString(),
            u"(0.0000 0.0000) (5.0000 0.0000) (7.5000 0.5000) (10.0000 0.0000) (15.0000 0.0000)");
}

TEST(FuzzySet, EveryOperationCombinesMemberships) {
  // Union and intersection of 0.3 with 0.5, and of 0.7 with 0.6.
  struct TCase {
    TFuzzyOperation Operation;
    TFzyFloat Low[2], High[2];
  };
  const TCase Cases[] = {
      {foZadeh, {0.5, 0.3}, {0.7, 0.6}},         {foMean, {0.4, 0.4}, {0.65, 0.65}},
      {foMeanSqr, {0.17, 0.17}, {0.425, 0.425}}, {foMeanSqrt, {0.6274147, 0.6274147}, {0.8056284, 0.8056284}},
      {foProduct, {0.65, 0.15}, {0.88, 0.42}},   {foBoundedSum, {0.8, 0}, {1, 0.3}},
      {foSum, {0.8, 0.15}, {1, 0.42}},  // 1.3 is scaled down to 1
  };
  auto Flat = [](TFzyFloat Y) { return Points({{0, Y}, {10, Y}}); };
  for (const TCase& Case : Cases)
    for (const bool IsUnion : {true, false})
      for (const bool High : {false, true}) {
        IFuzzySet Result = Flat(High ? 0.7 : 0.3);
        (Result.Get()->*(IsUnion ? &TFuzzySet::Union : &TFuzzySet::Intersection))(*Flat(High ? 0.6 : 0.5),
                                                                                  Case.Operation);
        EXPECT_NEAR(Result->DegreeOfMembership(5), (High ? Case.High : Case.Low)[IsUnion ? 0 : 1], 1e-7)
            << StringToUtf8(FuzzyKeyword(IsUnion, Case.Operation)) << (High ? " of 0.7 and 0.6" : " of 0.3 and 0.5");
      }

  // Sum keeps the proportions where bounded-sum clips, and bounded-sum gets
  // a point where the sum reaches 1.
  IFuzzySet Sum = Triangle(0, 5, 10);
  Sum->Union(*Triangle(0, 5, 10), foSum);
  EXPECT_DOUBLE_EQ(Sum->DegreeOfMembership(2.5), 0.5);
  IFuzzySet Bounded = Points({{0, 0}, {10, 1}});
  Bounded->Union(*Flat(0.7), foBoundedSum);
  EXPECT_EQ(Bounded->GetValuesToString(), u"(0.0000 0.7000) (3.0000 1.0000) (10.0000 1.0000)");
}

int CountedCalls = 0;
bool CountingMinThreshold(TFzyFloat Y, TFzyFloat OtherY, TFuzzyIterateState& State) {
  ++CountedCalls;
  return FuzzyOperatorMinThreshold(Y, OtherY, State);
}

TEST(FuzzySet, SetsMeetAtTheLargestPointwiseMinimum) {
  EXPECT_NEAR(Triangle(0, 5, 10)->FuzzyEquals(Triangle(2, 7, 12).Get()), 0.8, 1e-12) << "where they cross";
  EXPECT_DOUBLE_EQ(Triangle(0, 5, 10)->FuzzyEquals(Make<TIFuzzyVariable>().Get()), 0) << "not a set";

  IFuzzyVariable Speed = Make<TIFuzzyVariable>(u"speed");
  IFuzzySet Slow = Speed->NewFuzzySet(u"slow");
  Slow->Triangle(0, 5, 10);
  EXPECT_TRUE(Slow->Equals(Triangle(5, 10, 15).Get()));
  EXPECT_FALSE(Slow->Equals(Triangle(10, 15, 20).Get())) << "touching at a membership of 0 is no match";
  EXPECT_TRUE(Points({{0, 0}, {10, 1}})->Equals(Points({{10, 1}, {20, 0}}).Get())) << "touching at 1";
  Speed->SetFuzzyEqualsThreshold(0.5);
  EXPECT_FALSE(Slow->Equals(Triangle(5, 10, 15).Get())) << "meeting at 0.5 is not above the threshold";
  EXPECT_TRUE(Slow->Equals(Triangle(4, 9, 14).Get()));
  EXPECT_FALSE(Slow->Equals(Speed.Get()));

  // The threshold operator ends the walk at the first meeting above it.
  TFuzzyIterateState State;
  EXPECT_TRUE(Triangle(0, 5, 10)->Iterate(*Triangle(0, 5, 10), CountingMinThreshold, State));
  EXPECT_EQ(CountedCalls, 2);
  State = TFuzzyIterateState();
  EXPECT_FALSE(Triangle(0, 5, 10)->Iterate(*Triangle(5, 10, 15), FuzzyOperatorMaxOfMin, State));
  EXPECT_DOUBLE_EQ(State.Degree, 0.5);
}

TEST(FuzzySet, DefuzzificationFindsTheCentresAndTellsWhenThereIsNoArea) {
  IFuzzySet Set = Triangle(0, 5, 10);
  EXPECT_TRUE(Set->Undecidable()) << "not yet defuzzified";
  EXPECT_DOUBLE_EQ(Set->Defuzzify(), 5);
  EXPECT_FALSE(Set->Undecidable());
  EXPECT_DOUBLE_EQ(Set->MaximumDefuzzify(), 5);
  EXPECT_DOUBLE_EQ(Triangle(0, 0, 10)->MomentDefuzzify(), 10.0 / 3);
  IFuzzySet Trapezoid = Points({{0, 0}, {2, 1}, {4, 1}, {10, 0}});
  EXPECT_NEAR(Trapezoid->MomentDefuzzify(), 76.0 / 18, 1e-12);
  EXPECT_DOUBLE_EQ(Trapezoid->MaximumDefuzzify(), 3);
  Set->AddPoint(20, 0);
  EXPECT_TRUE(Set->Undecidable()) << "changed since";

  IFuzzySet Number = Triangle(4, 4, 4);
  EXPECT_DOUBLE_EQ(Number->Defuzzify(), 4) << "a single value stands for itself";
  EXPECT_TRUE(Number->Undecidable());
  IFuzzySet Empty = Make<TIFuzzySet>();
  EXPECT_DOUBLE_EQ(Empty->MaximumDefuzzify(), 0);
  EXPECT_TRUE(Empty->Undecidable());
  EXPECT_EQ(Empty->ToString(), SEmptyFuzzy);
}

TEST(FuzzySet, CopiesAreIndependentAndDescribeHowTheyCame) {
  IFuzzyVariable Heat = Make<TIFuzzyVariable>(u"heat");
  IFuzzySet Hot = Heat->NewFuzzySet(u"hot"), Cold = Heat->NewFuzzySet(u"cold");
  Hot->SCurve(7, true, 20, 40, 30);
  Cold->Triangle(0, 10, 20);
  IFuzzySet VeryHot = Hot->Hedge(fhVery);
  EXPECT_EQ(VeryHot->GetName() + u", " + VeryHot->GetExpression(), u"very hot, very hot");
  EXPECT_FALSE(VeryHot->IsTerm());
  EXPECT_EQ(VeryHot->GetVariable(), Heat.Get());
  EXPECT_EQ(Hot->GetSetType(), fstSCurve) << "the term itself is untouched";
  EXPECT_EQ(Hot->CloneSet()->GetShapeArgument(1), 40);

  VeryHot->Union(*Cold, foProduct);
  VeryHot->Hedge(bfhCut, 0.5);
  EXPECT_EQ(VeryHot->GetExpression(), u"[[very hot] or-product cold] cut 0.5");
  IFuzzySet Anonymous = Triangle(0, 1, 2);
  Anonymous->Union(*Hot);
  EXPECT_EQ(Anonymous->GetExpression(), Anonymous->ToString()) << "nothing to describe it by";

  // A copy holds its variable, which outlives the last other handle.
  Heat.Reset();
  ASSERT_TRUE(VeryHot->GetVariable());
  EXPECT_EQ(VeryHot->GetVariable()->FindFuzzySet(u"hot"), Hot.Get());
}

class TMarkedSet : public TIFuzzySet {
  TAVO_CLASS(TMarkedSet, TIFuzzySet)
 public:
  TMarkedSet() = default;
  explicit TMarkedSet(String Name) : TIFuzzySet(std::move(Name)) {}
};

class TMarkingVariable : public TIFuzzyVariable {
  TAVO_CLASS(TMarkingVariable, TIFuzzyVariable)
 protected:
  IFuzzySet CreateFuzzySet(const String& Name) override { return Make<TMarkedSet>(Name); }
};

TEST(FuzzyVariable, TermsAreMadeByTheVariablesFactoryAndNamedUniquely) {
  IFuzzyVariable Level = Make<TMarkingVariable>();
  Level->SetName(u"level");
  IFuzzySet Low = Level->NewFuzzySet(SLowFuzzyTerm);
  EXPECT_TRUE(Low->InheritsFrom(TMarkedSet::StaticClass()));
  EXPECT_TRUE(Low->IsTerm());
  EXPECT_EQ(Level->FindFuzzySet(u"low"), Low.Get());
  EXPECT_EQ(Level->FindFuzzySet(u"Low"), nullptr) << "term names are case-sensitive";
  EXPECT_EQ(FailureOf([&] { Level->NewFuzzySet(u"low"); }), u"Fuzzy variable level already has a term low");

  IFuzzySet High = Points({{0, 0}, {1, 1}}, u"high");
  Level->AddFuzzySet(High);
  EXPECT_EQ(Level->GetFuzzySet(1), High);
  EXPECT_EQ(FailureOf([&] { High->SetName(u"low"); }), u"Fuzzy variable level already has a term low");
  IFuzzyVariable Other = Make<TIFuzzyVariable>(u"other");
  EXPECT_EQ(FailureOf([&] { Other->AddFuzzySet(High); }),
            u"Fuzzy set high is already a term of the fuzzy variable level");

  // A removed term lives on as a set of the variable; a term that outlives
  // its variable forgets it.
  EXPECT_TRUE(Level->RemoveFuzzySet(High.Get()));
  EXPECT_FALSE(High->IsTerm());
  Level.Reset();
  ASSERT_TRUE(High->GetVariable());
  EXPECT_EQ(High->GetVariable()->FindFuzzySet(u"low"), Low.Get());
  High.Reset();
  EXPECT_EQ(Low->GetVariable(), nullptr);
  EXPECT_FALSE(Low->IsTerm());
}

TEST(FuzzyVariable, ClonesCopyTheTermsOfTheirOwn) {
  IFuzzyVariable Level = Make<TMarkingVariable>();
  Level->SetMaximum(8);
  Level->NewFuzzySet(u"low")->Triangle(0, 0, 4);
  Level->NewFuzzySet(u"high")->Triangle(4, 8, 8);
  IFuzzyVariable Copy = Level->CloneVariable();
  EXPECT_TRUE(Copy->Equals(Level.Get()));
  ASSERT_EQ(Copy->GetFuzzySetCount(), 2);
  TIFuzzySet* CopiedLow = Copy->FindFuzzySet(u"low");
  EXPECT_NE(CopiedLow, Level->FindFuzzySet(u"low"));
  EXPECT_EQ(CopiedLow->GetVariable(), Copy.Get());
  EXPECT_TRUE(CopiedLow->IsTerm());
  EXPECT_TRUE(CopiedLow->InheritsFrom(TMarkedSet::StaticClass()));
  CopiedLow->Hedge(bfhScale, 0.5);
  EXPECT_FALSE(Copy->Equals(Level.Get())) << "terms differ";
  EXPECT_DOUBLE_EQ(Level->FindFuzzySet(u"low")->GetCompatibilityIndex(), 1);
}

class TTermParser : public IFuzzyParser {
 public:
  IFuzzySet ParseFuzzyExpression(TIFuzzyVariable& Variable, const String& Text) override {
    return Variable.FindFuzzySet(Text)->Hedge(fhNorm);
  }
};

TEST(FuzzyVariable, ParsingGoesThroughTheParserWhichTheTermsShare) {
  IFuzzyVariable Speed = Make<TIFuzzyVariable>(u"speed");
  IFuzzySet Fast = Points({{50, 0}, {100, 0.5}}, u"fast");
  Speed->AddFuzzySet(Fast);
  EXPECT_EQ(FailureOf([&] { Speed->Parse(u"fast"); }), u"Fuzzy variable speed has no parser to read \"fast\"");
  TTermParser Parser;
  Speed->SetParser(&Parser);
  EXPECT_EQ(Fast->GetParser(), &Parser);
  EXPECT_DOUBLE_EQ(Speed->Parse(u"fast")->DegreeOfMembership(100), 1);
  Fast->SetParser(&Parser);
  Speed->SetParser(nullptr);
  EXPECT_EQ(Fast->GetParser(), nullptr) << "clearing the variable's parser clears the terms'";
}

}  // namespace
}  // namespace tavo
