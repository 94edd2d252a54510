#pragma once

// What the monitor's tests put in place of the machine: time, rules, the receiver of alerts and the diagnostic channel.

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/alert_sink.h"
#include "core/records.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/event.h"

/// Time that moves only when told to.
class FakeClock final : public Clock {
 public:
  std::uint64_t TickMs() override {
    ++tickReads;
    return tickMs;
  }
  std::uint32_t Tick32Ms() override { return static_cast<std::uint32_t>(tickMs); }
  LocalTime Now() override { return {2024, 3, 5, 1, 14, 30, 15, 250}; }
  /// Answers what `onWait` says. Without one: the time passes at once, until the event is signalled.
  WaitResult Wait(Event& event, std::uint32_t timeoutMs) override {
    if (onWait) return onWait(event, timeoutMs);
    tickMs += timeoutMs;
    return event.Wait(0);
  }

  std::atomic<std::uint64_t> tickMs{1'000'000};
  std::atomic<std::uint64_t> tickReads{0};
  std::function<WaitResult(Event&, std::uint32_t)> onWait;
};

class FakeRules final : public RuleSource {
 public:
  FakeRules() { Set({}); }
  explicit FakeRules(RuleList rules) { Set(std::move(rules)); }
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
  /// The same as "pid/rule: violation".
  std::vector<std::wstring> TakeTexts() {
    std::vector<std::wstring> texts;
    for (const AlertRecord& record : Take()) {
      texts.push_back(std::to_wstring(record.pid) + L"/" + std::to_wstring(record.ruleId) + L": " + record.violation);
    }
    return texts;
  }

 private:
  std::mutex mutex_;
  std::vector<AlertRecord> records_;
};

/// Collects the diagnostic lines while it lives; one at a time.
class DiagnosticLines {
 public:
  DiagnosticLines() {
    (void)Take();
    SetDiagnosticHook([](std::wstring_view line) {
      std::lock_guard lock(Store().mutex);
      Store().lines.emplace_back(line);
    });
  }
  ~DiagnosticLines() { SetDiagnosticHook(nullptr); }
  DiagnosticLines(const DiagnosticLines&) = delete;
  DiagnosticLines& operator=(const DiagnosticLines&) = delete;

  static std::vector<std::wstring> Take() {
    std::lock_guard lock(Store().mutex);
    return std::exchange(Store().lines, {});
  }

 private:
  struct Lines {
    std::mutex mutex;
    std::vector<std::wstring> lines;
  };
  static Lines& Store() {
    static Lines store;
    return store;
  }
};
