// The console companion: the program's monitor without its windows, for machines that have none. Reads a rules file, watches this
// machine's processes, and prints each alert as a line of the alert log.

#include <csignal>
#include <cstdio>
#include <ctime>

#include "app/console_arguments.h"
#include "core/alert_sink.h"
#include "core/monitor_engine.h"
#include "platform/text_encoding.h"
#include "storage/alert_log_line.h"
#include "storage/rule_store.h"

namespace {

constexpr char kUsage[] =
    "usage: vantora-console [--interval SECONDS] [--cycles N] [RULES_CSV]\n"
    "\n"
    "Watches the processes of this machine by the rules of RULES_CSV (rules.csv) and prints an alert log line for each alert.\n"
    "  --interval SECONDS  time between two cycles, 1 to 86400 (30)\n"
    "  --cycles N          end after N cycles (0: run until interrupted)\n";

constexpr int kExitOk = 0;
constexpr int kExitNoRules = 1;
constexpr int kExitUsage = 2;

class PrintingSink final : public IAlertSink {
 public:
  void OnAlert(const AlertRecord& record) override {
    // The log's own line end is the file's business, not the terminal's.
    std::wstring text = FormatAlertLogLine(record);
    while (text.ends_with(L'\n')) text.pop_back();
    std::string line;
    EncodeText(text, TextEncoding::kUtf8, line);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
    // At once, also into a pipe: whoever reads it waits for alerts.
    std::fflush(stdout);
  }
};

/// Ctrl+C and a request to end are taken from the wait between two cycles, never in the middle of one.
class EndSignals {
 public:
  EndSignals() {
    ::sigemptyset(&signals_);
    ::sigaddset(&signals_, SIGINT);
    ::sigaddset(&signals_, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }
  /// True when a signal came within the time.
  [[nodiscard]] bool Wait(std::uint32_t seconds) const {
    const std::timespec time{static_cast<std::time_t>(seconds), 0};
    return ::sigtimedwait(&signals_, nullptr, &time) > 0;
  }

 private:
  sigset_t signals_{};
};

std::wstring WidePath(const std::string& path) {
  std::wstring wide;
  TextDecoder decoder(TextEncoding::kUtf8);
  decoder.Decode(path, wide);
  decoder.Finish(wide);
  return wide;
}

int Watch(const ConsoleArguments& arguments) {
  const std::wstring path = WidePath(arguments.rulesFile);
  RuleStore rules([&path] { return std::wstring(path); });
  if (!rules.Load(path)) {
    std::fprintf(stderr, "vantora-console: no rules in '%s'\n", arguments.rulesFile.c_str());
    return kExitNoRules;
  }
  const EndSignals signals;
  PrintingSink sink;
  MonitorEngine engine(MakeSystemProcessSampler(), SystemClock(), SystemProcessorCount());
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  for (std::uint64_t cycle = 1;; ++cycle) {
    engine.RunCycle();
    if (cycle == arguments.cycles || signals.Wait(arguments.intervalSec)) return kExitOk;
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string error;
  const std::span<const char* const> arguments(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0));
  const auto parsed = ParseConsoleArguments(arguments, error);
  if (!parsed) {
    std::fprintf(stderr, "vantora-console: %s\n%s", error.c_str(), kUsage);
    return kExitUsage;
  }
  if (parsed->help) {
    std::fputs(kUsage, stdout);
    return kExitOk;
  }
  return Watch(*parsed);
}
