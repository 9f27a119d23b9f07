#include "engine/InferenceEngine.h"

#include <gtest/gtest.h>

#include <unordered_map>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

IFact OrderedFact(TInferenceEngine& Engine, const char16_t* Name, std::initializer_list<int> Items) {
  IFactTemplate T = Engine.CreateFactTemplate(Name);
  IFact F = T->NewFact();
  IValueVector Vector = Make<TValueVector>();
  for (int Item : Items) Vector->Add(Int(Item));
  F->SetValue(SDefaultSlotName, Make<TTavoValue>(Vector));
  return F;
}

TEST(EngineCollectionsTest, NewEngineHoldsTheInitialFactAndImpliedTemplates) {
  TInferenceEngine Engine;
  ASSERT_EQ(Engine.GetFacts()->Count(), 1);
  EXPECT_EQ(Engine.GetFacts()->Get(0)->GetID(), 0);
  EXPECT_EQ(Engine.GetFacts()->GetToIDString(), u"f-0 (Initial-Fact)");
  for (const char16_t* Name : {SInitialFactPattern, SNullFact}) {
    IFactTemplate T = Engine.FindFactTemplate(Name);
    ASSERT_TRUE(T) << StringToUtf8(Name);
    EXPECT_EQ(T->GetComment(), u"(Implied)");
    EXPECT_TRUE(T->IsOrdered());
    EXPECT_EQ(T->GetModule(), Engine.GetCurrentModule());
  }
  EXPECT_EQ(Engine.GetNullFact()->GetTemplate()->GetTemplateName(), SNullFact);
  EXPECT_EQ(Engine.CreateFactTemplate(SNullFact), Engine.FindFactTemplate(SNullFact));
}

TEST(EngineCollectionsTest, DuplicateTemplatesFollowTheEnginePolicy) {
  TInferenceEngine Engine;
  String Log;
  Engine.OnNewFactTemplate = [&](TObject*, const IFactTemplate& T) { Log += u"+" + T->GetTemplateName(); };
  Engine.OnRemoveFactTemplate = [&](TObject*, const IFactTemplate& T) { Log += u"-" + T->GetTemplateName(); };
  TFactTemplates& Templates = *Engine.GetFactTemplates();
  IFactTemplate First = Make<TFactTemplate>(&Engine, u"t");
  Templates.Add(u"t", First);
  EXPECT_TRUE(First->IsOrdered()) << "a template with no slots gets __Data";
  IFactTemplate Second = Make<TFactTemplate>(&Engine, u"t");
  Second->AddSlot(u"x", Int(0));
  Engine.SetDuplicateConstructs(dcIgnore);
  Templates.AddOrSetValue(u"t", Second);
  EXPECT_EQ(Engine.FindFactTemplate(u"t"), First);
  Engine.SetDuplicateConstructs(dcError);
  EXPECT_EQ(FailureOf([&] { Templates.AddOrSetValue(u"t", Second); }), u"Fact Template Name already exists: \"t\"");
  EXPECT_EQ(Engine.FindFactTemplate(u"t"), First);
  Engine.SetDuplicateConstructs(dcOverwrite);
  Templates.AddOrSetValue(u"t", Second);
  EXPECT_EQ(Engine.FindFactTemplate(u"t"), Second);
  EXPECT_EQ(Log, u"+t-t") << "a replacement raises no new-template event";
  // A renamed template is found under its new name only.
  Second->SetTemplateName(u"renamed");
  EXPECT_FALSE(Engine.FindFactTemplate(u"t"));
  EXPECT_EQ(Engine.FindFactTemplate(u"renamed"), Second);
  EXPECT_EQ(FailureOf([&] { Second->SetTemplateName(SInitialFactPattern); }),
            u"Fact Template Name already exists: \"Initial-Fact\"");
  EXPECT_EQ(Second->GetTemplateName(), u"renamed");
}

TEST(EngineCollectionsTest, DefinedTypesJoinTheEngine) {
  TInferenceEngine Engine;
  Engine.SetFuzzyEqualsThreshold(0.25f);
  ITavoDefinedType Level = Make<TTavoDefinedType>();
  Level->SetName(u"level");
  Level->SetBaseTypes({dtFuzzy});
  Engine.GetDefinedTypes()->Add(u"level", Level);
  EXPECT_EQ(Level->GetReasoner(), static_cast<IReasoner*>(&Engine));
  EXPECT_EQ(Level->GetModule(), Engine.GetCurrentModule());
  EXPECT_DOUBLE_EQ(Level->GetFuzzyType()->GetFuzzyEqualsThreshold(), 0.25);
  EXPECT_EQ(Engine.FindDefinedType(u"level"), Level);
  Level->SetName(u"grade");
  EXPECT_EQ(Engine.FindDefinedType(u"grade"), Level);
  EXPECT_EQ(Engine.GetDefinedTypes()->GetLocalsCount(), 1);
  // A template whose slot type the table lacks is reported.
  IFactTemplate T = Make<TFactTemplate>(&Engine, u"t");
  ITavoDefinedType Stray = Make<TTavoDefinedType>();
  Stray->SetName(u"stray");
  T->AddSlot(u"a", Int(0))->SetExtendedTypeInfo(Level);
  T->AddSlot(u"b", Int(0))->SetExtendedTypeInfo(Stray);
  EXPECT_EQ(Engine.GetDefinedTypes()->FindUnsharedType(T), Stray);
  int Cleared = 0;
  Engine.OnClearDefinedTypes = [&](TObject*) { ++Cleared; };
  Engine.GetDefinedTypes()->Clear();
  EXPECT_EQ(Cleared, 1);
  EXPECT_FALSE(Engine.FindDefinedType(u"grade"));
}

TEST(EngineCollectionsTest, AssertRefusesDuplicatesUnlessAllowed) {
  TInferenceEngine Engine;
  String Printed;
  int Assertions = 0;
  Engine.OnPrintOut = [&](TObject*, const String&, const String& Text) { Printed += Text; };
  Engine.OnAssertion = [&](TObject*, const IFact&) { ++Assertions; };
  Engine.SetWatch({cwFact});
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {1})), 1);
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {1})), -1);
  EXPECT_EQ(Assertions, 1);
  Engine.SetFactDuplication(true);
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {1})), 2);
  EXPECT_EQ(Engine.GetFacts()->Count(), 3);
  Engine.Retract(1);
  EXPECT_EQ(Printed, u" ==> f-1 (a 1)\r\n ==> f-2 (a 1)\r\n <== f-1 (a 1)\r\n");
  EXPECT_EQ(FailureOf([&] { Engine.Assert(Make<TFact>()); }), u"Fact Template is missing");
}

TEST(EngineCollectionsTest, FactsOfEqualHashAreNoDuplicatesOfEachOther) {
  TInferenceEngine Engine;
  // Two different facts of one hash, found by search.
  std::unordered_map<int32_t, int> Seen;
  int First = -1, Second = -1;
  for (int I = 0; Second < 0; ++I) {
    auto [Where, Added] = Seen.emplace(OrderedFact(Engine, u"a", {I})->GetHashCode(), I);
    if (!Added) First = Where->second, Second = I;
  }
  ASSERT_GE(Engine.Assert(OrderedFact(Engine, u"a", {First})), 0);
  ASSERT_GE(Engine.Assert(OrderedFact(Engine, u"a", {Second})), 0);
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {Second})), -1);
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {First})), -1);
  // Either may go first; the other is still known as itself.
  Engine.Retract(OrderedFact(Engine, u"a", {First}));
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {Second})), -1);
  EXPECT_GE(Engine.Assert(OrderedFact(Engine, u"a", {First})), 0);
  Engine.Retract(OrderedFact(Engine, u"a", {Second}));
  EXPECT_EQ(Engine.Assert(OrderedFact(Engine, u"a", {First})), -1);
  EXPECT_GE(Engine.Assert(OrderedFact(Engine, u"a", {Second})), 0);
  EXPECT_EQ(Engine.GetFacts()->Count(), 3);
}

TEST(EngineCollectionsTest, HostChangesToTheFactListGoThroughTheEngine) {
  TInferenceEngine Engine;
  int Retractions = 0, Clears = 0;
  Engine.OnRetraction = [&](TObject*, const IFact&) { ++Retractions; };
  Engine.OnClearFacts = [&](TObject*) { ++Clears; };
  TFacts& Facts = *Engine.GetFacts();
  IFact F = OrderedFact(Engine, u"b", {7});
  Facts.Add(F);
  EXPECT_EQ(F->GetID(), 1) << "asserted, so it got an id";
  Facts.Remove(F);
  EXPECT_EQ(Retractions, 1);
  EXPECT_EQ(Facts.Count(), 1);
  // Loaded facts may keep their ids; fresh ids continue above them.
  Facts.SetPreserveIDs(true);
  IFact Five = OrderedFact(Engine, u"b", {5});
  Five->SetID(5);
  IFact Two = OrderedFact(Engine, u"b", {2});
  Two->SetID(2);
  Facts.Add(Five);
  Facts.Add(Two);
  EXPECT_EQ(Five->GetID(), 5);
  EXPECT_EQ(Two->GetID(), 2);
  EXPECT_EQ(Engine.GetFactIdCounter(), 6);
  Facts.SetPreserveIDs(false);
  Facts.Clear();
  EXPECT_EQ(Facts.Count(), 0);
  EXPECT_EQ(Clears, 1);
  EXPECT_EQ(Retractions, 1) << "clearing does not retract fact by fact";
}

TEST(EngineCollectionsTest, FindingByIdTurnsBinaryAtFiveFacts) {
  TInferenceEngine Engine;
  TFacts& Facts = *Engine.GetFacts();
  for (int I = 1; I <= 2; ++I) Engine.Assert(OrderedFact(Engine, u"c", {I}));
  // Four facts with the initial one: a scan finds a fact out of order.
  IFact Late = OrderedFact(Engine, u"c", {9});
  Facts.Insert(0, Late);
  EXPECT_EQ(Facts.FindFact(Late->GetID()), 0);
  // Five facts: the binary search relies on ascending ids and misses it.
  Engine.Assert(OrderedFact(Engine, u"c", {10}));
  EXPECT_EQ(Facts.FindFact(Late->GetID()), -1);
  Facts.SortByID();
  EXPECT_EQ(Facts.FindFact(Late->GetID()), 3);
  EXPECT_EQ(Facts.GetFactByID(Late->GetID()), Late);
  // The duplicate test goes by value through the cache.
  EXPECT_EQ(Facts.FindFact(OrderedFact(Engine, u"c", {2})), 2);
  EXPECT_EQ(Facts.FindFact(OrderedFact(Engine, u"c", {99})), -1);
}

TEST(EngineCollectionsTest, ModulesKeepTheirOwnTemplatesAndFacts) {
  TInferenceEngine Engine;
  IModule Other = Make<TModule>(&Engine);
  Other->SetName(u"OTHER");
  Engine.AddModule(Other);
  EXPECT_NE(Other->GetFacts(), Engine.GetFacts()) << "adding keeps MAIN current";
  Engine.SetCurrentModule(Other);
  EXPECT_EQ(Engine.GetFacts(), Other->GetFacts());
  EXPECT_TRUE(Engine.FindFactTemplate(SInitialFactPattern)) << "each module has the implied templates";
  Engine.Assert(OrderedFact(Engine, u"local", {1}));
  EXPECT_EQ(Other->GetFacts()->Count(), 1);
  Engine.SetCurrentModule(Engine.GetModules().Get(0));
  EXPECT_FALSE(Engine.FindFactTemplate(u"local"));
  EXPECT_EQ(Engine.GetFacts()->Count(), 1);
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(EngineCollectionsTest, ResetAndClearReturnToTheirStartingStates) {
  TInferenceEngine Engine;
  int Resets = 0, Clears = 0;
  Engine.OnReset = [&](TObject*) { ++Resets; };
  Engine.OnClear = [&](TObject*) { ++Clears; };
  Engine.Parse(u"(defglobal ?*g* = 1) (deffunction f () 1) (store k v)");
  Engine.Assert(OrderedFact(Engine, u"a", {1}));
  Engine.Assert(OrderedFact(Engine, u"a", {2}));
  Engine.GetContext()->AddBinding(u"*g*", Int(9));
  IModule Other = Make<TModule>(&Engine);
  Other->SetName(u"OTHER");
  Engine.AddModule(Other);
  Engine.PushFocus(Other);

  Engine.Reset();
  EXPECT_EQ(Engine.GetFacts()->GetToIDString(), u"f-0 (Initial-Fact)");
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
  EXPECT_EQ(Engine.GetContext()->GetVariable(u"*g*")->GetAsInteger(), 1) << "globals bound anew";
  Engine.Reset();
  EXPECT_EQ(Engine.GetFacts()->GetToIDString(), u"f-0 (Initial-Fact)") << "the same facts and ids";
  EXPECT_EQ(Resets, 2);

  Engine.Clear();
  EXPECT_EQ(Clears, 1);
  EXPECT_EQ(Engine.GetModules().ToNamesString(), u"MAIN");
  EXPECT_EQ(Engine.GetFacts()->Count(), 0) << "no initial fact until a reset";
  EXPECT_FALSE(Engine.GetUserFunction(u"f"));
  EXPECT_TRUE(Engine.GetUserFunction(u"+")) << "built-in functions stay";
  EXPECT_EQ(Engine.GetStorage()->Count(), 0);
  EXPECT_EQ(Engine.GetGlobalVariables()->Count(), 1) << "globals stay";
  EXPECT_TRUE(Engine.FindFactTemplate(SInitialFactPattern));
  EXPECT_FALSE(Engine.FindFactTemplate(u"a"));
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(EngineCollectionsTest, ARedefinedRecursiveDeffunctionLetsGoOfItself) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deffunction f (?n) (if (> ?n 0) then (f (- ?n 1)) else 0)) (f 3)");
  IUserFunction Old = Engine.GetUserFunction(u"f");
  Engine.Parse(u"(deffunction f (?n) 1)");
  // Only this test holds the old function now: its body no longer does.
  EXPECT_EQ(Old->RefCount(), 1);
  EXPECT_EQ(Engine.ParseNExecuteFunCall(u"(f 5)")->GetAsInteger(), 1);
}

}  // namespace
}  // namespace tavo
