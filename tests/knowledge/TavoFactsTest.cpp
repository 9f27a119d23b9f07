#include "knowledge/TavoFacts.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/TestSupport.h"
#include "tests/knowledge/OwnerEngine.h"

namespace tavo {
namespace {

using namespace testvalues;

IFactTemplate Ordered(TObject* Owner, const char16_t* Name) {
  IFactTemplate T = Make<TFactTemplate>(Owner, Name);
  T->AddMultiSlot(SDefaultSlotName, FCNilList->CloneValue());
  return T;
}

IFact OrderedFact(const IFactTemplate& T, std::initializer_list<ITavoValue> Items) {
  IFact F = T->NewFact();
  F->SetValue(SDefaultSlotName, List(Items));
  return F;
}

TEST(TavoFactsTest, EqualityIsStrictAndHashFollowsIt) {
  IFactTemplate A = Ordered(nullptr, u"a");
  IFact One = OrderedFact(A, {Int(1)});
  IFact OneAgain = OrderedFact(A, {Int(1)});
  IFact OneFloat = OrderedFact(A, {Flt(1.0)});
  EXPECT_TRUE(One->Equals(OneAgain.Get()));
  EXPECT_EQ(One->GetHashCode(), OneAgain->GetHashCode());
  EXPECT_FALSE(One->Equals(OneFloat.Get()));
  EXPECT_NE(One->GetHashCode(), OneFloat->GetHashCode());
  // Another template of equal content makes another fact.
  IFact Elsewhere = OrderedFact(Ordered(nullptr, u"a"), {Int(1)});
  EXPECT_FALSE(One->Equals(Elsewhere.Get()));
  EXPECT_EQ(One->ToString(), u"(a 1)");
  EXPECT_EQ(OneFloat->ToString(), u"(a 1.0000)");
  EXPECT_EQ(A->NewFact()->ToString(), u"(a)");
}

TEST(TavoFactsTest, FuzzySlotsAreSkippedByEqualityButHashed) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"reading");
  T->AddSlot(u"sensor", Atom(u"s1"));
  IFactSlot Level = T->AddSlot(u"level", FCNil);
  Level->SetSlotType({dtFuzzy});
  IFact Low = T->NewFact();
  IFact High = T->NewFact();
  Low->SetValue(u"level", Atom(u"low"));
  High->SetValue(u"level", Atom(u"high"));
  EXPECT_TRUE(Low->Equals(High.Get()));
  EXPECT_NE(Low->GetHashCode(), High->GetHashCode());
}

TEST(TavoFactsTest, ValuesAppearLazilyFromDefaults) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"person");
  T->AddSlot(u"name", Atom(u"nobody"));
  T->AddSlot(u"age", Int(0));
  IFact F = T->NewFact();
  EXPECT_EQ(F->GetValueCount(), 0);
  const ITavoValue& Name = F->GetValue(u"name");
  EXPECT_TRUE(Name->Equals(Atom(u"nobody")));
  EXPECT_NE(Name, T->GetSlot(u"name")->GetSlotDefault()) << "a clone of the default";
  EXPECT_EQ(F->GetValue(u"name"), Name) << "stored from then on";
  EXPECT_EQ(FailureOf([&] { F->GetValue(u"height"); }), u"No such slot name: \"height\"");
  EXPECT_FALSE(F->ContainsKey(u"height"));
  EXPECT_TRUE(F->ContainsKey(u"age")->Equals(Int(0)));
  F->SetValue(u"age", Int(42));
  EXPECT_EQ(F->ToString(), u"(person (age 42) (name nobody))");
  EXPECT_EQ(FailureOf([&] { F->SetValue(u"height", Int(1)); }), u"No such slot name: \"height\"");
  EXPECT_EQ(FailureOf([] { Make<TFact>()->GetValue(u"x"); }), u"Fact Template is missing");
}

TEST(TavoFactsTest, DynamicChecksConvertIntegersAndRefuseTheRest) {
  TOwnerEngine Engine;
  Engine.Checks = {tcDynamic};
  IFactTemplate T = Make<TFactTemplate>(&Engine, u"m");
  T->AddSlot(u"weight", Flt(0))->SetSlotType({dtFloat});
  T->AddSlot(u"count", Int(0))->SetSlotType({dtInteger});
  IFact F = T->NewFact();
  ITavoValue One = Int(1);
  F->SetValue(u"weight", One);
  EXPECT_EQ(One->GetDType(), dtFloat) << "converted in place";
  EXPECT_EQ(F->GetValue(u"weight"), One) << "and stored by reference";
  F->SetValue(u"count", Int(3));
  EXPECT_EQ(FailureOf([&] { F->SetValue(u"count", Atom(u"many")); }),
            u"Not a INTEGER type.  Value (many) is a dtAtom type for count slot");
  EXPECT_EQ(F->GetValue(u"count")->GetAsInteger(), 3) << "a failed write keeps the old value";
  Engine.Checks = {};
  F->SetValue(u"count", Atom(u"many"));
  EXPECT_EQ(F->GetValue(u"count")->GetAsAtom(), u"many");
}

// An asserted fact is a copy of the parsed one with its values resolved:
// literals are copied, so that a conversion in the copy leaves the parsed
// fact as written; a variable's value is taken; a slot never written starts
// from its default; and the parsed fact gains nothing.
TEST(TavoFactsTest, AResolvedCopyLeavesTheParsedFactAsWritten) {
  TOwnerEngine Engine;
  IFactTemplate T = Make<TFactTemplate>(&Engine, u"m");
  T->AddSlot(u"weight", Flt(0))->SetSlotType({dtFloat});
  T->AddSlot(u"label", Atom(u"none"));
  T->AddSlot(u"owner", Atom(u"nobody"));
  IFact Parsed = T->NewFact();
  Parsed->SetValue(u"weight", Int(2));
  Engine.Checks = {tcDynamic};
  TTavoContext Context(nullptr, &Engine);
  Context.AddBinding(u"who", Atom(u"ann"));
  Parsed->SetValue(u"owner", Make<TTavoValue>(u"who", dtVariable));
  const int Written = Parsed->GetValueCount();
  IFact Copy = Parsed->ResolvedCopy(Context);
  EXPECT_EQ(Copy->ToString(), u"(m (label none) (owner ann) (weight 2.0000))");
  EXPECT_EQ(Parsed->GetValue(u"weight")->GetDType(), dtInteger) << "the literal was copied before its conversion";
  EXPECT_NE(Copy->GetValue(u"label"), T->GetSlot(u"label")->GetSlotDefault()) << "a copy of the default";
  EXPECT_EQ(Parsed->GetValueCount(), Written) << "no default was written into the parsed fact";
  IFact Again = Parsed->ResolvedCopy(Context);
  EXPECT_NE(Again->GetValue(u"weight"), Copy->GetValue(u"weight"));
}

TEST(TavoFactsTest, IdTextIsPaddedToTheCounterWidth) {
  TOwnerEngine Engine;
  IFactTemplate T = Ordered(&Engine, u"x");
  IFact F = OrderedFact(T, {Int(5)});
  F->SetID(3);
  Engine.Counter = 9;
  EXPECT_EQ(F->GetToIDString(), u"f-3 (x 5)");
  Engine.Counter = 10;
  EXPECT_EQ(F->GetToIDString(), u"f-03 (x 5)");
  Engine.Counter = 123;
  EXPECT_EQ(F->GetToIDString(), u"f-003 (x 5)");
  IFact Loose = OrderedFact(Ordered(nullptr, u"y"), {});
  Loose->SetID(7);
  EXPECT_EQ(Loose->GetToIDString(), u"f-7 (y)");
}

TEST(TavoFactsTest, TemplatesChangeUnderFactsByName) {
  IFactTemplate Old = Make<TFactTemplate>(nullptr, u"t");
  Old->AddSlot(u"keep", Int(0));
  Old->AddSlot(u"drop", Int(0));
  IFactTemplate New = Make<TFactTemplate>(nullptr, u"t");
  New->AddSlot(u"keep", Int(0));
  New->AddSlot(u"fresh", Atom(u"f"));
  IFact F = Old->NewFact();
  F->SetValue(u"keep", Int(7));
  F->SetValue(u"drop", Int(8));
  F->SetTemplate(New);
  EXPECT_EQ(F->GetValue(u"keep")->GetAsInteger(), 7);
  EXPECT_EQ(F->GetValue(u"fresh")->GetAsAtom(), u"f");
  EXPECT_EQ(F->GetValueCount(), 2);
  F->SetTemplate(nullptr);
  EXPECT_EQ(F->GetValueCount(), 0);
}

TEST(TavoFactsTest, CopiesCloneValuesAndKeepIds) {
  IFactTemplate T = Ordered(nullptr, u"t");
  IFact F = OrderedFact(T, {Int(1), Int(2)});
  F->SetID(4);
  F->SetTag(9);
  IFact Copy = F->CloneFact();
  EXPECT_EQ(Copy->GetID(), 4);
  EXPECT_EQ(Copy->GetTag(), 9);
  EXPECT_TRUE(Copy->Equals(F.Get()));
  EXPECT_NE(Copy->GetValue(SDefaultSlotName), F->GetValue(SDefaultSlotName));
  IFact Other = T->NewFact();
  Other->AssignValues(F);
  EXPECT_EQ(Other->GetID(), -1) << "AssignValues leaves id and tag";
  EXPECT_TRUE(Other->Equals(F.Get()));
  EXPECT_EQ(FailureOf([&] { Other->AssignValues(OrderedFact(Ordered(nullptr, u"u"), {})); }),
            u"Unable to assign slot values, fact templates are different: t and u");
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

using namespace testvalues;

TEST(TavoFactsTest, ValuesFollowTheirSlotsWhenTheTemplateChanges) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"p");
  T->AddSlot(u"b", Int(0));
  T->AddSlot(u"d", Int(0));
  IFact F = T->NewFact();
  F->SetValue(u"b", Int(2));
  F->SetValue(u"d", Int(4));
  EXPECT_EQ(F->GetSlotPosition(u"d"), 1);
  const void* Before = F->GetSlotLayout();
  // A slot that sorts first moves the others one place on.
  T->AddSlot(u"a", Int(1));
  EXPECT_NE(F->GetSlotLayout(), Before);
  EXPECT_EQ(F->GetSlotPosition(u"d"), 2);
  EXPECT_EQ(F->GetValueAt(2)->GetAsInteger(), 4);
  EXPECT_EQ(F->GetValue(u"a")->GetAsInteger(), 1) << "the new slot reads its default";
  T->RemoveSlot(u"b");
  EXPECT_EQ(F->ToString(), u"(p (a 1) (d 4))");
  EXPECT_EQ(FailureOf([&] { F->GetValue(u"b"); }), u"No such slot name: \"b\"");
  EXPECT_EQ(FailureOf([&] { F->GetValueAt(5); }), u"List index out of bounds (5)");
}

TEST(TavoFactsTest, AValueReadStaysValidWhileOtherSlotsAreRead) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"wide");
  for (int I = 0; I < 14; ++I) T->AddSlot(u"s" + IntToStr(I), Int(I));
  IFact F = T->NewFact();
  const ITavoValue& First = F->GetValue(u"s0");
  for (int I = 1; I < 14; ++I) F->GetValue(u"s" + IntToStr(I));
  EXPECT_EQ(First->GetAsInteger(), 0);
  EXPECT_EQ(&First, &F->GetValue(u"s0"));
}

TEST(TavoFactsTest, CoordinatesReadSlotsByPositionAcrossLayouts) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"q");
  T->AddSlot(u"x", Int(0));
  T->AddSlot(u"y", Int(0));
  IFact F = T->NewFact();
  F->SetValue(u"y", Int(9));
  TTavoContext Context;
  Context.SetFact(F);
  TBindingInfo YInfo(0, u"y");
  ITavoValue Y = Make<TTavoValue>(&YInfo, false);
  EXPECT_EQ(Y->Resolve(&Context)->GetAsInteger(), 9);
  EXPECT_EQ(Y->Resolve(&Context)->GetAsInteger(), 9) << "again, by the position found the first time";
  T->AddSlot(u"w", Int(0));
  F->SetValue(u"y", Int(10));
  EXPECT_EQ(Y->Resolve(&Context)->GetAsInteger(), 10) << "a new layout is looked up anew";
  TBindingInfo IdInfo(0, SPatternBinding);
  ITavoValue Id = Make<TTavoValue>(&IdInfo, false);
  F->SetID(12);
  EXPECT_EQ(Id->Resolve(&Context)->GetToString(), u"<Fact-12>");
}

TEST(TavoFactsTest, CoordinatesReadTheFactOfTheEnclosingScopeUnderTest) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"q");
  T->AddSlot(u"y", Int(0));
  IFact F = T->NewFact();
  F->SetValue(u"y", Int(9));
  TBindingInfo YInfo(0, u"y");
  ITavoValue Y = Make<TTavoValue>(&YInfo, false);
  TTavoContext Global;
  std::unique_ptr<TTavoContext> Node(Global.Push());
  // A scope made before the node holds a fact sees none.
  std::unique_ptr<TTavoContext> Early(Node->Push());
  Node->SetFact(F);
  // Scopes of function calls nested under the node, as a test's call makes them.
  TTavoContext Call(Node.get());
  TTavoContext Inner(&Call);
  EXPECT_EQ(Y->Resolve(&Call)->GetAsInteger(), 9);
  EXPECT_EQ(Y->Resolve(&Inner)->GetAsInteger(), 9);
  EXPECT_EQ(FailureOf([&] { Y->Resolve(Early.get()); }),
            u"Corrupted Binding, variable not found: FactIdx=0 SlotIdx=y");
  // A scope that holds a fact of its own reads that one.
  IFact Other = T->NewFact();
  Other->SetValue(u"y", Int(4));
  Inner.SetFact(Other);
  EXPECT_EQ(Y->Resolve(&Inner)->GetAsInteger(), 4);
  TTavoContext Innermost(&Inner);
  EXPECT_EQ(Y->Resolve(&Innermost)->GetAsInteger(), 4);
}

}  // namespace
}  // namespace tavo
