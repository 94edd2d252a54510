#pragma once

// The heart of the program: one worker thread that samples all processes once per interval, computes CPU, checks every enabled
// rule and hands each violation that no cooldown holds back to the sink. Knows nothing of windows, files or the registry.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/alert_sink.h"
#include "core/process_sampler.h"
#include "core/records.h"
#include "platform/clock.h"
#include "platform/thread.h"

class MonitorEngine {
 public:
  static constexpr std::uint32_t kDefaultIntervalMs = 30'000;
  static constexpr std::uint32_t kStopTimeoutMs = 10'000;

  /// `processorCount` 0 counts as 1. The clock must outlive the process's last worker.
  MonitorEngine(std::shared_ptr<ProcessSampler> sampler, Clock& clock, std::uint32_t processorCount);
  ~MonitorEngine();
  MonitorEngine(const MonitorEngine&) = delete;
  MonitorEngine& operator=(const MonitorEngine&) = delete;

  /// Not owned; both may be null (no rules: no sampling; no sink: alerts go to the diagnostic lines only). Before Start; with the
  /// worker gone, or given up by Stop, neither is used any more.
  void SetRules(const RuleSource* rules);
  void SetSink(IAlertSink* sink);

  /// Starts the worker; failures are diagnostic lines only. The first cycle runs one interval later.
  void Start();
  /// Ends the worker, waiting at most `timeoutMs`, and forgets all history. Safe when not running and when called twice. A worker
  /// that has not ended keeps its own state alive and alerts nobody any more.
  void Stop(std::uint32_t timeoutMs = kStopTimeoutMs);

  /// One cycle on the calling thread. The worker's step; tests call it directly. Not while the worker runs.
  void RunCycle();

  // Any thread.
  [[nodiscard]] std::uint32_t IntervalMs() const;
  void SetIntervalMs(std::uint32_t intervalMs);  ///< 1000 to 86,400,000; applies from the next wait
  [[nodiscard]] bool Paused() const;
  void SetPaused(bool paused);
  [[nodiscard]] ExclusionSnapshot Exclusions() const;
  void SetExclusions(ExclusionList exclusions);  ///< takes effect in the next cycle, as one step

  /// Sizes of the history tables, for tests of their bounds. Not while the worker runs.
  [[nodiscard]] std::size_t CpuSampleCount() const;
  [[nodiscard]] std::size_t CooldownCount() const;

 private:
  struct Controls;
  struct Session;

  // Both are shared with the worker, which may outlive the engine; the controls stay the same for life, a session ends with Stop.
  std::shared_ptr<Controls> controls_;
  std::shared_ptr<Session> session_;
  Thread thread_;
};
