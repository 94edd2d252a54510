#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "core/monitor_engine.h"
#include "platform/text_format.h"
#include "tests/support/monitor_doubles.h"

// A day of one cycle a second over a machine whose processes come and go by a timetable. What the rules must raise is counted
// from the timetable alone, by leaping from alert to alert, and compared with what the engine did raise.

namespace {

/// 86,400 is the day; a build with sanitizers may ask for less.
constexpr std::uint64_t kDay = VANTORA_DAY_CYCLES;
constexpr std::uint32_t kSlots = 500;
constexpr std::uint32_t kGroups = 25;
constexpr std::uint32_t kRules = 20;
constexpr std::uint64_t kMsPerCycle = 1000;
constexpr std::uint32_t kProcessors = 4;

/// The place of one process after the other, of the same name. A slot's processes have one process ID in turn, or each its own.
struct Slot {
  [[nodiscard]] std::uint64_t Period() const { return 200 + 37 * (number % 50); }
  [[nodiscard]] std::uint64_t Gap() const { return 20 + 15 * (number % 7); }
  [[nodiscard]] std::uint64_t BirthOf(std::uint64_t generation) const { return number * 131 % Period() + generation * Period(); }
  [[nodiscard]] std::uint64_t DeathOf(std::uint64_t generation) const { return BirthOf(generation + 1) - Gap(); }
  [[nodiscard]] bool HandsIdOn() const { return number % 2 == 0; }
  [[nodiscard]] std::uint32_t PidOf(std::uint64_t generation) const {
    return HandsIdOn() ? 8 + number : 1000 + static_cast<std::uint32_t>(generation) * kSlots + number;
  }
  [[nodiscard]] std::uint32_t Group() const { return number % kGroups; }
  [[nodiscard]] bool Misbehaves() const { return number / kGroups % 3 == 0; }
  [[nodiscard]] bool IsWatched() const { return Misbehaves() && Group() < kRules / 2; }

  std::uint32_t number;
};

RuleList MakeRules() {
  constexpr std::uint32_t kCooldowns[] = {30, 12, 60, 90, 400, 3600, 100'000, 45};
  RuleList rules;
  for (std::uint32_t index = 0; index < kRules; ++index) {
    // Two rules to a group and every group a name of its own: ten groups of twenty slots are watched.
    const std::wstring pattern = FormatText(L"%lc-PROCESS?.*", static_cast<wint_t>(L'A' + index / 2));
    ThresholdRule rule = ThreadRule(index + 1, index % 4 == 0 ? 100 : 0, kCooldowns[index % 8], pattern.c_str());
    if (index % 4 == 1) rule.maxHandles = 50;
    if (index % 4 == 2) rule.maxCpuPercent = 20.0;
    if (index % 4 == 3) rule.maxWorkingSet = rule.maxPrivateBytes = 1;
    rules.push_back(rule);
  }
  return rules;
}

/// How old a process is when it breaks the rule for the first time; from then on it breaks it for life. It leaks a handle each
/// cycle, and keeps one processor of four busy, which is seen from its second cycle on.
std::uint64_t AgeAtFirstBreach(const ThresholdRule& rule) { return rule.maxCpuPercent > 0.0 ? 1 : rule.maxHandles; }

struct Expectation {
  std::array<std::uint64_t, kRules> alerts{};
  std::size_t cooldownsLeft = 0;
};

/// Leaps from one alert of a slot to the next.
void Expect(const Slot& slot, const ThresholdRule& rule, Expectation& expected) {
  constexpr std::uint64_t kNever = ~std::uint64_t{0};
  const std::uint64_t cooldown = rule.cooldownSec;
  std::uint64_t last = kNever;
  for (std::uint64_t generation = 0; slot.BirthOf(generation) < kDay; ++generation) {
    const std::uint64_t death = std::min(slot.DeathOf(generation), kDay);
    if (!slot.HandsIdOn()) last = kNever;
    std::uint64_t cycle = slot.BirthOf(generation) + AgeAtFirstBreach(rule);
    if (last != kNever) cycle = std::max(cycle, last + cooldown);
    for (; cycle < death; cycle += cooldown) {
      ++expected.alerts[rule.ruleId - 1];
      last = cycle;
    }
    // Until the ID has its next process, or for good, a cooldown that runs out is forgotten.
    const std::uint64_t end = slot.HandsIdOn() ? std::min(slot.BirthOf(generation + 1), kDay) : kDay;
    if (last != kNever && end > death && end - 1 - last >= cooldown) last = kNever;
    if (last != kNever && end == kDay) ++expected.cooldownsLeft;
  }
}

/// The machine that follows the timetable.
class Machine {
 public:
  Machine() {
    for (std::uint32_t number = 0; number < kSlots; ++number) places_.push_back({{number}, 0});
  }

  void MoveTo(std::uint64_t cycle) {
    for (auto& [slot, generation] : places_) {
      if (cycle == slot.DeathOf(generation)) table->Remove(slot.PidOf(generation++));
      if (cycle == slot.BirthOf(generation)) Begin(slot, generation);
      if (!slot.IsWatched() || cycle < slot.BirthOf(generation)) continue;
      SimulatedProcess* const process = table->Find(slot.PidOf(generation));
      ASSERT_NE(process, nullptr);
      process->times.userTime += kMsPerCycle * 10'000;
      ++process->handles;
    }
  }

  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();

 private:
  void Begin(const Slot& slot, std::uint64_t generation) {
    const std::wstring name = FormatText(L"%lc-process%lc.exe", static_cast<wint_t>(L'a' + slot.Group()),
                                         static_cast<wint_t>(L'a' + slot.number / kGroups));
    SimulatedProcess process =
        MakeProcess(slot.PidOf(generation), name.c_str(), slot.Misbehaves() ? 101 : 100, {1 + slot.BirthOf(generation), 1, 1});
    if (slot.Misbehaves()) process.memory = {2, 2};
    table->Put(std::move(process));
  }

  std::vector<std::pair<Slot, std::uint64_t>> places_;
};

TEST(DayOfCycles, RaisesExactlyWhatTheTimetableSaysInBoundedTables) {
  SetDiagnosticHook([](std::wstring_view) {});
  const RuleList ruleList = MakeRules();
  const FakeRules rules(ruleList);
  struct CountingSink final : IAlertSink {
    void OnAlert(const AlertRecord& record) override { ++alerts[record.ruleId - 1]; }
    std::array<std::uint64_t, kRules> alerts{};
  } sink;
  Machine machine;
  FakeClock clock;
  MonitorEngine engine(machine.table, clock, kProcessors);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  std::size_t mostCooldowns = 0;
  std::size_t mostCpuSamples = 0;
  for (std::uint64_t cycle = 0; cycle < kDay; ++cycle) {
    machine.MoveTo(cycle);
    clock.tickMs += kMsPerCycle;
    engine.RunCycle();
    mostCooldowns = std::max(mostCooldowns, engine.CooldownCount());
    mostCpuSamples = std::max(mostCpuSamples, engine.CpuSampleCount());
  }

  Expectation expected;
  for (Slot slot{0}; slot.number < kSlots; ++slot.number) {
    if (!slot.IsWatched()) continue;
    for (const std::uint32_t index : {2 * slot.Group(), 2 * slot.Group() + 1}) Expect(slot, ruleList[index], expected);
  }
  EXPECT_EQ(sink.alerts, expected.alerts);
  EXPECT_EQ(engine.CooldownCount(), expected.cooldownsLeft);
  EXPECT_LE(mostCpuSamples, kSlots);
  // Those that never run out within the day, and at any moment no more others than there are processes under watch.
  EXPECT_LE(mostCooldowns, expected.cooldownsLeft + kSlots);
  SetDiagnosticHook(nullptr);
}

}  // namespace
