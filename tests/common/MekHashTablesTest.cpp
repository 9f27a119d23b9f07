#include "common/MekHashTables.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "tests/TestSupport.h"

namespace tavo {
namespace {

// Key K has the internal hash K / 100, so its home bucket is chosen by the
// test: 1400 and 1401 share bucket 14 of 16. Keys from -199 to -100 hash to
// the last bucket whatever the length, -299 to -200 to the one before.
struct TPlacedComparer {
  static bool Equals(int A, int B) { return A == B; }
  static int32_t GetHashCode(int Key) { return Key / 100 - 1; }
};

using TPlacedTable = TMekDictionary<int, int, TPlacedComparer>;

std::vector<String> KeysInOrder(const TMekStringHashTable<int>& Table) {
  std::vector<String> Keys;
  for (const auto& Item : Table) Keys.push_back(Item.Key);
  return Keys;
}

class TCountedObject : public TObject {
 public:
  explicit TCountedObject(int& Deaths) : FDeaths(Deaths) {}
  ~TCountedObject() override { ++FDeaths; }

 private:
  int& FDeaths;
};

TEST(MekHashTables, GrowsAtThreeQuartersAndKeepsRoomOnSetCapacity) {
  TMekDictionary<int, int> Table;
  EXPECT_EQ(Table.GetCapacity(), 0);
  const std::pair<int, int> Steps[] = {{1, 4}, {3, 4}, {4, 8}, {6, 8}, {7, 16}, {12, 16}, {13, 32}};
  int Added = 0;
  for (const auto& [Count, Capacity] : Steps) {
    for (; Added < Count; ++Added) Table.Add(Added, Added);
    EXPECT_EQ(Table.GetCapacity(), Capacity) << Count;
  }
  EXPECT_EQ(FailureOf([&] { Table.SetCapacity(12); }), u"Argument out of range");
  Table.SetCapacity(13);
  EXPECT_EQ(Table.GetCapacity(), 32);  // 16 would leave 13 above its threshold of 12

  TMekDictionary<int, int> Small(5);
  EXPECT_EQ(Small.GetCapacity(), 8);
  Small.SetCapacity(0);
  EXPECT_EQ(Small.GetCapacity(), 0);
  EXPECT_FALSE(Small.ContainsKey(1));
}

TEST(MekHashTables, RemovalInsideAProbeRunKeepsEveryKeyReachable) {
  // One run from bucket 14 wrapping to 5: homes 14, 15, 15, 14, 0, 1, 0, 3.
  const std::vector<int> Keys = {1400, 1500, 1501, 1401, 0, 100, 1, 300};
  for (const int Gone : Keys) {
    TPlacedTable Table(16);
    for (const int K : Keys) Table.Add(K, K + 1);
    ASSERT_EQ(Table.GetCapacity(), 16);
    EXPECT_TRUE(Table.Remove(Gone));
    EXPECT_FALSE(Table.ContainsKey(Gone));
    for (const int K : Keys) {
      if (K == Gone) continue;
      EXPECT_EQ(Table.GetItem(K), K + 1) << "lost " << K << " after removing " << Gone;
    }
    EXPECT_FALSE(Table.Remove(Gone));
  }

  // Random changes on keys clustered around the end of the array, checked
  // against a map.
  TPlacedTable Table;
  std::map<int, int> Model;
  std::mt19937 Random(7);
  for (int Step = 0; Step < 4000; ++Step) {
    const int Key = int(Random() % 6) * 100 + int(Random() % 12) - 300;
    if (Random() % 3 == 0) {
      EXPECT_EQ(Table.Remove(Key), Model.erase(Key) == 1);
    } else {
      Table.AddOrSetValue(Key, Step);
      Model[Key] = Step;
    }
    ASSERT_EQ(Table.Count(), int(Model.size()));
  }
  for (const auto& [Key, Value] : Model) EXPECT_EQ(Table.GetItem(Key), Value);
  int Iterated = 0;
  for (const auto& Item : Table) Iterated += Model.count(Item.Key) ? 1 : 0;
  EXPECT_EQ(Iterated, Table.Count());
}

TEST(MekHashTables, OneProbeLookupsAgreeWithAMapThroughGrowthAndRemoval) {
  // Keys clustered into long runs; entries are found, changed and removed
  // by position, and added by FindOrAdd from an empty table up.
  TPlacedTable Table;
  std::map<int, int> Model;
  std::mt19937 Random(11);
  for (int Step = 0; Step < 4000; ++Step) {
    const int Key = int(Random() % 6) * 100 + int(Random() % 12) - 300;
    const int32_t At = Table.Locate(Key);
    ASSERT_EQ(At >= 0, Model.count(Key) == 1) << Step;
    if (At >= 0) {
      EXPECT_EQ(Table.ValueAt(At), Model[Key]);
    }
    if (Random() % 3 == 0) {
      if (At >= 0) Table.RemoveLocated(At);
      Model.erase(Key);
    } else {
      bool Added;
      int& Value = Table.FindOrAdd(Key, Added);
      EXPECT_EQ(Added, At < 0);
      if (Added) {
        EXPECT_EQ(Value, 0);
      }
      Value = Step;
      Model[Key] = Step;
    }
    ASSERT_EQ(Table.Count(), int(Model.size()));
    ASSERT_LE(Table.Count(), Table.GetGrowThreshold());
  }
  for (const auto& [Key, Value] : Model) EXPECT_EQ(Table.GetItem(Key), Value);
}

TEST(MekHashTables, FailuresAndOutValues) {
  TMekStringHashTable<int> Table;
  Table.Add(u"valve", 1);
  EXPECT_EQ(FailureOf([&] { Table.Add(u"valve", 2); }), u"Duplicate item");
  EXPECT_EQ(Table.GetItem(u"valve"), 1);
  EXPECT_EQ(Table.Count(), 1);
  EXPECT_EQ(FailureOf([&] { Table.GetItem(u"pump"); }), u"Item not found");
  EXPECT_EQ(FailureOf([&] { Table.SetItem(u"pump", 3); }), u"Item not found");

  int Value = 9;
  EXPECT_FALSE(Table.TryGetValue(u"pump", Value));
  EXPECT_EQ(Value, 0);
  Table.Put(u"valve", 5, Value);
  EXPECT_EQ(Value, 1);
  Table.Put(u"pump", 6, Value);
  EXPECT_EQ(Value, 0);
  EXPECT_EQ(Table.GetItem(u"pump"), 6);

  TMekStringHashTable<int> Empty;
  EXPECT_EQ(FailureOf([&] { Empty.Remove(u"x"); }), u"Table is empty");
  EXPECT_EQ(FailureOf([&] { Table.GetKeyByIndex(2); }), u"List index out of bounds (2)");
  EXPECT_EQ(FailureOf([&] { Table.GetKeyByIndex(-1); }), u"List index out of bounds (-1)");
}

TEST(MekHashTables, LooksUpWithoutAString) {
  TMekStringHashTable<int> Table;
  Table.Add(u"need-valve-12", 12);
  const char16_t Buffer[] = u"need-valve-123";
  EXPECT_EQ(*Table.Find(StringView(Buffer, 13)), 12);
  EXPECT_EQ(Table.Find(StringView(Buffer, 14)), nullptr);
  const char16_t* Pointer = Buffer;
  EXPECT_FALSE(Table.ContainsKey(Pointer));
  EXPECT_TRUE(Table.ContainsKey(u"need-valve-12"));
  EXPECT_FALSE(Table.ContainsKey(u"NEED-valve-12"));

  TMekStringHashTable<int, TMekTextComparer> Text;
  const String Long(100, u'a');
  Text.Add(u"Temp-\u00E9t\u00E9", 1);
  Text.Add(Long, 2);
  EXPECT_EQ(Text.GetItem(u"TEMP-\u00C9T\u00C9"), 1);
  EXPECT_EQ(Text.GetItem(String(100, u'A')), 2);
  EXPECT_EQ(FailureOf([&] { Text.Add(u"temp-\u00C9t\u00E9", 3); }), u"Duplicate item");
  EXPECT_EQ(TMekTextComparer::GetHashCode(u"abc"), CalculateHash(u"ABC"));
}

struct TRecordingTable : TMekDictionary<String, int> {
  std::vector<String> Log;
  void KeyNotify(const String& Key, TCollectionNotification Action) override {
    Log.push_back(Key + u":" + IntToStr(Action) + u":" + IntToStr(Count()));
  }
  void ValueNotify(const int& Value, TCollectionNotification Action) override {
    Log.push_back(IntToStr(Value) + u":" + IntToStr(Action));
  }
};

TEST(MekHashTables, NotifiesKeysAndValuesOnceTheTableIsConsistent) {
  TRecordingTable Table;
  Table.Add(u"a", 1);
  Table.SetItem(u"a", 2);
  Table.Add(u"b", 3);
  int Value;
  Table.TryExtract(u"b", Value);
  Table.Remove(u"a");
  Table.Add(u"c", 4);
  Table.Clear();
  const std::vector<String> Expected = {u"a:0:1", u"1:0",   u"1:1",   u"2:0",   u"b:0:2",
                                        u"3:0",   u"b:2:1", u"3:2",   u"a:1:0", u"2:1",
                                        u"c:0:1", u"4:0",   u"c:1:0", u"4:1"};
  EXPECT_EQ(Table.Log, Expected);
  EXPECT_EQ(Table.GetCapacity(), 0);
}

TEST(MekHashTables, OnChangeFiresPerChangeOutsideUpdatesAndOncePerBracket) {
  TMekStringHashTable<int> Table;
  int Changes = 0;
  Table.OnChange = [&](TObject* Sender) {
    EXPECT_EQ(Sender, &Table);
    ++Changes;
  };
  Table.Add(u"a", 1);
  Table.AddOrSetValue(u"a", 2);
  Table.AddOrSetValue(u"b", 3);
  Table.Remove(u"zz");
  EXPECT_EQ(Changes, 3);
  Table.Clear();
  EXPECT_EQ(Changes, 4);
  Table.Clear();
  EXPECT_EQ(Changes, 4);

  Table.BeginUpdate();
  Table.Add(u"x", 1);
  Table.BeginUpdate();
  Table.Add(u"y", 1);
  Table.EndUpdate();
  Table.Remove(u"x");
  EXPECT_EQ(Changes, 4);
  Table.EndUpdate();
  EXPECT_EQ(Changes, 5);
  Table.BeginUpdate();
  Table.EndUpdate();
  EXPECT_EQ(Changes, 5);
  EXPECT_EQ(Table.GetUpdateCount(), 0);
}

// Keys enter upper-cased whichever public operation adds them.
struct TUpperTable : TMekStringHashTable<int> {
  void DoAdd(const String& Key, const int& Value) override {
    TMekStringHashTable<int>::DoAdd(UpperCase(Key), Value);
  }
};

TEST(MekHashTables, PublicChangesGoThroughTheHooks) {
  TUpperTable Table;
  Table.Add(u"a", 1);
  Table.AddOrSetValue(u"b", 2);
  TStringList<int> List;
  List.SetText(u"c\r\n");
  TUpperTable Copy;
  Copy.Assign(&List);
  EXPECT_TRUE(Table.ContainsKey(u"A") && Table.ContainsKey(u"B") && !Table.ContainsKey(u"a"));
  EXPECT_TRUE(Copy.ContainsKey(u"C"));
}

TEST(MekHashTables, IndexAccessFollowsIterationOrderInAnyWalk) {
  TMekStringHashTable<int> Table;
  for (int I = 0; I < 20; ++I) Table.Add(u"temperature-" + IntToStr(I), I);
  std::vector<String> Order = KeysInOrder(Table);
  for (int I = 0; I < 20; ++I) EXPECT_EQ(Table.GetKeyByIndex(I), Order[size_t(I)]);
  for (int I = 19; I >= 0; --I) EXPECT_EQ(Table.GetKeyByIndex(I), Order[size_t(I)]);
  for (const int I : {7, 7, 0, 19, 18, 3, 4, 12, 11, 1})
    EXPECT_EQ(Table.GetKeyByIndex(I), Order[size_t(I)]);
  EXPECT_EQ(Table.GetItemByIndex(1), Table.GetItem(Order[1]));

  // With the cursor at 2, the next step must see the table as it is now.
  Table.GetKeyByIndex(2);
  Table.Remove(Order[0]);
  Order = KeysInOrder(Table);
  EXPECT_EQ(Table.GetKeyByIndex(3), Order[3]);
  for (int I = 100; I < 140; ++I) Table.Add(IntToStr(I), I);  // grows and moves entries
  Order = KeysInOrder(Table);
  EXPECT_EQ(Table.GetKeyByIndex(4), Order[4]);
  EXPECT_EQ(Table.GetKeyByIndex(3), Order[3]);
}

TEST(MekHashTables, OwnedObjectsAreFreedUnlessExtracted) {
  int Deaths = 0;
  {
    TMekStringObjectHashTable<TCountedObject> Table;
    for (const char16_t* Key : {u"a", u"b", u"c", u"d"}) Table.Add(Key, new TCountedObject(Deaths));
    Table.Remove(u"a");
    EXPECT_EQ(Deaths, 1);
    TCountedObject* Kept = Table.Extract(u"b");
    EXPECT_EQ(Deaths, 1);
    EXPECT_EQ(Table.Extract(u"b"), nullptr);
    delete Kept;
    Table.SetItem(u"c", Table.GetItem(u"c"));
    EXPECT_EQ(Deaths, 2);
    Table.SetItem(u"c", new TCountedObject(Deaths));
    EXPECT_EQ(Deaths, 3);
    Table.Clear();
    EXPECT_EQ(Deaths, 5);
    Table.Add(u"e", new TCountedObject(Deaths));

    TMekStringObjectHashTable<TCountedObject> Other;
    EXPECT_NE(FailureOf([&] { Other.Assign(&Table); }), u"(no failure)");
  }
  EXPECT_EQ(Deaths, 6);

  TCountedObject Stack(Deaths);
  TMekStringObjectHashTable<TCountedObject> Borrowing(false);
  Borrowing.Add(u"s", &Stack);
  Borrowing.Clear();
  EXPECT_EQ(Deaths, 6);
}

TEST(MekHashTables, AssignsBetweenTablesAndStringLists) {
  TStringList<int> List;
  List.SetText(u"alpha\r\nbeta\r\nalpha\r\n");
  TMekStringHashTable<int> Table;
  Table.Add(u"old", 1);
  int Changes = 0;
  Table.OnChange = [&](TObject*) { ++Changes; };
  Table.Assign(&List);
  EXPECT_EQ(Changes, 1);
  EXPECT_EQ(Table.Count(), 2);
  EXPECT_TRUE(Table.ContainsKey(u"alpha") && Table.ContainsKey(u"beta"));

  Table.SetItem(u"beta", 7);
  TMekStringHashTable<int> Copy;
  Copy.Assign(&Table);
  EXPECT_EQ(KeysInOrder(Copy), KeysInOrder(Table));
  EXPECT_EQ(Copy.GetItem(u"beta"), 7);

  TStringList<int> Keys;
  Keys.Add(u"stale");
  Keys.Assign(&Copy);
  Keys.SetSorted(true);
  EXPECT_EQ(Keys.GetText(), u"alpha\r\nbeta\r\n");
  EXPECT_EQ(FailureOf([&] { Table.Assign(nullptr); }),
            u"Cannot assign a nil to a TMekStringHashTable");
}

}  // namespace
}  // namespace tavo
