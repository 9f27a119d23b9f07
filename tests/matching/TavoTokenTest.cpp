#include "matching/TavoToken.h"

#include <gtest/gtest.h>

#include <unordered_map>
#include <vector>

#include "knowledge/TavoFactTemplate.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

struct TTokenTest : testing::Test {
  TTokenTest() {
    Template = Make<TFactTemplate>(nullptr, u"item");
    Template->AddSlot(u"colour", FCNil);
    Template->AddMultiSlot(u"tags", FCNilList->CloneValue());
  }
  IFact NewFact(int Id, const char16_t* Colour, std::initializer_list<ITavoValue> Tags = {}) {
    IFact Fact = Template->NewFact();
    Fact->SetID(Id);
    Fact->SetValue(u"colour", Atom(Colour));
    Fact->SetValue(u"tags", List(Tags));
    return Fact;
  }
  IFactTemplate Template;
};

TEST_F(TTokenTest, SortCodesChainFactIdsByEightsAndWrap) {
  IReteToken One = Make<TTavoToken>(taAdd, NewFact(3, u"red"));
  EXPECT_EQ(One->GetSortCode(), 3);
  IReteToken Two = Make<TTavoToken>(One, NewFact(5, u"blue"));
  EXPECT_EQ(Two->GetSortCode(), 29);
  EXPECT_EQ(Two->GetTag(), taAdd);
  EXPECT_EQ(Two->GetCount(), 2);
  // A fact id of 0 still shifts; no fact at all shifts alone.
  IReteToken Three = Make<TTavoToken>(Two, NewFact(0, u"green"));
  EXPECT_EQ(Three->GetSortCode(), 232);
  IReteToken Bare = Make<TTavoToken>(Two, IFact());
  EXPECT_EQ(Bare->GetSortCode(), 232);
  IReteToken Big = Make<TTavoToken>(taAdd, NewFact(0x7fffffff, u"red"));
  EXPECT_EQ(Make<TTavoToken>(Big, NewFact(1, u"red"))->GetSortCode(), int32_t(uint32_t(0x7fffffff) * 8u + 1u));
  EXPECT_EQ(Three->GetFacts(0)->GetID(), 3);
  EXPECT_EQ(Three->GetFacts(1)->GetID(), 5);
  EXPECT_EQ(Three->GetFacts(2)->GetID(), 0);
  EXPECT_EQ(One->GetFacts(0)->GetID(), 3);
  EXPECT_EQ(Three->GetToFactsString(), u"f-3, f-5, f-0");
}

TEST_F(TTokenTest, EqualityIgnoresTagsAndNegatedCountsButNotStrengthOrParents) {
  IFact A = NewFact(1, u"red"), B = NewFact(2, u"blue"), C = NewFact(9, u"blue");
  IReteToken Added = Make<TTavoToken>(Make<TTavoToken>(taAdd, A), B);
  IReteToken Removed = Make<TTavoToken>(Make<TTavoToken>(taRemove, A), B);
  Removed->SetNegatedCount(4);
  EXPECT_TRUE(Added->Equals(Removed.Get()));
  IReteToken Weaker = Make<TTavoToken>(Added);
  Weaker->SetStrength(0.5f);
  EXPECT_FALSE(Added->Equals(Weaker.Get()));
  // Same newest fact and sort code, another parent chain.
  IFact Other = NewFact(1, u"green");
  IReteToken OtherParent = Make<TTavoToken>(Make<TTavoToken>(taAdd, Other), B);
  EXPECT_TRUE(Added->Equals(OtherParent.Get()));
  IReteToken Different = Make<TTavoToken>(Make<TTavoToken>(taAdd, C), B);
  EXPECT_FALSE(Added->Equals(Different.Get()));
  IReteToken Copy = Make<TTavoToken>(Removed);
  EXPECT_EQ(Copy->GetNegatedCount(), 0);
  EXPECT_EQ(Copy->GetTag(), taRemove);
}

TEST_F(TTokenTest, SettersClampAndATokenWithoutAFactOnlyClears) {
  IReteToken Parent = Make<TTavoToken>(taAdd, NewFact(1, u"red"));
  IReteToken Bare = Make<TTavoToken>(Parent, IFact());
  EXPECT_EQ(Bare->GetTag(), taAdd);
  EXPECT_EQ(FailureOf([&] { Bare->SetTag(taRemove); }), u"Invalid Token Action");
  Bare->SetTag(taClear);
  Parent->SetNegatedCount(-3);
  EXPECT_EQ(Parent->GetNegatedCount(), 0);
  Parent->SetStrength(-1);
  EXPECT_EQ(Parent->GetStrength(), 0.0f);
  Parent->SetStrength(7);
  EXPECT_EQ(Parent->GetStrength(), 7.0f);
  EXPECT_EQ(Make<TTavoToken>()->GetStrength(), 1.0f);
}

TEST_F(TTokenTest, TreesRefuseDuplicatesAndTrackTheirBuckets) {
  TTavoTokenTree Tree(7, 0, -1, String(), true);
  EXPECT_FALSE(Tree.GetEmpty());
  EXPECT_EQ(Tree.GetLowIndex(), 8);
  IReteToken Token = Make<TTavoToken>(taAdd, NewFact(10, u"red"));
  EXPECT_TRUE(Tree.Add(Token));
  EXPECT_FALSE(Tree.Add(Make<TTavoToken>(Token)));
  EXPECT_EQ(Tree.GetLowIndex(), 3);
  EXPECT_EQ(Tree.GetHighIndex(), 3);
  EXPECT_EQ(Tree.GetTokens(10)->size(), 1u);
  EXPECT_EQ(Tree.GetTokens(4), nullptr);
  EXPECT_FALSE(Tree.Remove(Make<TTavoToken>(taRemove, NewFact(11, u"red"))));
  EXPECT_TRUE(Tree.Remove(Make<TTavoToken>(taRemove, NewFact(10, u"blue"))));
  EXPECT_EQ(Tree.GetCount(), -1);
  // Removal narrows nothing and leaves the tree unflagged.
  EXPECT_EQ(Tree.GetHighIndex(), 3);
  EXPECT_FALSE(Tree.GetEmpty());
  Tree.Clear();
  EXPECT_TRUE(Tree.GetEmpty());
  EXPECT_EQ(Tree.GetHighIndex(), -1);
  EXPECT_EQ(Tree.GetLowIndex(), 8);
  Tree.SetAllowNilBucket(false);
  EXPECT_NE(Tree.GetTokens(-4), nullptr);
}

TEST_F(TTokenTest, KeyedTreesFindTokensOfOneKeyAtAnyCountInTheOrderTheyCame) {
  // One colour for all, then one of another: the chain of "red" outgrows
  // its walk and the tree turns to its index half way.
  TTavoTokenTree Tree(101, 0, -1, u"colour", false);
  std::vector<IReteToken> Reds;
  for (int Id = 1; Id <= 30; ++Id) {
    Reds.push_back(Make<TTavoToken>(taAdd, NewFact(Id, u"red")));
    ASSERT_TRUE(Tree.Add(Reds.back()));
    // Each one held is refused again, before and after the change.
    EXPECT_FALSE(Tree.Add(Make<TTavoToken>(taAdd, NewFact(Id, u"red"))));
  }
  ASSERT_TRUE(Tree.Add(Make<TTavoToken>(taAdd, NewFact(99, u"blue"))));
  const int32_t Red = Atom(u"red")->GetHashCode();
  // Every third goes, by a token that only equals it.
  for (int Id = 3; Id <= 30; Id += 3) {
    IReteToken Gone = Tree.Take(Make<TTavoToken>(taRemove, NewFact(Id, u"red")));
    ASSERT_TRUE(Gone);
    EXPECT_EQ(Gone.Get(), Reds[size_t(Id - 1)].Get());
  }
  EXPECT_FALSE(Tree.Remove(Make<TTavoToken>(taRemove, NewFact(3, u"red"))));
  std::vector<int> Order;
  Tree.ForEachOfKey(Red, 0, [&](const TTavoTokenTree::TEntry* Entry) {
    Order.push_back(Entry->Token->GetFacts(0)->GetID());
    return true;
  });
  std::vector<int> Expected;
  for (int Id = 1; Id <= 30; ++Id)
    if (Id % 3 != 0) Expected.push_back(Id);
  EXPECT_EQ(Order, Expected);
  // The bucket holds the same tokens; the other colour has a bucket of its own.
  int InBucket = 0;
  for (auto* Entry = Tree.GetTokens(Red)->First; Entry; Entry = Entry->Next) InBucket += Entry->Key == Red;
  EXPECT_EQ(InBucket, 20);
  EXPECT_TRUE(Tree.Add(Make<TTavoToken>(taAdd, NewFact(3, u"red"))));
}

TEST_F(TTokenTest, TakingTheEndsAndMiddlesOfChainsKeepsEveryOtherTokenFindable) {
  // A short chain stays unindexed; a long one turns to the index. In each,
  // the first, the last and a middle token go, then the rest in reverse.
  for (int Count : {5, 20}) {
    TTavoTokenTree Tree(101, 1, -1, u"colour", false);
    IReteToken Parent = Make<TTavoToken>(taAdd, NewFact(1000, u"blue"));
    std::vector<IReteToken> Held;
    for (int Id = 1; Id <= Count; ++Id) {
      Held.push_back(Make<TTavoToken>(Parent, NewFact(Id, u"red")));
      ASSERT_TRUE(Tree.Add(Held.back()));
    }
    const int32_t Red = Atom(u"red")->GetHashCode();
    auto Ids = [&] {
      std::vector<int> Result;
      Tree.ForEachOfKey(Red, 0, [&](const TTavoTokenTree::TEntry* Entry) {
        Result.push_back(Entry->Token->GetFacts(1)->GetID());
        return true;
      });
      return Result;
    };
    auto TakeId = [&](int Id) {
      IReteToken Removed = Make<TTavoToken>(taRemove, Parent->GetFact());
      return Tree.Take(Make<TTavoToken>(Removed, Held[size_t(Id - 1)]->GetFact()));
    };
    EXPECT_EQ(TakeId(1).Get(), Held[0].Get());
    EXPECT_EQ(TakeId(Count).Get(), Held[size_t(Count - 1)].Get());
    EXPECT_EQ(TakeId(3).Get(), Held[2].Get());
    EXPECT_FALSE(TakeId(3));
    std::vector<int> Expected;
    for (int Id = 2; Id < Count; ++Id)
      if (Id != 3) Expected.push_back(Id);
    EXPECT_EQ(Ids(), Expected);
    for (auto Id = Expected.rbegin(); Id != Expected.rend(); ++Id) ASSERT_TRUE(TakeId(*Id)) << Count << " " << *Id;
    EXPECT_TRUE(Ids().empty());
    EXPECT_EQ(Tree.GetTokens(Red)->size(), 0u);
    // The emptied chain starts again.
    ASSERT_TRUE(Tree.Add(Held[1]));
    EXPECT_EQ(Ids(), std::vector<int>{2});
    EXPECT_FALSE(Tree.Add(Make<TTavoToken>(Held[1])));
  }
}

TEST_F(TTokenTest, PairsOfKeyAndMatchThatShareAChainStayApart) {
  // A tree keyed by colour that also keeps the hash of the tags.
  TTavoTokenTree Tree(101, 0, -1, u"colour", false);
  const std::vector<TBindingInfo> Tags{TBindingInfo(0, u"tags")};
  Tree.SetMatchSlots(Tags);
  auto Colour = [](int I) { return u"c" + IntToStr(I); };
  auto MatchOfTag = [&](int Tag) {
    int32_t Match = 0;
    EXPECT_TRUE(TTavoTokenTree::MatchOf(*Make<TTavoToken>(taAdd, NewFact(1, u"x", {Int(Tag)})), Tags, Match));
    return Match;
  };
  // Two pairs of another colour each whose keys mix alike.
  std::vector<int32_t> Matches;
  for (int Tag = 0; Tag < 300; ++Tag) Matches.push_back(MatchOfTag(Tag));
  std::unordered_map<int32_t, std::pair<int, int>> Seen;
  int ColourA = -1, TagA = -1, ColourB = -1, TagB = -1;
  for (int C = 0; C < 2000 && ColourA < 0; ++C) {
    const int32_t Key = Atom(Colour(C).c_str())->GetHashCode();
    for (int Tag = 0; Tag < 300 && ColourA < 0; ++Tag) {
      auto [Found, Added] = Seen.try_emplace(TTavoTokenTree::ChainKey(Key, Matches[size_t(Tag)]), C, Tag);
      if (!Added && Found->second.first != C) {
        std::tie(ColourA, TagA) = Found->second;
        std::tie(ColourB, TagB) = std::pair(C, Tag);
      }
    }
  }
  ASSERT_GE(ColourA, 0) << "no two pairs mix alike";
  // Odd ids of the first pair, even of the second, interleaved in one chain.
  std::vector<IReteToken> Held;
  for (int Id = 1; Id <= 6; ++Id) {
    const bool First = Id % 2 == 1;
    Held.push_back(Make<TTavoToken>(
        taAdd, NewFact(Id, Colour(First ? ColourA : ColourB).c_str(), {Int(First ? TagA : TagB)})));
    ASSERT_TRUE(Tree.Add(Held.back()));
  }
  auto Ids = [&](int C, int Tag) {
    std::vector<int> Result;
    Tree.ForEachOfKey(Atom(Colour(C).c_str())->GetHashCode(), Matches[size_t(Tag)], [&](const TTavoTokenTree::TEntry* E) {
      Result.push_back(E->Token->GetFacts(0)->GetID());
      return true;
    });
    return Result;
  };
  EXPECT_EQ(Ids(ColourA, TagA), (std::vector<int>{1, 3, 5}));
  EXPECT_EQ(Ids(ColourB, TagB), (std::vector<int>{2, 4, 6}));
  // The chain's first, a middle and its last go.
  for (int Id : {1, 4, 6}) EXPECT_EQ(Tree.Take(Make<TTavoToken>(Held[size_t(Id - 1)])).Get(), Held[size_t(Id - 1)].Get());
  EXPECT_EQ(Ids(ColourA, TagA), (std::vector<int>{3, 5}));
  EXPECT_EQ(Ids(ColourB, TagB), (std::vector<int>{2}));
  // A token of one pair is never found as one of the other.
  EXPECT_FALSE(Tree.Add(Make<TTavoToken>(Held[1])));
  ASSERT_TRUE(Tree.Add(Held[5]));
  EXPECT_EQ(Ids(ColourB, TagB), (std::vector<int>{2, 6}));
}

TEST_F(TTokenTest, TokensOfOneParentAndFactDifferOnlyByStrength) {
  IReteToken Parent = Make<TTavoToken>(taAdd, NewFact(1, u"red"));
  IFact Fact = NewFact(2, u"blue");
  IReteToken Strong = Make<TTavoToken>(Parent, Fact), Weak = Make<TTavoToken>(Parent, Fact);
  EXPECT_TRUE(Strong->Equals(Weak.Get()));
  Weak->SetStrength(0.25f);
  EXPECT_FALSE(Strong->Equals(Weak.Get()));
  TTavoTokenTree Tree(101, 0, -1, String(), true);
  ASSERT_TRUE(Tree.Add(Weak));
  EXPECT_FALSE(Tree.Take(Strong));
  EXPECT_EQ(Tree.Take(Make<TTavoToken>(Weak)).Get(), Weak.Get());
}

TEST_F(TTokenTest, KeysComeFromSortCodesIdsSlotsOrListItems) {
  IFact Red = NewFact(4, u"red", {Atom(u"x"), Atom(u"y")});
  IReteToken Pair = Make<TTavoToken>(Make<TTavoToken>(taAdd, NewFact(1, u"blue")), Red);
  EXPECT_EQ(TTavoTokenTree(101, 1, -1, String(), true).KeyOf(*Pair), Pair->GetSortCode());
  EXPECT_EQ(TTavoTokenTree(101, 1, -1, String(), false).KeyOf(*Pair), 4);
  EXPECT_EQ(TTavoTokenTree(101, 1, -1, u"colour", false).KeyOf(*Pair), Atom(u"red")->GetHashCode());
  EXPECT_EQ(TTavoTokenTree(101, 1, 1, u"tags", false).KeyOf(*Pair), Atom(u"y")->GetHashCode());
  EXPECT_EQ(TTavoTokenTree(101, 0, -1, u"colour", false).KeyOf(*Pair), Atom(u"blue")->GetHashCode());
  TTavoTokenTree Tree(5, 0, -1, String(), false);
  EXPECT_EQ(Tree.BucketOf(-7), 2);
  EXPECT_EQ(Tree.BucketOf(INT32_MIN), int(2147483648u % 5u));
}

TEST_F(TTokenTest, TextsListTagCountsAndFactsNewestFirst) {
  IReteToken Pair = Make<TTavoToken>(Make<TTavoToken>(taAdd, NewFact(1, u"blue")), NewFact(2, u"red"));
  Pair->SetNegatedCount(2);
  EXPECT_EQ(Pair->ToString(), u"taAdd cnt=2 negcnt=2\r\n(item (colour red))\r\n(item (colour blue))");
  TTavoTokenTree Tree(3, 0, -1, String(), true);
  Tree.Add(Pair);
  Tree.SetAllowNilBucket(false);
  Tree.GetTokens(Pair->GetSortCode() - 1);
  EXPECT_EQ(Tree.GetToFactsString(), u"f-1, f-2\r\n");
  EXPECT_EQ(Tree.ToString().substr(0, 5), u"\r\ntaA");
}

}  // namespace
}  // namespace tavo
