#include "ui/layout.h"

#include <gtest/gtest.h>

namespace {

TEST(Layout, AnchorsFollowTheGrowthTheyName) {
  constexpr LayoutRect kAtOpening{10, 20, 110, 70};
  struct Case {
    std::uint32_t flags;
    LayoutRect grown;   // by 7 and 5
    LayoutRect shrunk;  // by -3 and -2
  };
  constexpr Case kCases[] = {
      {0, kAtOpening, kAtOpening},
      {0x01, {17, 20, 117, 70}, {7, 20, 107, 70}},
      {0x04, {10, 25, 110, 75}, {10, 18, 110, 68}},
      {0x05, {17, 25, 117, 75}, {7, 18, 107, 68}},
      {0x10, {10, 20, 117, 70}, {10, 20, 107, 70}},
      {0x20, {10, 20, 110, 75}, {10, 20, 110, 68}},
      {0x30, {10, 20, 117, 75}, {10, 20, 107, 68}},
      {0x11, {17, 20, 124, 70}, {7, 20, 104, 70}},
      {0x02 | 0x08, kAtOpening, kAtOpening},
  };
  for (const Case& test : kCases) {
    const LayoutAnchor anchor{1, test.flags, kAtOpening};
    EXPECT_EQ(ResolveAnchor(anchor, 0, 0), kAtOpening) << test.flags;
    EXPECT_EQ(ResolveAnchor(anchor, 7, 5), test.grown) << test.flags;
    EXPECT_EQ(ResolveAnchor(anchor, -3, -2), test.shrunk) << test.flags;
  }
}

}  // namespace
