#include "common/MekSet.h"

#include <gtest/gtest.h>

#include <vector>

namespace tavo {
namespace {

enum TColour { clRed, clGreen, clBlue, clGrey };
using TColours = TSet<TColour>;

TEST(MekSetTest, SetAlgebraFollowsMembership) {
  constexpr TColours Warm{clRed, clGrey};
  constexpr TColours Cool{clBlue, clGrey};
  static_assert((Warm + Cool) == TColours{clRed, clBlue, clGrey});
  static_assert((Warm - Cool) == TColours{clRed});
  static_assert((Warm * Cool) == TColours{clGrey});
  static_assert(TColours::Range(clGreen, clGrey) == TColours{clGreen, clBlue, clGrey});
  EXPECT_TRUE(TColours{clRed} <= Warm);
  EXPECT_FALSE(Cool <= Warm);
  TColours Mutable;
  EXPECT_TRUE(Mutable.Empty());
  Mutable.Include(clBlue).Include(clRed).Exclude(clRed);
  EXPECT_EQ(Mutable, TColours{clBlue});
  EXPECT_EQ((Warm + Cool).Count(), 3);
}

TEST(MekSetTest, ForEachVisitsMembersInOrdinalOrder) {
  std::vector<TColour> Seen;
  TColours{clGrey, clRed, clBlue}.ForEach([&](TColour C) { Seen.push_back(C); });
  EXPECT_EQ(Seen, (std::vector<TColour>{clRed, clBlue, clGrey}));
}

}  // namespace
}  // namespace tavo
