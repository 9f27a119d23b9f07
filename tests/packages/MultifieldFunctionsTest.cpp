#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "packages/StandardPackage.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

class MultifieldFunctionsTest : public ::testing::Test {
 protected:
  ITavoValue Eval(const String& Text) { return Engine.ParseNExecuteFunCall(Text); }
  // The items' texts, as the engine prints a list.
  String Items(const String& Text) { return Eval(Text)->GetAsList()->ToString(); }
  String Failure(const String& Text) {
    return FailureOf([&] { Eval(Text); });
  }
  ITavoValue Call(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    return Call->Execute(&Context);
  }

  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
};

TEST_F(MultifieldFunctionsTest, PositionsCountFromZero) {
  EXPECT_EQ(Eval(u"(nth$ 0 (create$ a b c))")->GetAsString(), u"a");
  EXPECT_EQ(Eval(u"(nth$ 2 (create$ a b c))")->GetAsString(), u"c");
  EXPECT_EQ(Eval(u"(member$ a (create$ a b c))")->GetAsInteger(), 0);
  EXPECT_EQ(Eval(u"(member$ c (create$ a b c))")->GetAsInteger(), 2);
  EXPECT_EQ(Eval(u"(member b a b c)")->GetAsInteger(), 1) << "counted among the arguments after the first";
  EXPECT_EQ(Items(u"(delete$ (create$ a b c d) 1 2)"), u"a d ");
  EXPECT_EQ(Items(u"(subseq$ (create$ a b c d) 1 2)"), u"b c ");
  EXPECT_EQ(Items(u"(subseq$ (create$ a b c d) 3 3)"), u"d ");
  EXPECT_EQ(Items(u"(insert$ (create$ a b) 0 x)"), u"x a b ");
  EXPECT_EQ(Items(u"(insert$ (create$ a b) 2 x)"), u"a b x ") << "the position after the last appends";
  EXPECT_EQ(Items(u"(replace$ (create$ a b c) 1 1 x)"), u"a x c ");
  EXPECT_EQ(Items(u"(rest$ (create$ a))"), u"");
  EXPECT_EQ(Eval(u"(nth$ 1.9 (create$ a b))")->GetAsString(), u"b") << "a float position is truncated";
}

TEST_F(MultifieldFunctionsTest, SeveralInsertedValuesEndUpLastFirst) {
  EXPECT_EQ(Items(u"(insert$ (create$ a b) 1 x y z)"), u"a z y x b ");
  EXPECT_EQ(Items(u"(replace$ (create$ a b c d) 1 2 x y)"), u"a y x d ");
  EXPECT_EQ(Items(u"(replace$ (create$ a b c) 0 2)"), u"") << "nothing to put in: a plain delete";
  EXPECT_EQ(Items(u"(insert$ (create$ a) 0)"), u"a ");
}

TEST_F(MultifieldFunctionsTest, RangesBeyondTheListDeleteNothingButSubseqRefusesThem) {
  EXPECT_EQ(Items(u"(delete$ (create$ a b) 5 9)"), u"a b ");
  EXPECT_EQ(Items(u"(delete$ (create$ a b c) -3 0)"), u"b c ");
  EXPECT_EQ(Items(u"(delete$ (create$ a b c) 1 2147483647)"), u"a ");
  EXPECT_EQ(Items(u"(delete$ (create$) 0 0)"), u"");
  EXPECT_EQ(Failure(u"(delete$ (create$ a b) 1 0)"), u"Invalid multifield begin and end parameters: 1, 0");
  EXPECT_EQ(Failure(u"(replace$ (create$ a b) 2 -1 x)"), u"Invalid multifield begin and end parameters: 2, -1");
  EXPECT_EQ(Failure(u"(subseq$ (create$ a b) 1 0)"), u"Invalid multifield begin and end parameters: 1, 0");
  // The positions are read and checked before the list.
  EXPECT_EQ(Failure(u"(delete$ abc 1 0)"), u"Invalid multifield begin and end parameters: 1, 0");
  EXPECT_EQ(Failure(u"(subseq$ (create$ a b) 1 2)"), u"List index out of bounds (2)");
  EXPECT_EQ(Failure(u"(subseq$ (create$ a b) -1 0)"), u"List index out of bounds (-1)");
  EXPECT_EQ(Failure(u"(subseq$ (create$ a b) 1 2147483647)"), u"List index out of bounds (2)");
  EXPECT_EQ(Failure(u"(nth$ 3 (create$ a b c))"), u"List index out of bounds (3)");
  EXPECT_EQ(Failure(u"(nth$ -1 (create$ a b c))"), u"List index out of bounds (-1)");
  EXPECT_EQ(Failure(u"(insert$ (create$ a b) 3 x)"), u"List index out of bounds (3)");
  EXPECT_EQ(Failure(u"(insert$ (create$ a b) -1 x)"), u"List index out of bounds (-1)");
  // The start must still be a place in what the deletion left.
  EXPECT_EQ(Items(u"(replace$ (create$ a b c) 1 5 x)"), u"a x ");
  EXPECT_EQ(Failure(u"(replace$ (create$ a b) 3 5 x)"), u"List index out of bounds (3)");
  EXPECT_EQ(Items(u"(replace$ (create$ a b) 3 5)"), u"a b ");
}

TEST_F(MultifieldFunctionsTest, NestedListsAreSingleItemsComparedByContent) {
  EXPECT_EQ(Eval(u"(length$ (create$ (create$ a b) c))")->GetAsInteger(), 2);
  ITavoValue First = Eval(u"(first$ (create$ (create$ a b) c))");
  ASSERT_EQ(First->GetDType(), dtList);
  EXPECT_EQ(First->GetAsList()->ToString(), u"a b ");
  EXPECT_EQ(Eval(u"(member$ (create$ a b) (create$ x (create$ a b)))")->GetAsInteger(), 1);
  EXPECT_EQ(Eval(u"(member$ (create$ b a) (create$ x (create$ a b)))"), FCFalse) << "order counts";
  EXPECT_EQ(Eval(u"(member (create$ 1) (create$ 1.0) (create$ 1))")->GetAsInteger(), 1)
      << "1 and 1.0 are different items";
  EXPECT_EQ(Eval(u"(length$ (insert$ (create$ a) 0 (create$ x y)))")->GetAsInteger(), 2);
  EXPECT_EQ(Failure(u"(implode$ (create$ a (create$ b)))"), u"Not a string type.  Value (b ) is a dtList type");
}

TEST_F(MultifieldFunctionsTest, ResultsShareNoItemWithTheirArguments) {
  ITavoValue A = Atom(u"a"), B = Atom(u"b");
  ITavoValue Source = List({A, B});
  // A cloned list value would share this vector: insert$ must not reach it.
  ITavoValue Inserted = Call(u"insert$", {Source, Int(1), Atom(u"x")});
  EXPECT_EQ(Source->GetAsList()->ToString(), u"a b ");
  EXPECT_EQ(Inserted->GetAsList()->ToString(), u"a x b ");
  const ITavoValue Results[] = {Inserted,
                                Call(u"rest$", {Source}),
                                Call(u"delete$", {Source, Int(5), Int(6)}),
                                Call(u"subseq$", {Source, Int(0), Int(1)}),
                                Call(u"replace$", {Source, Int(5), Int(6)})};
  for (const ITavoValue& Result : Results)
    for (const ITavoValue& Item : *Result->GetAsList()) Item->SetAsAtom(u"changed");
  EXPECT_EQ(A->GetAsString(), u"a");
  EXPECT_EQ(B->GetAsString(), u"b");
  EXPECT_EQ(Source->GetAsList()->ToString(), u"a b ");
  // create$ copies its arguments as well.
  ITavoValue Created = Call(u"create$", {A});
  Created->GetAsList()->Get(0)->SetAsAtom(u"changed");
  EXPECT_EQ(A->GetAsString(), u"a");
}

TEST_F(MultifieldFunctionsTest, ExplodeSplitsAtAnyBlankAndNeverReadsNumbers) {
  EXPECT_EQ(Items(u"(explode$ \"  one   two  \")"), u"one two ");
  EXPECT_EQ(Items(u"(explode$ \"a\tb\r\nc\")"), u"a b c ");
  ITavoValue Numerals = Eval(u"(explode$ \"1 2.5\")");
  ASSERT_EQ(Numerals->GetAsList()->GetValueCount(), 2);
  EXPECT_EQ(Numerals->GetAsList()->Get(0)->GetDType(), dtAtom);
  EXPECT_EQ(Numerals->GetAsList()->Get(1)->GetDType(), dtAtom);
  EXPECT_EQ(Numerals->GetAsList()->Get(1)->GetAsString(), u"2.5");
  EXPECT_EQ(Items(u"(explode$ \"\")"), u"");
  EXPECT_EQ(Items(u"(explode$ \"   \")"), u"");
  EXPECT_EQ(Items(u"(explode$ 12)"), u"12 ") << "the argument's string";
  // implode$ gives each item's string, so a string loses its quotes.
  EXPECT_EQ(Eval(u"(implode$ (create$ a \"b c\" 1 2.5))")->GetAsString(), u"a b c 1 2.5000");
  EXPECT_EQ(Items(u"(explode$ (implode$ (create$ x y z)))"), u"x y z ");
}

TEST_F(MultifieldFunctionsTest, MemberStopsAtTheFirstMatch) {
  EXPECT_EQ(Eval(u"(member a a (nth$ 9 (create$)))")->GetAsInteger(), 0) << "the argument after is not evaluated";
  EXPECT_EQ(Eval(u"(member a b c)"), FCFalse);
  EXPECT_EQ(Eval(u"(member 1 1.0 \"1\" 1)")->GetAsInteger(), 2) << "strict equality";
  EXPECT_EQ(Eval(u"(member$ a (create$ b a a))")->GetAsInteger(), 1);
}

TEST_F(MultifieldFunctionsTest, SubsetpWrapsASingleValue) {
  EXPECT_EQ(Eval(u"(subsetp (create$ a c) (create$ a b c))"), FCTrue);
  EXPECT_EQ(Eval(u"(subsetp (create$ a d) (create$ a b c))"), FCFalse);
  EXPECT_EQ(Eval(u"(subsetp (create$) (create$))"), FCTrue);
  EXPECT_EQ(Eval(u"(subsetp b (create$ a b c))"), FCTrue);
  EXPECT_EQ(Eval(u"(subsetp 1 (create$ 1.0))"), FCFalse);
  EXPECT_EQ(Eval(u"(subsetp (create$ a a) (create$ a))"), FCTrue) << "repeats need no second copy";
  EXPECT_EQ(Eval(u"(subsetp (create$ (create$ a)) (create$ a))"), FCFalse) << "a nested list is one item";
  EXPECT_EQ(Failure(u"(subsetp a b)"), u"Not a list type.  Value (b) is a dtAtom type");
}

TEST_F(MultifieldFunctionsTest, TheFunctionsComeWithTheStandardPackage) {
  IUserFunction Function;
  ASSERT_TRUE(Engine.ContainsUserFunction(u"create$", Function));
  EXPECT_EQ(Function->GetArgumentString(), u"<expression>*");
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pStandard);
  Engine.SetPackages(Packages);
  for (const char16_t* Name : {u"create$", u"delete$", u"explode$", u"first$", u"implode$", u"insert$", u"length$",
                               u"member", u"member$", u"nth$", u"replace$", u"rest$", u"subseq$", u"subsetp"})
    EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  EXPECT_TRUE(Engine.ContainsUserFunction(u"str-cat", Function));
}

}  // namespace
}  // namespace tavo
