#include "packages/MiscPackage.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "engine/InferenceEngine.h"
#include "matching/ActivationAgenda.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// An engine with every package, its standard output kept,
// and a host function "probe" that notes whether the firing rule is enabled.
struct TMiscFixture {
  TInferenceEngine Engine;
  String Printed;
  std::vector<bool> Enabled;

  TMiscFixture() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
    auto* Probe = new TCustomUserFunction(&Engine);
    Probe->SetFunctionName(u"probe");
    Probe->OnCall = [this](TObject*, const IFunCall&, TTavoContext*, ITavoValue& Result) {
      TActivation* Firing = Engine.GetCurrentAgendaItem();
      Enabled.push_back(Firing && Firing->GetRule()->GetEnabled());
      Result = FCTrue;
    };
    Probe->SetEngine(&Engine);
  }
};

TEST(MiscPackageTest, GuardDisablesTheFiringRuleOnlyWhileItsCallsRun) {
  TMiscFixture F;
  F.Engine.Parse(u"(defrule r (go ?n) => (probe) (guard (probe) (guard (probe)) (probe)) (probe))");
  F.Engine.Parse(u"(assert (go 1))");
  EXPECT_EQ(F.Engine.Run(), 1);
  // A nested guard puts back what it found, which is still "disabled".
  EXPECT_EQ(F.Enabled, (std::vector<bool>{true, false, false, false, true}));
  TRule* Rule = F.Engine.GetRules()->Find(u"r");
  ASSERT_NE(Rule, nullptr);
  EXPECT_TRUE(Rule->GetEnabled());
  // The rule stayed compiled: a new fact activates it again.
  F.Engine.Parse(u"(assert (go 2))");
  EXPECT_EQ(F.Engine.GetAgendaCount(), 1);
}

TEST(MiscPackageTest, GuardRestoresTheRuleWhenACallFails) {
  TMiscFixture F;
  F.Engine.Parse(u"(defrule r (go ?n) => (guard (probe) (throw failed)))");
  F.Engine.Parse(u"(assert (go 1))");
  EXPECT_EQ(FailureOf([&] { F.Engine.Run(); }), u"failed");
  EXPECT_EQ(F.Enabled, (std::vector<bool>{false}));
  EXPECT_TRUE(F.Engine.GetRules()->Find(u"r")->GetEnabled());
  F.Engine.Parse(u"(assert (go 2))");
  EXPECT_EQ(F.Engine.GetAgendaCount(), 1);
}

TEST(MiscPackageTest, GuardOutsideAFiringJustRunsItsCalls) {
  TMiscFixture F;
  EXPECT_EQ(F.Engine.ParseNExecuteFunCall(u"(guard (probe) (+ 1 2))")->GetAsInteger(), 3);
  EXPECT_EQ(F.Enabled, (std::vector<bool>{false})) << "no rule is firing";
}

TEST(MiscPackageTest, RulesGoToTheLogicalNameInTheOrderDefined) {
  TMiscFixture F;
  std::ostringstream Written;
  auto* Out = new TGTextStream(std::string());
  Out->SetOutput(&Written);
  F.Engine.GetIOStreams()->AddStream(u"out", Out);
  F.Engine.Parse(u"(defrule zeta (a ?x) =>) (defrule alpha (b ?y) =>)");
  F.Printed.clear();
  F.Engine.ParseNExecuteFunCall(u"(rules out)");
  EXPECT_EQ(F.Printed, u"") << "nothing on the standard channel";
  const String Zeta = F.Engine.GetRules()->Find(u"zeta")->ToString();
  const String Alpha = F.Engine.GetRules()->Find(u"alpha")->ToString();
  EXPECT_EQ(Written.str(), StringToUtf8(Zeta + u"\r\n" + Alpha + u"\r\nFor a total of 2 rules.\r\n"));
  F.Engine.ParseNExecuteFunCall(u"(rules)");
  EXPECT_EQ(F.Printed, Zeta + u"\r\n" + Alpha + u"\r\nFor a total of 2 rules.\r\n");
}

TEST(MiscPackageTest, FamiliesAnswerToEachMembersName) {
  TMiscFixture F;
  for (const char16_t* Name : {u"is-binding", u"is-deftype", u"is-deffunction", u"is-defglobal", u"is-defrule",
                               u"is-deffacts", u"is-deftemplate"}) {
    IUserFunction Function = F.Engine.GetUserFunction(Name);
    ASSERT_TRUE(Function);
    EXPECT_EQ(Function->GetMinArgumentCount(), 1);
    EXPECT_EQ(Function->GetMaxArgumentCount(), 1);
  }
  for (const char16_t* Name : {u"list-defglobals", u"list-bindings"})
    EXPECT_EQ(F.Engine.GetUserFunction(Name)->GetMaxArgumentCount(), 0);
  EXPECT_EQ(F.Engine.GetUserFunction(u"set-reset-globals")->GetArgumentString(), u" [<boolean-expression>]");
}

TEST(MiscPackageTest, ConstraintSettingsReachTheEngine) {
  TMiscFixture F;
  F.Engine.ParseNExecuteFunCall(u"(set-dynamic-constraint-checking TRUE)");
  F.Engine.ParseNExecuteFunCall(u"(set-static-constraint-checking FALSE)");
  EXPECT_EQ(F.Engine.GetTypeChecks(), TTypeChecks{tcDynamic});
  // Anything but TRUE switches a check off.
  F.Engine.ParseNExecuteFunCall(u"(set-dynamic-constraint-checking yes)");
  EXPECT_EQ(F.Engine.GetTypeChecks(), TTypeChecks{});
  EXPECT_EQ(F.Engine.ParseNExecuteFunCall(u"(get-static-constraint-checking)"), FCFalse);
}

}  // namespace
}  // namespace tavo
