#pragma once

// Where a resizable dialog's controls go when it grows: each control has its rectangle at opening and says by flags what follows
// the growth. Arithmetic only; the dialog moves the windows.

#include <cstdint>

struct LayoutRect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  bool operator==(const LayoutRect&) const = default;
};

enum AnchorFlags : std::uint32_t {
  ANCHOR_MOVE_RIGHT = 0x01,
  ANCHOR_MOVE_DOWN = 0x04,
  ANCHOR_WIDEN = 0x10,
  ANCHOR_GROW_TALLER = 0x20,
  ANCHOR_GIVE_HEIGHT = 0x100,   ///< the first to lose height where the window has less than at its opening
  ANCHOR_FOLLOW_GIVEN = 0x200,  ///< moves up by what those have lost
  ANCHOR_SQUEEZE = 0x400,       ///< shares the width with its neighbours where the window has less than at its opening
};

/// One row of a dialog's anchor table.
struct AnchorRow {
  std::int32_t controlId;
  std::uint32_t flags;
};

struct LayoutAnchor {
  std::int32_t controlId = 0;
  std::uint32_t flags = 0;
  LayoutRect rect;               ///< client coordinates at initialisation
  std::int32_t clientWidth = 1;  ///< at initialisation
};

/// The control's rectangle after the client area has grown by dx and dy (either may be negative) and others have given `given`
/// of their height.
[[nodiscard]] LayoutRect ResolveAnchor(const LayoutAnchor& anchor, std::int32_t dx, std::int32_t dy, std::int32_t given);
