#include "storage/alert_log.h"
#include "storage/alert_log_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log_reader.h"
#include "tests/support/throwaway_folder.h"

namespace {

using namespace std::string_literals;

AlertRecord Alert(std::uint32_t pid, const std::wstring& name, const std::wstring& violation) {
  return {{.year = 2024, .month = 3, .day = 5, .hour = 14, .minute = 7, .second = 9}, pid, name, 0, violation};
}

TEST(AlertLog, ReadsLinesAsTheTokeniserDoes) {
  const std::wstring time = L"2024-03-05 14:07:09";
  const std::pair<std::wstring, AlertRecord> cases[] = {
      {time + L"\t1234\tapp.exe\tHandles: 5000 > 4000\r\n", Alert(1234, L"app.exe", L"Handles: 5000 > 4000")},
      {time + L"\t1\ta\n", Alert(1, L"a", L"")},
      {L"\t\t" + time + L"\t 7x\ta\t\tb\tc", Alert(7, L"a", L"b")},
      {time + L"\t-5\ta\tb\r\r\n", Alert(0, L"a", L"b")},
      {time + L"\t99999999999\ta\tb", Alert(4294967295U, L"a", L"b")},
      {L"2024-3-5   14:07:9junk\tx\ta\tb"s + L'\0' + L'c', Alert(0, L"a", L"b")},
      {L"70000-1-x 5:6:7\t1\ta", {{.year = 65535, .month = 1}, 1, L"a", 0, L""}},
  };
  AlertRecord record;
  for (const auto& [line, expected] : cases) {
    EXPECT_TRUE(ParseAlertLogLine(line, record)) << line;
    EXPECT_EQ(record, expected) << line;
  }
  for (const wchar_t* line : {L"", L"\r\n", L"\t\t\t", L"a\tb", L"a\tb\t\r\n"}) {
    EXPECT_FALSE(ParseAlertLogLine(line, record)) << line;
  }
}

// That a line is appended in the form in which it is read here, the built program shows.
TEST(AlertLog, IsExportedAsQuotedValues) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("alerts.csv");
  AlertRecord early = Alert(4294967295U, L"ä.exe", L"CPU: 1.0% > 0.5%");
  early.time = {.year = 25, .month = 1, .dayOfWeek = 3, .day = 1, .second = 5, .milliseconds = 9};
  EXPECT_EQ(FormatAlertLogLine(early), L"0025-01-01 00:00:05\t4294967295\tä.exe\tCPU: 1.0% > 0.5%\n");
  RecentAlerts alerts;
  alerts.Append(early);
  EXPECT_TRUE(ExportAlertCsv(path, L"Time,PID,Process,Violation", alerts));
  EXPECT_EQ(
      ThrowawayFolder::Read(path),
      "\xEF\xBB\xBFTime,PID,Process,Violation\r\n\"0025-01-01 00:00:05\",4294967295,\"\xC3\xA4.exe\",\"CPU: 1.0% > 0.5%\"\r\n");
}

}  // namespace
