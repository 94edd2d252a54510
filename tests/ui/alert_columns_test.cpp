#include "ui/alert_columns.h"

#include <gtest/gtest.h>

namespace {

TEST(AlertColumns, CellsOfAnAlert) {
  const struct {
    AlertRecord alert;
    const wchar_t* cells[kAlertColumnCount];
  } kCases[] = {
      {{{2026, 3, 4, 5, 9, 7, 3, 999}, 4'294'967'295u, L"app.exe", 7, L"Handles: 5000 > 4000"},
       {L"2026-03-05 09:07:03", L"4294967295", L"app.exe", L"Handles: 5000 > 4000"}},
      // As a damaged log line is read back.
      {{{}, 0, L"", 0, L""}, {L"0000-00-00 00:00:00", L"0", L"", L""}},
      {{{65535, 65535, 0, 1, 2, 3, 4, 0}, 12, L"%s %n.exe", 1, L"\x00E4\x4E2D"},
       {L"65535-65535-01 02:03:04", L"12", L"%s %n.exe", L"\x00E4\x4E2D"}},
  };
  for (const auto& test : kCases) {
    for (std::size_t column = 0; column < kAlertColumnCount; ++column) {
      EXPECT_EQ(AlertCellText(test.alert, column), test.cells[column]) << column;
    }
  }
}

}  // namespace
