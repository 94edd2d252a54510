#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "core/monitor_engine.h"
#include "core/simulated_process_table.h"
#include "platform/text_format.h"
#include "tests/core/monitor_doubles.h"

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
  explicit Slot(std::uint32_t slotNumber) : number(slotNumber) {}

  [[nodiscard]] std::uint64_t Period() const { return 200 + 37 * (number % 50); }
  [[nodiscard]] std::uint64_t Gap() const { return 20 + 15 * (number % 7); }
  [[nodiscard]] std::uint64_t Offset() const { return (number * 131) % Period(); }
  [[nodiscard]] std::uint64_t BirthOf(std::uint64_t generation) const {
    return generation * Period() < Offset() ? 0 : generation * Period() - Offset();
  }
  [[nodiscard]] std::uint64_t DeathOf(std::uint64_t generation) const {
    const std::uint64_t end = (generation + 1) * Period() - Gap();
    return end < Offset() ? 0 : end - Offset();
  }
  [[nodiscard]] bool HandsIdOn() const { return number % 2 == 0; }
  [[nodiscard]] std::uint32_t PidOf(std::uint64_t generation) const {
    return HandsIdOn() ? 8 + number : 1000 + static_cast<std::uint32_t>(generation) * kSlots + number;
  }
  [[nodiscard]] std::uint32_t Group() const { return number % kGroups; }
  [[nodiscard]] bool Misbehaves() const { return number / kGroups % 3 == 0; }

  std::uint32_t number;
};

/// What a rule measures decides how old a process is when it breaks the rule for the first time; from then on it breaks it for
/// life.
struct RulePlan {
  std::uint32_t cooldownSec;
  std::uint64_t ageAtFirstBreach;
  ThresholdRule rule;
};

constexpr std::uint64_t kLeakAge = 50;

std::array<RulePlan, kRules> MakePlans() {
  constexpr std::uint32_t kCooldowns[] = {30, 12, 60, 90, 400, 3600, 100'000, 45};
  std::array<RulePlan, kRules> plans;
  for (std::uint32_t index = 0; index < kRules; ++index) {
    RulePlan& plan = plans[index];
    ThresholdRule& rule = plan.rule;
    plan.cooldownSec = rule.cooldownSec = kCooldowns[index % 8];
    rule.ruleId = index + 1;
    // Two rules to a group and every group a name of its own: ten groups of twenty slots are watched.
    rule.processPattern = FormatText(L"%lc-PROCESS?.*", static_cast<wint_t>(L'A' + index / 2));
    switch (index % 4) {
      case 0:  // too many threads from the start
        rule.maxThreads = 100;
        plan.ageAtFirstBreach = 0;
        break;
      case 1:  // handles leak one a cycle
        rule.maxHandles = kLeakAge;
        plan.ageAtFirstBreach = kLeakAge;
        break;
      case 2:  // one processor of four kept busy, seen from the second cycle on
        rule.maxCpuPercent = 20.0;
        plan.ageAtFirstBreach = 1;
        break;
      default:  // both memories, in one alert
        rule.maxWorkingSet = 1;
        rule.maxPrivateBytes = 1;
        plan.ageAtFirstBreach = 0;
        break;
    }
  }
  return plans;
}

struct Expectation {
  std::array<std::uint64_t, kRules> alerts{};
  std::size_t cooldownsLeft = 0;
};

/// Leaps from one alert of a slot to the next.
void Expect(const Slot& slot, const RulePlan& plan, std::uint64_t& alerts, std::size_t& cooldownsLeft) {
  constexpr std::uint64_t kNever = ~std::uint64_t{0};
  std::uint64_t last = kNever;
  for (std::uint64_t generation = 0; slot.BirthOf(generation) < kDay; ++generation) {
    const std::uint64_t death = std::min(slot.DeathOf(generation), kDay);
    if (!slot.HandsIdOn()) last = kNever;
    std::uint64_t cycle = slot.BirthOf(generation) + plan.ageAtFirstBreach;
    if (last != kNever) cycle = std::max(cycle, last + plan.cooldownSec);
    for (; cycle < death; cycle += plan.cooldownSec) {
      ++alerts;
      last = cycle;
    }
    // Until the ID has its next process, or for good, a cooldown that runs out is forgotten.
    const std::uint64_t end = slot.HandsIdOn() ? std::min(slot.BirthOf(generation + 1), kDay) : kDay;
    if (last != kNever && end > death && end - 1 - last >= plan.cooldownSec) last = kNever;
    if (last != kNever && end == kDay) ++cooldownsLeft;
  }
}

/// The machine that follows the timetable.
class Machine {
 public:
  Machine() {
    for (std::uint32_t number = 0; number < kSlots; ++number) places_.push_back({Slot(number), 0});
  }

  void MoveTo(std::uint64_t cycle) {
    for (Place& place : places_) {
      if (cycle == place.death) {
        table->Remove(place.slot.PidOf(place.generation++));
        place.birth = place.slot.BirthOf(place.generation);
        place.death = place.slot.DeathOf(place.generation);
      }
      if (cycle == place.birth && cycle < place.death) Begin(place);
      if (place.isWatched && cycle >= place.birth) Live(place);
    }
  }

  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();

 private:
  struct Place {
    Slot slot;
    std::uint64_t generation;
    std::uint64_t birth = slot.BirthOf(0);
    std::uint64_t death = slot.DeathOf(0);
    bool isWatched = slot.Misbehaves() && slot.Group() < kRules / 2;
  };

  void Begin(const Place& place) {
    SimulatedProcess process;
    process.pid = place.slot.PidOf(place.generation);
    process.name = FormatText(L"%lc-process%lc.exe", static_cast<wint_t>(L'a' + place.slot.Group()),
                              static_cast<wint_t>(L'a' + place.slot.number / kGroups));
    process.threads = place.slot.Misbehaves() ? 101 : 100;
    process.times = {1 + place.birth, 1, 1};
    if (place.slot.Misbehaves()) process.memory = {2, 2};
    table->Put(std::move(process));
  }

  void Live(const Place& place) {
    SimulatedProcess* const process = table->Find(place.slot.PidOf(place.generation));
    ASSERT_NE(process, nullptr);
    process->times.userTime += kMsPerCycle * 10'000;
    ++process->handles;
  }

  std::vector<Place> places_;
};

TEST(DayOfCycles, RaisesExactlyWhatTheTimetableSaysInBoundedTables) {
  SetDiagnosticHook([](std::wstring_view) {});
  const std::array<RulePlan, kRules> plans = MakePlans();
  RuleList ruleList;
  for (const RulePlan& plan : plans) ruleList.push_back(plan.rule);
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
  for (std::uint32_t number = 0; number < kSlots; ++number) {
    const Slot slot(number);
    if (!slot.Misbehaves()) continue;
    for (std::uint32_t index = 0; index < kRules; ++index) {
      if (index / 2 == slot.Group()) Expect(slot, plans[index], expected.alerts[index], expected.cooldownsLeft);
    }
  }
  EXPECT_EQ(sink.alerts, expected.alerts);
  EXPECT_EQ(engine.CooldownCount(), expected.cooldownsLeft);
  EXPECT_LE(mostCpuSamples, kSlots);
  // Those that never run out within the day, and at any moment no more others than there are processes under watch.
  EXPECT_LE(mostCooldowns, expected.cooldownsLeft + kSlots);
  SetDiagnosticHook(nullptr);
}

}  // namespace
