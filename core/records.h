#pragma once

// The records that the whole program passes around: one rule, one process as a cycle saw it, one alert.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"

/// What an alert does besides entering the recent-alert list.
enum AlertActions : std::uint32_t {
  ACTION_NOTIFY = 1,
  ACTION_LOG = 2,
  ACTION_SOUND = 4,
};

inline constexpr std::uint64_t kBytesPerMb = 1'048'576;

/// One monitoring rule. A ceiling of 0 (for CPU: not above 0.0) means no limit.
struct ThresholdRule {
  std::uint32_t ruleId = 0;
  std::wstring processPattern;
  bool enabled = true;
  std::uint32_t maxHandles = 0;
  std::uint64_t maxWorkingSet = 0;    ///< bytes
  std::uint64_t maxPrivateBytes = 0;  ///< bytes
  double maxCpuPercent = 0.0;         ///< share of the whole machine: all processors busy is 100
  std::uint32_t maxThreads = 0;
  std::uint32_t maxGdiObjects = 0;
  std::uint32_t maxUserObjects = 0;
  std::uint32_t alertActions = ACTION_NOTIFY | ACTION_LOG;
  std::uint32_t cooldownSec = 60;

  bool operator==(const ThresholdRule&) const = default;
};

/// Patterns of names that no rule applies to.
using ExclusionList = std::vector<std::wstring>;
using ExclusionSnapshot = std::shared_ptr<const ExclusionList>;

using RuleList = std::vector<ThresholdRule>;
/// One state of the rule list that never changes again; readers keep it as long as they need it.
using RuleSnapshot = std::shared_ptr<const RuleList>;

/// Where readers get the rule list of the moment.
class RuleSource {
 public:
  virtual ~RuleSource() = default;
  /// Never null. Any thread.
  [[nodiscard]] virtual RuleSnapshot Snapshot() const = 0;
};

/// Bits of ProcessMetrics::known.
enum KnownFigures : std::uint32_t {
  kHandlesKnown = 1,
  kWorkingSetKnown = 2,
  kPrivateBytesKnown = 4,
  kTimesKnown = 8,
  kThreadsKnown = 16,
  kGuiObjectsKnown = 32,
};

/// One process in one sampling cycle. Everything but `pid`, `name` and `threads` stays zero when it cannot be read.
struct ProcessMetrics {
  std::uint32_t pid = 0;
  std::wstring name;
  double cpuPercent = 0.0;
  std::uint64_t workingSet = 0;    ///< bytes
  std::uint64_t privateBytes = 0;  ///< bytes
  std::uint32_t handles = 0;
  std::uint32_t threads = 0;
  std::uint32_t gdiObjects = 0;
  std::uint32_t userObjects = 0;
  std::uint64_t kernelTime = 0;    ///< 100 ns
  std::uint64_t userTime = 0;      ///< 100 ns
  std::uint64_t creationTime = 0;  ///< 100 ns since 1601-01-01 UTC; 0 when unknown
  std::uint32_t known = 0;         ///< which figures could be read, as bits
};

/// A process of a cycle with what its collection found out about the rules.
struct SampledProcess {
  ProcessMetrics metrics;
  const std::vector<std::uint32_t>* rules = nullptr;  ///< places of the rules that apply; null: none does, or it is excluded
  bool opened = false;                                ///< the counters below could be asked for
};
/// One entry per process, rebuilt in every cycle within the same memory.
using ProcessSample = std::vector<SampledProcess>;

/// One raised alert; copied by value wherever it goes.
struct AlertRecord {
  LocalTime time;
  std::uint32_t pid = 0;
  std::wstring processName;
  std::uint32_t ruleId = 0;
  std::wstring violation;

  bool operator==(const AlertRecord&) const = default;
};
