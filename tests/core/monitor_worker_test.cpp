#include <gtest/gtest.h>

#include <deque>
#include <new>

#include "core/monitor_engine.h"
#include "core/simulated_process_table.h"
#include "tests/core/monitor_doubles.h"

namespace {

using Texts = std::vector<std::wstring>;

constexpr std::uint32_t kLongMs = 30'000;

struct TestEvent : Event {
  TestEvent() {
    std::uint32_t error = 0;
    EXPECT_TRUE(Create(Reset::kManual, error));
  }
};

RuleList OneThreadRule() {
  ThresholdRule rule;
  rule.ruleId = 1;
  rule.processPattern = L"*";
  rule.maxThreads = 1;
  rule.cooldownSec = 0;
  return {rule};
}

/// A machine with two processes that break the rule, and whose list can be held up or run out of memory.
class TroubledSampler final : public ProcessSampler {
 public:
  TroubledSampler() {
    for (const std::uint32_t pid : {10u, 11u}) {
      SimulatedProcess process;
      process.pid = pid;
      process.name = L"busy.exe";
      process.threads = 5;
      table_.Put(process);
    }
  }
  ~TroubledSampler() override {
    if (destroyed != nullptr) destroyed->Signal();
  }
  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    if (listing != nullptr) {
      listing->Signal();
      (void)goOn->Wait(kLongMs);
    }
    if (outOfMemoryOnce && table_.ListCount() == 0) {
      (void)table_.ListProcesses(entries, error);
      throw std::bad_alloc();
    }
    return table_.ListProcesses(entries, error);
  }
  std::unique_ptr<Process> OpenProcess(std::uint32_t pid) override { return table_.OpenProcess(pid); }
  [[nodiscard]] std::size_t ListCount() const { return table_.ListCount(); }

  std::shared_ptr<Event> destroyed;
  std::shared_ptr<Event> listing;
  std::shared_ptr<Event> goOn;
  bool outOfMemoryOnce = false;

 private:
  SimulatedProcessTable table_;
};

class MonitorWorker : public testing::Test {
 protected:
  /// Before each wait of the worker the next step runs on its thread; after the last one the worker waits for Stop.
  void ScriptWaits(std::deque<std::function<void()>> steps) {
    clock.onWait = [this, steps = std::move(steps)](Event& event, std::uint32_t timeoutMs) mutable {
      if (steps.empty()) {
        scriptDone.Signal();
        return event.Wait(kLongMs);
      }
      timeouts.push_back(timeoutMs);
      steps.front()();
      steps.pop_front();
      return WaitResult::kTimedOut;
    };
  }

  FakeClock clock;
  FakeRules rules{OneThreadRule()};
  TestEvent scriptDone;
  std::vector<std::uint32_t> timeouts;
  std::shared_ptr<TroubledSampler> sampler = std::make_shared<TroubledSampler>();
  const DiagnosticLines lines;
};

TEST_F(MonitorWorker, WaitsBeforeTheFirstCycleAndObeysIntervalAndPause) {
  RecordingSink sink;
  MonitorEngine engine(sampler, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  std::vector<std::size_t> lists;
  const auto note = [&] { lists.push_back(sampler->ListCount()); };
  ScriptWaits({note, [&] { note(), engine.SetIntervalMs(1000); }, [&] { note(), engine.SetPaused(true); }, note,
               [&] { note(), engine.SetPaused(false); }, note});
  engine.Start();
  engine.Start();
  ASSERT_EQ(scriptDone.Wait(kLongMs), WaitResult::kSignaled);
  engine.Stop();
  engine.Stop();

  EXPECT_EQ(timeouts, (std::vector<std::uint32_t>{30'000, 30'000, 1000, 1000, 1000, 1000}));
  EXPECT_EQ(lists, (std::vector<std::size_t>{0, 1, 2, 2, 2, 3}));
  EXPECT_EQ(sampler->ListCount(), 4u);
  EXPECT_EQ(sink.Take().size(), 8u);

  // The two threads' lines interleave as they like; each thread's own order is fixed.
  Texts ofWorker;
  Texts ofCaller;
  for (const std::wstring& line : DiagnosticLines::Take()) {
    if (line.starts_with(L"ALERT")) continue;
    (line.starts_with(L"MonitorEngine::MonitorLoop") ? ofWorker : ofCaller).push_back(line);
  }
  EXPECT_EQ(ofWorker, (Texts{L"MonitorEngine::MonitorLoop - Entering loop", L"MonitorEngine::MonitorLoop - Exiting loop"}));
  ASSERT_EQ(ofCaller.size(), 4u);
  EXPECT_TRUE(ofCaller[0].starts_with(L"MonitorEngine::Start - Monitor thread started (TID "));
  EXPECT_EQ(ofCaller[1], L"MonitorEngine::Start - Already running");
  EXPECT_EQ(ofCaller[3], L"MonitorEngine::Stop - Stopped");
}

TEST_F(MonitorWorker, LeavesTheLoopWhenTheWaitFails) {
  MonitorEngine engine(sampler, clock, 1);
  engine.SetRules(&rules);
  clock.onWait = [](Event&, std::uint32_t) { return WaitResult::kFailed; };
  engine.Start();
  engine.Stop();
  EXPECT_EQ(sampler->ListCount(), 0u);
}

TEST_F(MonitorWorker, SurvivesACycleWithoutMemory) {
  RecordingSink sink;
  MonitorEngine engine(sampler, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  sampler->outOfMemoryOnce = true;
  ScriptWaits({[] {}, [] {}});
  engine.Start();
  ASSERT_EQ(scriptDone.Wait(kLongMs), WaitResult::kSignaled);
  engine.Stop();
  EXPECT_EQ(sink.Take().size(), 2u);
}

// The engine, its rules and its sink are gone before the system call that holds the worker up comes back.
TEST_F(MonitorWorker, StuckInASystemCallAtStopItAlertsNobodyLater) {
  const auto destroyed = sampler->destroyed = std::make_shared<TestEvent>();
  const auto listing = sampler->listing = std::make_shared<TestEvent>();
  const auto goOn = sampler->goOn = std::make_shared<TestEvent>();
  auto sink = std::make_unique<RecordingSink>();
  auto ownRules = std::make_unique<FakeRules>(OneThreadRule());
  auto engine = std::make_unique<MonitorEngine>(std::move(sampler), clock, 1);
  engine->SetRules(ownRules.get());
  engine->SetSink(sink.get());
  engine->Start();
  ASSERT_EQ(listing->Wait(kLongMs), WaitResult::kSignaled);
  engine->Stop(20);
  EXPECT_EQ(engine->CpuSampleCount(), 0u);
  engine.reset();
  EXPECT_TRUE(sink->Take().empty());
  sink.reset();
  ownRules.reset();

  goOn->Signal();
  ASSERT_EQ(destroyed->Wait(kLongMs), WaitResult::kSignaled) << "the worker has not let go of its state";
  const Texts seen = DiagnosticLines::Take();
  ASSERT_FALSE(seen.empty());
  EXPECT_EQ(seen.back(), L"MonitorEngine::MonitorLoop - Exiting loop");
}

TEST_F(MonitorWorker, StuckInTheSinkAtStopItRaisesNoFurtherAlert) {
  struct StickySink final : IAlertSink {
    void OnAlert(const AlertRecord&) override {
      ++calls;
      entered.Signal();
      (void)goOn.Wait(kLongMs);
    }
    std::atomic<int> calls{0};
    TestEvent entered;
    TestEvent goOn;
  } sink;
  const auto destroyed = sampler->destroyed = std::make_shared<TestEvent>();
  {
    MonitorEngine engine(std::move(sampler), clock, 1);
    engine.SetRules(&rules);
    engine.SetSink(&sink);
    engine.Start();
    ASSERT_EQ(sink.entered.Wait(kLongMs), WaitResult::kSignaled);
    engine.Stop(20);
  }
  sink.goOn.Signal();
  ASSERT_EQ(destroyed->Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(sink.calls, 1);
}

}  // namespace
