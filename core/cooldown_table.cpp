#include "core/cooldown_table.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

constexpr std::uint64_t kMsPerSecond = 1000;

/// The longest cooldown of each id, in the order of ids. An id can stand in the list twice, each time with a cooldown of its own;
/// the longest decides how long an entry matters. Ids are not handed out twice: one that is gone from the list matters no more.
class LongestCooldowns {
 public:
  explicit LongestCooldowns(const RuleList& rules) {
    cooldowns_.reserve(rules.size());
    for (const ThresholdRule& rule : rules) cooldowns_.emplace_back(rule.ruleId, rule.cooldownSec);
    std::sort(cooldowns_.begin(), cooldowns_.end());
  }
  [[nodiscard]] std::uint64_t MsOf(std::uint32_t ruleId) const {
    const auto behind = std::upper_bound(cooldowns_.begin(), cooldowns_.end(), std::pair(ruleId, UINT32_MAX));
    if (behind == cooldowns_.begin() || std::prev(behind)->first != ruleId) return 0;
    return std::prev(behind)->second * kMsPerSecond;
  }

 private:
  std::vector<std::pair<std::uint32_t, std::uint32_t>> cooldowns_;  ///< rule ID, seconds
};

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
  std::optional<LongestCooldowns> longest;  // most cycles find nobody gone and need none
  for (auto entry = lastAlertTick_.begin(); entry != lastAlertTick_.end();) {
    const auto [pid, ruleId] = entry->first;
    while (alive != alivePids.end() && *alive < pid) ++alive;
    const bool isAlive = alive != alivePids.end() && *alive == pid;
    if (!isAlive && !longest) longest.emplace(rules);
    const bool isSpent = !isAlive && nowMs - entry->second >= longest->MsOf(ruleId);
    entry = isSpent ? lastAlertTick_.erase(entry) : std::next(entry);
  }
}
