#include "common/MekStringList.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

using TList = TStringList<int>;

// Records what its list looks like while it is being freed.
class TWatcher : public TObject {
 public:
  TWatcher(const TList& List, std::vector<int>& Seen) : FList(List), FSeen(Seen) {}
  ~TWatcher() override {
    FSeen.push_back(FList.Count());
    FSeen.push_back(FList.IndexOfObject(this));
  }

 private:
  const TList& FList;
  std::vector<int>& FSeen;
};

TList& SortedList(TList& List, TDuplicates Duplicates) {
  List.SetDuplicates(Duplicates);
  List.SetSorted(true);
  return List;
}

TEST(MekStringList, FindInAcceptModeLandsOnTheFirstEqual) {
  TList List;
  SortedList(List, dupAccept);
  for (const char16_t* S : {u"b", u"d", u"b", u"a", u"b", u"c", u"b"}) List.Add(S);
  EXPECT_EQ(List.GetText(), u"a\r\nb\r\nb\r\nb\r\nb\r\nc\r\nd\r\n");
  int Index = -1;
  EXPECT_TRUE(List.Find(u"B", Index));
  EXPECT_EQ(Index, 1);
  EXPECT_FALSE(List.Find(u"bb", Index));
  EXPECT_EQ(Index, 5);
  EXPECT_EQ(List.IndexOf(u"c"), 5);
}

TEST(MekStringList, SortedAddFollowsTheDuplicatesMode) {
  TList Ignore;
  SortedList(Ignore, dupIgnore);
  Ignore.AddObject(u"pump", nullptr, 1);
  Ignore.AddObject(u"fan", nullptr, 2);
  EXPECT_EQ(Ignore.AddObject(u"PUMP", nullptr, 3), 1);
  EXPECT_EQ(Ignore.Count(), 2);
  EXPECT_EQ(Ignore.GetData(1), 1);

  TList Error;
  SortedList(Error, dupError).Add(u"pump");
  EXPECT_EQ(FailureOf([&] { Error.Add(u"Pump"); }), u"String list does not allow duplicates");
  EXPECT_EQ(Error.Count(), 1);
  EXPECT_EQ(FailureOf([&] { Error.Insert(0, u"a"); }), u"Operation not allowed on sorted list");
  EXPECT_EQ(FailureOf([&] { Error.Put(0, u"a"); }), u"Operation not allowed on sorted list");

  TList Accept;
  SortedList(Accept, dupAccept);
  Accept.AddObject(u"pump", nullptr, 1);
  EXPECT_EQ(Accept.AddObject(u"pump", nullptr, 2), 0);
  EXPECT_EQ(Accept.GetData(0), 2);

  TList Unsorted;
  Unsorted.Add(u"b");
  EXPECT_EQ(Unsorted.Add(u"a"), 1);
  EXPECT_EQ(Unsorted.Add(u"b"), 2);
  EXPECT_EQ(Unsorted.IndexOf(u"B"), 0);
}

TEST(MekStringList, CaseSensitivityDecidesOrderAndEquality) {
  TList List;
  List.SetText(u"b\r\nB\r\na\r\nC\r\n");
  List.SetCaseSensitive(true);
  EXPECT_EQ(List.IndexOf(u"A"), -1);
  List.SetSorted(true);
  EXPECT_EQ(List.GetText(), u"B\r\nC\r\na\r\nb\r\n");
  List.SetCaseSensitive(false);
  EXPECT_EQ(List.IndexOf(u"A"), 0);
  EXPECT_EQ(List.Get(3), u"C");
}

TEST(MekStringList, SortsWithAnyComparison) {
  TList List;
  std::mt19937 Random(3);
  for (int I = 0; I < 500; ++I) List.AddObject(IntToStr(Random() % 200), nullptr, I);
  List.SetSorted(true);
  for (int I = 1; I < List.Count(); ++I) ASSERT_LE(CompareText(List.Get(I - 1), List.Get(I)), 0);

  TList Data;
  for (int I = 0; I < 100; ++I) Data.AddObject(u"x", nullptr, I);
  Data.CustomSort([](const TList& L, int A, int B) { return L.GetData(B) - L.GetData(A); });
  for (int I = 0; I < 100; ++I) EXPECT_EQ(Data.GetData(I), 99 - I);
  // A comparison that answers at random still ends with the same items.
  Data.CustomSort([&](const TList&, int, int) { return int(Random() % 3) - 1; });
  long Sum = 0;
  for (int I = 0; I < 100; ++I) Sum += Data.GetData(I);
  EXPECT_EQ(Sum, 4950);
}

TEST(MekStringList, ChecksIndicesAndKeepsObjectsAndData) {
  TList List;
  TObject Object;
  List.AddObject(u"a", &Object, 5);
  List.Insert(1, u"c");
  List.InsertObject(1, u"b", nullptr, 6);
  EXPECT_EQ(List.GetText(), u"a\r\nb\r\nc\r\n");
  EXPECT_EQ(FailureOf([&] { List.Get(3); }), u"List index out of bounds (3)");
  EXPECT_EQ(FailureOf([&] { List.Delete(-1); }), u"List index out of bounds (-1)");
  EXPECT_EQ(FailureOf([&] { List.Insert(4, u"x"); }), u"List index out of bounds (4)");

  TList Copy;
  Copy.Assign(&List);
  EXPECT_EQ(Copy.GetText(), List.GetText());
  EXPECT_EQ(Copy.GetObject(0), &Object);
  EXPECT_EQ(Copy.GetData(0), 5);
  TList Owning(true);
  EXPECT_NE(FailureOf([&] { Owning.Assign(&List); }), u"(no failure)");

  List.SetText(u"one\rtwo\n\r\nfour");
  EXPECT_EQ(List.GetText(), u"one\r\ntwo\r\n\r\nfour\r\n");
}

TEST(MekStringList, OwnedObjectsAreFreedAfterLeavingTheList) {
  std::vector<int> Seen;
  {
    TList List(true);
    for (const char16_t* S : {u"a", u"b", u"c", u"d"}) List.AddObject(S, new TWatcher(List, Seen));
    List.Delete(1);
    EXPECT_EQ(Seen, (std::vector<int>{3, -1}));
    List.Clear();
    EXPECT_EQ(Seen, (std::vector<int>{3, -1, 0, -1, 0, -1, 0, -1}));
    List.AddObject(u"e", new TWatcher(List, Seen));
  }
  EXPECT_EQ(Seen.size(), 10u);

  TList Borrowing;
  TWatcher Kept(Borrowing, Seen);
  Borrowing.AddObject(u"k", &Kept);
  Borrowing.Delete(0);
  EXPECT_EQ(Seen.size(), 10u);
}

TEST(MekStringList, UpdatesBracketTheChangeEvents) {
  TList List;
  String Log;
  List.OnChanging = [&](TObject*) { Log += u"<"; };
  List.OnChange = [&](TObject*) { Log += u">"; };
  List.Add(u"a");
  List.SetText(u"x\r\ny\r\nz");
  List.BeginUpdate();
  List.Delete(0);
  List.Clear();
  List.EndUpdate();
  List.Clear();
  EXPECT_EQ(Log, u"<><><>");
}

}  // namespace
}  // namespace tavo
