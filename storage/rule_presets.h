#pragma once

// The ready-made rules of the Presets menu, as rows of a table: what a row adds is an ordinary rule afterwards.

#include <cstdint>
#include <span>

class RuleStore;

/// One entry of the menu. It adds one rule per pattern, in this order, each with the same values; 0 is no limit.
struct RulePreset {
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

/// Appends the entry's rules to the list, saved and published as one change.
void AddPresetRules(RuleStore& rules, const RulePreset& preset);
