#include "core/TavoValue.h"
#include "core/TavoFuzzy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "tests/TestSupport.h"

#include "core/TavoContext.h"
#include "core/TavoVectors.h"

namespace tavo {
namespace {

ITavoValue Int(int32_t V, TTavoType T = dtInteger) { return Make<TTavoValue>(V, T); }
ITavoValue Flt(double V) { return Make<TTavoValue>(V); }
ITavoValue Txt(const char16_t* S, TTavoType T = dtAtom) { return Make<TTavoValue>(String(S), T); }
ITavoValue List(std::initializer_list<ITavoValue> Items) {
  IValueVector Vector = Make<TValueVector>();
  for (const ITavoValue& Item : Items) Vector->Add(Item);
  return Make<TTavoValue>(Vector);
}


// A component that counts its deaths, so ownership can be watched.
class TCountedPart : public TComponent {
  TAVO_CLASS(TCountedPart, TComponent)
 public:
  static inline int Deaths = 0;
  explicit TCountedPart(TComponent* AOwner = nullptr) : TComponent(AOwner) {}
  ~TCountedPart() override { ++Deaths; }
  void Assign(const TPersistent* Source) override {
    if (auto* Part = dynamic_cast<const TCountedPart*>(Source)) {
      Weight = Part->Weight;
      return;
    }
    TComponent::Assign(Source);
  }
  int Weight = 0;
};

TEST(TavoValueTest, SharedConstantsAndTruth) {
  EXPECT_EQ(FCEmptyString->GetDType(), dtAtom);
  EXPECT_FALSE(FCEmptyString->Equals(Txt(u"", dtString)));
  EXPECT_TRUE(FCEmptyString->Equals(FCNil));
  EXPECT_TRUE(IsValueConstant(FCTrue));
  EXPECT_TRUE(IsValueConstant(FCZero));
  EXPECT_FALSE(IsValueConstant(FCPopFocus));
  EXPECT_FALSE(IsValueConstant(Txt(u"TRUE")));
  EXPECT_EQ(FCPI->GetToString(), u"3.1416");
  EXPECT_EQ(FCNilList->GetAsList()->GetValueCount(), 0);
  // Only the atom FALSE is false.
  EXPECT_TRUE(IsFalse(Txt(u"FALSE")));
  EXPECT_FALSE(IsFalse(Txt(u"FALSE", dtString)));
  EXPECT_FALSE(IsFalse(FCNil));
  EXPECT_FALSE(IsFalse(Int(0)));
}

TEST(TavoValueTest, TextFormsByTag) {
  EXPECT_EQ(Make<TTavoValue>()->GetToString(), u"");
  EXPECT_EQ(Flt(0.12345)->GetToString(), u"0.1235");
  EXPECT_EQ(Flt(1)->GetToString(), u"1.0000");
  EXPECT_EQ(Txt(u"a\\b\"c", dtString)->GetToString(), u"\"a\\\\b\\\"c\"");
  EXPECT_EQ(Txt(u"a\\b\"c", dtString)->GetAsString(), u"a\\b\"c");
  EXPECT_EQ(Txt(u"x", dtVariable)->GetToString(), u"?x");
  EXPECT_EQ(Txt(u"x", dtMultiVariable)->GetToString(), u"$?x");
  EXPECT_EQ(Txt(u"x", dtMultiVariable)->GetAsString(), u"x");
  EXPECT_EQ(Txt(u"s", dtSlot)->GetToString(), u"s");
  EXPECT_EQ(Int(3, dtFactId)->GetToString(), u"<Fact-3>");
  EXPECT_EQ(Int(3, dtDescriptor)->GetToString(), u"<UNKNOWN>");
  EXPECT_EQ(Int(-7)->GetToString(), u"-7");
  EXPECT_EQ(List({Int(1), Txt(u"a", dtString)})->GetToString(), u"1 \"a\" ");
  EXPECT_EQ(Make<TTavoValue>(&TComponent::StaticClass())->GetToString(), u"TComponent");

  TComponent Plain;
  TBindingInfo Info(1, u"colour", 2);
  EXPECT_EQ(Make<TTavoValue>(&Plain, false)->GetToString(), u"<Object: TComponent>");
  EXPECT_EQ(Make<TTavoValue>(&Info, false)->GetToString(),
            u"<TBindingInfo: FactIdx=1 SlotIdx=colour SubIdx=2>");
  EXPECT_EQ(Make<TTavoValue>(static_cast<TObject*>(nullptr), false)->GetToString(), u"");
  ITavoValue Address = Make<TTavoValue>();
  Address->SetAsExternalAddress(reinterpret_cast<void*>(intptr_t(1234)));
  EXPECT_EQ(Address->GetToString(), u"<External-Address: 1234>");
}

TEST(TavoValueTest, ReadersConvertOrFailNamingTheirWord) {
  EXPECT_EQ(Flt(0.12345)->GetAsString(), u"0.1235");
  EXPECT_EQ(Flt(0.12345)->GetAsInteger(), 0);
  EXPECT_EQ(Flt(-2.7)->GetAsInteger(), -2);
  EXPECT_EQ(Int(7)->GetAsFactId(), 7);
  EXPECT_EQ(Flt(1.0)->GetAsFactId(), 0) << "the low half of the double";
  EXPECT_EQ(Txt(u"3.7")->GetAsInteger(), 3);
  EXPECT_EQ(Txt(u" -12", dtString)->GetAsInteger(), -12);
  EXPECT_EQ(Txt(u"$1F")->GetAsInteger(), 31);
  EXPECT_EQ(Txt(u"0x10")->GetAsInteger(), 16);
  EXPECT_DOUBLE_EQ(Txt(u"2.5e1")->GetAsNumeric(), 25.0);
  EXPECT_DOUBLE_EQ(Int(4, dtDescriptor)->GetAsFloat(), 4.0);
  EXPECT_DOUBLE_EQ(FCNil->GetAsNumeric(), 0.0) << "the nil object itself reads 0";

  EXPECT_EQ(FailureOf([] { Txt(u"12abc")->GetAsInteger(); }),
            u"Not a integer type.  Value (12abc) is a dtAtom type");
  EXPECT_EQ(FailureOf([] { FCEmptyString->GetAsNumeric(); }),
            u"Not a numeric type.  Value () is a dtAtom type");
  EXPECT_EQ(FailureOf([] { Int(3, dtFactId)->GetAsString(); }),
            u"Not a string type.  Value (<Fact-3>) is a dtFactId type");
  EXPECT_EQ(FailureOf([] { Txt(u"x", dtString)->GetAsList(); }),
            u"Not a list type.  Value (\"x\") is a dtString type");
  EXPECT_EQ(FailureOf([] { Flt(1.5)->GetAsList(); }),
            u"Not a list type.  Value (1.5000) is a dtFloat type");
  EXPECT_EQ(FailureOf([] { Int(1)->GetAsDescriptor(); }),
            u"Not a descriptor type.  Value (1) is a dtInteger type");
  EXPECT_EQ(FailureOf([] { Int(1)->GetAsExternalAddress(); }),
            u"Not a External Address type.  Value (1) is a dtInteger type");

  ITavoValue Kept = Txt(u"abc");
  EXPECT_THROW(Kept->GetAsInteger(), ETavoException);
  EXPECT_EQ(Kept->GetDType(), dtAtom);
  EXPECT_EQ(Kept->GetAsString(), u"abc");
}

TEST(TavoValueTest, ConstructorsCheckTheTypeAgainstThePayload) {
  EXPECT_EQ(FailureOf([] { Int(1, dtAtom); }), u"Value and type mismatch");
  EXPECT_EQ(FailureOf([] { Txt(u"1", dtInteger); }), u"Value and type mismatch");
  EXPECT_EQ(Int(1, dtDescriptor)->GetDType(), dtDescriptor);
  EXPECT_EQ(Txt(u"m", dtMultiSlot)->GetDType(), dtMultiSlot);
}

TEST(TavoValueTest, StrictEqualityComparesTagsFirst) {
  EXPECT_FALSE(Int(1)->Equals(Flt(1.0)));
  EXPECT_FALSE(Flt(1.0)->Equals(Int(1)));
  EXPECT_FALSE(Txt(u"a")->Equals(Txt(u"a", dtString)));
  EXPECT_FALSE(Txt(u"a")->Equals(Txt(u"A")));
  EXPECT_TRUE(Make<TTavoValue>()->Equals(Make<TTavoValue>()));
  EXPECT_TRUE(Flt(2.5)->Equals(Flt(2.5)));
  EXPECT_TRUE(Int(4, dtFactId)->Equals(Int(4, dtFactId)));
  EXPECT_FALSE(Int(4, dtFactId)->Equals(Int(4)));
  EXPECT_FALSE(Int(4)->Equals(ITavoValue()));
  EXPECT_TRUE(List({Int(1), Txt(u"x")})->Equals(List({Int(1), Txt(u"x")})));
  EXPECT_FALSE(List({Int(1), Txt(u"x")})->Equals(List({Txt(u"x"), Int(1)})));
  // Two values of one class are equal only when they are the same object.
  ITavoValue Class = Make<TTavoValue>(&TComponent::StaticClass());
  EXPECT_TRUE(Class->Equals(Class));
  EXPECT_FALSE(Class->Equals(Make<TTavoValue>(&TComponent::StaticClass())));
  // Equals of anything that is not a value is false.
  EXPECT_FALSE(Int(1)->Equals(static_cast<const TCloneableObject*>(Make<TValueVector>().Get())));
}

TEST(TavoValueTest, LooseEqualityReadsTheArgumentAsItsOwnKind) {
  EXPECT_TRUE(Int(1)->EqualsStar(Flt(1.0)));
  EXPECT_TRUE(Int(1)->EqualsStar(Flt(1.9)));
  EXPECT_FALSE(Flt(1.9)->EqualsStar(Int(1)));
  EXPECT_TRUE(Txt(u"1")->EqualsStar(Int(1)));
  EXPECT_TRUE(Txt(u"1.0000")->EqualsStar(Flt(1)));
  EXPECT_TRUE(Txt(u"a")->EqualsStar(Txt(u"a", dtString)));
  EXPECT_TRUE(Make<TTavoValue>()->EqualsStar(Txt(u"anything")));
  EXPECT_TRUE(List({Int(1)})->EqualsStar(List({Int(1)})));
  // A reader that cannot convert fails rather than answering false.
  EXPECT_EQ(FailureOf([] { Int(1)->EqualsStar(Txt(u"abc")); }),
            u"Not a integer type.  Value (abc) is a dtAtom type");
  EXPECT_THROW(List({Int(1)})->EqualsStar(Int(1)), ETavoException);
}

TEST(TavoValueTest, HashesFollowTheTag) {
  EXPECT_EQ(Flt(1.2)->GetHashCode(), Flt(1.9)->GetHashCode());
  EXPECT_EQ(Flt(1.2)->GetHashCode(), Int(1)->GetHashCode());
  EXPECT_EQ(Txt(u"abc")->GetHashCode(), Txt(u"abc", dtString)->GetHashCode());
  EXPECT_EQ(Make<TTavoValue>()->GetHashCode(), 0);
  EXPECT_EQ(List({Int(1), Int(2)})->GetHashCode(), List({Int(2), Int(1)})->GetHashCode());
  EXPECT_EQ(Flt(1e30)->GetHashCode(), Flt(1e30)->GetHashCode()) << "huge floats hash safely";
}

TEST(TavoValueTest, CloneSharesTheListWhileTheInterfaceCopyOwnsClones) {
  ITavoValue Source = List({Int(1), List({Int(2)})});
  Source->SetTag(17);
  ITavoValue Clone = Source->CloneValue();
  EXPECT_EQ(Clone->GetAsList(), Source->GetAsList());
  EXPECT_EQ(Clone->GetTag(), 17);

  ITavoValue Copy = Make<TTavoValue>(Source);
  EXPECT_NE(Copy->GetAsList(), Source->GetAsList());
  EXPECT_TRUE(Copy->Equals(Source));
  EXPECT_NE(Copy->GetAsList()->Get(0), Source->GetAsList()->Get(0));
  // Members are cloned by the sharing road, so a nested list stays shared.
  EXPECT_EQ(Copy->GetAsList()->Get(1)->GetAsList(), Source->GetAsList()->Get(1)->GetAsList());

  ITavoValue Target = Int(5);
  Source->AssignTo(Target.Get());
  EXPECT_NE(Target->GetAsList(), Source->GetAsList());
  EXPECT_TRUE(Target->Equals(Source));
}

TEST(TavoValueTest, CopyRoadsDifferOnClassesAndKeepScalars) {
  ITavoValue Class = Make<TTavoValue>(&TComponent::StaticClass());
  ITavoValue ByInterface = Make<TTavoValue>(Class);
  EXPECT_EQ(ByInterface->GetDType(), dtClass);
  EXPECT_EQ(ByInterface->GetAsClass(), nullptr) << "the class is not copied";
  EXPECT_EQ(Class->CloneValue()->GetAsClass(), &TComponent::StaticClass());

  for (const ITavoValue& Source : {Int(3, dtFactId), Flt(-0.5), Txt(u"v", dtVariable), Make<TTavoValue>()}) {
    ITavoValue Copy = Make<TTavoValue>(Source);
    EXPECT_TRUE(Copy->Equals(Source)) << StringToUtf8(Source->GetToString());
    ITavoValue Pushed = Txt(u"old");
    Source->AssignTo(Pushed.Get());
    EXPECT_TRUE(Pushed->Equals(Source)) << StringToUtf8(Source->GetToString());
  }
}

TEST(TavoValueTest, ChangeEventFiresAfterSettersAndAssignsOnly) {
  ITavoValue Value = Int(1);
  int Calls = 0;
  const TTavoValue* Seen = nullptr;
  Value->SetOnChange([&](const ITavoValue& Sender) {
    ++Calls;
    Seen = Sender.Get();
  });
  Value->SetAsAtom(u"a");
  Value->SetAsFloat(2.0);
  Value->Assign(ICloneableObject(Int(4)));
  Value->Assign(static_cast<const TPersistent*>(Txt(u"b").Get()));
  EXPECT_EQ(Calls, 4);
  EXPECT_EQ(Seen, Value.Get());
  Value->SetTag(3);
  Value->Reset();
  EXPECT_EQ(Calls, 4);
  EXPECT_EQ(Value->GetDType(), dtNone);
  EXPECT_FALSE(Value->CloneValue()->GetOnChange()) << "a clone does not take the handler";
}

TEST(TavoValueTest, OwnedComponentsAreFreedClonedAndForgotten) {
  TComponent Owner;
  TCountedPart::Deaths = 0;
  auto* Part = new TCountedPart(&Owner);
  Part->Weight = 8;
  ITavoValue Value = Make<TTavoValue>(Part, true);
  EXPECT_TRUE(Value->IsOwningObject());

  // A clone owns a copy of the component, under the same owner.
  ITavoValue Clone = Value->CloneValue();
  auto* Copy = dynamic_cast<TCountedPart*>(Clone->GetAsObject());
  ASSERT_NE(Copy, nullptr);
  EXPECT_NE(Copy, Part);
  EXPECT_EQ(Copy->Weight, 8);
  EXPECT_EQ(Copy->GetOwner(), &Owner);

  // Changing the value frees what it owned.
  Value->SetAsInteger(1);
  EXPECT_EQ(TCountedPart::Deaths, 1);
  EXPECT_FALSE(Value->IsOwningObject());

  // A component that dies elsewhere leaves its value empty, with no event.
  int Calls = 0;
  Clone->SetOnChange([&](const ITavoValue&) { ++Calls; });
  delete Copy;
  EXPECT_EQ(Clone->GetDType(), dtNone);
  EXPECT_EQ(Calls, 0);
  EXPECT_EQ(TCountedPart::Deaths, 2);

  // An object that is no component is only referenced, never freed.
  TBindingInfo Info;
  ITavoValue Referencing = Make<TTavoValue>(&Info, true);
  EXPECT_FALSE(Referencing->IsOwningObject());
  Referencing.Reset();
  EXPECT_EQ(Info.GetFactIndex(), 0);

  // The last owning value frees its component when it dies.
  auto* Last = new TCountedPart(&Owner);
  { ITavoValue Holder = Make<TTavoValue>(Last, true); }
  EXPECT_EQ(TCountedPart::Deaths, 3);
  EXPECT_EQ(Owner.GetComponentCount(), 0);
}

// A component class that needs its owner cannot be made by its class reference.
class TFixed : public TComponent {
  TAVO_CLASS(TFixed, TComponent)
 public:
  explicit TFixed(TComponent* AOwner) : TComponent(AOwner) {}
};

TEST(TavoValueTest, UncloneableOwnedObjectFails) {
  ITavoValue Value = Make<TTavoValue>(new TFixed(nullptr), true);
  EXPECT_EQ(FailureOf([&] { Value->CloneValue(); }),
            u"Uncloneable value.  Value owned an object of &s class type");
}

TEST(TavoValueTest, ResolveGivesPlainDataThemselves) {
  for (const ITavoValue& Value : {Int(1), Flt(2), Txt(u"a"), List({Int(1)}), Make<TTavoValue>()})
    EXPECT_EQ(Value->Resolve(nullptr), Value);
  EXPECT_EQ(FailureOf([] { Txt(u"x", dtVariable)->Resolve(nullptr); }),
            u"No context found when trying to resolve a dtVariable value");
  TBindingInfo Info(0, u"slot");
  EXPECT_EQ(FailureOf([&] { Make<TTavoValue>(&Info, false)->Resolve(nullptr); }),
            u"No context found when trying to resolve a dtObject value");
}

TEST(TavoValueTest, VariableResolvesToItsBindingInAContext) {
  TTavoContext Root;
  ITavoValue Items = List({Int(1), Int(2)});
  Root.AddBinding(u"rest", Items);
  std::unique_ptr<TTavoContext> Child(Root.Push());
  Child->AddLocalBinding(u"x", Int(4));
  // Both kinds of variable find the nearest binding, up the chain, and give
  // the bound value itself.
  EXPECT_EQ(Txt(u"rest", dtMultiVariable)->Resolve(Child.get()), Items);
  EXPECT_EQ(Txt(u"x", dtVariable)->Resolve(Child.get())->GetAsInteger(), 4);
  EXPECT_EQ(FailureOf([&] { Txt(u"x", dtVariable)->Resolve(&Root); }),
            u"Corrupted Binding, variable not found: x");
  // A binding without a value counts as none.
  Root.AddBinding(u"empty", nullptr);
  EXPECT_EQ(FailureOf([&] { Txt(u"empty", dtVariable)->Resolve(Child.get()); }),
            u"Corrupted Binding, variable not found: empty");
}

TEST(TavoValueTest, FuzzyValueReadsAsItsDefuzzifiedNumberAndMatchesFromEitherSide) {
  using namespace testvalues;
  IFuzzySet Set = Make<TTavoFuzzySet>();
  Set->Triangle(0, 2.5, 5);
  ITavoValue Fuzzy = Make<TTavoValue>(Set);
  EXPECT_DOUBLE_EQ(Fuzzy->GetAsNumeric(), 2.5);
  EXPECT_EQ(Fuzzy->GetAsInteger(), 2) << "2.5 rounds to the even neighbour";
  // A number matches where the membership is above the threshold, asked
  // from either side; a crisp number outside the set does not.
  EXPECT_TRUE(Fuzzy->Equals(Int(2).Get()));
  EXPECT_TRUE(Int(2)->Equals(Fuzzy.Get()));
  EXPECT_TRUE(Flt(4.9)->EqualsStar(Fuzzy));
  EXPECT_FALSE(Int(7)->Equals(Fuzzy.Get()));
  EXPECT_FALSE(Atom(u"hot")->Equals(Fuzzy.Get()));
  // Sets compare through any set, also one of the library's own class:
  // disjoint sets differ, overlapping ones match.
  IFuzzySet Plain = Make<TIFuzzySet>();
  Plain->Triangle(4, 6, 8);
  EXPECT_TRUE(Fuzzy->Equals(Make<TTavoValue>(Plain).Get()));
  EXPECT_TRUE(Make<TTavoValue>(Plain)->Equals(Fuzzy.Get()));
  Plain->Triangle(6, 7, 8);
  EXPECT_FALSE(Make<TTavoValue>(Plain)->Equals(Fuzzy.Get()));
  EXPECT_EQ(Fuzzy->GetAsString(), Set->ToString());
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

using namespace testvalues;

TEST(TavoValueTest, AValueIsThreeWordsAndTheConstantsAreNeverCounted) {
  EXPECT_LE(sizeof(TTavoValue), 24u);
  // Atom texts are shared: a thousand equal atoms hold one text.
  ITavoValue A = Atom(u"shared-name");
  ITavoValue B = Atom(u"shared-name");
  EXPECT_EQ(A->GetSharedText(), B->GetSharedText());
  EXPECT_TRUE(A->Equals(B));
  // Strings keep texts of their own and still compare by text.
  ITavoValue S1 = Str(u"shared-name");
  ITavoValue S2 = Str(u"shared-name");
  EXPECT_NE(S1->GetSharedText(), S2->GetSharedText());
  EXPECT_TRUE(S1->Equals(S2));
  EXPECT_FALSE(S1->Equals(A)) << "an atom and a string of one text differ";
  EXPECT_EQ(S1->GetHashCode(), A->GetHashCode());
  // Holding and dropping a constant leaves its count as it was.
  int32_t Before = FCTrue->RefCount();
  {
    ITavoValue Copy = FCTrue;
    ITavoValue Another = Copy;
  }
  EXPECT_EQ(FCTrue->RefCount(), Before);
  EXPECT_TRUE(FCTrue->IsImmortal());
  const TValueVector* NilItems = FCNilList->PeekInterface<TValueVector>();
  EXPECT_TRUE(NilItems->IsImmortal());
}

TEST(TavoValueTest, SettersReleaseWhatTheValueHeld) {
  IValueVector Vector = Make<TValueVector>();
  ITavoValue V = Make<TTavoValue>(Vector);
  EXPECT_EQ(Vector->RefCount(), 2);
  V->SetAsAtom(u"now-an-atom");
  EXPECT_EQ(Vector->RefCount(), 1);
  EXPECT_EQ(V->GetText(), u"now-an-atom");
  V->SetAsInteger(3);
  EXPECT_EQ(V->GetText(), u"") << "no text for a number";
  V->SetAsString(u"s");
  ITavoValue Clone = V->CloneValue();
  EXPECT_EQ(Clone->GetSharedText(), V->GetSharedText()) << "a clone shares the immutable text";
  V->Reset();
  EXPECT_EQ(Clone->GetToString(), u"\"s\"");
}

TEST(TavoValueTest, TagsLiveApartAndTravelWithCopies) {
  ITavoValue V = Int(1);
  EXPECT_EQ(V->GetTag(), 0);
  V->SetTag(42);
  EXPECT_EQ(V->GetTag(), 42);
  EXPECT_EQ(V->CloneValue()->GetTag(), 42);
  EXPECT_EQ(Make<TTavoValue>(V)->GetTag(), 42);
  V->SetTag(0);
  EXPECT_EQ(V->GetTag(), 0);
  // A tag dies with its object: a new object at the same place has none.
  for (int I = 0; I < 100; ++I) {
    ITavoValue Tagged = Int(I);
    Tagged->SetTag(I + 1);
  }
  EXPECT_EQ(Int(0)->GetTag(), 0);
}

TEST(TavoValueTest, AppendedTextIsTheTextForEveryKind) {
  IValueVector Inner = Make<TValueVector>();
  Inner->Add(Flt(-0.00001));
  Inner->Add(Str(u"a\\b\"c"));
  for (const ITavoValue& V :
       {Int(-2147483647 - 1), Flt(0.12345), Flt(2.00005), Flt(-1.5), Flt(1e300), Flt(std::nan("")),
        Flt(-INFINITY), Str(u"q\"uo\\te"), Atom(u""), Var(u"x"), Make<TTavoValue>(u"m", dtMultiVariable),
        Make<TTavoValue>(7, dtFactId), Make<TTavoValue>(Inner), Make<TTavoValue>(), FCNilList}) {
    String Text = u"<";
    V->AppendText(Text);
    EXPECT_EQ(Text, u"<" + V->GetToString());
  }
  EXPECT_EQ(Flt(0.12345)->GetToString(), u"0.1235");
  EXPECT_EQ(Flt(-0.00001)->GetToString(), u"0.0000") << "no minus on a zero";
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(TavoValueTest, AdoptedCoordinatesAreFreedClonedAndEqualByPlace) {
  ITavoValue Value = Make<TTavoValue>();
  Value->AdoptObject(new TBindingInfo(1, u"x", NoSubIndex));
  ITavoValue Same = Make<TTavoValue>();
  Same->AdoptObject(new TBindingInfo(1, u"x", NoSubIndex));
  ITavoValue Elsewhere = Make<TTavoValue>();
  Elsewhere->AdoptObject(new TBindingInfo(2, u"x", NoSubIndex));
  EXPECT_TRUE(Value->HoldsBindingInfo());
  EXPECT_TRUE(Value->Equals(Same));
  EXPECT_FALSE(Value->Equals(Elsewhere));
  ITavoValue Clone = Value->CloneValue();
  EXPECT_NE(Clone->GetAsObject(), Value->GetAsObject());
  EXPECT_TRUE(Clone->IsOwningObject());
  EXPECT_TRUE(Clone->Equals(Value));
  // Freeing and overwriting let go of the coordinates; the sanitizer run
  // sees a leak or a double free.
  Value->SetAsInteger(3);
}

}  // namespace
}  // namespace tavo
