#pragma once

// What the monitor's tests put in place of the machine: time, rules, processes, and the receiver of alerts.

#include <atomic>
#include <functional>

#include "core/alert_sink.h"
#include "core/records.h"
#include "platform/clock.h"
#include "platform/event.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/simulated_process_table.h"

using Texts = std::vector<std::wstring>;

inline ThresholdRule ThreadRule(std::uint32_t ruleId, std::uint32_t maxThreads, std::uint32_t cooldownSec = 0,
                                const wchar_t* pattern = L"*") {
  return {.ruleId = ruleId, .processPattern = pattern, .maxThreads = maxThreads, .cooldownSec = cooldownSec};
}

inline SimulatedProcess MakeProcess(std::uint32_t pid, const wchar_t* name, std::uint32_t threads, std::uint64_t created = 0,
                                    std::uint64_t kernelTime = 0, std::uint64_t userTime = 0) {
  return {
      {.pid = pid, .name = name, .threads = threads, .kernelTime = kernelTime, .userTime = userTime, .creationTime = created}};
}

/// Time that moves only when told to.
class FakeClock final : public Clock {
 public:
  std::uint64_t TickMs() override { return tickMs; }
  std::uint32_t Tick32Ms() override { return static_cast<std::uint32_t>(tickMs); }
  LocalTime Now() override { return {2024, 3, 5, 1, 14, 30, 15, 250}; }
  WaitResult Wait(Event& event, std::uint32_t timeoutMs) override { return onWait(event, timeoutMs); }

  std::atomic<std::uint64_t> tickMs{1'000'000};
  /// Without another one the time passes at once, until the event is signalled.
  std::function<WaitResult(Event&, std::uint32_t)> onWait = [](Event& event, std::uint32_t) { return event.Wait(0); };
};

class FakeRules final : public RuleSource {
 public:
  explicit FakeRules(RuleList rules = {}) { Set(std::move(rules)); }
  void Set(RuleList rules) {
    auto snapshot = std::make_shared<const RuleList>(std::move(rules));
    std::lock_guard lock(mutex_);
    snapshot_.swap(snapshot);
  }
  RuleSnapshot Snapshot() const override {
    std::lock_guard lock(mutex_);
    return snapshot_;
  }

 private:
  mutable std::mutex mutex_;
  RuleSnapshot snapshot_;
};

class RecordingSink final : public IAlertSink {
 public:
  void OnAlert(const AlertRecord& record) override {
    std::lock_guard lock(mutex_);
    records_.push_back(record);
  }
  /// What has come since the last call.
  std::vector<AlertRecord> Take() {
    std::lock_guard lock(mutex_);
    return std::exchange(records_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<AlertRecord> records_;
};
