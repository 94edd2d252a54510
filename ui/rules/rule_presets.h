#pragma once

// The ready-made rules of the Presets menu, as rows of a table: what a row adds is an ordinary rule afterwards. Apart from the
// menu, so that every value is tested without a window.

#include <cstdint>
#include <span>

class RuleStore;

/// One entry of the menu. It adds one rule per pattern, in this order, each with the same values; 0 is no limit.
struct RulePreset {
  std::uint32_t menuId;
  std::uint32_t labelStringId;
  std::span<const wchar_t* const> patterns;
  std::uint32_t maxHandles = 0;
  std::uint64_t maxMemory = 0;  ///< bytes; both of the working set and of the private bytes
  double maxCpuPercent = 0.0;
  std::uint32_t maxThreads = 0;
  std::uint32_t maxGdiObjects = 0;
  std::uint32_t cooldownSec = 0;
};

/// In menu order.
[[nodiscard]] std::span<const RulePreset> RulePresets();

/// Appends the entry's rules to the list, saved and published as one change. False, and nothing added, for an id of no entry.
bool AddPresetRules(RuleStore& rules, std::uint32_t menuId);
