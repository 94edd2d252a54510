#include "ui/framework/anchors.h"

LayoutRect ResolveAnchor(const LayoutAnchor& anchor, std::int32_t dx, std::int32_t dy, std::int32_t given) {
  const auto when = [&anchor](std::uint32_t flag, std::int32_t growth) { return (anchor.flags & flag) != 0 ? growth : 0; };
  LayoutRect rect = anchor.rect;
  if (dx < 0 && (anchor.flags & ANCHOR_SQUEEZE) != 0) {
    rect.left += rect.left * dx / anchor.clientWidth;
    rect.right += rect.right * dx / anchor.clientWidth;
  } else {
    rect.left += when(ANCHOR_MOVE_RIGHT, dx);
    rect.right += when(ANCHOR_MOVE_RIGHT, dx) + when(ANCHOR_WIDEN, dx);
  }
  const std::int32_t down = when(ANCHOR_MOVE_DOWN, dy) - when(ANCHOR_FOLLOW_GIVEN, given);
  rect.top += down;
  rect.bottom += down + when(ANCHOR_GROW_TALLER, dy + given) - when(ANCHOR_GIVE_HEIGHT, given);
  return rect;
}
