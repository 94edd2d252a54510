#pragma once

// When each (process ID, rule) pair last alerted, so that a standing violation is reported once per cooldown and not once per
// cycle.

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "core/records.h"

/// One thread at a time.
class CooldownTable {
 public:
  /// Whether the pair may alert now. True starts its cooldown anew; false changes nothing.
  [[nodiscard]] bool Pass(std::uint32_t pid, std::uint32_t ruleId, std::uint32_t cooldownSec, std::uint64_t nowMs);

  /// Forgets the pairs whose process is gone and whose cooldown has run out: they could hold back no alert any more. `alivePids`
  /// is sorted.
  void Prune(const std::vector<std::uint32_t>& alivePids, const RuleList& rules, std::uint64_t nowMs);

  void Clear() { lastAlertTick_.clear(); }
  [[nodiscard]] std::size_t Size() const { return lastAlertTick_.size(); }

 private:
  using Key = std::pair<std::uint32_t, std::uint32_t>;  ///< process ID, rule ID
  std::map<Key, std::uint64_t> lastAlertTick_;          ///< ms
};
