#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "core/monitor_engine.h"
#include "tests/support/monitor_doubles.h"

namespace {

// Processes come, change and go at random, IDs are handed on, rules change: the engine alerts as a model that only remembers when
// each pair of process ID and rule last did, and keeps no more of them than the model needs.
TEST(PlainModel, TheEngineAlertsAsItDoes) {
  const DiagnosticLines lines;
  std::mt19937 random(1);
  const auto below = [&random](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); };
  const auto table = std::make_shared<SimulatedProcessTable>();
  table->Put(MakeProcess(100, L"always there", 0));
  FakeClock clock;
  FakeRules rules;
  RecordingSink sink;
  MonitorEngine engine(table, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  RuleList list;
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint64_t> last;
  for (int cycle = 0; cycle < 3000; ++cycle) {
    const std::uint64_t now = clock.tickMs += below(300) == 0 ? 1'000'000'000 : 500 * (1 + below(8));
    if (cycle % 500 == 0) {
      list.clear();  // ten rules with six IDs; a cooldown may be longer than any 32-bit number of milliseconds
      while (list.size() < 10) {
        list.push_back(
            ThreadRule(below(6), 1 + below(8), below(8) == 0 ? 5'000'000 : 5 * below(8), below(3) == 0 ? L"A*" : L"*"));
        list.back().enabled = below(4) != 0;
      }
      rules.Set(list);
    }
    const std::uint32_t changed = 8 + below(20);
    if (below(2) == 0)
      table->Remove(changed);
    else
      table->Put(MakeProcess(changed, below(2) == 0 ? L"a.exe" : L"b.exe", below(10)));

    Texts expected;
    for (std::uint32_t pid = 8; pid < 28; ++pid) {
      const SimulatedProcess* const process = table->Find(pid);
      for (const ThresholdRule& rule : list) {
        if (process == nullptr || !rule.enabled || process->threads <= rule.maxThreads ||
            (rule.processPattern != L"*" && process->name[0] != L'a'))
          continue;
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
    // Needed no more: the process is gone and every cooldown of the rule has run out.
    std::erase_if(last, [&](const auto& entry) {
      return table->Find(entry.first.first) == nullptr && std::none_of(list.begin(), list.end(), [&](const ThresholdRule& rule) {
               return rule.ruleId == entry.first.second && now - entry.second < std::uint64_t{1000} * rule.cooldownSec;
             });
    });
    ASSERT_EQ(engine.CooldownCount(), last.size()) << cycle;
  }
}

}  // namespace
