#include "core/cooldown_table.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::uint64_t kMsPerSecond = 1000;

// An id can stand in the list twice, each time with a cooldown of its own; the longest decides how long an entry matters.
std::optional<std::uint64_t> LongestCooldownMs(const RuleList& rules, std::uint32_t ruleId) {
  std::optional<std::uint64_t> longest;
  for (const ThresholdRule& rule : rules) {
    if (rule.ruleId == ruleId) longest = std::max(longest.value_or(0), rule.cooldownSec * kMsPerSecond);
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
  std::erase_if(lastAlertTick_, [&](const auto& entry) {
    const auto [pid, ruleId] = entry.first;
    const std::optional<std::uint64_t> cooldownMs = LongestCooldownMs(rules, ruleId);
    if (!cooldownMs) return true;
    if (std::binary_search(alivePids.begin(), alivePids.end(), pid)) return false;
    return nowMs - entry.second >= *cooldownMs;
  });
}
