#include "core/TavoVectors.h"

#include <gtest/gtest.h>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

IValueVector Vector(std::initializer_list<ITavoValue> Items) {
  IValueVector Result = Make<TValueVector>();
  for (const ITavoValue& Item : Items) Result->Add(Item);
  return Result;
}

TEST(TavoVectorsTest, TextPutsABlankBehindEveryItem) {
  EXPECT_EQ(Make<TValueVector>()->ToString(), u"");
  EXPECT_EQ(Vector({Int(1), Int(2)})->ToString(), u"1 2 ");
}

TEST(TavoVectorsTest, EqualityCountsOrderButHashDoesNot) {
  IValueVector A = Vector({Int(1), Int(2)});
  IValueVector B = Vector({Int(2), Int(1)});
  IValueVector C = Vector({Int(1), Int(2)});
  EXPECT_TRUE(A->Equals(C));
  EXPECT_FALSE(A->Equals(B));
  EXPECT_EQ(A->GetHashCode(), B->GetHashCode());
  EXPECT_FALSE(A->Equals(Vector({Int(1)})));
  EXPECT_FALSE(A->Equals(Vector({Int(1), Make<TTavoValue>(2.0)}))) << "1 and 1.0 differ";
  EXPECT_FALSE(A->Equals(static_cast<const TCloneableObject*>(Int(1).Get())));
  IValueVector WithNull = Vector({Int(1), nullptr});
  EXPECT_TRUE(WithNull->Equals(Vector({Int(1), nullptr})));
  EXPECT_FALSE(WithNull->Equals(A));
  EXPECT_FALSE(A->Equals(WithNull));
}

TEST(TavoVectorsTest, CopiesCloneItemsAndRefuseThePersistentRoad) {
  ITavoValue Item = Int(5);
  IValueVector Source = Vector({Item});
  Source->SetTag(9);
  IValueVector Copy = Source->CloneVector();
  EXPECT_TRUE(Copy->Equals(Source));
  EXPECT_NE(Copy->Get(0).Get(), Item.Get());
  EXPECT_EQ(Copy->GetTag(), 9);
  try {
    Copy->Assign(static_cast<const TPersistent*>(Source.Get()));
    FAIL();
  } catch (const EMekException& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a TValueVector to a TValueVector");
  }
  // Another kind of object is refused as a failure of the engine, which a
  // host that catches only those still catches.
  EXPECT_THROW(Copy->Assign(ICloneableObject(Int(1))), ETavoException);
  EXPECT_THROW(Make<TSingletonsVector>()->Assign(ICloneableObject(Source)), ETavoException);
  EXPECT_THROW(Int(1)->Assign(ICloneableObject(Source)), ETavoException);
}

TEST(TavoVectorsTest, ListOperationsWorkByReferenceAndCheckIndices) {
  ITavoValue One = Int(1);
  ITavoValue OtherOne = Int(1);
  IValueVector V = Vector({One, Int(2)});
  EXPECT_EQ(V->IndexOf(OtherOne), -1) << "search is by reference";
  EXPECT_EQ(V->IndexOf(One), 0);
  V->Insert(1, OtherOne);
  EXPECT_EQ(V->ToString(), u"1 1 2 ");
  EXPECT_EQ(V->Remove(One), 0);
  EXPECT_EQ(V->First(), OtherOne);
  V->Append(V);
  EXPECT_EQ(V->ToString(), u"1 2 1 2 ");
  EXPECT_THROW(V->Get(4), EMekException);
  EXPECT_THROW(V->Delete(-1), EMekException);
  EXPECT_THROW(Make<TValueVector>()->Last(), EMekException);
}

// A parser that prints singletons its own way.
struct TBracketPrinter : ISingletonsParser {
  ISingletonsVector ParseSingletons(const String&) override { return nullptr; }
  String PrettyPrint(const ISingletonsVector& Singletons) override {
    return u"<" + IntToStr(Singletons->GetCount()) + u" points>";
  }
};

TEST(TavoVectorsTest, SingletonsKeepTheirSidesAligned) {
  ISingletonsVector S = Make<TSingletonsVector>();
  S->Add(Int(0), Int(1));
  S->Add(Int(1), Int(0));
  EXPECT_EQ(S->ToString(), u"(0 1) (1 0) ");
  S->Insert(1, Int(5), Int(6));
  S->Delete(0);
  ASSERT_EQ(S->GetCount(), 2);
  EXPECT_EQ(S->ToString(), u"(5 6) (1 0) ");
  S->SetXValues(0, Int(9));
  EXPECT_EQ(S->ToString(), u"(9 6) (1 0) ") << "one side only";
  EXPECT_THROW(S->GetYValues(2), EMekException);
  ITavoValue Shared = S->GetXValues(1);
  EXPECT_EQ(S->IndexOfX(Shared), 1);
  EXPECT_EQ(S->IndexOfY(Shared), -1);
}

TEST(TavoVectorsTest, SingletonsCompareAndCopyPairwise) {
  TBracketPrinter Printer, OtherPrinter;
  ISingletonsVector A = Make<TSingletonsVector>(&Printer);
  A->Add(Int(0), Make<TTavoValue>(0.5));
  A->SetTag(4);
  EXPECT_EQ(A->ToString(), u"<1 points>");
  ISingletonsVector B = Make<TSingletonsVector>(&OtherPrinter);
  B->Assign(static_cast<const TPersistent*>(A.Get()));
  EXPECT_TRUE(B->Equals(A));
  EXPECT_EQ(B->GetParser(), &OtherPrinter) << "the persistent road keeps the own parser";
  EXPECT_EQ(B->GetTag(), 4);
  EXPECT_NE(B->GetXValues(0), A->GetXValues(0));
  B->Assign(ICloneableObject(A));
  EXPECT_EQ(B->GetParser(), &Printer) << "the interface road takes the source's parser";
  EXPECT_EQ(B->GetHashCode(), A->GetHashCode());
  ISingletonsVector C = RefCast<TSingletonsVector>(A->Clone());
  EXPECT_EQ(C->GetParser(), &Printer);
  C->SetYValues(0, Make<TTavoValue>(0.25));
  EXPECT_FALSE(C->Equals(A));
  // A singletons value never equals another, as it compares with the value.
  ITavoValue VA = Make<TTavoValue>(A);
  EXPECT_FALSE(VA->Equals(Make<TTavoValue>(A)));
  C->Append(A);
  EXPECT_EQ(C->GetCount(), 2);
  EXPECT_EQ(C->GetXValues(1), A->GetXValues(0)) << "appended pairs are shared";
}

TEST(TavoVectorsTest, ValueTableCopiesShareTheValues) {
  TValueHashTable Source;
  ITavoValue Counter = Int(1);
  Source.Add(u"counter", Counter);
  Source.Add(u"name", Make<TTavoValue>(String(u"x y"), dtString));
  TValueHashTable Copy;
  Copy.Add(u"stale", Int(0));
  Copy.Assign(&Source);
  EXPECT_FALSE(Copy.ContainsKey(u"stale"));
  ASSERT_EQ(Copy.Count(), 2);
  Counter->SetAsInteger(5);
  EXPECT_EQ(Copy.GetItem(u"counter")->GetAsInteger(), 5) << "a change through the source shows";
  String Text = Copy.ToString();
  EXPECT_NE(Text.find(u"counter = 5\r\n"), String::npos);
  EXPECT_NE(Text.find(u"name = \"x y\"\r\n"), String::npos);
  EXPECT_EQ(Text.size(), String(u"counter = 5\r\nname = \"x y\"\r\n").size());
}

}  // namespace
}  // namespace tavo
