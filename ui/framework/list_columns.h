#pragma once

// A list view's columns as rows of a table: header text and width. The cell texts of each list stand beside their own table.

#include <cstdint>

struct ListColumn {
  std::uint32_t headerStringId;
  int widthPx;  ///< at 96 dpi
};
