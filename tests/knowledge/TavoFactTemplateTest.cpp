#include "knowledge/TavoFactTemplate.h"

#include <gtest/gtest.h>

#include "knowledge/TavoFacts.h"
#include "tests/TestSupport.h"
#include "tests/knowledge/OwnerEngine.h"

namespace tavo {
namespace {

using namespace testvalues;

ITavoValue EmptyList() { return FCNilList->CloneValue(); }

String Names(const IFactTemplate& T) {
  String Result;
  const TStringList<int>& List = T->GetSlotNames();
  for (int I = 0; I < List.Count(); ++I) Result += List.Get(I) + u";";
  return Result;
}

TEST(TavoFactTemplateTest, SlotsStaySortedAndOrderedFollowsData) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"person");
  T->AddMultiSlot(SDefaultSlotName, EmptyList());
  EXPECT_TRUE(T->IsOrdered());
  T->AddSlot(u"name", Atom(u"x"));
  EXPECT_FALSE(T->IsOrdered());
  T->RemoveSlot(SDefaultSlotName);
  T->AddSlot(u"age", Int(0));
  EXPECT_EQ(Names(T), u"age;name;");
  // A renamed slot moves in the sorted names.
  T->GetSlot(u"age")->SetName(u"zeta");
  EXPECT_EQ(Names(T), u"name;zeta;");
  EXPECT_TRUE(T->ContainsSlot(u"zeta"));
  EXPECT_FALSE(T->ContainsSlot(u"age"));
  EXPECT_EQ(FailureOf([&] { T->GetSlot(u"age"); }), u"No such slot name: \"age\"");
  EXPECT_EQ(FailureOf([&] { T->RemoveSlot(u"age"); }), u"No such slot name: \"age\"");
  EXPECT_EQ(FailureOf([&] { T->SetTemplateName(u"bad name"); }),
            u"\"bad name\" contains unexpected character: \" \"");
}

TEST(TavoFactTemplateTest, SlotAndMultislotRefuseEachOther) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"t");
  T->AddSlot(u"single", Int(1));
  T->AddMultiSlot(u"multi", EmptyList());
  EXPECT_EQ(FailureOf([&] { T->AddSlot(u"multi", Int(1)); }),
            u"Invalid value for existing slot, multislot is not slot");
  EXPECT_EQ(FailureOf([&] { T->AddMultiSlot(u"single", EmptyList()); }),
            u"Invalid value for existing slot, slot is not multislot");
  EXPECT_EQ(FailureOf([&] { T->AddSlot(u"x", nullptr); }), u"Bad Slot Type");
  EXPECT_EQ(FailureOf([&] { T->AddSlot(u"x", EmptyList()); }), u"Invalid default slot value: %s");
  EXPECT_EQ(FailureOf([&] { T->AddMultiSlot(u"x", Int(1)); }),
            u"Invalid default value for a multislot, must be a multifield: 1");
  EXPECT_EQ(FailureOf([&] { T->AddMultiSlot(u"  ", EmptyList()); }), u"Bad Slot Name: %s");
  // Adding over an existing slot replaces its default.
  T->AddSlot(u"single", Int(5));
  EXPECT_TRUE(T->GetSlot(u"single")->GetSlotDefault()->Equals(Int(5)));
  EXPECT_EQ(T->GetSlotCount(), 2);
}

TEST(TavoFactTemplateTest, SlotDefaultsAreOwnCopiesAndFollowTheType) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"t");
  ITavoValue Given = Int(3);
  IFactSlot Slot = T->AddSlot(u"n", Given);
  EXPECT_NE(Slot->GetSlotDefault(), Given);
  EXPECT_EQ(T->AddSlot(u"nil", FCNil)->GetSlotDefault(), FCNil) << "constants are kept by reference";
  // A type that no longer admits the default replaces it with a valid one.
  Slot->SetSlotType({dtAtom});
  EXPECT_EQ(Slot->GetSlotDefault()->GetDType(), dtAtom);
  EXPECT_EQ(FailureOf([&] { Slot->SetSlotType({dtFuzzy, dtInteger}); }),
            u"Cannot mix fuzzy type with other primitive types");
  Slot->SetSlotType(TTavoTypes{dtFuzzy} + TavoMultiSlotTypes);
  EXPECT_TRUE(Slot->IsFuzzy());
  EXPECT_TRUE(T->IsFuzzy());

  IFactSlot Typed = T->AddSlot(u"level", Int(0));
  ITavoDefinedType Level = Make<TTavoDefinedType>();
  Level->SetName(u"level-type");
  Level->SetBaseTypes({dtInteger});
  Level->SetRangeLimited(true);
  Level->SetMinRange(1);
  Level->SetMaxRange(9);
  Typed->SetExtendedTypeInfo(Level);
  EXPECT_EQ(Typed->GetSlotType(), (TTavoTypes{dtInteger}));
  EXPECT_TRUE(Typed->GetSlotDefault()->Equals(Int(1))) << "the type's own default";
  EXPECT_EQ(Typed->GetInvalidValueString(Int(12)),
            u"Value \"12\" is not valid, Range must be between 1.0000 and 9.0000 for level slot");
  EXPECT_EQ(T->ContainsType(Level), Typed);
}

TEST(TavoFactTemplateTest, ValidityOfPlainSlotsLooksAtTags) {
  IFactTemplate T = Make<TFactTemplate>(nullptr, u"t");
  IFactSlot Multi = T->AddMultiSlot(u"items", EmptyList());
  Multi->SetSlotType(TTavoTypes{dtInteger} + TavoMultiSlotTypes);
  IValueVector Members = Make<TValueVector>();
  Members->Add(Int(1));
  Members->Add(Atom(u"a"));
  ITavoValue List = Make<TTavoValue>(Members);
  EXPECT_FALSE(Multi->IsValid(List));
  EXPECT_EQ(Multi->GetInvalidValueString(List),
            u"Not a INTEGER, LIST, MULTISLOT type.  Value (1 a ) is a dtAtom (a) type for items slot");
  EXPECT_TRUE(Multi->IsValid(FCNilList));
  EXPECT_TRUE(Multi->IsValid(Make<TTavoValue>(String(u"v"), dtVariable)));
  IFactSlot Single = T->AddSlot(u"one", Int(0));
  Single->SetSlotType({dtInteger});
  EXPECT_TRUE(Single->IsValid(FCNil)) << "nil fits a slot without lists";
  EXPECT_EQ(Single->GetInvalidValueString(Atom(u"a")),
            u"Not a INTEGER type.  Value (a) is a dtAtom type for one slot");
}

TEST(TavoFactTemplateTest, HashFollowsNamesNotDefaults) {
  IFactTemplate A = Make<TFactTemplate>(nullptr, u"t");
  A->AddSlot(u"x", Int(1));
  IFactTemplate B = Make<TFactTemplate>(nullptr, u"t");
  B->AddSlot(u"x", Int(2));
  EXPECT_EQ(A->GetHashCode(), B->GetHashCode());
  EXPECT_FALSE(A->Equals(B.Get())) << "the defaults differ";
  B->GetSlot(u"x")->SetSlotDefault(Int(1));
  EXPECT_TRUE(A->Equals(B.Get()));
  int32_t Before = A->GetHashCode();
  A->AddSlot(u"y", Int(0));
  EXPECT_NE(A->GetHashCode(), Before);
  IFactTemplate Copy = RefCast<TFactTemplate>(A->Clone());
  EXPECT_EQ(Copy->GetTemplateName(), u"t");
  EXPECT_TRUE(Copy->Equals(A.Get()));
  EXPECT_NE(Copy->GetSlot(u"x"), A->GetSlot(u"x")) << "the copy has slots of its own";
}

// A value whose evaluation counts up, to watch default-dynamic at work.
class TCounterValue : public TTavoValue {
  TAVO_CLASS(TCounterValue, TTavoValue)
 public:
  static inline int Next = 0;
  ITavoValue Resolve(TObject*) override { return Make<TTavoValue>(Next++, dtInteger); }
};

TEST(TavoFactTemplateTest, FillingEvaluatesDynamicDefaultsPerFact) {
  TOwnerEngine Engine;
  IFactTemplate T = Make<TFactTemplate>(&Engine, u"ticket");
  IFactSlot Number = T->AddSlot(u"number", Int(0));
  Number->SetSlotDefault(Make<TCounterValue>());
  Number->SetDefaultDynamic(true);
  T->AddSlot(u"colour", Atom(u"red"));
  TCounterValue::Next = 10;
  IFact First = T->NewFact();
  T->FillFactWithDefaults(First);
  IFact Second = T->NewFact();
  T->FillFactWithDefaults(Second);
  EXPECT_EQ(First->GetValue(u"number")->GetAsInteger(), 10);
  EXPECT_EQ(Second->GetValue(u"number")->GetAsInteger(), 11);
  EXPECT_EQ(Second->GetValue(u"colour")->GetAsAtom(), u"red");
  IFactTemplate Other = Make<TFactTemplate>(&Engine, u"other");
  EXPECT_EQ(FailureOf([&] { T->FillFactWithDefaults(Other->NewFact()); }),
            u"Unable to assign slot values, fact templates are different: other and ticket");
}

TEST(TavoFactTemplateTest, DynamicChecksGuardDefaults) {
  TOwnerEngine Engine;
  IFactTemplate T = Make<TFactTemplate>(&Engine, u"t");
  IFactSlot Slot = T->AddSlot(u"n", Int(0));
  Slot->SetSlotType({dtInteger});
  Slot->SetSlotDefault(Atom(u"stored-without-checks"));
  EXPECT_EQ(Slot->GetSlotDefault()->GetAsAtom(), u"stored-without-checks");
  Engine.Checks = {tcDynamic};
  EXPECT_EQ(FailureOf([&] { Slot->SetSlotDefault(Atom(u"a")); }), u"Invalid default slot value: a");
  Slot->SetSlotDefault(Int(4));
  // The stored default is watched: changing it to something invalid fails.
  EXPECT_EQ(FailureOf([&] { Slot->GetSlotDefault()->SetAsAtom(u"b"); }), u"Value \"b\" is not valid, n");
}

}  // namespace
}  // namespace tavo
