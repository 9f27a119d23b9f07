// What rests on templates and types when they are redefined or removed,
// across modules and through the host's interface.
#include <gtest/gtest.h>

#include "engine/EngineCollections.h"
#include "engine/FactList.h"
#include "engine/InferenceEngine.h"
#include "knowledge/TavoRule.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

struct TDependenciesTest : testing::Test {
  TDependenciesTest() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
  }
  TModule* Module(const char16_t* Name) const { return Engine.GetModules().GetModule(Name).Get(); }
  IFactTemplate TemplateIn(const char16_t* ModuleName, const char16_t* Name) const {
    const IFactTemplate* Found = Module(ModuleName)->GetFactTemplates()->Find(Name);
    return Found ? *Found : IFactTemplate();
  }
  // Every pattern of every rule of a module stands on the template its
  // module now holds under that name.
  void ExpectRulesOnCurrentTemplates(const char16_t* ModuleName) const {
    TRules* Rules = Module(ModuleName)->GetRules();
    for (int I = 0; I < Rules->Count(); ++I)
      for (int P = 0; P < Rules->Get(I)->GetPatternCount(); ++P) {
        const IFactTemplate& Template = Rules->Get(I)->GetPattern(P)->GetFactTemplate();
        EXPECT_EQ(TemplateIn(ModuleName, Template->GetTemplateName().c_str()).Get(), Template.Get())
            << StringToUtf8(Rules->Get(I)->GetRuleName());
      }
  }

  TInferenceEngine Engine;
  String Printed;
};

const char16_t Shared[] =
    u"(defmodule MAIN (export deftemplate item))"
    u"(deftemplate item (slot name))"
    u"(defrule main-sees (item (name ?n)) => (printout t \"main \" ?n crlf))"
    u"(defmodule OTHER (import MAIN deftemplate item))"
    u"(defrule other-sees (item (name ?n)) => (printout t \"other \" ?n crlf))"
    u"(set-current-module MAIN)";

TEST_F(TDependenciesTest, ARedefinedSharedTemplateIsRebuiltInEveryModule) {
  Engine.Parse(Shared);
  Engine.Reset();
  Engine.Assert(u"(item (name a))");
  Engine.Parse(u"(deftemplate item (slot name) (slot size (default 3)))");
  // Both modules hold the new template, and their rules stand on it.
  ASSERT_TRUE(TemplateIn(u"MAIN", u"item"));
  EXPECT_EQ(TemplateIn(u"OTHER", u"item").Get(), TemplateIn(u"MAIN", u"item").Get());
  EXPECT_EQ(TemplateIn(u"MAIN", u"item")->GetSlotCount(), 2);
  ExpectRulesOnCurrentTemplates(u"MAIN");
  ExpectRulesOnCurrentTemplates(u"OTHER");
  // The fact came back once, with a new id, in both modules.
  EXPECT_EQ(Module(u"MAIN")->GetFacts()->GetToIDString(), u"f-0 (Initial-Fact)\r\nf-2 (item (name a) (size 3))");
  EXPECT_EQ(Module(u"OTHER")->GetFacts()->GetToIDString(), u"f-2 (item (name a) (size 3))");
  Engine.PushFocus(u"OTHER");
  Printed.clear();
  Engine.Run();
  EXPECT_EQ(Printed, u"other a\r\nmain a\r\n");
}

TEST_F(TDependenciesTest, ARemovedSharedTemplateLeavesEveryModuleWithNothingOnIt) {
  Engine.Parse(Shared);
  Engine.Parse(u"(defrule maker (go) => (assert (item (name made))))");
  Engine.Reset();
  Engine.Assert(u"(item (name a))");
  EXPECT_EQ(Engine.GetAgendaCount(), 1);
  EXPECT_TRUE(Engine.GetFactTemplates()->Remove(u"item"));
  EXPECT_FALSE(TemplateIn(u"MAIN", u"item"));
  EXPECT_FALSE(TemplateIn(u"OTHER", u"item"));
  EXPECT_EQ(Module(u"OTHER")->GetRules()->Count(), 0);
  EXPECT_EQ(Module(u"OTHER")->GetFacts()->Count(), 0);
  EXPECT_EQ(Engine.GetAgendaCount(), 0) << "the matching rule's activation went with it";
  // The rule that only makes such a fact stays, as the text of its action.
  ASSERT_NE(Engine.GetRules()->Find(u"maker"), nullptr);
  EXPECT_EQ(Engine.GetRules()->Count(), 1);
}

TEST_F(TDependenciesTest, TheListOfDependantsCarriesFactsAndRulesBackAfterAChange) {
  Engine.Parse(u"(deftemplate item (slot name)) (defrule r (item (name ?n)) =>)"
               u"(defrule w (go) => (assert (item (name w)))) (defrule other (go) =>)");
  Engine.Reset();
  Engine.Assert(u"(item (name a))");
  Engine.Assert(u"(item (name b))");
  const IFactTemplate Item = Engine.FindFactTemplate(u"item");
  TInferenceEngine::TDependants List;
  Engine.RemoveDependencies(Item, List);
  ASSERT_EQ(List.size(), 4u);
  EXPECT_EQ(List[0].first, u"(item (name a))");
  EXPECT_EQ(List[1].first, u"(item (name b))");
  EXPECT_EQ(List[2].first.rfind(u"(defrule MAIN::r", 0), 0u);
  EXPECT_FALSE(List[2].second) << "a rule has no fact";
  EXPECT_EQ(List[3].first.rfind(u"(defrule MAIN::w", 0), 0u) << "an action that makes such a fact counts";
  EXPECT_EQ(Engine.GetRules()->Count(), 1);
  EXPECT_EQ(Engine.GetFacts()->Count(), 1);
  Engine.UpdateDependencies(List);
  EXPECT_EQ(Engine.GetRules()->Count(), 3);
  EXPECT_EQ(Engine.GetFacts()->ToString(), u"(Initial-Fact)\r\n(item (name a))\r\n(item (name b))") << "in order";
  EXPECT_EQ(Engine.GetAgendaCount(), 2);
}

TEST_F(TDependenciesTest, ATemplateRenamedByTheHostTakesItsDependantsAway) {
  Engine.Parse(u"(deftemplate item (slot name)) (defrule r (item (name ?n)) =>)");
  Engine.Reset();
  Engine.Assert(u"(item (name a))");
  const IFactTemplate Old = Engine.FindFactTemplate(u"item");
  IFactTemplate New = Old->Clone(&Engine);
  New->SetTemplateName(u"thing");
  Engine.GetFactTemplates()->Replace(Old, New);
  EXPECT_FALSE(Engine.FindFactTemplate(u"item"));
  EXPECT_TRUE(Engine.FindFactTemplate(u"thing"));
  EXPECT_EQ(Engine.GetRules()->Count(), 0);
  EXPECT_EQ(Engine.GetFacts()->ToString(), u"(Initial-Fact)");
}

TEST_F(TDependenciesTest, ATemplateRedefinedByAFiringRuleThatMatchesOnIt) {
  Engine.Parse(u"(deftemplate item (slot name))"
               u"(defrule grow ?i <- (item (name ?n&~done)) =>"
               u"  (parse \"(deftemplate item (slot name) (slot extra (default 1)))\")"
               u"  (printout t \"grown \" ?n crlf))"
               u"(defrule seen (item (name ?n)) => (printout t \"seen \" ?n crlf))");
  Engine.Reset();
  Engine.Assert(u"(item (name a))");
  Printed.clear();
  // The firing rule is rebuilt under its feet; it finishes its actions, and
  // its new self matches the rebuilt fact again.
  EXPECT_EQ(FailureOf([&] { Engine.Run(5); }), u"(no failure)");
  EXPECT_NE(Printed.find(u"grown a\r\n"), String::npos);
  EXPECT_NE(Printed.find(u"seen a\r\n"), String::npos);
  ExpectRulesOnCurrentTemplates(u"MAIN");
  EXPECT_EQ(Engine.GetFacts()->Get(1)->ToString(), u"(item (extra 1) (name a))");
}

TEST_F(TDependenciesTest, ATypeRedefinedRebuildsItsTemplatesAndRemovedTakesThem) {
  Engine.Parse(u"(deftype small extends (type INTEGER) (range 0 9))"
               u"(deftemplate box (slot size (type small) (default 1)))"
               u"(deftemplate tag (slot text))"
               u"(defrule r (box (size ?s)) =>)");
  Engine.Reset();
  Engine.Assert(u"(box (size 5))");
  const IFactTemplate Before = Engine.FindFactTemplate(u"box");
  Engine.Parse(u"(deftype small extends (type INTEGER) (range 0 99))");
  const IFactTemplate After = Engine.FindFactTemplate(u"box");
  ASSERT_TRUE(After);
  EXPECT_NE(After.Get(), Before.Get()) << "a copy on the new type took the template's place";
  EXPECT_EQ(After->GetSlot(u"size")->GetExtendedTypeInfo().Get(), Engine.FindDefinedType(u"small").Get());
  EXPECT_EQ(Engine.GetFacts()->GetToIDString(), u"f-0 (Initial-Fact)\r\nf-2 (box (size 5))");
  ExpectRulesOnCurrentTemplates(u"MAIN");
  EXPECT_TRUE(Engine.GetDefinedTypes()->Remove(u"small"));
  EXPECT_FALSE(Engine.FindFactTemplate(u"box"));
  EXPECT_TRUE(Engine.FindFactTemplate(u"tag")) << "a template without the type stays";
  EXPECT_EQ(Engine.GetRules()->Count(), 0);
}

}  // namespace
}  // namespace tavo
