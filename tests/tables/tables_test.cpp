// What functions without state make of a text, and what small machines make of one text after the other: golden/tables has one
// file for each subject, in it "= name" before the rows of each function here, and rows "input => result". <LF>, <U+00A0>, <EF>
// and <300*p> stand for characters. These files are written by hand.

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

#include "app/command_line.h"
#include "core/alert_delivery.h"
#include "core/balloon_text.h"
#include "core/monitor_cycle.h"
#include "core/monitor_engine.h"
#include "core/printable_text.h"
#include "core/rule_evaluation.h"
#include "core/wildcard.h"
#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log.h"
#include "storage/alert_log_line.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "storage/rules_json.h"
#include "tests/support/fake_http_client.h"
#include "tests/support/limited_memory.h"
#include "tests/support/monitor_doubles.h"
#include "tests/support/throwaway_folder.h"
#include "ui/framework/anchors.h"
#include "ui/rules/number_text.h"
#include "update/download.h"
#include "update/version.h"

#ifdef _WIN32
#include "platform/handles.h"
#include "storage/settings_registry.h"
#include "tests/support/profile.h"
#include "update/update_check.h"
#else
#include <sys/resource.h>

#include <csignal>
#endif

namespace {

using Function = std::function<std::wstring(const std::wstring&)>;

template <class... Parts>
std::wstring Words(const Parts&... parts) {
  std::wostringstream text;
  text.precision(17);
  (text << ... << parts);
  return text.str();
}

std::wstring Plain(const std::wstring& text) {
  static const std::wregex kEscape(L"<(?:(CR|LF|NUL|TAB|SP)|(?:U\\+)?([0-9A-F]{2,6})|(\\d+)\\*(<[^>]*>|[^<>]+))>");
  static const std::map<std::wstring, wchar_t> kNames = {
      {L"CR", L'\r'}, {L"LF", L'\n'}, {L"NUL", L'\0'}, {L"TAB", L'\t'}, {L"SP", L' '}};
  std::wstring plain;
  std::wstring rest = text;
  for (std::wsmatch found; std::regex_search(rest, found, kEscape); rest = found.suffix().str()) {
    plain += found.prefix();
    if (found[1].matched) {
      plain += kNames.at(found[1]);
    } else if (found[2].matched) {
      const unsigned long code = std::stoul(found[2], nullptr, 16);
      if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
        plain += {static_cast<wchar_t>(0xD7C0 + (code >> 10)), static_cast<wchar_t>(0xDC00 + (code & 0x3FF))};
      } else {
        plain += static_cast<wchar_t>(code);
      }
    } else {
      const std::wstring unit = Plain(found[4]);
      for (int times = std::stoi(found[3]); times > 0; --times) plain += unit;
    }
  }
  return plain + rest;
}

std::vector<std::wstring> Split(const std::wstring& text, wchar_t separator) {
  std::vector<std::wstring> parts;
  std::wistringstream in(text + separator);
  for (std::wstring part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

std::wstring Join(const Texts& texts) {
  std::wstring joined;
  for (const auto& text : texts) joined += (joined.empty() ? L"" : L"; ") + text;
  return joined;
}

/// Numbers up to the end of the text; what is none is 0.
template <class Number>
Number Next(std::wistringstream& in) {
  Number number{};
  in >> number;
  return number;
}

std::string Bytes(const std::wstring& text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

std::wstring Wide(const std::string& bytes) {
  std::wstring text;
  for (const char byte : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return text;
}

std::wstring YesNo(bool yes) { return yes ? L"yes" : L"no"; }

// Files.

/// The rows of a list as rules.csv has them, without the header.
std::wstring Rows(const std::optional<RuleList>& rules) {
  if (!rules.has_value()) return L"nothing";
  const std::wstring file = FormatRulesCsv(*rules);
  return file.substr(file.find(L'\n') + 1);
}

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

/// A step on the store, and what it gives: its answer, the rules' ids, the next one, what was said.
class StoreSteps {
 public:
  std::wstring operator()(const std::wstring& step) {
    const std::size_t blank = std::min(step.find(L' '), step.size());
    const std::wstring words = step.substr(std::min(blank + 1, step.size()));
    std::wistringstream numbers(words);
    const std::map<std::wstring, std::function<std::wstring()>> verbs = {
        {L"file", [&] { return ThrowawayFolder::Write(Path(L"rules.csv"), EncodeUtf8(words)), L"put"; }},
        {L"new", [&] { return store_ = std::make_unique<RuleStore>([this] { return Path(L"rules.csv"); }), L"made"; }},
        {L"load", [&] { return YesNo(store_->Load(Path(words))); }},
        {L"take", [&] { return std::to_wstring(store_->TakeRuleId()); }},
        {L"append", [&] { return store_->Append({MakeNewRule(Next<std::uint32_t>(numbers))}), L"done"; }},
        {L"edit",
         [&] {
           return YesNo(store_->Edit(Next<std::uint32_t>(numbers), [](ThresholdRule& rule) { rule.processPattern = L"b,\x1A"; }));
         }},
        {L"remove", [&] { return store_->Remove({Next<std::uint32_t>(numbers)}), L"done"; }},
        {L"clear", [&] { return store_->RemoveAll(), L"done"; }},
        {L"export", [&] { return YesNo(store_->ExportJson(Path(words))); }},
        {L"import", [&] { return YesNo(store_->ImportJson(Path(words))); }},
        {L"json", [&] { return YesNo(store_->ImportJsonString(words)); }},
        {L"close", [&] { return YesNo(store_->SaveAndClose(Path(words))); }},
        {L"line", [&] { return YesNo(AppendTextFile(Path(words), L"line\n") == WriteResult::kWritten); }},
        {L"read", [&] { return DecodeUtf8Text(ThrowawayFolder::Read(Path(words))); }},
#ifdef _WIN32
        // Another program opens the file with this access and sharing, and closes it after so many milliseconds.
        {L"held",
         [&] {
           const auto access = Next<DWORD>(numbers);
           const auto sharing = Next<DWORD>(numbers);
           const auto ms = Next<DWORD>(numbers);
           UniqueHandle handle = OwnFileHandle(
               ::CreateFileW(Path(L"rules.csv").c_str(), access << 30, sharing, nullptr, OPEN_EXISTING, 0, nullptr));
           const bool opened = handle != nullptr;
           holder_ = std::jthread([handle = std::move(handle), ms](const std::stop_token& end) {
             for (DWORD waited = 0; waited < ms && !end.stop_requested(); waited += 10) ::Sleep(10);
           });
           return YesNo(opened);
         }},
        {L"free", [&] { return holder_ = std::jthread(), L"done"; }},
#else
        // The disk has no room for a longer file, and has again.
        {L"full", [&] { return LimitFiles(ThrowawayFolder::Read(Path(L"rules.csv")).size()), L"done"; }},
        {L"free", [&] { return LimitFiles(RLIM_INFINITY), L"done"; }},
#endif
    };
    const std::wstring answer = verbs.at(step.substr(0, blank))();
    std::wstring rules;
    for (const ThresholdRule& rule : *store_->Snapshot()) rules += Words(L" ", rule.ruleId, L":", rule.processPattern);
    const bool saved =
        Rows(ParseRulesCsv(ReadTextFile(Path(L"rules.csv"), CtrlZ::kIsText).value_or(L""))) == Rows(*store_->Snapshot());
    const std::wstring said = std::regex_replace(Join(DiagnosticLines::Take()), std::wregex(L"[^ ]*vantora-test-[0-9]+."), L"");
    return Words(answer, L",", rules, L" next ", store_->NextRuleId(), saved ? L" saved" : L" unsaved",
                 said.empty() ? L"" : L": ", said);
  }

 private:
  [[nodiscard]] std::wstring Path(const std::wstring& name) const { return folder_.Path(EncodeUtf8(name)); }

#ifdef _WIN32
  std::jthread holder_;
#else
  static void LimitFiles(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
#endif

  ThrowawayFolder folder_;
  std::unique_ptr<RuleStore> store_;
};

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

/// One process in a cycle: "PID name access failing", with the first rule that applies and the figures that were read. The cycle
/// stays the same, and nothing of one process may show in the next.
class Sampled {
 public:
  Sampled() { rules_[0].enabled = false; }
  std::wstring operator()(const std::wstring& words) {
    std::wistringstream in(words);
    SimulatedProcess process = {0, L"", 7, 10, {20, 30}, {40, 50, 60}, 70, 80};
    std::wstring access;
    in >> process.pid >> process.name >> access >> process.failing;
    if (access == L"limited") process.access = SimulatedProcess::Access::kLimited;
    if (access == L"none") process.access = SimulatedProcess::Access::kNone;
    process.exitsAfterListing = access == L"exits";
    table_->FailLists(access == L"unlisted" ? 24 : 0);
    table_->Put(process);
    cycle_.Run(std::make_shared<const RuleList>(rules_), exclusions_, sink_, [] { return false; });
    table_->Remove(process.pid);
    if (cycle_.Sample().empty()) return Join(DiagnosticLines::Take());
    const SampledProcess& sample = cycle_.Sample().front();
    const ProcessMetrics& read = sample.metrics;
    EXPECT_EQ(sample.opened, !table_->Opened().empty());
    return Words(sample.rules == nullptr ? L"no rule" : L"rule " + std::to_wstring(sample.rules->front()), L", ", read.pid, L" ",
                 read.name, L" ", read.threads, sample.opened ? L": " : L" unopened: ", read.handles, L" ", read.workingSet, L" ",
                 read.privateBytes, L" ", read.creationTime, L" ", read.kernelTime, L" ", read.userTime, L" ", read.gdiObjects,
                 L" ", read.userObjects);
  }

 private:
  RuleList rules_ = {ThreadRule(1, 9, 0, L"off*"), ThreadRule(1, 9, 0, L"app*"), ThreadRule(1, 9, 0, L"sys*"),
                     ThreadRule(1, 9, 0, L"*.scr")};
  ExclusionSnapshot exclusions_ = std::make_shared<const ExclusionList>(ExclusionList{L"app-spared*"});
  std::shared_ptr<SimulatedProcessTable> table_ = std::make_shared<SimulatedProcessTable>();
  FakeClock clock_;
  MonitorCycle cycle_{table_, clock_, 1};
  RecordingSink sink_;
};

/// "milliseconds since the last cycle, creation time, kernel and user seconds" of a process on eight processors, and what the
/// alert says of its CPU.
class CpuFigures {
 public:
  CpuFigures() {
    engine_.SetRules(&rules_);
    engine_.SetSink(&sink_);
  }
  std::wstring operator()(const std::wstring& words) {
    constexpr std::uint64_t kSecond = 10'000'000;
    std::wistringstream in(words);
    clock_.tickMs += Next<std::uint64_t>(in);
    const auto created = Next<std::uint64_t>(in);
    const auto kernel = Next<std::uint64_t>(in);
    table_->Put(MakeProcess(9, L"busy.exe", 1, {created, kernel * kSecond, Next<std::uint64_t>(in) * kSecond}));
    if (words.ends_with(L"gone")) table_->Remove(9);
    const bool both = words.ends_with(L"beside another");
    table_->Put(MakeProcess(8, L"other.exe", 1, {1, both ? kSecond : 0, 0}));
    if (words.ends_with(L"alone")) table_->Remove(8);
    table_->FailLists(words.ends_with(L"fails") ? 8 : 0);
    engine_.RunCycle();
    Texts violations;
    for (const AlertRecord& alert : sink_.Take()) violations.push_back(Words(alert.pid, L" ", alert.violation));
    return Words(engine_.CpuSampleCount(), L" kept ", Join(violations));
  }

 private:
  std::shared_ptr<SimulatedProcessTable> table_ = std::make_shared<SimulatedProcessTable>();
  FakeClock clock_;
  FakeRules rules_{{{.ruleId = 1, .processPattern = L"*", .maxCpuPercent = 0.001, .cooldownSec = 0}}};
  RecordingSink sink_;
  MonitorEngine engine_{table_, clock_, 8};
};

/// "milliseconds, throttle in seconds, actions of all rules, rule, PID, log, sound, name and violation" of an alert, and what the
/// user gets.
class Delivered : AlertOutputs {
 public:
  std::wstring operator()(const std::wstring& words) {
    std::wistringstream in(words);
    clock_.tickMs = Next<std::uint64_t>(in);
    settings_ = {};
    in >> settings_.notificationThrottleSec >> settings_.alertActions;
    const auto ruleId = Next<std::uint32_t>(in);
    const auto pid = Next<std::uint32_t>(in);
    std::wstring name = L"a.exe";
    std::wstring violation = L"v";
    in >> settings_.logFilePath >> settings_.soundFilePath >> name >> violation;
    done_.clear();
    delivery_.DeliverAlert({{}, pid, name, ruleId, violation});
    EXPECT_EQ(recent_.Copy().back().violation, violation) << "the list has the whole";
    return Words(recent_.Size(), L" listed, ", delivery_.PendingChars(), L" waiting ", Join(done_));
  }

 private:
  AlertDeliverySettings Settings() override { return settings_; }
  void ShowBalloon(const std::wstring& title, const std::wstring& text) override { done_.push_back(title + L"|" + text); }
  void AppendToLog(const std::wstring& path, const AlertRecord& record) override { done_.push_back(path + record.violation); }
  void PlaySoundFile(const std::wstring& path) override { done_.push_back(path); }

  AlertDeliverySettings settings_;
  Texts done_;
  RecentAlerts recent_;
  FakeRules rules_{{{.ruleId = 1, .processPattern = L"*", .alertActions = 0},
                    {.ruleId = 2, .processPattern = L"*", .alertActions = ACTION_LOG},
                    {.ruleId = 2, .processPattern = L"*", .alertActions = ACTION_NOTIFY},
                    {.ruleId = 3, .processPattern = L"*", .alertActions = ACTION_SOUND | 8},
                    {.ruleId = 4, .processPattern = L"*", .alertActions = 7}}};
  FakeClock clock_;
  AlertDelivery delivery_{recent_, rules_, clock_, *this};
};

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

#ifdef _WIN32
std::wstring AskedVersion(const std::wstring& words) {
  FakeHttpClient http;
  http.brokenAt = std::stoul(words);
  http.body = Bytes(words.substr(words.find(L' ') + 1));
  const LimitedMemory limited(1'200'000);
  const std::wstring latest = AskForLatestVersion(http, true);
  return latest == AppVersionDisplay ? L"own" : latest;
}

/// "name type width data" of a value in the registry; each character of the data takes `width` bytes.
std::wstring LoadedSetting(const std::wstring& words) {
  std::wistringstream in(words);
  std::wstring name;
  in >> name;
  const auto type = Next<DWORD>(in);
  const auto width = Next<std::size_t>(in);
  std::string bytes;
  for (const wchar_t c : words.substr(static_cast<std::size_t>(in.tellg()) + 1))
    (bytes += static_cast<char>(c)).resize(bytes.size() + width - 1);
  const e2e::Profile profile;
  profile.Set(e2e::kSettings, name.c_str(), {type, {bytes.begin(), bytes.end()}});
  SettingsStore settings;
  settings.Update([](AppSettings& current) {
    current.logFilePath = L"log";
    current.soundFilePath = L"sound";
    current.mainDialogPlacement = {1, 2, 3, 4};
  });
  const AppSettings before = settings.Get();
  MonitorEngine engine{nullptr, SystemClock(), 1};
  engine.SetExclusions({L"kept"});
  LoadSettings(settings, engine);
  return (settings.Get() == before ? L"" : L"changed ") + Join(*engine.Exclusions());
}
#else
std::wstring StderrLine(const std::wstring& text) {
  SetDiagnosticHook(nullptr);
  testing::internal::CaptureStderr();
  DebugLog(L"%ls", text.c_str());
  return Wide(testing::internal::GetCapturedStderr());
}
#endif

template <class Machine>
Function OneAfterTheOther() {
  return [machine = std::make_shared<Machine>()](const std::wstring& input) { return (*machine)(input); };
}

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
#else
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
