#include "knowledge/TavoFactSets.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

String FactsText(TInferenceEngine& Engine) { return Engine.GetFacts()->ToString(); }

TEST(TavoFactSetsTest, ResetAssertsFreshCopiesOfTheParsedFacts) {
  TInferenceEngine Engine;
  Engine.Parse(u"(defglobal ?*n* = 1) (deffacts s \"c\" (a ?*n*) (b (+ ?*n* 1)) (a ?*n*))");
  TFactSet* Set = Engine.GetFactSets()->Get(0);
  EXPECT_EQ(Set->GetFactSetName(), u"s");
  EXPECT_EQ(Set->GetComment(), u"c");
  EXPECT_EQ(Set->Count(), 3);
  EXPECT_EQ(Set->GetText(1), u"(b (+ ?*n* 1))") << "the line keeps the call";
  Engine.Reset();
  EXPECT_EQ(FactsText(Engine), u"(a 1)\r\n(b 2)\r\n(Initial-Fact)") << "the repeated fact is a duplicate";
  EXPECT_EQ(Engine.GetFacts()->Get(0)->GetID(), 0);
  // The stored facts are untouched: the next reset evaluates again.
  Engine.GetContext()->AddGlobalBinding(u"*n*", Make<TTavoValue>(5, dtInteger));
  Engine.SetResetGlobals(false);
  Engine.Reset();
  EXPECT_EQ(FactsText(Engine), u"(a 5)\r\n(b 6)\r\n(Initial-Fact)");
  EXPECT_EQ(Set->GetFact(0)->ToString(), u"(a ?*n*)");
}

TEST(TavoFactSetsTest, LinesAreReadWhenAskedForAndAnewInAnotherEngine) {
  TInferenceEngine First, Second;
  First.Parse(u"(deftemplate p (slot x (default 0))) (deffacts s (p (x 1)))");
  TFactSet* Set = First.GetFactSets()->Get(0);
  IFact Parsed = Set->GetFact(0);
  EXPECT_EQ(Parsed->GetTemplate(), First.FindFactTemplate(u"p"));
  // In another engine the line is read by that engine's templates.
  Second.Parse(u"(deftemplate p (slot x) (slot y (default 9)))");
  Set->SetEngine(&Second);
  EXPECT_EQ(First.GetFactSets()->Count(), 0);
  EXPECT_EQ(Second.GetFactSets()->IndexOf(u"s"), 0);
  EXPECT_EQ(Set->GetFact(0)->GetTemplate(), Second.FindFactTemplate(u"p"));
  Second.Reset();
  EXPECT_EQ(FactsText(Second), u"(p (x 1) (y 9))\r\n(Initial-Fact)");
  // A copy in the first engine reads its lines there.
  std::unique_ptr<TFactSet> Copy(Set->Clone(&First));
  EXPECT_EQ(Copy->GetFactSetName(), u"s");
  EXPECT_EQ(Copy->GetFact(0)->GetTemplate(), First.FindFactTemplate(u"p"));
  EXPECT_EQ(First.GetFactSets()->Count(), 1);
  Copy.reset();
  EXPECT_EQ(First.GetFactSets()->Count(), 0) << "a freed set leaves its engine's list";
}

TEST(TavoFactSetsTest, ModulesHoldTheirSetsAndFocusFollowsThem) {
  TInferenceEngine Engine;
  Engine.Parse(u"(defmodule M) (deffacts M::s (m 1)) (defmodule N)");
  IModule M = Engine.GetModules().GetModule(u"M");
  IModule N = Engine.GetModules().GetModule(u"N");
  ASSERT_EQ(M->GetFactSets()->Count(), 1);
  TFactSet* Set = M->GetFactSets()->Get(0);
  EXPECT_EQ(Set->GetModule(), u"M");
  // Moving the set moves it between the modules' lists.
  Set->SetModule(u"N");
  EXPECT_EQ(M->GetFactSets()->Count(), 0);
  EXPECT_EQ(N->GetFactSets()->IndexOf(Set), 0);
  EXPECT_EQ(Engine.GetCurrentModule(), N) << "the current module is given back";
  EXPECT_EQ(FailureOf([&] { Set->SetModule(u"NOWHERE"); }), u"No such module with name=NOWHERE exists");
  EXPECT_EQ(Set->GetModule(), u"N");
  // Without force an unknown module is not focused.
  TFactSet Loose(nullptr);
  EXPECT_EQ(Loose.FocusModule(false), nullptr);
  Engine.Reset();
  EXPECT_EQ(N->GetFacts()->ToString(), u"(m 1)");
  EXPECT_EQ(Engine.GetModules().Get(0)->GetFacts()->ToString(), u"(Initial-Fact)");
}

TEST(TavoFactSetsTest, ANewSetOfANameStandsBesideTheOldOne) {
  auto Engine = std::make_unique<TInferenceEngine>();
  Engine->Parse(u"(deffacts s (old 1)) (deffacts s (new 1))");
  TFactSets& Sets = *Engine->GetFactSets();
  ASSERT_EQ(Sets.Count(), 2);
  EXPECT_EQ(Sets.Get(0)->GetEngine(), nullptr) << "the old set is told it has no engine";
  EXPECT_EQ(Sets.IndexOf(u"s"), 0) << "lookups find the older until it goes";
  Engine->Reset();
  EXPECT_EQ(FactsText(*Engine), u"(new 1)\r\n(Initial-Fact)");
  // Freeing the old set takes it out of the list, engine or none.
  delete Sets.Get(0);
  EXPECT_EQ(Sets.Count(), 1);
  Engine->Parse(u"(deffacts s (newest 1))");
  Engine.reset();  // every set goes once
}

TEST(TavoFactSetsTest, AResetInsideAResetIsAnErrorNotACrash) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deffacts x (a (reset)))");
  EXPECT_NE(FailureOf([&] { Engine.Reset(); }).find(u"the stack ran out"), String::npos);
  Engine.Clear();
  Engine.Reset();
  EXPECT_EQ(FactsText(Engine), u"(Initial-Fact)");
}

TEST(TavoFactSetsTest, ParseEventsNameEachConstruct) {
  TInferenceEngine Engine;
  auto* Parser = static_cast<TTavoParser*>(Engine.GetParserObject());
  String Seen;
  Parser->OnParseFactTemplate = [&](TTavoParser*, const IFactTemplate& T) { Seen += u"template " + T->GetTemplateName() + u";"; };
  Parser->OnParseDefinedType = [&](TTavoParser*, const ITavoDefinedType& T) { Seen += u"type " + T->GetName() + u";"; };
  Parser->OnParseFactSet = [&](TTavoParser*, TFactSet* S) { Seen += u"facts " + S->GetFactSetName() + u";"; };
  Parser->OnParseModule = [&](TTavoParser*, const IModule& M) { Seen += u"module " + M->GetName() + u";"; };
  Engine.Parse(u"(deftype k extends (type INTEGER)) (deftemplate t (slot x)) (deffacts f (t (x 1))) (defmodule Q)");
  EXPECT_EQ(Seen, u"type k;template t;facts f;module Q;");
}

TEST(TavoFactSetsTest, ModuleListsKeepWhatTheyShare) {
  TInferenceEngine Engine;
  Engine.Parse(u"(defmodule A (export ?ALL)) (defmodule B (import A deftemplate x \"y\") (import A deftype ?ALL)"
               u" (export deftype ?NONE))");
  IModule A = Engine.GetModules().GetModule(u"A");
  IModule B = Engine.GetModules().GetModule(u"B");
  EXPECT_EQ(A->GetExportItems()->GetDefinedTypesShared(), mieAll);
  EXPECT_EQ(A->GetExportItems()->GetFactTemplatesShared(), mieAll);
  ASSERT_EQ(B->GetImportCount(), 1) << "a second import from a module adds to the first";
  const IModuleImport& Import = B->GetImport(0);
  EXPECT_EQ(Import->GetModule(), u"A");
  EXPECT_EQ(Import->GetFactTemplatesShared(), mieCustom);
  EXPECT_EQ(Import->GetFactTemplates().GetText(), u"x\r\ny\r\n");
  EXPECT_EQ(Import->GetDefinedTypesShared(), mieAll);
  EXPECT_EQ(B->GetExportItems()->GetDefinedTypesShared(), mieNone);
  // Emptying a custom list falls back to none; all or none empty the list.
  IModuleImport List = Make<TModuleImportExport>(nullptr, u"A");
  List->AddFactTemplate(u"t");
  List->ClearFactTemplates();
  EXPECT_EQ(List->GetFactTemplatesShared(), mieNone);
  List->AddFactTemplate(u"t");
  List->SetFactTemplatesShared(mieAll);
  EXPECT_EQ(List->GetFactTemplates().Count(), 0);
  EXPECT_EQ(Engine.GetCurrentModule(), B) << "a new module is the current one";
}

}  // namespace
}  // namespace tavo
