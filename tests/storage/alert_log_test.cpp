#include "storage/alert_log.h"

#include <gtest/gtest.h>

#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log_reader.h"
#include "tests/storage/generated_rules.h"
#include "tests/storage/throwaway_folder.h"

namespace {

AlertRecord Alert(std::uint32_t pid, const wchar_t* name, const wchar_t* violation) {
  AlertRecord record;
  record.time = {.year = 2024, .month = 3, .day = 5, .hour = 14, .minute = 7, .second = 9};
  record.pid = pid;
  record.processName = name;
  record.violation = violation;
  return record;
}

TEST(AlertLog, ReadsLinesAsTheTokeniserDoes) {
  constexpr wchar_t kTime[] = L"2024-03-05 14:07:09";
  const std::wstring time = kTime;
  const struct {
    std::wstring line;
    AlertRecord record;
  } cases[] = {
      {time + L"\t1234\tapp.exe\tHandles: 5000 > 4000\r\n", Alert(1234, L"app.exe", L"Handles: 5000 > 4000")},
      {time + L"\t1\ta\n", Alert(1, L"a", L"")},
      {L"\t\t" + time + L"\t 7x\ta\t\tb\tc", Alert(7, L"a", L"b")},
      {time + L"\t5\t\tHandles", Alert(5, L"Handles", L"")},
      {time + L"\t-5\ta\tb\r\r\n", Alert(0, L"a", L"b")},
      {time + L"\t99999999999\ta\tb", Alert(4294967295U, L"a", L"b")},
      {std::wstring(L"2024-3-5   14:07:9junk\tx\ta\tb\0c", 32), Alert(0, L"a", L"b")},
  };
  for (const auto& each : cases) {
    AlertRecord record;
    EXPECT_TRUE(ParseAlertLogLine(each.line, record)) << each.line;
    EXPECT_EQ(record, each.record) << each.line;
  }
  for (const wchar_t* line : {L"", L"\r\n", L"\t\t\t", L"a\tb", L"a\tb\t\r\n"}) {
    AlertRecord record;
    EXPECT_FALSE(ParseAlertLogLine(line, record)) << line;
  }
  AlertRecord record;
  ASSERT_TRUE(ParseAlertLogLine(L"70000-1-x 5:6:7\t1\ta", record));
  EXPECT_EQ(record.time, (LocalTime{.year = 65535, .month = 1}));
}

TEST(AlertLog, WritesLinesAndTheExport) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("alerts.log");
  AlertRecord early = Alert(4294967295U, L"ä.exe", L"CPU: 1.0% > 0.5%");
  early.time = {.year = 25, .month = 1, .dayOfWeek = 3, .day = 1, .second = 5, .milliseconds = 9};
  AppendAlertLog(path, Alert(1, L"a", L"b; c"));
  AppendAlertLog(path, early);
  EXPECT_EQ(ThrowawayFolder::Read(path),
            "\xEF\xBB\xBF"
            "2024-03-05 14:07:09\t1\ta\tb; c\r\n0025-01-01 00:00:05\t4294967295\t\xC3\xA4.exe\tCPU: 1.0% > 0.5%\r\n");
  AppendAlertLog(folder.Path("missing/alerts.log"), early);

  RecentAlerts alerts;
  EXPECT_TRUE(ExportAlertCsv(path, L"Time,PID,Process,Violation", alerts));
  EXPECT_EQ(ThrowawayFolder::Read(path), "\xEF\xBB\xBFTime,PID,Process,Violation\r\n");
  alerts.Append(early);
  EXPECT_TRUE(ExportAlertCsv(path, L"Time,PID,Process,Violation", alerts));
  EXPECT_EQ(
      ThrowawayFolder::Read(path),
      "\xEF\xBB\xBFTime,PID,Process,Violation\r\n\"0025-01-01 00:00:05\",4294967295,\"\xC3\xA4.exe\",\"CPU: 1.0% > 0.5%\"\r\n");
  EXPECT_FALSE(ExportAlertCsv(folder.Path(""), L"Time", alerts));
}

std::vector<AlertRecord> ReadWhole(const std::string& bytes, std::size_t maxAlerts) {
  const TextMark mark = FindTextMark(bytes);
  TextDecoder decoder(mark.encoding);
  std::wstring text;
  decoder.Decode(std::string_view(bytes).substr(mark.sizeBytes), text);
  decoder.Finish(text);
  LineReader lines(text);
  std::vector<AlertRecord> alerts;
  AlertRecord record;
  for (std::wstring_view line; lines.Next(line);) {
    if (ParseAlertLogLine(line, record)) alerts.push_back(record);
  }
  if (alerts.size() > maxAlerts) alerts.erase(alerts.begin(), alerts.end() - static_cast<std::ptrdiff_t>(maxAlerts));
  return alerts;
}

/// A log in any encoding out of good lines, halves, empty and overlong ones, and then damaged.
std::string NastyLog(Generator& generator, bool large) {
  std::string bytes;
  const std::size_t encoding = generator.Below(4);
  if (encoding > 0) bytes = std::array{"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}[encoding - 1];
  for (std::size_t count = generator.Below(large ? 300 : 30); count > 0; --count) {
    std::wstring line =
        FormatAlertLogLine(Alert(static_cast<std::uint32_t>(generator.Below(1000)), L"p", generator.Pattern(20).c_str()));
    if (generator.OneIn(8)) line.resize(generator.Below(line.size()));
    if (generator.OneIn(8)) line = std::wstring(generator.Below(5000), generator.OneIn(2) ? L'\t' : L'\u20AC') + line;
    if (generator.OneIn(8)) line = L"\r\n";
    EncodeText(line, FindTextMark(bytes).encoding, bytes);
  }
  return generator.OneIn(2) ? bytes : generator.Damage(bytes);
}

TEST(AlertLogReader, GivesWhatReadingTheWholeFileGives) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("alerts.log");
  Generator generator(7);
  for (int round = 0; round < 800; ++round) {
    const std::string bytes = NastyLog(generator, round % 20 == 0);
    ThrowawayFolder::Write(path, bytes);
    const std::size_t maxAlerts = 1 + generator.Below(20);
    const std::size_t stepBytes = 1 + generator.Below(generator.OneIn(2) ? 50 : 3000);
    ASSERT_EQ(ReadNewestAlerts(path, maxAlerts, stepBytes), ReadWhole(bytes, maxAlerts)) << round;
  }
}

}  // namespace
