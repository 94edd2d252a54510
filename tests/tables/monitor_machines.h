#pragma once

// A process, its CPU and its alerts over a few cycles.

#include <gtest/gtest.h>

#include "core/alert_delivery.h"
#include "core/monitor_cycle.h"
#include "core/monitor_engine.h"
#include "tests/support/monitor_doubles.h"
#include "tests/tables/table_text.h"

/// One process in a cycle: "PID name access failing", with the first rule that applies and the figures that were read. The cycle
/// stays the same, and nothing of one process may show in the next.
class Sampled {
 public:
  Sampled() { rules_[0].enabled = false; }
  std::wstring operator()(const std::wstring& words) {
    std::wistringstream in(words);
    SimulatedProcess process{{0, L"", 0, 20, 30, 10, 7, 70, 80, 50, 60, 40}};
    std::wstring access;
    in >> process.pid >> process.name >> access >> process.failing;
    process.opens = access != L"none";
    process.exitsAfterListing = access == L"exits";
    table_->listError = access == L"unlisted" ? 24 : 0;
    table_->Put(process);
    cycle_.Run(std::make_shared<const RuleList>(rules_), exclusions_, sink_, [] { return false; });
    table_->Remove(process.pid);
    if (cycle_.Sample().empty()) return Join(DiagnosticLines::Take());
    const SampledProcess& sample = cycle_.Sample().front();
    const ProcessMetrics& read = sample.metrics;
    EXPECT_EQ(sample.opened, !table_->opened.empty());
    return Words(sample.rules == nullptr ? L"no rule" : L"rule " + std::to_wstring(sample.rules->front()), L", ", read.pid, L" ",
                 read.name, L" ", read.threads, sample.opened ? L": " : L" unopened: ", read.handles, L" ", read.workingSet, L" ",
                 read.privateBytes, L" ", read.creationTime, L" ", read.kernelTime, L" ", read.userTime, L" ", read.gdiObjects,
                 L" ", read.userObjects);
  }

 private:
  RuleList rules_ = {ThreadRule(1, 9, 0, L"off*"), ThreadRule(1, 9, 0, L"app*"), ThreadRule(1, 9, 0, L"sys*"),
                     ThreadRule(1, 9, 0, L"*.scr")};
  ExclusionSnapshot exclusions_ = std::make_shared<const ExclusionList>(ExclusionList{L"app-spared*"});
  std::shared_ptr<SimulatedProcessTable> table_ = std::make_shared<SimulatedProcessTable>();
  FakeClock clock_;
  MonitorCycle cycle_{table_, clock_, 1};
  RecordingSink sink_;
};

/// "milliseconds since the last cycle, creation time, kernel and user seconds" of a process on eight processors, and what the
/// alert says of its CPU.
class CpuFigures {
 public:
  CpuFigures() {
    engine_.SetRules(&rules_);
    engine_.SetSink(&sink_);
  }
  std::wstring operator()(const std::wstring& words) {
    constexpr std::uint64_t kSecond = 10'000'000;
    std::wistringstream in(words);
    clock_.tickMs += Next<std::uint64_t>(in);
    const auto created = Next<std::uint64_t>(in);
    const auto kernel = Next<std::uint64_t>(in);
    table_->Put(MakeProcess(9, L"busy.exe", 1, created, kernel * kSecond, Next<std::uint64_t>(in) * kSecond));
    if (words.ends_with(L"gone")) table_->Remove(9);
    const bool both = words.ends_with(L"beside another");
    table_->Put(MakeProcess(8, L"other.exe", 1, 1, both ? kSecond : 0));
    if (words.ends_with(L"alone")) table_->Remove(8);
    table_->listError = words.ends_with(L"fails") ? 8 : 0;
    engine_.RunCycle();
    Texts violations;
    for (const AlertRecord& alert : sink_.Take()) violations.push_back(Words(alert.pid, L" ", alert.violation));
    return Words(engine_.CpuSampleCount(), L" kept ", Join(violations));
  }

 private:
  std::shared_ptr<SimulatedProcessTable> table_ = std::make_shared<SimulatedProcessTable>();
  FakeClock clock_;
  FakeRules rules_{{{.ruleId = 1, .processPattern = L"*", .maxCpuPercent = 0.001, .cooldownSec = 0}}};
  RecordingSink sink_;
  MonitorEngine engine_{table_, clock_, 8};
};

/// "milliseconds, throttle in seconds, actions of all rules, rule, PID, log, sound, name and violation" of an alert, and what the
/// user gets.
class Delivered : AlertOutputs {
 public:
  std::wstring operator()(const std::wstring& words) {
    std::wistringstream in(words);
    clock_.tickMs = Next<std::uint64_t>(in);
    settings_ = {};
    in >> settings_.notificationThrottleSec >> settings_.alertActions;
    const auto ruleId = Next<std::uint32_t>(in);
    const auto pid = Next<std::uint32_t>(in);
    std::wstring name = L"a.exe";
    std::wstring violation = L"v";
    in >> settings_.logFilePath >> settings_.soundFilePath >> name >> violation;
    done_.clear();
    delivery_.DeliverAlert({{}, pid, name, ruleId, violation});
    EXPECT_EQ(recent_.Copy().back().violation, violation) << "the list has the whole";
    return Words(recent_.Size(), L" listed, ", delivery_.PendingChars(), L" waiting ", Join(done_));
  }

 private:
  AlertDeliverySettings Settings() override { return settings_; }
  void ShowBalloon(const std::wstring& title, const std::wstring& text) override { done_.push_back(title + L"|" + text); }
  void AppendToLog(const std::wstring& path, const AlertRecord& record) override { done_.push_back(path + record.violation); }
  void PlaySoundFile(const std::wstring& path) override { done_.push_back(path); }

  AlertDeliverySettings settings_;
  Texts done_;
  RecentAlerts recent_;
  FakeRules rules_{{{.ruleId = 1, .processPattern = L"*", .alertActions = 0},
                    {.ruleId = 2, .processPattern = L"*", .alertActions = ACTION_LOG},
                    {.ruleId = 2, .processPattern = L"*", .alertActions = ACTION_NOTIFY},
                    {.ruleId = 3, .processPattern = L"*", .alertActions = ACTION_SOUND | 8},
                    {.ruleId = 4, .processPattern = L"*", .alertActions = 7}}};
  FakeClock clock_;
  AlertDelivery delivery_{recent_, rules_, clock_, *this};
};
