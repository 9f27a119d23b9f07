#include "packages/PredicatePackage.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

class PredicatePackageTest : public ::testing::Test {
 protected:
  ITavoValue Call(const char16_t* Name, const ITavoValue& Argument) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    Call->AddArgument(Argument);
    return Call->Execute(&Context);
  }
  ITavoValue Eval(const String& Text) { return Engine.ParseNExecuteFunCall(Text); }
  String Failure(const String& Text) {
    return FailureOf([&] { Eval(Text); });
  }

  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
};

TEST_F(PredicatePackageTest, EachTypeTestAcceptsExactlyItsTags) {
  int Anything = 0;
  TObject Object;
  ITavoValue Address = Make<TTavoValue>();
  Address->SetAsExternalAddress(&Anything);
  const struct {
    const char16_t* Name;
    ITavoValue Value;
  } Samples[] = {{u"atom", Atom(u"abc")},
                 {u"string", Str(u"abc")},
                 {u"integer", Int(1)},
                 {u"float", Flt(1)},
                 {u"list", List({Int(1)})},
                 {u"fuzzy", Engine.ParseValue(u"((0 1) (1 0))")},
                 {u"fact id", Make<TTavoValue>(0, dtFactId)},
                 {u"object", Make<TTavoValue>(&Object, false)},
                 {u"address", Address}};
  const struct {
    const char16_t* Function;
    std::initializer_list<const char16_t*> Accepted;
  } Tests[] = {{u"lexemep", {u"atom", u"string"}},
               {u"numberp", {u"integer", u"float"}},
               {u"floatp", {u"float"}},
               {u"fuzzyp", {u"fuzzy"}},
               {u"integerp", {u"integer"}},
               {u"stringp", {u"string"}},
               {u"symbolp", {u"atom"}},
               {u"multifieldp", {u"list"}},
               {u"external-addressp", {u"address"}},
               {u"objectp", {u"object"}}};
  for (const auto& Test : Tests)
    for (const auto& Sample : Samples) {
      bool Accepted = false;
      for (const char16_t* Name : Test.Accepted) Accepted |= String(Name) == Sample.Name;
      EXPECT_EQ(Call(Test.Function, Sample.Value), Accepted ? FCTrue : FCFalse)
          << StringToUtf8(Test.Function) << " of " << StringToUtf8(Sample.Name);
    }
}

TEST_F(PredicatePackageTest, EvenAndOddReadTheLowestBitOfTheInteger) {
  for (const char16_t* Even : {u"0", u"2", u"-2", u"-2147483648", u"2.9", u"-2.5", u"\"4\""}) {
    EXPECT_EQ(Eval(u"(evenp " + String(Even) + u")"), FCTrue) << StringToUtf8(Even);
    EXPECT_EQ(Eval(u"(oddp " + String(Even) + u")"), FCFalse) << StringToUtf8(Even);
  }
  for (const char16_t* Odd : {u"1", u"-1", u"2147483647", u"-3.5", u"1.9"}) {
    EXPECT_EQ(Eval(u"(oddp " + String(Odd) + u")"), FCTrue) << StringToUtf8(Odd);
    EXPECT_EQ(Eval(u"(evenp " + String(Odd) + u")"), FCFalse) << StringToUtf8(Odd);
  }
  EXPECT_EQ(Failure(u"(evenp abc)"), u"Not a integer type.  Value (abc) is a dtAtom type");
  EXPECT_EQ(Failure(u"(oddp (create$ 1))"), u"Not a integer type.  Value (1 ) is a dtList type");
}

TEST_F(PredicatePackageTest, TypeTestsDescribeTheirTypes) {
  IUserFunction Function;
  ASSERT_TRUE(Engine.ContainsUserFunction(u"lexemep", Function));
  EXPECT_EQ(Function->GetComment(),
            u"Returns TRUE if the argument is of the following type(s): Atom, String.  If the argument is any "
            u"other type, FALSE is returned");
  EXPECT_EQ(Function->GetMinArgumentCount(), 1);
  EXPECT_EQ(Function->GetMaxArgumentCount(), 1);
  ASSERT_TRUE(Engine.ContainsUserFunction(u"get-type", Function));
  EXPECT_EQ(Function->GetArgumentString(), u" <expression> ");
}

TEST_F(PredicatePackageTest, AnEngineWithoutThePackageHasNoneOfItsFunctions) {
  TFunctionPackages Packages = Engine.GetPackages();
  Packages.Exclude(pPredicate);
  Engine.SetPackages(Packages);
  IUserFunction Function;
  for (const char16_t* Name : {u"evenp", u"oddp", u"get-type", u"lexemep", u"numberp", u"floatp", u"fuzzyp",
                               u"integerp", u"stringp", u"symbolp", u"multifieldp", u"external-addressp",
                               u"objectp"})
    EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  EXPECT_TRUE(Engine.ContainsUserFunction(u"create$", Function));
  Packages.Include(pPredicate);
  Engine.SetPackages(Packages);
  EXPECT_EQ(Eval(u"(evenp 4)"), FCTrue);
}

}  // namespace
}  // namespace tavo
