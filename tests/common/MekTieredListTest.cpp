#include "common/MekTieredList.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace tavo {
namespace {

class TNumbered : public TCountedObject {
 public:
  explicit TNumbered(int Number) : FNumber(Number) {}
  int FNumber;
};

std::vector<int> Numbers(const TTieredList<TNumbered>& List) {
  std::vector<int> Result;
  for (const auto& Item : List) Result.push_back(Item ? Item->FNumber : -1);
  return Result;
}

// Every operation, at the edges of blocks and anywhere between, against a
// plain vector: order, counts and the references held must agree after
// each step, with the list growing past several blocks and shrinking back.
TEST(TieredListTest, AgreesWithAPlainVectorThroughRandomEditsAcrossBlocks) {
  TTieredList<TNumbered> List;
  std::vector<TRef<TNumbered>> Model;
  std::mt19937 Random(7);
  int Next = 0;
  for (int Step = 0; Step < 13500; ++Step) {
    const int Count = int(Model.size());
    // Grow for a while, then mostly shrink, then grow again, to end full.
    const int Phase = (Step / 3000) % 2;
    const unsigned Choice = Random() % 10;
    if (Count == 0 || Choice < (Phase == 0 ? 7u : 2u)) {
      TRef<TNumbered> Item = Make<TNumbered>(Next++);
      if (Choice % 2 == 0) {
        EXPECT_EQ(List.Add(Item), Count);
        Model.push_back(Item);
      } else {
        const int Index = int(Random() % unsigned(Count + 1));
        List.Insert(Index, Item);
        Model.insert(Model.begin() + Index, Item);
      }
    } else {
      // Favour the block edges, where the rings turn.
      int Index = int(Random() % unsigned(Count));
      if (Choice == 9) Index = std::min(Count - 1, int(Random() % 4) * 256 + int(Random() % 2) * 255);
      List.Delete(Index);
      Model.erase(Model.begin() + Index);
    }
    ASSERT_EQ(List.Count(), int(Model.size()));
    if (Step % 97 == 0 || List.Count() < 600) {
      std::vector<int> Expected;
      for (const auto& Item : Model) Expected.push_back(Item->FNumber);
      ASSERT_EQ(Numbers(List), Expected) << "after step " << Step;
    }
  }
  // The list holds one reference to each item, and lets go of it when the
  // item leaves.
  for (int I = 0; I < List.Count(); ++I) {
    EXPECT_EQ(List.Get(I), Model[size_t(I)]);
    EXPECT_EQ(Model[size_t(I)]->RefCount(), 2);
  }
  ASSERT_GT(List.Count(), 300);
  TRef<TNumbered> Kept = Model.front();
  List.Clear();
  Model.clear();
  EXPECT_EQ(Kept->RefCount(), 1);
  EXPECT_EQ(List.Count(), 0);
  EXPECT_TRUE(List.begin() == List.end());
}

TEST(TieredListTest, FindsRemovesAndRefusesIndicesOutOfRange) {
  TTieredList<TNumbered> List;
  std::vector<TRef<TNumbered>> Items;
  for (int I = 0; I < 600; ++I) {
    Items.push_back(Make<TNumbered>(I));
    List.Add(Items.back());
  }
  EXPECT_EQ(List.IndexOf(Items[300].Get()), 300);
  EXPECT_EQ(List.Remove(Items[300].Get()), 300);
  EXPECT_EQ(List.IndexOf(Items[300].Get()), -1);
  EXPECT_EQ(List.Remove(Items[300].Get()), -1);
  EXPECT_EQ(List.Get(300), Items[301]);
  EXPECT_EQ(List.Count(), 599);
  EXPECT_THROW(List.Get(599), EMekException);
  EXPECT_THROW(List.Get(-1), EMekException);
  EXPECT_THROW(List.Delete(599), EMekException);
  EXPECT_THROW(List.Insert(600, Items[0]), EMekException);
  List.Put(0, Items[300]);
  EXPECT_EQ(List.Get(0), Items[300]);
  EXPECT_EQ(Items[0]->RefCount(), 1);
  // Emptied to nothing and filled again, across a block's edge.
  while (List.Count() > 0) List.Delete(List.Count() - 1);
  for (int I = 0; I < 257; ++I) List.Insert(0, Items[size_t(I)]);
  EXPECT_EQ(List.Get(0), Items[256]);
  EXPECT_EQ(List.Get(256), Items[0]);
}

}  // namespace
}  // namespace tavo
