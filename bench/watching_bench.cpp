// What watching costs, as one table: ratios against a floor, against peers and against the plain way of doing it, measured in
// turns within one run, since other programs share the machine. A row that misses its goal says so.

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "core/monitor_engine.h"
#include "core/rule_evaluation.h"
#include "core/rule_matcher.h"
#include "core/wildcard.h"
#include "platform/diagnostics.h"
#include "storage/rules_csv.h"
#include "tests/support/limited_memory.h"
#include "tests/support/simulated_process_table.h"

namespace {

constexpr int kTurns = 9;
constexpr int kSleepers = 4000;

using Work = std::function<void()>;

double SecondsOf(clockid_t clock) {
  std::timespec time = {};
  ::clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double CpuOf(const Work& work) {
  const double start = SecondsOf(CLOCK_PROCESS_CPUTIME_ID);
  work();
  return SecondsOf(CLOCK_PROCESS_CPUTIME_ID) - start;
}

/// The median CPU seconds of each measure, all of them taken once in every turn.
std::vector<double> Medians(const std::vector<std::function<double()>>& measures, int turns = kTurns) {
  std::vector<std::vector<double>> times(measures.size());
  for (int turn = 0; turn < turns; ++turn) {
    for (std::size_t index = 0; index < measures.size(); ++index) times[index].push_back(measures[index]());
  }
  std::vector<double> medians;
  for (std::vector<double>& each : times) {
    std::nth_element(each.begin(), each.begin() + turns / 2, each.end());
    medians.push_back(each[static_cast<std::size_t>(turns / 2)]);
  }
  return medians;
}

bool missed = false;

void Row(const char* measure, double value, double goal, bool atLeast = false, const char* unit = "") {
  const bool met = atLeast ? value >= goal : value <= goal;
  missed = missed || !met;
  std::printf("| %-74s | %8.2f%s | %s %g%s%s |\n", measure, value, unit, atLeast ? "≥" : "≤", goal, unit, met ? "" : " MISSED");
}

class FixedRules final : public RuleSource {
 public:
  explicit FixedRules(RuleList rules) : snapshot_(std::make_shared<const RuleList>(std::move(rules))) {}
  RuleSnapshot Snapshot() const override { return snapshot_; }

 private:
  RuleSnapshot snapshot_;
};

/// Processes that sleep until this program ends them.
class Sleepers {
 public:
  Sleepers() {
    for (int count = 0; count < kSleepers; ++count) {
      const pid_t child = ::fork();
      if (child == 0) {
        for (;;) ::pause();
      }
      if (child > 0) children_.push_back(child);
    }
  }
  ~Sleepers() {
    for (const pid_t child : children_) ::kill(child, SIGKILL);
    for (const pid_t child : children_) ::waitpid(child, nullptr, 0);
  }
  Sleepers(const Sleepers&) = delete;
  Sleepers& operator=(const Sleepers&) = delete;

 private:
  std::vector<pid_t> children_;
};

/// The least that a look at every process can cost.
void ReadEveryStat() {
  DIR* folder = ::opendir("/proc");
  char bytes[4096];
  while (const dirent* entry = ::readdir(folder)) {
    if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
    char path[300];
    std::snprintf(path, sizeof path, "/proc/%s/stat", entry->d_name);
    const int file = ::open(path, O_RDONLY);
    if (file < 0) continue;
    if (::read(file, bytes, sizeof bytes) < 0) std::abort();
    ::close(file);
  }
  ::closedir(folder);
}

/// CPU seconds of a program that is run to its end; negative when it is not installed.
double CpuOfProgram(const std::vector<const char*>& arguments) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int null = ::open("/dev/null", O_WRONLY);
    ::dup2(null, 1);
    ::execvp(arguments[0], const_cast<char* const*>(arguments.data()));
    ::_exit(127);
  }
  int status = 0;
  rusage usage = {};
  ::wait4(child, &status, 0, &usage);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1.0;
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// An engine over this machine with one rule whose ceilings are never reached.
struct Watch {
  explicit Watch(const ThresholdRule& rule) : rules({rule}) {
    engine.SetRules(&rules);
    for (int warm = 0; warm < 3; ++warm) engine.RunCycle();
  }
  double Cycle() {
    return CpuOf([this] { engine.RunCycle(); });
  }

  FixedRules rules;
  MonitorEngine engine{MakeSystemProcessSampler(), SystemClock(), SystemProcessorCount()};
};

ThresholdRule CpuMemoryThreads(const wchar_t* pattern) {
  return {.ruleId = 1, .processPattern = pattern, .maxWorkingSet = ~0ULL, .maxCpuPercent = 100.0, .maxThreads = ~0U};
}

std::uint64_t AllocationsIn(const Work& work) {
  const std::uint64_t before = allocationsMade;
  work();
  return allocationsMade - before;
}

void MeasureThisMachine() {
  const Sleepers sleepers;
  ThresholdRule all = CpuMemoryThreads(L"*");
  Watch none(CpuMemoryThreads(L"nothing-has-this-name"));
  Watch cheap(all);
  all.maxHandles = ~0U;
  Watch handles(all);
  all.maxPrivateBytes = ~0ULL;
  all.maxGdiObjects = all.maxUserObjects = ~0U;
  Watch everything(all);
  const std::vector<double> times =
      Medians({[] { return CpuOf(ReadEveryStat); }, [&] { return none.Cycle(); }, [&] { return cheap.Cycle(); },
               [&] { return handles.Cycle(); }, [&] { return everything.Cycle(); },
               [] {
                 return CpuOfProgram({"ps", "-e", "-o", "pid,nlwp,comm", nullptr});
               },
               [] {
                 return CpuOfProgram({"ps", "-e", "-o", "pid,nlwp,cputime,rss,comm", nullptr});
               }});
  std::printf("One look at every process's stat, %d processes asleep: %.1f ms of CPU; ps: %.1f ms\n\n", kSleepers, times[0] * 1e3,
              times[5] * 1e3);
  std::printf("| measure | now | goal |\n|---|---|---|\n");
  Row("4,000 processes, nothing matches, against one look at each stat", times[1] / times[0], 1.10);
  Row("`*` with CPU, working set and threads, against that", times[2] / times[0], 1.20);
  Row("`*` with handles as well", times[3] / times[0], 1.70);
  Row("`*` with all", times[4] / times[0], 3.20);
  if (times[5] > 0) {
    Row("nothing matches, against `ps -e` with process ID, threads and name", times[1] / times[5], 0.25);
    Row("`*` with CPU, working set and threads, against `ps -e` with these", times[2] / times[6], 0.25);
  } else {
    std::printf("| against `ps -e`: skipped, ps is not installed | | |\n");
  }
  // Whatever starts or ends on the machine meanwhile is nothing steady.
  std::uint64_t allocations = UINT64_MAX;
  for (int cycle = 0; cycle < kTurns; ++cycle) {
    allocations = std::min(allocations, AllocationsIn([&] { everything.engine.RunCycle(); }));
  }
  Row("allocations in a steady cycle without an alert", static_cast<double>(allocations), 0);
}

constexpr std::uint32_t kDistinctNames = 1000;

std::wstring NameOf(std::uint32_t number) { return L"service-" + std::to_wstring(number * 7919 % kDistinctNames) + L"-host.exe"; }

/// Each matches one name in a thousand or so, by a prefix, a suffix or whole; no ceiling is reached but that of every hundredth.
RuleList ManyRules(std::uint32_t count) {
  RuleList rules(count);
  for (std::uint32_t index = 0; index < count; ++index) {
    const std::wstring number = std::to_wstring(index * 31 % kDistinctNames);
    const std::wstring patterns[] = {L"service-" + number + L"-*", L"*-" + number + L"-host.exe",
                                     L"service-" + number + L"-host.exe"};
    rules[index] = CpuMemoryThreads(patterns[index % 3].c_str());
    rules[index].ruleId = index + 1;
    if (index % 100 == 0) rules[index].maxThreads = 1;
  }
  return rules;
}

std::vector<ProcessMetrics> ManyProcesses(std::uint32_t count) {
  std::vector<ProcessMetrics> processes(count);
  for (std::uint32_t number = 0; number < count; ++number) {
    processes[number].pid = 8 + 4 * number;
    processes[number].name = NameOf(number);
    processes[number].threads = 2;
  }
  return processes;
}

/// How many alerts each way finds; both ways must find the same.
std::size_t EvaluatePlainly(const RuleList& rules, const std::vector<ProcessMetrics>& processes) {
  std::size_t alerts = 0;
  for (const ProcessMetrics& process : processes) {
    for (const ThresholdRule& rule : rules) {
      if (!rule.enabled || !WildcardMatch(process.name.c_str(), rule.processPattern.c_str())) continue;
      alerts += ViolationText(rule, process).empty() ? 0U : 1U;
    }
  }
  return alerts;
}

std::size_t Evaluate(RuleMatcher& matcher, const std::vector<ProcessMetrics>& processes) {
  std::size_t alerts = 0;
  for (const ProcessMetrics& process : processes) {
    const RuleMatch& match = matcher.Find(process.name);
    if (match.rules == nullptr) continue;
    for (const std::uint32_t place : *match.rules) alerts += ViolationText(matcher.Rules()[place], process).empty() ? 0U : 1U;
  }
  return alerts;
}

void MeasureEvaluation() {
  const std::vector<ProcessMetrics> processes = ManyProcesses(10'000);
  const auto exclusions = std::make_shared<const ExclusionList>();
  const struct {
    std::uint32_t rules;
    const char* warm;
    double goal;
    int turns;
  } cases[] = {{100, "evaluation against the plain loop, 10,000 processes × 100 rules, warm", 25, 9},
               {1000, "the same with 1,000 rules, warm", 100, 3}};
  for (const auto& each : cases) {
    const auto rules = std::make_shared<const RuleList>(ManyRules(each.rules));
    RuleMatcher warm;
    warm.Use(rules, exclusions);
    if (Evaluate(warm, processes) != EvaluatePlainly(*rules, processes)) std::abort();
    std::size_t found = 0;
    const auto times = Medians({[&] { return CpuOf([&] { found += EvaluatePlainly(*rules, processes); }); },
                                [&] { return CpuOf([&] { found += Evaluate(warm, processes); }); },
                                [&] {
                                  RuleMatcher cold;
                                  cold.Use(rules, exclusions);
                                  return CpuOf([&] { found += Evaluate(cold, processes); });
                                }},
                               each.turns);
    if (found == 0) std::abort();
    Row(each.warm, times[0] / times[1], each.goal, true);
    if (each.rules == 100) Row("the same with 100 rules, cold (1,000 distinct names)", times[0] / times[2], 5, true);
  }
}

/// Over made-up processes, so that only our own work is counted.
double CycleSeconds(std::uint32_t processes, std::uint32_t ruleCount) {
  auto table = std::make_shared<SimulatedProcessTable>();
  for (const ProcessMetrics& each : ManyProcesses(processes)) {
    SimulatedProcess process;
    process.pid = each.pid;
    process.name = each.name;
    process.creationTime = 1;
    process.kernelTime = process.userTime = each.pid;
    table->Put(process);
  }
  const FixedRules rules(ManyRules(ruleCount));
  MonitorEngine engine(table, SystemClock(), SystemProcessorCount());
  engine.SetRules(&rules);
  for (int warm = 0; warm < 3; ++warm) engine.RunCycle();
  return Medians({[&] { return CpuOf([&] { engine.RunCycle(); }); }})[0];
}

void MeasureGrowth() {
  const double processes = std::log(CycleSeconds(16'000, 100) / CycleSeconds(250, 100)) / std::log(16'000.0 / 250.0);
  Row("growth of a cycle with the processes, 250 to 16,000 (exponent)", processes, 1.05);
  const double rules = std::log(CycleSeconds(4'000, 10'000) / CycleSeconds(4'000, 10)) / std::log(10'000.0 / 10.0);
  Row("growth of a cycle with the rules, 10 to 10,000 (exponent)", rules, 0.3);
}

void MeasureWildcard() {
  const std::wstring name(259, L'a');
  const std::wstring patterns[] = {L"*" + std::wstring(127, L'a') + L"b*", L"*" + std::wstring(253, L'a') + L"b"};
  double worst = 0.0;
  for (const std::wstring& pattern : patterns) {
    constexpr int kTimes = 2000;
    bool any = false;
    const double seconds = Medians({[&] {
      return CpuOf([&] {
        for (int times = 0; times < kTimes; ++times) any = any || WildcardMatch(name.c_str(), pattern.c_str());
      });
    }})[0];
    if (any) std::abort();
    worst = std::max(worst, seconds / kTimes * 1e6);
  }
  Row("`WildcardMatch`, hostile pattern of 255 against a name of 259", worst, 20, false, " µs");
}

void MeasureConsole() {
  const Sleepers sleepers;
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "vantora-bench-rules.csv";
  RuleList rules = ManyRules(100);
  for (ThresholdRule& rule : rules) rule.maxThreads = ~0U;
  const std::wstring text = FormatRulesCsv(rules);
  std::ofstream(path) << std::string(text.begin(), text.end());
  const pid_t console = ::fork();
  if (console == 0) {
    ::execl(VANTORA_CONSOLE, VANTORA_CONSOLE, "--interval", "1", "--rules", path.c_str(), nullptr);
    ::_exit(127);
  }
  ::sleep(4);
  std::ifstream status("/proc/" + std::to_string(console) + "/status");
  double megabytes = 0.0;
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) megabytes = std::atof(line.c_str() + 6) / 1024.0;
  }
  ::kill(console, SIGTERM);
  ::waitpid(console, nullptr, 0);
  std::filesystem::remove(path);
  if (megabytes == 0.0) std::abort();
  Row("resident memory of the console companion, 4,000 processes, 100 rules", megabytes, 4, false, " MB");
}

/// An hour that passes as fast as it is waited for.
class CountingClock final : public Clock {
 public:
  std::uint64_t TickMs() override { return nowMs; }
  std::uint32_t Tick32Ms() override { return static_cast<std::uint32_t>(nowMs); }
  LocalTime Now() override { return {}; }
  WaitResult Wait(Event& event, std::uint32_t timeoutMs) override {
    if (nowMs >= 3'600'000) return event.Wait(0xFFFFFFFF);
    ++waits;
    nowMs += timeoutMs;
    return WaitResult::kTimedOut;
  }
  std::atomic<std::uint64_t> nowMs{0};
  std::atomic<int> waits{0};
};

void MeasureWakeUps() {
  static CountingClock clock;  // outlives every worker
  MonitorEngine engine(MakeSystemProcessSampler(), clock, 1);
  engine.Start();
  while (clock.nowMs < 3'600'000) ::usleep(1000);
  engine.Stop();
  Row("wake-ups in an idle hour without rules, per poll interval",
      clock.waits * double{MonitorEngine::kDefaultIntervalMs} / 3'600'000.0, 1);
}

}  // namespace

int main() {
  SetDiagnosticHook([](std::wstring_view) {});
  MeasureThisMachine();
  MeasureEvaluation();
  MeasureGrowth();
  MeasureWildcard();
  MeasureConsole();
  std::error_code error;
  const auto size = std::filesystem::file_size("build/windows/vantora.exe", error);
  if (error) {
    std::printf("| vantora.exe: skipped, not built | | |\n");
  } else {
    Row("vantora.exe", static_cast<double>(size) / 1024.0, 600, false, " KB");
  }
  MeasureWakeUps();
  return missed ? 1 : 0;
}
