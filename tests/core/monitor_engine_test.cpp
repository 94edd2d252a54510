#include "core/monitor_engine.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "core/monitor_cycle.h"
#include "core/wildcard.h"
#include "tests/support/limited_memory.h"
#include "tests/support/monitor_doubles.h"

namespace {

class MonitorEngineTest : public testing::Test {
 protected:
  MonitorEngineTest() {
    engine.SetRules(&rules);
    engine.SetSink(&sink);
  }

  const DiagnosticLines lines;
  std::shared_ptr<SimulatedProcessTable> table = std::make_shared<SimulatedProcessTable>();
  FakeClock clock;
  FakeRules rules;
  RecordingSink sink;
  MonitorEngine engine{table, clock, 1};
};

TEST_F(MonitorEngineTest, AlertCarriesTheProcessTheRuleAndTheLocalTime) {
  table->Put(MakeProcess(77, L"busy\n.exe", 11));
  engine.RunCycle();
  EXPECT_EQ(table->lists, 0u) << "nothing is listed without rules";
  rules.Set({ThreadRule(9, 10)});
  engine.RunCycle();
  EXPECT_EQ(sink.Take(), (std::vector<AlertRecord>{{clock.Now(), 77, L"busy?.exe", 9, L"Threads: 11 > 10"}}));
  const Texts line = {L"ALERT: PID 77 (busy?.exe) Rule 9: Threads: 11 > 10"};
  EXPECT_EQ(DiagnosticLines::Take(), line);
  engine.SetSink(nullptr);
  engine.RunCycle();
  EXPECT_EQ(DiagnosticLines::Take(), line) << "without a receiver too";
}

/// Short, out of few letters, so that many match; stars and question marks for patterns.
std::wstring RandomText(std::mt19937& random, std::wstring_view letters) {
  std::wstring text;
  for (std::size_t length = random() % 6; length > 0; --length) text += letters[random() % letters.size()];
  return text;
}

// Processes come, change and go at random, IDs are handed on, rules and exclusions change: the engine opens processes and alerts
// as a model that loops over all rules and remembers only when each pair of process ID and rule last alerted, and keeps no more
// of those than the model needs.
TEST_F(MonitorEngineTest, OpensAndAlertsAsAPlainModelDoes) {
  std::mt19937 random(1);
  const auto below = [&random](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); };
  RuleList list;
  ExclusionList exclusions;
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint64_t> last;
  table->Put(MakeProcess(4, L"never opened", 0));
  for (int cycle = 0; cycle < 3000; ++cycle) {
    const std::uint64_t now = clock.tickMs += below(300) == 0 ? 1'000'000'000 : 500 * (1 + below(8));
    if (cycle % 100 == 0) {
      list.clear();  // ten rules with six IDs; a cooldown may be longer than any 32-bit number of milliseconds
      while (list.size() < 10) {
        const std::wstring pattern = L"*" + RandomText(random, L"aAb*?");
        list.push_back(ThreadRule(below(6), 1 + below(8), below(8) == 0 ? 5'000'000 : 5 * below(8), pattern.c_str()));
        list.back().enabled = below(4) != 0;
        list.back().maxHandles = below(4) == 0 ? 1 : 0;  // which nothing ever exceeds
        list.back().maxPrivateBytes = below(4) == 0 ? 1 : 0;
      }
      rules.Set(list);
    }
    if (cycle % 70 == 0) engine.SetExclusions(exclusions = ExclusionList(below(3), RandomText(random, L"ab*?")));
    const std::uint32_t changed = 8 + below(20);
    table->Remove(changed);
    if (below(2) == 0) table->Put(MakeProcess(changed, RandomText(random, L"aBb").c_str(), below(10)));

    std::map<std::uint32_t, std::uint32_t> opened;
    Texts expected;
    for (std::uint32_t pid = 8; pid < 28; ++pid) {
      const SimulatedProcess* const process = table->Find(pid);
      if (process == nullptr || IsExcluded(process->name.c_str(), exclusions)) continue;
      for (const ThresholdRule& rule : list) {
        if (!rule.enabled || !WildcardMatch(process->name.c_str(), rule.processPattern.c_str())) continue;
        opened[pid] |= (rule.maxHandles != 0 ? kWantHandles : 0U) | (rule.maxPrivateBytes != 0 ? kWantPrivateBytes : 0U);
        if (process->threads <= rule.maxThreads) continue;
        const auto [entry, isNew] = last.try_emplace({pid, rule.ruleId}, now);
        if (!isNew && now - entry->second < std::uint64_t{1000} * rule.cooldownSec) continue;
        entry->second = now;
        expected.push_back(std::to_wstring(pid) + L" " + std::to_wstring(rule.ruleId));
      }
    }
    engine.RunCycle();
    Texts alerted;
    for (const AlertRecord& alert : sink.Take())
      alerted.push_back(std::to_wstring(alert.pid) + L" " + std::to_wstring(alert.ruleId));
    std::sort(alerted.begin(), alerted.end());
    std::sort(expected.begin(), expected.end());
    ASSERT_EQ(alerted, expected) << cycle;
    ASSERT_EQ(std::map(table->opened.begin(), table->opened.end()), opened) << cycle;
    // Needed no more: the process is gone and every cooldown of the rule has run out.
    std::erase_if(last, [&](const auto& entry) {
      return table->Find(entry.first.first) == nullptr && std::none_of(list.begin(), list.end(), [&](const ThresholdRule& rule) {
               return rule.ruleId == entry.first.second && now - entry.second < std::uint64_t{1000} * rule.cooldownSec;
             });
    });
    ASSERT_EQ(engine.CooldownCount(), last.size()) << cycle;
  }
}

TEST_F(MonitorEngineTest, ACycleOverAKnownMachineAllocatesNothing) {
  for (std::uint32_t pid = 100; pid < 120; ++pid) table->Put(MakeProcess(pid, L"app with quite a long name.exe", 1));
  rules.Set({ThreadRule(1, 1000)});
  std::uint64_t before = 0;
  for (int cycle = 0; cycle < 4; ++cycle) {
    before = allocationsMade;
    engine.RunCycle();
  }
  EXPECT_EQ(allocationsMade, before);
}

TEST(RuleMatcher, StaysSmallWhileNamesKeepChanging) {
  RuleMatcher matcher;
  const auto rules = std::make_shared<const RuleList>(10, ThresholdRule{.processPattern = L"*"});
  const auto exclusions = std::make_shared<const ExclusionList>();
  std::size_t most = 0;
  for (int name = 0; name < 200'000; ++name) {
    if (name % 1000 == 0) matcher.Use(rules, exclusions);
    (void)matcher.Find(L"process-" + std::to_wstring(name) + L".exe");
    most = std::max(most, matcher.KeptBytes());
  }
  EXPECT_GT(most, RuleMatcher::kMaxKeptBytes);
  EXPECT_LT(most, RuleMatcher::kMaxKeptBytes + 250'000);
}

}  // namespace
