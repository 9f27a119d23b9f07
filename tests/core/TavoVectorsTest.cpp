#include "core/TavoVectors.h"

#include <gtest/gtest.h>

namespace tavo {
namespace {

ITavoValue Int(int32_t V) { return Make<TTavoValue>(V, dtInteger); }
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

}  // namespace
}  // namespace tavo
