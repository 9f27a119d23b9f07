// Patterns: their slots in name order, their counts of tests, and the
// rewriting of "|" into one variable and one call of or.
#include "knowledge/TavoPattern.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "knowledge/TavoRule.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

struct TTavoPatternTest : testing::Test {
  TTavoPatternTest() { Engine.Parse(u"(deftemplate p (slot Zeta) (slot alpha) (slot Beta) (multislot list))"); }
  IFactTemplate Template() { return Engine.FindFactTemplate(u"p"); }
  TInferenceEngine Engine;
};

// The call's name and its arguments' texts, nested calls in brackets.
String Shape(const ITavoValue& Value) {
  if (!Value || Value->GetDType() != dtFunCall) return Value ? Value->ToString() : u"nil";
  IFunCall Call = Value->GetAsFunCall();
  String Result = u"(" + String(Call->GetName());
  for (int I = 0; I < Call->GetArgumentCount(); ++I) Result += u" " + Shape(Call->GetArgument(I));
  return Result + u")";
}

TEST_F(TTavoPatternTest, SlotsComeInNameOrderWithoutRegardToCase) {
  TTavoPattern Pattern(nullptr, u"p", Template());
  ASSERT_EQ(Pattern.GetSlotCount(), 4);
  EXPECT_EQ(Pattern.GetSlotName(0), u"alpha");
  EXPECT_EQ(Pattern.GetSlotName(1), u"Beta");
  EXPECT_EQ(Pattern.GetSlotName(2), u"list");
  EXPECT_EQ(Pattern.GetSlotName(3), u"Zeta");
  EXPECT_EQ(Pattern.GetSlotLength(2), -1);
  EXPECT_EQ(Pattern.IndexOfSlotName(u"beta"), 1);
}

TEST_F(TTavoPatternTest, CountsFollowTestsAndTheirConjunctions) {
  TTavoPattern Pattern(nullptr, u"p", Template());
  int Changes = 0;
  Pattern.OnChange = [&](TObject*) { ++Changes; };
  TTavoPatternMatchTest* One = Pattern.AddTest(u"alpha", Int(1), NoSubIndex, true, false);
  TTavoPatternMatchTest* Two = Pattern.AddTest(u"alpha", Int(2), NoSubIndex, false, true);
  EXPECT_EQ(Pattern.GetNumSlotTests(), 2);
  EXPECT_EQ(Pattern.GetNumORConstraints(), 1);
  EXPECT_EQ(Two->GetSlotTestType(), sttNotEquals);
  One->SetConjunction(false);
  EXPECT_EQ(Pattern.GetNumORConstraints(), 2);
  Pattern.BeginUpdate();
  Pattern.GetSlotTests(0)->Delete(1);
  Pattern.GetSlotTests(0)->Delete(0);
  EXPECT_EQ(Changes, 3);
  Pattern.EndUpdate();
  EXPECT_EQ(Changes, 4);
  EXPECT_EQ(Pattern.GetNumSlotTests(), 0);
  EXPECT_EQ(Pattern.GetNumORConstraints(), 0);
  EXPECT_TRUE(TTavoPattern(nullptr, u"p", Template(), 1).IsNegated());
  EXPECT_FALSE(TTavoPattern(nullptr, u"p", Template(), 2).IsNegated());
  EXPECT_FALSE(TTavoPattern(nullptr, u"p", Template(), -1).IsNegated());
}

TEST_F(TTavoPatternTest, OrRunsBecomeAVariableAndACallWithAndForConjunctions) {
  auto* Rule = new TRule(&Engine, u"r", String());
  auto* Pattern = new TTavoPattern(Rule, u"p", Template());
  // alpha: ?a & 1 | 2 & ~3 | 4 ; Beta: 7 | 8 ; Zeta: plain 9
  Pattern->AddTest(u"alpha", Var(u"a"), NoSubIndex, true, false);
  Pattern->AddTest(u"alpha", Int(1), NoSubIndex, true, false);
  Pattern->AddTest(u"alpha", Int(2), NoSubIndex, false, false);
  Pattern->AddTest(u"alpha", Int(3), NoSubIndex, true, true);
  Pattern->AddTest(u"alpha", Int(4), NoSubIndex, false, false);
  Pattern->AddTest(u"Beta", Int(7), NoSubIndex, true, false);
  Pattern->AddTest(u"Beta", Int(8), NoSubIndex, false, false);
  Pattern->AddTest(u"Zeta", Int(9), NoSubIndex, true, false);
  Rule->GetPatterns().Add(Pattern);
  ASSERT_EQ(Pattern->GetSlotTestCount(0), 2);
  EXPECT_EQ(Shape(Pattern->GetSlotTest(0, 0)->GetSlotValue()), u"?a");
  // An "&" run takes one test more than it counted: 4 stands twice.
  EXPECT_EQ(Shape(Pattern->GetSlotTest(0, 1)->GetSlotValue()),
            u"(or (eq 1 ?a) (and (eq 2 ?a) (neq 3 ?a) (eq 4 ?a)) (eq 4 ?a))");
  ASSERT_EQ(Pattern->GetSlotTestCount(1), 2);
  String Blank = Pattern->GetSlotTest(1, 0)->GetSlotValue()->GetAsString();
  EXPECT_EQ(Blank.substr(0, 7), u"_blank_");
  TBinding* Binding = Rule->GetBindingByName(Blank);
  ASSERT_NE(Binding, nullptr);
  EXPECT_EQ(Binding->GetSlotIndex(), u"Beta");
  EXPECT_EQ(Shape(Pattern->GetSlotTest(1, 1)->GetSlotValue()), u"(or (eq 7 ?" + Blank + u") (eq 8 ?" + Blank + u"))");
  EXPECT_EQ(Pattern->GetSlotTestCount(3), 1);
  delete Rule;
}

TEST_F(TTavoPatternTest, CallsTurnIntoTestsAsTheyAreOrAreNegated) {
  TTavoPatternMatchTest Literal(nullptr);
  Literal.SetSlotValue(Atom(u"red"));
  EXPECT_EQ(Shape(Make<TTavoValue>(ConvertToFunCall(&Engine, Literal, Var(u"c")))), u"(eq red ?c)");
  Literal.SetSlotTestType(sttNotEquals);
  EXPECT_EQ(Shape(Make<TTavoValue>(ConvertToFunCall(&Engine, Literal, Var(u"c")))), u"(neq red ?c)");
  TTavoPatternMatchTest Call(nullptr);
  Call.SetSlotValue(Make<TTavoValue>(Engine.ParseFunCall(u"(> ?c 1)")));
  EXPECT_EQ(Shape(Make<TTavoValue>(ConvertToFunCall(&Engine, Call, Var(u"c")))), u"(> ?c 1)");
  Call.SetSlotTestType(sttNotEquals);
  EXPECT_EQ(Shape(Make<TTavoValue>(ConvertToFunCall(&Engine, Call, Var(u"c")))), u"(not (> ?c 1))");
  EXPECT_EQ(Call.ToString().substr(0, 14), u"<> SubIdx: -1 ");
}

TEST_F(TTavoPatternTest, ACloneCopiesSettingsTestsAndLengths) {
  TTavoPattern Source(nullptr, u"p", Template(), 1);
  Source.SetUnique(true);
  Source.SetSlotLength(Source.IndexOfSlotName(u"list"), 2);
  Source.AddTest(u"list", Atom(u"x"), 1, true, false);
  std::unique_ptr<TTavoPattern> Copy(Source.Clone(nullptr));
  EXPECT_TRUE(Copy->GetUnique());
  EXPECT_EQ(Copy->GetNegatedCount(), 1);
  int List = Copy->IndexOfSlotName(u"list");
  EXPECT_EQ(Copy->GetSlotLength(List), 2);
  ASSERT_EQ(Copy->GetSlotTestCount(List), 1);
  EXPECT_NE(Copy->GetSlotTest(List, 0), Source.GetSlotTest(List, 0));
  EXPECT_TRUE(Copy->GetSlotTest(List, 0)->Equals(Source.GetSlotTest(List, 0)));
  EXPECT_EQ(Copy->GetNumSlotTests(), 1);
}

}  // namespace
}  // namespace tavo
