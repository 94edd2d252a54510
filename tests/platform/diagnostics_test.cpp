#include "platform/diagnostics.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/platform/diagnostic_lines.h"

TEST(Diagnostics, LinesAreCutAndNothingIsAdded) {
  const DiagnosticLines lines;
  for (const std::size_t length : {0u, 1022u, 1023u, 5000u}) {
    DebugLog(L"%ls", std::wstring(length, L'x').c_str());
    EXPECT_EQ(DiagnosticLines::Take(), std::vector{std::wstring(std::min<std::size_t>(length, 1022), L'x')});
  }
}
