// What functions without state make of a text, and what small machines make of one text after the other: golden/tables has one
// file for each subject, in it "= name" before the rows of each function here, and rows "input => result". <LF>, <U+00A0>, <EF>
// and <300*p> stand for characters. These files are written by hand.

#include "app/command_line.h"
#include "core/balloon_text.h"
#include "core/printable_text.h"
#include "core/rule_evaluation.h"
#include "core/wildcard.h"
#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log.h"
#include "storage/alert_log_line.h"
#include "storage/rules_csv.h"
#include "storage/rules_json.h"
#include "tests/support/fake_http_client.h"
#include "tests/support/limited_memory.h"
#include "tests/support/throwaway_folder.h"
#include "tests/tables/monitor_machines.h"
#include "tests/tables/store_steps.h"
#include "ui/framework/anchors.h"
#include "ui/rules/number_text.h"
#include "update/download.h"
#include "update/version.h"

#ifdef _WIN32
#include "tests/tables/windows_functions.h"
#endif

namespace {

// Files.

std::wstring PatternInCsv(const std::wstring& pattern) {
  const RuleList rules = {{.processPattern = pattern}};
  EXPECT_EQ(ParseRulesCsv(FormatRulesCsv(rules)), rules);
  return Rows(rules);
}

std::wstring Decode(const std::wstring& text) {
  const std::string bytes = Bytes(text);
  const TextMark mark = FindTextMark(bytes);
  TextDecoder decoder(mark.encoding, LineEnds::kCrLf);
  std::wstring inPieces;
  for (const char& byte : std::string_view(bytes).substr(mark.sizeBytes)) decoder.Decode({&byte, 1}, inPieces);
  decoder.Finish(inPieces);
  EXPECT_EQ(DecodeTextFile(bytes), inPieces.substr(0, inPieces.find(L'\x1A'))) << "byte by byte, as a large file comes";
  return DecodeTextFile(bytes);
}

std::wstring AppendTo(const std::wstring& before) {
  const ThrowawayFolder folder;
  if (before != L"no file") ThrowawayFolder::Write(folder.Path("log"), Bytes(before));
  EXPECT_EQ(AppendTextFile(folder.Path("log"), L"\u00e4\n"), WriteResult::kWritten);
  return Wide(ThrowawayFolder::Read(folder.Path("log")));
}

std::wstring LogLine(const std::wstring& line) {
  AlertRecord record;
  return ParseAlertLogLine(line, record) ? FormatAlertLogLine(record) : L"no alert";
}

std::wstring ExportedLogLine(const std::wstring& line) {
  const ThrowawayFolder folder;
  RecentAlerts alerts;
  AlertRecord record;
  EXPECT_TRUE(ParseAlertLogLine(line, record));
  alerts.Append(record);
  EXPECT_TRUE(ExportAlertCsv(folder.Path("csv"), L"Time,PID", alerts));
  return Wide(ThrowawayFolder::Read(folder.Path("csv")));
}

// The monitor.

/// "CPU, working set, private bytes, handles, threads, GDI, USER" of a process against one rule, bytes in KB.
std::wstring Violation(const std::wstring& figures) {
  static const ThresholdRule kRule = {1, L"*", true, 20'000, 512 * kBytesPerMb, 1024 * kBytesPerMb, 95.0, 500, 9'000, 8'000};
  std::wistringstream in(figures);
  ProcessMetrics metrics;
  in >> metrics.cpuPercent >> metrics.workingSet >> metrics.privateBytes >> metrics.handles >> metrics.threads >>
      metrics.gdiObjects >> metrics.userObjects;
  return ViolationText(kRule, metrics);
}

std::wstring UnlimitedViolation(const std::wstring& cpuLimit) {
  return ViolationText({1, L"*", true, 0, 0, 0, std::stod(cpuLimit)}, {1, L"", 100.0, ~0ULL, ~0ULL, ~0U, ~0U, ~0U, ~0U});
}

// The rest.

std::wstring VersionAnswer(const std::wstring& answer) {
  const std::wstring latest = LatestVersionFromAnswer(answer);
  const std::wstring said = Join(DiagnosticLines::Take());
  return (latest == AppVersionDisplay ? L"own" : latest) + (IsNewerVersion(latest) ? L" newer" : L"") +
         (said.empty() ? L"" : L": ") + said;
}

std::wstring Switches(const std::wstring& line) {
  const StartOptions options = ParseCommandLine(line);
  static constexpr const wchar_t* kJobs[] = {L"run", L"terminate", L"install task", L"remove task"};
  return Words(kJobs[static_cast<int>(options.job)], options.startInTray ? L" tray" : L"",
               options.replaceRunning ? L" replace" : L"");
}

std::wstring Anchored(const std::wstring& flags) {
  const LayoutRect rect =
      ResolveAnchor({1, static_cast<std::uint32_t>(std::stoul(flags, nullptr, 16)), {10, 20, 110, 220}, 220}, -7, -100, 60);
  return Words(rect.left, L" ", rect.top, L" ", rect.right, L" ", rect.bottom);
}

/// An internet that breaks as "what=value" pairs say, and what a download from it gives and says.
std::wstring Downloaded(const std::wstring& words) {
  std::map<std::wstring, std::wstring> given = {{L"size", L"9"}, {L"piece", L"4000000000"}, {L"memory", L"1200000"}};
  for (const std::wstring& pair : Split(words, L' ')) given[pair.substr(0, pair.find(L'='))] = pair.substr(pair.find(L'=') + 1);
  std::string whole;
  for (int i = 0; i < std::stoi(given[L"size"]); ++i) whole += static_cast<char>(i * 31 % 251);
  FakeHttpClient http;
  http.body = whole;
  http.pieceBytes = std::stoul(given[L"piece"]);
  if (given.contains(L"stalls")) {
    http.brokenAt = whole.size();
    http.body += "never read";
  }
  if (given.contains(L"status")) http.status.reset();
  if (given[L"status"] > L"") http.status = std::stoul(given[L"status"]);
  if (given.contains(L"from")) http.answeringUrl = given[L"from"];
  http.sessionOpens = !given.contains(L"nosession");
  http.urlOpens = !given.contains(L"noconnection");
  std::string body = "left over";
  bool done = false;
  {
    const LimitedMemory limited(std::stoul(given[L"memory"]));
    done = DownloadFile(http, L"https://localhost/file", body);
  }
  EXPECT_EQ(body, done ? whole : "");
  EXPECT_TRUE(done || body.capacity() < 1000) << "what was had is given back";
  EXPECT_EQ(http.closes, 1);
  EXPECT_EQ(http.largestRead, done ? 16'384U : http.largestRead);
  EXPECT_EQ(http.timeoutMs, http.sessionOpens ? 30'000U : 0U) << "set before the address was opened";
  return Join(DiagnosticLines::Take());
}

#ifndef _WIN32
/// A validator of its own reads the schema, as the tools do that people write rules with.
std::wstring AgainstTheSchema(const std::wstring& rows) {
  const ThrowawayFolder folder;
  const std::wstring path = folder.Path("rules.json");
  ThrowawayFolder::Write(path, EncodeUtf8(FormatRulesJson(ParseRulesCsv(L"header\n" + rows).value_or(RuleList()))));
  return YesNo(std::system(("/usr/bin/python3 -m jsonschema -i " + EncodeUtf8(path) + " " VANTORA_RULES_SCHEMA).c_str()) == 0);
}

std::wstring StderrLine(const std::wstring& text) {
  SetDiagnosticHook(nullptr);
  testing::internal::CaptureStderr();
  DebugLog(L"%ls", text.c_str());
  return Wide(testing::internal::GetCapturedStderr());
}
#endif

std::map<std::wstring, Function> Functions() {
  return {
      {L"violation", Violation},
      {L"violation without limits", UnlimitedViolation},
      {L"sampled process", OneAfterTheOther<Sampled>()},
      {L"CPU", OneAfterTheOther<CpuFigures>()},
      {L"delivered alert", OneAfterTheOther<Delivered>()},
      {L"matches",
       [](const std::wstring& words) {
         const auto both = Split(words, L'|');
         return YesNo(WildcardMatch(both.at(1).c_str(), both.at(0).c_str()));
       }},
      {L"excluded",
       [](const std::wstring& words) {
         const auto all = Split(words, L'|');
         return YesNo(IsExcluded(all.at(0).c_str(), {all.begin() + 1, all.end()}));
       }},
      {L"printable", PrintableText},
      {L"cut to 3 units", [](const std::wstring& text) { return CutToUtf16Units(text, 3); }},
      {L"rules.csv", [](const std::wstring& file) { return FormatRulesCsv(ParseRulesCsv(file).value_or(RuleList())); }},
      {L"row", [](const std::wstring& row) { return Rows(ParseRulesCsv(L"header\n" + row)); }},
      {L"rows", [](const std::wstring& file) { return Rows(ParseRulesCsv(file)); }},
      {L"pattern", PatternInCsv},
      {L"JSON", [](const std::wstring& text) { return Rows(ParseRulesJson(text)); }},
      {L"JSON object", [](const std::wstring& object) { return Rows(ParseRulesJson(L"\"rules\"{" + object + L"}")); }},
      {L"exported JSON",
       [](const std::wstring& row) { return FormatRulesJson(ParseRulesCsv(L"header\n" + row).value_or(RuleList())); }},
      {L"store", OneAfterTheOther<StoreSteps>()},
      {L"log line", LogLine},
      {L"exported log line", ExportedLogLine},
      {L"decoded", Decode},
      {L"appended to", AppendTo},
      {L"integer", [](const std::wstring& text) { return Words(ReadCellInteger(text), L" ", ReadFieldInteger(text)); }},
      {L"decimal", [](const std::wstring& text) { return Words(ReadDecimal(text)); }},
      {L"version", [](const std::wstring& text) { return Words(VersionToNumber(text == L"null" ? nullptr : text.c_str())); }},
      {L"version answer", VersionAnswer},
      {L"command line", Switches},
      {L"anchor", Anchored},
      {L"download", Downloaded},
#ifdef _WIN32
      {L"asked version", AskedVersion},
      {L"loaded setting", LoadedSetting},
      {L"scheduled task", ScheduledTask},
      {L"COM after a question", ComAfterwards},
      {L"elevated", Elevated},
      {L"elevated copy", RunElevatedCopy},
      {L"run value", OneAfterTheOther<RunValueSteps>()},
#else
      {L"valid JSON", AgainstTheSchema},
      {L"line on stderr", StderrLine},
#endif
  };
}

class Tables : public testing::TestWithParam<const char*> {};

TEST_P(Tables, HoldRowByRow) {
  const DiagnosticLines lines;
  const std::map<std::wstring, Function> functions = Functions();
  std::ifstream file(VANTORA_GOLDEN_FOLDER "/tables/" + std::string(GetParam()) + ".txt");
  const Function* function = nullptr;
  int rows = 0;
  for (std::string bytes; std::getline(file, bytes);) {
    const std::wstring line = DecodeUtf8Text(bytes);
    if (line.empty() || line.starts_with(L"# ")) continue;
    if (line.starts_with(L"= ")) {
      function = &functions.at(line.substr(2));
      continue;
    }
    const std::size_t arrow = (L" " + line + L" ").find(L" => ");
    ASSERT_NE(arrow, std::wstring::npos) << bytes;
    const std::wstring input = arrow == 0 ? L"" : line.substr(0, arrow - 1);
    (void)DiagnosticLines::Take();
    EXPECT_EQ((*function)(Plain(input)), Plain(line.substr(std::min(arrow + 3, line.size())))) << bytes;
    ++rows;
  }
  EXPECT_GT(rows, 3);
}

#ifdef _WIN32
constexpr const char* kOfThisSystem = "windows";
#else
constexpr const char* kOfThisSystem = "linux";
#endif
INSTANTIATE_TEST_SUITE_P(Of, Tables, testing::Values("monitor", "files", "input", "update", kOfThisSystem),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
