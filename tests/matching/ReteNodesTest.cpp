// Nodes and join tests on their own: texts, equality for sharing, and the
// choice of a join's key.
#include "matching/ReteNodes.h"

#include <gtest/gtest.h>

#include "knowledge/TavoFactTemplate.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

struct TReteNodesTest : testing::Test {
  TReteNodesTest() {
    Template = Make<TFactTemplate>(nullptr, u"t");
    Template->AddSlot(u"x", FCNil);
    Template->AddMultiSlot(u"xs", FCNilList->CloneValue());
  }
  IFact Fact(int Id, ITavoValue X, ITavoValue Xs) {
    IFact Result = Template->NewFact();
    Result->SetID(Id);
    Result->SetValue(u"x", X);
    Result->SetValue(u"xs", Xs);
    return Result;
  }
  IFactTemplate Template;
};

TEST_F(TReteNodesTest, JoinTestsCompareASlotOfTheRightFactWithOneOfTheToken) {
  IReteToken Left = Make<TTavoToken>(Make<TTavoToken>(taAdd, Fact(1, Int(5), List({}))), Fact(2, Int(6), List({})));
  IFact Right = Fact(3, Int(6), List({Int(7), Int(5)}));
  TTavoJoinTest Equal(sttEquals, 1, u"x", u"x");
  TTavoJoinTest Unequal(sttNotEquals, 1, u"x", u"x");
  EXPECT_TRUE(Equal.Test(*Left, *Right));
  EXPECT_FALSE(Unequal.Test(*Left, *Right));
  TTavoJoinTest Item(sttEquals, 0, u"x", -1, u"xs", 1);
  EXPECT_EQ(Item.GetJoinTestType(), tstMultiSlot);
  EXPECT_TRUE(Item.Test(*Left, *Right));
  EXPECT_EQ(Equal.ToString(), u"= tstSlot TokenIdx: 1 Left: x Right: x");
  EXPECT_EQ(Item.ToString(), u"= tstMultiSlot TokenIdx: 0 Left: x -1 Right: xs 1");
  EXPECT_FALSE(Equal.Equals(&Unequal));
  std::unique_ptr<TTavoSlotTest> Copy(Item.Clone());
  EXPECT_TRUE(Item.Equals(Copy.get()));
  // The same test read from a context: the token on the left, the fact on
  // the right.
  TTavoContext Context;
  Context.SetToken(IContextToken(Left.Get()));
  Context.SetFact(IContextFact(Right.Get()));
  EXPECT_TRUE(Equal.PerformTest(&Context));
}

TEST_F(TReteNodesTest, AJoinKeysItsMemoriesByTheFirstEqualityOfPlainSlots) {
  TJoinNode Join;
  Join.AddTest(sttNotEquals, 0, u"x", u"x");
  Join.AddTest(sttEquals, 0, u"xs", 2, u"xs", 0);
  Join.AddTest(sttEquals, 1, u"x", u"x");
  Join.PrepareShortCut();
  EXPECT_TRUE(Join.GetShortCut());
  EXPECT_EQ(Join.GetTest(0)->ToString(), u"= tstSlot TokenIdx: 1 Left: x Right: x");
  EXPECT_EQ(Join.GetLeftMemory()->GetFactIndex(), u"x");
  EXPECT_EQ(Join.GetLeftMemory()->GetTokenIndex(), 1);
  EXPECT_FALSE(Join.GetLeftMemory()->GetUseHashCode());
  TJoinNode Items;
  Items.AddTest(sttEquals, 0, u"xs", 2, u"xs", 0);
  Items.PrepareShortCut();
  EXPECT_EQ(Items.GetRightMemory()->GetSubIndex(), 0);
  EXPECT_EQ(Items.GetLeftMemory()->GetSubIndex(), 2);
  // Without an equality there is no key: the left memory goes by sort code.
  TJoinNode Unkeyed;
  Unkeyed.AddTest(sttNotEquals, 0, u"x", u"x");
  Unkeyed.PrepareShortCut();
  EXPECT_FALSE(Unkeyed.GetShortCut());
  EXPECT_TRUE(Unkeyed.GetLeftMemory()->GetUseHashCode());
}

TEST_F(TReteNodesTest, JoinsAreEqualForSharingOnlyWithTheSameJoinTestsAndNoNegation) {
  TJoinNode One, Two, Negated, WithCall;
  One.AddTest(sttEquals, 0, u"x", u"x");
  One.AddTest(sttNotEquals, 0, u"xs", u"xs");
  Two.AddTest(sttNotEquals, 0, u"xs", u"xs");
  Two.AddTest(sttEquals, 0, u"x", u"x");
  EXPECT_TRUE(One.Equals(&Two));
  Negated.AddTest(sttEquals, 0, u"x", u"x");
  Negated.AddTest(sttNotEquals, 0, u"xs", u"xs");
  Negated.SetNegatedPattern(true);
  EXPECT_FALSE(One.Equals(&Negated));
  EXPECT_FALSE(Negated.Equals(&One));
  WithCall.AddTest(sttEquals, u"x", FCTrue);
  EXPECT_FALSE(WithCall.Equals(&WithCall));
  EXPECT_EQ(Negated.ToString().find(u" *NEGATED* Left Memory: "), Negated.ToString().find(u" *NEGATED*"));
}

TEST_F(TReteNodesTest, AlphaNodesCompareTestValueAndArgumentsAndShowThem) {
  TPatternMatchNode Node;
  Node.SetPatternMatchTest(pmtTestEqual);
  Node.SetValue(Atom(u"red"));
  Node.SetArguments({String(u"x"), -1});
  EXPECT_TRUE(Node.Equals(pmtTestEqual, Atom(u"red"), {String(u"x"), -1}));
  EXPECT_FALSE(Node.Equals(pmtTestEqual, Atom(u"blue"), {String(u"x"), -1}));
  EXPECT_FALSE(Node.Equals(pmtTestNotEqual, Atom(u"red"), {String(u"x"), -1}));
  EXPECT_FALSE(Node.Equals(pmtTestEqual, Atom(u"red"), {String(u"x"), 0}));
  EXPECT_FALSE(Node.Equals(pmtTestEqual, ITavoValue(), {String(u"x"), -1}));
  EXPECT_EQ(Node.ToString(), u" In/Out#: 0/0 RuleUse: 1 Value: red Test: pmtTestEqual Args: (x, -1)");
  EXPECT_EQ(GetCallTypeName(ctActivate), u"ctActivate");
  EXPECT_EQ(GetPatternMatchTestName(pmtTestMultiSlotMultiField), u"pmtTestMultiSlotMultiField");
}

}  // namespace
}  // namespace tavo
