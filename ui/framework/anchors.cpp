#include "ui/framework/anchors.h"

LayoutRect ResolveAnchor(const LayoutAnchor& anchor, std::int32_t dx, std::int32_t dy) {
  const auto when = [&anchor](std::uint32_t flag, std::int32_t growth) { return (anchor.flags & flag) != 0 ? growth : 0; };
  LayoutRect rect = anchor.rect;
  rect.left += when(ANCHOR_MOVE_RIGHT, dx);
  rect.right += when(ANCHOR_MOVE_RIGHT, dx) + when(ANCHOR_WIDEN, dx);
  rect.top += when(ANCHOR_MOVE_DOWN, dy);
  rect.bottom += when(ANCHOR_MOVE_DOWN, dy) + when(ANCHOR_GROW_TALLER, dy);
  return rect;
}
