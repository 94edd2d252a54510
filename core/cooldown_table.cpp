#include "core/cooldown_table.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::uint64_t kMsPerSecond = 1000;

// An id can stand in the list twice, each time with a cooldown of its own; the longest decides how long an entry matters. Ids are
// not handed out twice: one that is gone from the list matters no more.
std::uint64_t LongestCooldownMs(const RuleList& rules, std::uint32_t ruleId) {
  std::uint64_t longest = 0;
  for (const ThresholdRule& rule : rules) {
    if (rule.ruleId == ruleId) longest = std::max(longest, rule.cooldownSec * kMsPerSecond);
  }
  return longest;
}

}  // namespace

bool CooldownTable::Pass(std::uint32_t pid, std::uint32_t ruleId, std::uint32_t cooldownSec, std::uint64_t nowMs) {
  const auto [entry, isNew] = lastAlertTick_.try_emplace({pid, ruleId}, nowMs);
  if (isNew) return true;
  if (nowMs - entry->second < cooldownSec * kMsPerSecond) return false;
  entry->second = nowMs;
  return true;
}

void CooldownTable::Prune(const std::vector<std::uint32_t>& alivePids, const RuleList& rules, std::uint64_t nowMs) {
  // Both are in the order of process IDs, so one walk over each finds the entries whose process is gone.
  auto alive = alivePids.begin();
  for (auto entry = lastAlertTick_.begin(); entry != lastAlertTick_.end();) {
    const auto [pid, ruleId] = entry->first;
    while (alive != alivePids.end() && *alive < pid) ++alive;
    const bool isAlive = alive != alivePids.end() && *alive == pid;
    const bool isSpent = !isAlive && nowMs - entry->second >= LongestCooldownMs(rules, ruleId);
    entry = isSpent ? lastAlertTick_.erase(entry) : std::next(entry);
  }
}
