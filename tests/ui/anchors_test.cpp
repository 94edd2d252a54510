#include "ui/framework/anchors.h"

#include <gtest/gtest.h>

TEST(Anchors, FollowTheFrameAndWhereItIsLowerFirstTakeTheHeightThatIsGiven) {
  const std::pair<std::uint32_t, LayoutRect> cases[] = {
      {0, {10, 20, 110, 220}},
      {ANCHOR_MOVE_RIGHT | ANCHOR_MOVE_DOWN, {3, -80, 103, 120}},
      {ANCHOR_WIDEN | ANCHOR_GIVE_HEIGHT, {10, 20, 103, 160}},
      {ANCHOR_WIDEN | ANCHOR_GROW_TALLER | ANCHOR_FOLLOW_GIVEN, {10, -40, 103, 120}},
      {ANCHOR_MOVE_RIGHT | ANCHOR_SQUEEZE, {10, 20, 107, 220}},
  };
  for (const auto& [flags, rect] : cases)
    EXPECT_EQ(ResolveAnchor({1, flags, {10, 20, 110, 220}, 220}, -7, -100, 60), rect) << flags;
}
