#pragma once

// The seven ceilings of a rule, each against its figure of a process: the one table for everything that goes through them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "core/records.h"

/// A rule's field and the process's figure that it limits. The type is the unit: a count, bytes, percent of the machine.
template <class Value>
struct Limit {
  Value ThresholdRule::*allowed;
  Value ProcessMetrics::*measured;
};

struct Ceiling {
  const wchar_t* label;  ///< in an alert's text
  const char* key;       ///< in machine-readable output; never changes
  std::uint32_t known;   ///< the bit of ProcessMetrics::known
  std::variant<Limit<std::uint32_t>, Limit<std::uint64_t>, Limit<double>> limit;

  /// False also where there is no limit.
  [[nodiscard]] bool IsExceeded(const ThresholdRule& rule, const ProcessMetrics& metrics) const;
  /// "count", "bytes" or "percent".
  [[nodiscard]] const char* Unit() const;
  /// "Handles: 5000 > 4000".
  [[nodiscard]] std::wstring Violation(const ThresholdRule& rule, const ProcessMetrics& metrics) const;
  /// As a share of the ceiling: above 1 is exceeded; 0 where there is no limit.
  [[nodiscard]] double Share(const ThresholdRule& rule, const ProcessMetrics& metrics) const;
};

inline constexpr std::size_t kCeilingCount = 7;

/// In the order of the fields of a rule.
[[nodiscard]] std::span<const Ceiling, kCeilingCount> Ceilings();
