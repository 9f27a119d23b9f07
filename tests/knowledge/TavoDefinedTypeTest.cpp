#include "knowledge/TavoDefinedType.h"

#include <gtest/gtest.h>

#include "tests/TestSupport.h"
#include "tests/knowledge/OwnerEngine.h"

namespace tavo {
namespace {

using namespace testvalues;

ITavoDefinedType NewType(const char16_t* Name) {
  ITavoDefinedType Type = Make<TTavoDefinedType>();
  Type->SetName(Name);
  return Type;
}

// A reasoner that records renames.
struct TRecordingReasoner : TOwnerEngine {
  void RenameDefinedType(const String& Old, const String& New) override { Renames += Old + u">" + New + u";"; }
  String Renames;
};

TEST(TavoDefinedTypeTest, NewTypeAcceptsSlotTypesButNoFuzzy) {
  ITavoDefinedType Type = Make<TTavoDefinedType>();
  EXPECT_EQ(Type->GetName(), u"implicit");
  for (const ITavoValue& Value : {Atom(u"a"), Str(u"s"), Int(1), Flt(2.5), Make<TTavoValue>(String(u"v"), dtVariable),
                                  Make<TTavoValue>(String(u"m"), dtMultiVariable), List({Int(1), Atom(u"x")})})
    EXPECT_TRUE(Type->IsValid(Value)) << StringToUtf8(Value->GetToString());
  EXPECT_EQ(Type->GetInvalidValueString(Int(4)), u"");
  // dtNone passes the test but not the report, as it stands.
  ITavoValue None = Make<TTavoValue>();
  EXPECT_TRUE(Type->IsValid(None));
  EXPECT_EQ(Type->GetInvalidValueString(None),
            u"Value \"\" is not valid, Not a ATOM, STRING, INTEGER, VARIABLE, FACTID, FLOAT, FUNCALL, "
            u"FACT, DESCRIPTOR, OBJECT, CLASS, EXTERNALADDRESS type.  Value () is a dtNone type");
  // A list member of a kind outside the base types fails the list.
  Type->SetBaseTypes({dtInteger});
  EXPECT_FALSE(Type->IsValid(Atom(u"a")));
  EXPECT_FALSE(Type->IsValid(List({Int(1), Atom(u"x")})));
}

TEST(TavoDefinedTypeTest, AllowedValuesFollowTheirOddRules) {
  ITavoDefinedType Colour = NewType(u"colour");
  Colour->SetConstraints({vcAtom});
  Colour->AddConstraint(Atom(u"red"));
  Colour->AddConstraint(Atom(u"green"));
  Colour->AddConstraint(Atom(u"GREEN"));  // already there, ignoring case
  EXPECT_EQ(Colour->GetConstraintAtomsCount(), 2);
  EXPECT_TRUE(Colour->IsValid(Atom(u"RED")));
  EXPECT_FALSE(Colour->IsValid(Atom(u"blue")));
  EXPECT_EQ(Colour->GetInvalidValueString(Atom(u"blue")), u"Value \"blue\" is not valid, Not in allowed values");
  EXPECT_TRUE(Colour->IsValid(Str(u"blue"))) << "no string constraint, so strings pass";

  ITavoDefinedType Small = NewType(u"small");
  Small->SetConstraints({vcInteger});
  Small->AddConstraint(Int(1));
  Small->AddConstraint(Int(2));
  EXPECT_TRUE(Small->IsValid(Flt(1.0))) << "a whole float is found by its integer";
  EXPECT_FALSE(Small->IsValid(Flt(1.5)));
  EXPECT_FALSE(Small->IsValid(Int(3)));

  ITavoDefinedType Ratio = NewType(u"ratio");
  Ratio->SetConstraints({vcFloat});
  ITavoValue Half = Flt(0.5);
  Ratio->AddConstraint(Half);
  Ratio->AddConstraint(Flt(0.5));  // equal to a member: not added
  EXPECT_EQ(Ratio->GetConstraintFloatsCount(), 1);
  EXPECT_TRUE(Ratio->IsValid(Half));
  EXPECT_FALSE(Ratio->IsValid(Flt(0.5))) << "floats are found by the very object, as it stands";
  EXPECT_FALSE(Ratio->IsValid(Int(0))) << "an integer looks in the float list";
  Ratio->RemoveConstraint(Flt(0.5));
  EXPECT_EQ(Ratio->GetConstraintFloatsCount(), 1);
  Ratio->RemoveConstraint(Half);
  EXPECT_EQ(Ratio->GetConstraintFloatsCount(), 0);
}

TEST(TavoDefinedTypeTest, ConstraintListsExistOnlyWithTheirKind) {
  ITavoDefinedType Type = NewType(u"t");
  EXPECT_EQ(FailureOf([&] { Type->AddConstraint(Atom(u"a")); }),
            u"Defined Type t cannot contain Atom constraint types");
  EXPECT_EQ(FailureOf([&] { Type->GetValueConstraint(List({})); }),
            u"Defined Type t cannot contain List constraint types");
  EXPECT_EQ(FailureOf([&] { Type->GetConstraintInteger(0); }), u"Defined Type t does not have Integer constraints");
  EXPECT_EQ(FailureOf([&] { Type->DeleteConstraint(0, vcString); }),
            u"Defined Type t does not have String constraints");
  EXPECT_EQ(Type->GetConstraintStringsCount(), 0);
  Type->SetConstraints({vcString, vcInteger});
  Type->AddConstraint(Str(u"x"));
  Type->AddConstraint(Int(7));
  Type->SetConstraints({vcInteger});
  EXPECT_EQ(Type->GetConstraintStringsCount(), 0);
  EXPECT_EQ(Type->GetConstraintIntegersCount(), 1) << "a kept kind keeps its members";
  Type->DeleteConstraint(0, vcInteger);
  EXPECT_EQ(Type->GetConstraintIntegersCount(), 0);
  Type->ClearConstraints();
  EXPECT_TRUE(Type->GetConstraints().Empty());
}

TEST(TavoDefinedTypeTest, RangesAndCardinalitiesStayOrdered) {
  ITavoDefinedType Type = NewType(u"level");
  Type->SetMinRange(10);
  Type->SetMaxRange(5);
  EXPECT_EQ(Type->GetMinRange(), 5);
  Type->SetMinRange(8);
  EXPECT_EQ(Type->GetMaxRange(), 8);
  Type->SetMaxCardinality(-3);
  EXPECT_EQ(Type->GetMaxCardinality(), 0);
  Type->SetMinCardinality(4);
  EXPECT_EQ(Type->GetMaxCardinality(), 4);

  ITavoDefinedType Percent = NewType(u"percent");
  Percent->SetMinRange(0);
  Percent->SetMaxRange(100);
  Percent->SetRangeLimited(true);
  EXPECT_TRUE(Percent->IsValid(Flt(100)));
  EXPECT_FALSE(Percent->IsValid(Int(101)));
  EXPECT_TRUE(Percent->IsValid(Atom(u"not-a-number"))) << "the range applies to numbers only";
  EXPECT_EQ(Percent->GetInvalidValueString(Int(-1)),
            u"Value \"-1\" is not valid, Range must be between 0.0000 and 100.0000");

  ITavoDefinedType Pair = NewType(u"pair");
  Pair->SetBaseTypes({dtInteger});
  Pair->SetCardinalityLimited(true);
  Pair->SetMinCardinality(1);
  Pair->SetMaxCardinality(2);
  EXPECT_TRUE(Pair->IsValid(List({Int(1), Int(2)})));
  EXPECT_EQ(Pair->GetInvalidValueString(List({})), u"Value \"\" is not valid, Multislot must have between 1 and 2 elements");
  // The member's report comes wrapped once more for the list.
  EXPECT_EQ(Pair->GetInvalidValueString(List({Int(1), Atom(u"x")})),
            u"Value \"1 x \" is not valid, Value \"x\" is not valid, Not a INTEGER type.  Value (x) is a dtAtom type");
}

TEST(TavoDefinedTypeTest, DefaultsComeFromTheFirstFittingBaseType) {
  auto Default = [](const ITavoDefinedType& T, bool Multi = false) { return T->CreateValidDefault(Multi); };
  ITavoDefinedType Number = NewType(u"n");
  Number->SetBaseTypes({dtInteger});
  EXPECT_TRUE(Default(Number)->Equals(Int(0)));
  Number->SetRangeLimited(true);
  EXPECT_TRUE(Default(Number)->Equals(Int(0))) << "the whole initial range";
  Number->SetMaxRange(5.7);
  EXPECT_TRUE(Default(Number)->Equals(Int(5)));
  Number->SetMinRange(-10);
  EXPECT_TRUE(Default(Number)->Equals(Int(-10)));
  Number->SetConstraints({vcInteger});
  Number->AddConstraint(Int(3));
  EXPECT_TRUE(Default(Number)->Equals(Int(3)));

  ITavoDefinedType Real = NewType(u"r");
  Real->SetBaseTypes({dtFloat});
  Real->SetRangeLimited(true);
  Real->SetMinRange(1.5);
  EXPECT_TRUE(Default(Real)->Equals(Flt(1.5)));

  ITavoDefinedType Word = NewType(u"w");
  EXPECT_TRUE(Default(Word)->Equals(FCNil)) << "an atom with empty text";
  Word->SetConstraints({vcAtom});
  Word->AddConstraint(Atom(u"first"));
  EXPECT_TRUE(Default(Word)->Equals(Atom(u"first")));
  Word->SetCardinalityLimited(true);
  Word->SetMinCardinality(3);
  EXPECT_EQ(Default(Word, true)->GetToString(), u"first first first ");
  Word->SetMinCardinality(0);
  ITavoValue Empty = Default(Word, true);
  EXPECT_EQ(Empty->GetAsList()->GetValueCount(), 0);
  EXPECT_NE(Empty, FCNilList) << "a fresh copy, never the shared constant";

  ITavoDefinedType Handle = NewType(u"h");
  Handle->SetBaseTypes({dtFact});
  EXPECT_EQ(Default(Handle)->GetDType(), dtFact);
  Handle->SetBaseTypes({dtClass});
  EXPECT_EQ(Default(Handle)->GetDType(), dtClass);
}

TEST(TavoDefinedTypeTest, FuzzyBaseTypeOwnsAVariable) {
  ITavoDefinedType Type = NewType(u"temperature");
  Type->SetRangeLimited(true);
  Type->SetMinRange(-20);
  Type->SetMaxRange(50);
  Type->SetUnits(u"C");
  EXPECT_EQ(FailureOf([&] { Type->SetBaseTypes({dtFuzzy, dtInteger}); }),
            u"Cannot mix fuzzy type with other primitive types");
  EXPECT_EQ(Type->GetBaseTypes(), TavoSlotTypes) << "a refused set leaves the type unchanged";
  Type->SetBaseTypes({dtFuzzy});
  ASSERT_TRUE(Type->GetFuzzyType());
  EXPECT_EQ(Type->GetFuzzyType()->GetName(), u"temperature");
  EXPECT_EQ(Type->GetFuzzyType()->GetMinimum(), -20);
  EXPECT_EQ(Type->GetFuzzyType()->GetMaximum(), 50);
  EXPECT_EQ(Type->GetFuzzyType()->GetUnits(), u"C");
  Type->SetMaxRange(40);
  EXPECT_EQ(Type->GetFuzzyType()->GetMaximum(), 40) << "the universe follows the range";
  EXPECT_TRUE(Type->IsValid(Int(3))) << "a number can still become a set";
  EXPECT_FALSE(Type->IsValid(Make<TTavoValue>(3, dtFactId)));
  EXPECT_EQ(Type->GetInvalidValueString(Int(3)), u"Value \"3\" is not valid, invalid fuzzy value");
  Type->SetBaseTypes({dtInteger});
  EXPECT_FALSE(Type->GetFuzzyType());

  // A variable handed over sets the type's range and units from its own.
  IFuzzyVariable Pressure = Make<TTavoFuzzyVariable>(u"pressure");
  Pressure->SetMaximum(8);
  Pressure->SetUnits(u"bar");
  Type->SetFuzzyType(Pressure);
  EXPECT_EQ(Type->GetBaseTypes(), (TTavoTypes{dtFuzzy}));
  EXPECT_EQ(Type->GetMaxRange(), 8);
  EXPECT_EQ(Type->GetMinRange(), 0);
  EXPECT_EQ(Type->GetUnits(), u"bar");
}

TEST(TavoDefinedTypeTest, NamesAndAncestorsAreChecked) {
  TRecordingReasoner Reasoner;
  ITavoDefinedType A = Make<TTavoDefinedType>(&Reasoner);
  A->SetName(u"a");
  A->SetName(u"a");
  EXPECT_EQ(Reasoner.Renames, u"implicit>a;");
  EXPECT_EQ(FailureOf([&] { A->SetName(u"a b"); }), u"\"a b\" contains unexpected character: \" \"");
  EXPECT_EQ(A->GetName(), u"a");
  ITavoDefinedType B = NewType(u"b");
  ITavoDefinedType C = NewType(u"c");
  C->SetImplicit(true);
  B->SetAncestor(A);
  C->SetAncestor(B);
  EXPECT_FALSE(C->GetImplicit());
  EXPECT_EQ(FailureOf([&] { A->SetAncestor(C); }),
            u"Type inheritance loop detected, a type cannot be an ancestor of itself");
  EXPECT_FALSE(A->GetAncestor());
  EXPECT_EQ(FailureOf([&] { A->SetAncestor(A); }),
            u"Type inheritance loop detected, a type cannot be an ancestor of itself");
}

TEST(TavoDefinedTypeTest, ChangesAreReportedOncePerRealChange) {
  ITavoDefinedType Type = NewType(u"t");
  int Changes = 0;
  Type->SetOnChange([&](TObject*) { ++Changes; });
  Type->SetComment(u"c");
  Type->SetComment(u"c");
  Type->SetMaxRange(Type->GetMaxRange());
  EXPECT_EQ(Changes, 1);
  Type->BeginUpdate();
  Type->BeginUpdate();
  Type->SetUnits(u"m");
  Type->EndUpdate();
  EXPECT_EQ(Changes, 2) << "single setters report inside a bracket too";
  Type->EndUpdate();
  EXPECT_EQ(Changes, 3) << "and the bracket reports once as it closes";
}

TEST(TavoDefinedTypeTest, EqualityIgnoresCommentsButNotMemberOrder) {
  ITavoDefinedType A = NewType(u"t");
  A->SetConstraints({vcAtom, vcFloat});
  A->AddConstraint(Atom(u"x"));
  A->AddConstraint(Atom(u"y"));
  A->AddConstraint(Flt(1.00001));
  A->SetComment(u"one");
  ITavoDefinedType B = A->CloneType();
  EXPECT_TRUE(A->Equals(B.Get()));
  EXPECT_NE(B->GetConstraintFloat(0), A->GetConstraintFloat(0)) << "float members are cloned";
  B->SetComment(u"two");
  B->SetUnits(u"kg");
  EXPECT_TRUE(A->Equals(B.Get()));
  B->RemoveConstraint(B->GetConstraintFloat(0));
  B->AddConstraint(Flt(1.00002));
  EXPECT_TRUE(A->Equals(B.Get())) << "floats compare within 0.0001";
  B->RemoveConstraint(Atom(u"x"));
  B->AddConstraint(Atom(u"x"));
  EXPECT_FALSE(A->Equals(B.Get())) << "the order of members counts";
  EXPECT_FALSE(A->Equals(nullptr));
  EXPECT_THROW(A->Equals(Int(1).Get()), EMekException);
  ITavoDefinedType Fuzzy = NewType(u"t");
  Fuzzy->SetBaseTypes({dtFuzzy});
  ITavoDefinedType FuzzyCopy = Fuzzy->CloneType();
  EXPECT_TRUE(Fuzzy->Equals(FuzzyCopy.Get()));
  EXPECT_NE(FuzzyCopy->GetFuzzyType(), Fuzzy->GetFuzzyType()) << "the copy owns its own variable";
}

TEST(TavoDefinedTypeTest, AllowedValuesPrintByGroup) {
  ITavoDefinedType Type = NewType(u"t");
  Type->SetConstraints({vcInteger, vcFloat, vcAtom});
  Type->AddConstraint(Int(1));
  Type->AddConstraint(Flt(2.5));
  Type->AddConstraint(Atom(u"a"));
  EXPECT_EQ(GetAllowedString(*Type), String(IndentString) + u"(allowed-numbers 1 2.5000 ) \r\n" + IndentString +
                                         u"(allowed-symbols a )\r\n");
  Type->SetConstraints({vcInteger, vcFloat, vcAtom, vcString});
  Type->AddConstraint(Str(u"s"));
  EXPECT_EQ(GetAllowedString(*Type), String(IndentString) + u"(allowed-values a \"s\" 1 2.5000 )\r\n");
  Type->SetConstraints({vcString});
  EXPECT_EQ(GetAllowedString(*Type), String(IndentString) + u"(allowed-strings \"s\" )\r\n");
}

TEST(TavoDefinedTypeTest, AFuzzyTypeDefaultsToTheEmptyTermAndAcceptsOnlyItsOwnSets) {
  ITavoDefinedType Type = Make<TTavoDefinedType>();
  Type->SetName(u"speed");
  Type->SetBaseTypes({dtFuzzy});
  const IFuzzyVariable& Variable = Type->GetFuzzyType();
  ASSERT_TRUE(Variable);
  ITavoValue Default = Type->CreateValidDefault(false);
  ASSERT_EQ(Default->GetDType(), dtFuzzy);
  EXPECT_EQ(Default->GetAsFuzzy()->GetName(), SEmptyFuzzy);
  EXPECT_EQ(Default->GetAsFuzzy().Get(), Variable->FindFuzzySet(SEmptyFuzzy)) << "the term, made once";
  EXPECT_TRUE(Type->IsValid(Default));
  // A set of another variable is no value of this type; a number or a
  // name may still become one.
  IFuzzyVariable Other = Make<TTavoFuzzyVariable>(u"other");
  EXPECT_FALSE(Type->IsValid(Make<TTavoValue>(Other->NewFuzzySet(u"x"))));
  EXPECT_TRUE(Type->IsValid(Make<TTavoValue>(int32_t(3), dtInteger)));
  EXPECT_TRUE(Type->IsValid(Make<TTavoValue>(String(u"fast"), dtAtom)));
}

}  // namespace
}  // namespace tavo
