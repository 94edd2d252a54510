#include "console/watch.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>

#include "console/alert_output.h"
#include "console/console_system.h"
#include "console/metrics.h"
#include "console/process_table.h"
#include "console/rules_file.h"
#include "core/monitor_cycle.h"
#include "core/printable_text.h"
#include "core/rule_evaluation.h"
#include "platform/native_file.h"
#include "platform/text_encoding.h"
#include "storage/alert_log.h"
#include "storage/rule_presets.h"
#include "storage/rule_store.h"

namespace {

constexpr int kExitQuiet = 0;
constexpr int kExitReported = 1;
constexpr int kExitNoRules = 2;
constexpr std::uint32_t kWatchIntervalSec = 30;
constexpr std::uint32_t kQuickIntervalSec = 1;

/// The text, to a person: nothing in it steers the terminal.
void Complain(const std::wstring& text) {
  std::fprintf(stderr, "vantora-console: %s\n", EncodeUtf8(PrintableText(text)).c_str());
}

/// False once the reader has gone.
bool Print(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

RuleList BuiltInRules() {
  RuleStore rules([] { return std::wstring(); });
  for (const RulePreset& preset : RulePresets()) AddPresetRules(rules, preset);
  return *rules.Snapshot();
}

void PrintFindings(const RulesFile& file, const std::wstring& path) {
  for (const LineFinding& finding : file.findings) {
    Complain(path + L":" + std::to_wstring(finding.line) + (finding.dropped ? L": dropped: " : L": changed: ") + finding.why);
  }
}

/// The rules to watch by; nothing, said on standard error, when there are none.
std::optional<RuleList> FindRules(const Options& options) {
  const std::wstring path = options.rulesFile.empty() ? UserRulesFile() : DecodeUtf8Text(options.rulesFile);
  if (options.rulesFile.empty() && (path.empty() || !ReadRulesFile(path))) {
    Complain(L"no rules in " + (path.empty() ? std::wstring(L"any folder of the user") : path) +
             L": watching by the built-in ones");
    return BuiltInRules();
  }
  const std::optional<RulesFile> file = ReadRulesFile(path);
  if (!file) {
    Complain(path + L": cannot be read");
    return std::nullopt;
  }
  PrintFindings(*file, path);
  if (file->rules.empty()) {
    Complain(path + L": holds no rule");
    return std::nullopt;
  }
  return file->rules;
}

int Validate(const Options& options) {
  const std::wstring path = options.rulesFile.empty() ? UserRulesFile() : DecodeUtf8Text(options.rulesFile);
  const std::optional<RulesFile> file = ReadRulesFile(path);
  if (!file) {
    Complain(path + L": cannot be read");
    return kExitNoRules;
  }
  PrintFindings(*file, path);
  (void)Print(EncodeUtf8(PrintableText(path)) + ": " + std::to_string(file->rules.size()) + " rules\n");
  return file->findings.empty() ? kExitQuiet : kExitNoRules;
}

/// Prints, logs and counts what a cycle raises, while the cycle's sample is at hand.
class Reporter final : public IAlertSink {
 public:
  Reporter(const Options& options, const MonitorCycle& cycle, Metrics& metrics)
      : options_(options),
        cycle_(cycle),
        metrics_(metrics),
        color_(options.color == Options::Color::kAlways || (options.color == Options::Color::kAuto && IsTerminal())),
        host_(HostName()),
        logFile_(DecodeUtf8Text(options.logFile)) {}

  void OnAlert(const AlertRecord& record) override {
    if (muted) return;
    reported = true;
    if (!logFile_.empty()) AppendAlertLog(logFile_, record);
    const auto [place, process] = Origin(record);
    if (process == nullptr) return;
    metrics_.CountAlert(place, process->metrics);
    if (options_.list) return;
    const std::string line =
        options_.json ? FormatAlertJson(record, cycle_.Rules()[place], process->metrics, host_) : FormatAlertText(record, color_);
    readerGone = !Print(line + "\n") || readerGone;
  }

  bool muted = false;
  bool reported = false;
  bool readerGone = false;

 private:
  /// The rule and the process that the alert was raised from.
  [[nodiscard]] std::pair<std::size_t, const SampledProcess*> Origin(const AlertRecord& record) const {
    for (const SampledProcess& process : cycle_.Sample()) {
      if (process.metrics.pid != record.pid || process.rules == nullptr) continue;
      for (const std::uint32_t place : *process.rules) {
        const ThresholdRule& rule = cycle_.Rules()[place];
        if (rule.ruleId == record.ruleId && ViolationText(rule, process.metrics) == record.violation) return {place, &process};
      }
    }
    return {0, nullptr};
  }

  const Options& options_;
  const MonitorCycle& cycle_;
  Metrics& metrics_;
  bool color_;
  std::string host_;
  std::wstring logFile_;
};

class Watch {
 public:
  Watch(const Options& options, RuleList rules)
      : options_(options),
        rules_(std::make_shared<const RuleList>(std::move(rules))),
        metrics_(*rules_),
        reporter_(options, cycle_, metrics_) {
    ExclusionList exclusions;
    for (const std::string& pattern : options.exclude) exclusions.push_back(DecodeUtf8Text(pattern));
    exclusions_ = std::make_shared<const ExclusionList>(std::move(exclusions));
    if (options.list) cycle_.AlsoRead(kWantHandles | kWantPrivateBytes);
  }

  int Run() {
    const bool sampleFirst = options_.once || options_.list;
    const std::uint32_t intervalSec =
        options_.intervalSec != 0 ? options_.intervalSec : (sampleFirst ? kQuickIntervalSec : kWatchIntervalSec);
    if (sampleFirst) {
      // CPU is a change from one sample to the next.
      reporter_.muted = true;
      Cycle();
      reporter_.muted = false;
      cycle_.ForgetCooldowns();
      if (end_.Wait(intervalSec * 1000)) return kExitQuiet;
    }
    for (std::uint64_t cycle = 1;; ++cycle) {
      Cycle();
      if (reporter_.readerGone || sampleFirst || cycle == options_.cycles || end_.Wait(intervalSec * 1000)) break;
    }
    if (options_.list) (void)Print(FormatProcessTable(cycle_.Sample(), *rules_));
    return reporter_.reported ? kExitReported : kExitQuiet;
  }

 private:
  void Cycle() {
    const auto start = std::chrono::steady_clock::now();
    cycle_.Run(rules_, exclusions_, reporter_, [this] { return end_.Wait(0); });
    if (options_.metricsFile.empty() || reporter_.muted || end_.Wait(0)) return;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const std::wstring path = DecodeUtf8Text(options_.metricsFile);
    if (!WriteMetrics(path, metrics_.Text(cycle_.Sample(), took.count(), static_cast<std::uint64_t>(std::time(nullptr))))) {
      Complain(path + L": cannot be written");
    }
  }

  const Options& options_;
  RuleSnapshot rules_;
  ExclusionSnapshot exclusions_;
  EndRequest end_;
  MonitorCycle cycle_{MakeSystemProcessSampler(), SystemClock(), SystemProcessorCount()};
  Metrics metrics_;
  Reporter reporter_;
};

}  // namespace

int RunOptions(const Options& options) {
  if (options.validate) return Validate(options);
  std::optional<RuleList> rules = FindRules(options);
  return rules ? Watch(options, std::move(*rules)).Run() : kExitNoRules;
}
