// Modules through the host's interface: what imports bring in, facts of
// shared templates in every sharing module, the order of the module list,
// and a host editing that list directly.
#include <gtest/gtest.h>

#include "engine/EngineCollections.h"
#include "engine/FactList.h"
#include "engine/InferenceEngine.h"
#include "knowledge/TavoRule.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

struct TModulesTest : testing::Test {
  TModulesTest() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
    Engine.OnAddModule = [this](TObject*, const IModule& M) { Log += u"add " + M->GetName() + u";"; };
    Engine.OnRemoveModule = [this](TObject*, const IModule& M) { Log += u"remove " + M->GetName() + u";"; };
  }
  const IModule& Module(const char16_t* Name) const { return Engine.GetModules().GetModule(Name); }
  // The ids of a module's facts, in list order.
  String Ids(const char16_t* Name) const {
    String Result;
    for (const IFact& Fact : *Module(Name)->GetFacts()) Result += IntToStr(Fact->GetID()) + u" ";
    return Result;
  }
  String TemplatesOf(const char16_t* Name) const {
    String Result;
    for (const IFactTemplate& Template : Module(Name)->GetFactTemplates()->InOrder(false))
      if (Template->GetTemplateName() != SNullFact) Result += Template->GetTemplateName() + u" ";
    return Result;
  }
  String Names() const { return Engine.GetModules().ToNamesString(); }

  TInferenceEngine Engine;
  String Printed;
  String Log;
};

TEST_F(TModulesTest, AnImportTakesOnlyWhatItsSourceExportsFromItsOwnHome) {
  Engine.Parse(
      u"(defmodule A (export deftemplate shown also))"
      u"(deftemplate A::shown (slot x)) (deftemplate A::hidden (slot x))"
      u"(defmodule B (import A deftemplate ?ALL) (export ?ALL))"
      u"(defmodule C (import A deftemplate shown hidden missing))"
      u"(defmodule D (import B deftemplate ?ALL))"
      u"(defmodule E (import A ?NONE))");
  EXPECT_EQ(TemplatesOf(u"B"), u"Initial-Fact shown ");
  EXPECT_EQ(TemplatesOf(u"C"), u"Initial-Fact shown ") << "hidden is not exported, missing does not exist";
  EXPECT_EQ(TemplatesOf(u"D"), u"Initial-Fact ") << "B exports only its own constructs, not what it imported";
  EXPECT_EQ(TemplatesOf(u"E"), u"Initial-Fact ");
  const IFactTemplate Shown = Module(u"A")->GetFactTemplates()->GetItem(u"shown");
  EXPECT_EQ(Shown->GetModule(), Module(u"A")) << "an imported template keeps its home";
  EXPECT_EQ(Shown->GetImportModuleCount(), 3) << "A, B and C hold it";
  EXPECT_EQ(Module(u"B")->GetFactTemplates()->GetImportCount(), 1);
}

TEST_F(TModulesTest, AnExporterOfNothingGivesNothingWithoutAWord) {
  Engine.Parse(u"(defmodule A) (deftemplate A::t (slot x)) (defmodule B (import A deftemplate ?ALL))");
  EXPECT_EQ(TemplatesOf(u"B"), u"Initial-Fact ");
  EXPECT_EQ(Names(), u"MAIN A B");
}

TEST_F(TModulesTest, AFactOfASharedTemplateStandsInEverySharingModuleWithOneId) {
  Engine.Parse(
      u"(defmodule MAIN (export ?ALL)) (deftemplate item (slot n))"
      u"(defmodule A (import MAIN ?ALL)) (defmodule B (import MAIN deftemplate item))"
      u"(defrule A::seen (item (n ?n)) =>) (defrule B::seen (item (n ?n)) =>)");
  Engine.SetCurrentModule(Module(u"A"));
  const int Id = Engine.Assert(u"(item (n 1))");
  EXPECT_EQ(Engine.GetCurrentModule(), Module(u"A")) << "the asserting module stays current";
  for (const char16_t* Name : {u"MAIN", u"A", u"B"}) EXPECT_EQ(Ids(Name), IntToStr(Id) + u" ") << StringToUtf8(Name);
  EXPECT_EQ(Module(u"A")->GetAgenda()->Count(), 1);
  EXPECT_EQ(Module(u"B")->GetAgenda()->Count(), 1) << "each sharing network sees the fact";
  // Retracted where it is current in B, it leaves every module and agenda.
  Engine.SetCurrentModule(Module(u"B"));
  Engine.Retract(Id);
  for (const char16_t* Name : {u"MAIN", u"A", u"B"}) EXPECT_EQ(Ids(Name), u"") << StringToUtf8(Name);
  EXPECT_EQ(Module(u"A")->GetAgenda()->Count(), 0);
  EXPECT_EQ(Module(u"B")->GetAgenda()->Count(), 0);
}

TEST_F(TModulesTest, FactsThatStandBeforeTheImportEnterTheImporterWithTheirIds) {
  Engine.Parse(u"(defmodule MAIN (export ?ALL)) (deftemplate item (slot n))");
  const int Id = Engine.Assert(u"(item (n 1))");
  Engine.Parse(u"(defmodule A (import MAIN deftemplate item)) (defrule A::seen (item) =>)");
  EXPECT_EQ(Ids(u"A"), IntToStr(Id) + u" ");
  EXPECT_EQ(Module(u"A")->GetAgenda()->Count(), 1);
}

TEST_F(TModulesTest, RulesWithoutPatternsOfAnImporterMatchTheInitialFactOfMain) {
  Engine.Parse(
      u"(defmodule MAIN (export ?ALL)) (defmodule A (import MAIN ?ALL))"
      u"(defrule A::opening => (printout t \"A opens\" crlf))"
      u"(defrule MAIN::start => (focus A))");
  Engine.Reset();
  EXPECT_EQ(Engine.Run(), 2);
  EXPECT_EQ(Printed, u"A opens\r\n");
}

TEST_F(TModulesTest, TheListKeepsEveryModuleBehindTheModulesItImports) {
  Engine.Parse(u"(defmodule A (export ?ALL)) (deftemplate A::t (slot x)) (defmodule B (import A ?ALL))");
  Log.clear();
  const String Later = u"Invalid module dependency.  Module \"MAIN\" imports module \"A\" which is later in the "
                       u"module list";
  EXPECT_EQ(FailureOf([&] { Engine.Parse(u"(defmodule MAIN (import A ?ALL))"); }), Later);
  // A again would come back behind B, which imports it.
  EXPECT_EQ(FailureOf([&] { Engine.Parse(u"(defmodule A)"); }),
            u"Invalid module dependency.  Module \"B\" imports module \"A\" which is later in the module list");
  EXPECT_EQ(Names(), u"MAIN A B") << "a refused module changes nothing";
  EXPECT_EQ(TemplatesOf(u"B"), u"Initial-Fact t ");
  EXPECT_EQ(Log, u"");
  // A module may replace one that nothing imports.
  Engine.Parse(u"(defmodule B)");
  EXPECT_EQ(Names(), u"MAIN A B");
  EXPECT_EQ(Log, u"remove B;add B;");
}

TEST_F(TModulesTest, AnImportThatCannotBeMadeTakesTheNewModuleOutAgain) {
  Engine.Parse(
      u"(defmodule A (export ?ALL)) (deftype A::small extends (type INTEGER) (range 0 9))"
      u"(deftemplate A::thing (slot size (type small)))");
  const IFactTemplate Thing = Module(u"A")->GetFactTemplates()->GetItem(u"thing");
  Engine.SetCurrentModule(Module(u"MAIN"));
  EXPECT_EQ(FailureOf([&] { Engine.Parse(u"(defmodule B (import A deftemplate ?ALL))"); }),
            u"Fact Template, \"thing\", depends on non-imported Defined Type: \"small\"");
  EXPECT_EQ(Names(), u"MAIN A");
  EXPECT_EQ(Engine.GetCurrentModule(), Module(u"MAIN"));
  EXPECT_EQ(Thing->GetImportModuleCount(), 1) << "the refused module is no importer";
  // With the type imported first the template comes along.
  Engine.Parse(u"(defmodule B (import A deftype ?ALL) (import A deftemplate ?ALL)) (defrule B::r (thing) =>)");
  EXPECT_EQ(TemplatesOf(u"B"), u"Initial-Fact thing ");
  // A namesake that cannot make its imports leaves the module it would
  // have replaced as it was.
  IModule B = Module(u"B");
  Log.clear();
  EXPECT_NE(FailureOf([&] { Engine.Parse(u"(defmodule B (import A deftemplate ?ALL))"); }), u"(no failure)");
  EXPECT_EQ(Module(u"B"), B);
  EXPECT_EQ(Names(), u"MAIN A B");
  EXPECT_EQ(B->GetRules()->Count(), 1);
  EXPECT_EQ(Thing->GetImportModuleCount(), 2);
  EXPECT_EQ(Log, u"remove B;") << "only the refused module went";
}

TEST_F(TModulesTest, ARemovedImporterIsForgottenByWhatItImported) {
  Engine.Parse(
      u"(defmodule MAIN (export ?ALL)) (deftemplate item (slot n))"
      u"(defmodule A (import MAIN ?ALL)) (defmodule B (import MAIN ?ALL))");
  const IFactTemplate Item = Module(u"MAIN")->GetFactTemplates()->GetItem(u"item");
  EXPECT_EQ(Item->GetImportModuleCount(), 3);
  IModule A = Module(u"A");
  Engine.PushFocus(A);
  Engine.PushFocus(u"MAIN");
  Engine.PushFocus(A);
  Engine.RemoveModule(A);
  EXPECT_EQ(Item->GetImportModuleCount(), 2);
  // The stack was empty: replacing MAIN took the first MAIN off it.
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
  // A fact asserted now reaches the modules that remain, and only those.
  const int Id = Engine.Assert(u"(item (n 1))");
  EXPECT_EQ(Ids(u"B"), IntToStr(Id) + u" ");
  Engine.Clear();
  EXPECT_EQ(Names(), u"MAIN");
}

TEST_F(TModulesTest, AModuleDefinitionCopiesNameExportsAndImportsButNoKnowledge) {
  Engine.Parse(
      u"(defmodule A (export ?ALL)) (deftemplate A::t (slot x))"
      u"(defmodule B \"reports\" (import A deftemplate t) (export deftype ?ALL))");
  IModule Copy = Make<TModule>();
  Copy->AssignModuleDefinition(*Module(u"B"));
  EXPECT_EQ(Copy->GetName(), u"B");
  EXPECT_EQ(Copy->GetComment(), u"reports");
  EXPECT_EQ(Copy->GetExportItems()->GetDefinedTypesShared(), mieAll);
  ASSERT_EQ(Copy->GetImportCount(), 1);
  EXPECT_EQ(Copy->GetImport(0)->GetModule(), u"A");
  EXPECT_EQ(Copy->GetImport(0)->GetFactTemplates().IndexOf(u"t"), 0);
  EXPECT_NE(Copy->GetImport(0), Module(u"B")->GetImport(0)) << "imports are copies";
  EXPECT_FALSE(Copy->GetFactTemplates()) << "no knowledge comes along";
}

TEST_F(TModulesTest, AHostEditingTheListGetsWhatTheEngineDoes) {
  IModule A = Make<TModule>(&Engine);
  A->SetName(u"A");
  Engine.GetModules().Add(A);
  EXPECT_EQ(Names(), u"MAIN A");
  EXPECT_TRUE(A->GetAgenda()) << "the module was prepared";
  IModule Main = Make<TModule>(&Engine, true);
  Engine.GetModules().Insert(1, Main);
  EXPECT_EQ(Engine.GetModules().Get(0), Main) << "a main module goes first, wherever it is inserted";
  EXPECT_EQ(Names(), u"MAIN A");
  Engine.GetModules().Remove(A);
  EXPECT_EQ(Names(), u"MAIN");
  EXPECT_FALSE(A->GetAgenda()) << "the removed module let its objects go";
  EXPECT_EQ(Log, u"add A;remove MAIN;add MAIN;remove A;");
  EXPECT_EQ(Engine.GetCurrentModule(), Main);
}

}  // namespace
}  // namespace tavo
