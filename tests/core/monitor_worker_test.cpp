#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "core/monitor_engine.h"
#include "tests/core/monitor_doubles.h"

namespace {

constexpr std::uint32_t kLongMs = 30'000;

struct TestEvent : Event {
  TestEvent() {
    std::uint32_t error = 0;
    EXPECT_TRUE(Create(Reset::kManual, error));
  }
};

/// Where the worker says that it has come, and waits until it may go on.
struct Barrier {
  void Pass() {
    reached.Signal();
    (void)goOn.Wait(kLongMs);
  }
  TestEvent reached;
  TestEvent goOn;
};

/// A machine with two processes that break the rule, and whose list can be held up or run out of memory.
class TroubledSampler final : public ProcessSampler {
 public:
  TroubledSampler() {
    for (const std::uint32_t pid : {10u, 11u}) table_.Put(MakeProcess(pid, L"busy.exe", 5));
  }
  ~TroubledSampler() override { destroyed->Signal(); }
  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    if (barrier) barrier->Pass();
    const bool listed = table_.ListProcesses(entries, error);
    if (table_.ListCount() == outOfMemoryAt) throw std::bad_alloc();
    return listed;
  }
  std::unique_ptr<Process> OpenProcess(std::uint32_t pid) override { return table_.OpenProcess(pid); }
  [[nodiscard]] std::size_t ListCount() const { return table_.ListCount(); }

  std::shared_ptr<Event> destroyed = std::make_shared<TestEvent>();
  std::shared_ptr<Barrier> barrier;
  std::size_t outOfMemoryAt = 0;

 private:
  SimulatedProcessTable table_;
};

class MonitorWorker : public testing::Test {
 protected:
  std::unique_ptr<MonitorEngine> StartEngine(IAlertSink& sink) {
    auto engine = std::make_unique<MonitorEngine>(std::move(sampler), clock, 1);
    engine->SetRules(rules.get());
    engine->SetSink(&sink);
    engine->Start();
    return engine;
  }

  const DiagnosticLines lines;
  FakeClock clock;
  std::unique_ptr<FakeRules> rules = std::make_unique<FakeRules>(RuleList{ThreadRule(1, 1)});
  RecordingSink recording;
  std::shared_ptr<TroubledSampler> sampler = std::make_shared<TroubledSampler>();
  const std::shared_ptr<Event> destroyed = sampler->destroyed;
};

TEST_F(MonitorWorker, WaitsBeforeTheFirstCycleObeysIntervalAndPauseAndSurvivesACycleWithoutMemory) {
  sampler->outOfMemoryAt = 4;
  MonitorEngine engine(sampler, clock, 1);
  engine.SetRules(rules.get());
  engine.SetSink(&recording);
  TestEvent scriptDone;
  std::vector<std::uint32_t> timeouts;
  std::vector<std::size_t> lists;
  clock.onWait = [&](Event& event, std::uint32_t timeoutMs) {
    timeouts.push_back(timeoutMs);
    lists.push_back(sampler->ListCount());
    if (lists.size() == 2) engine.SetIntervalMs(1000);
    if (lists.size() == 3) engine.SetPaused(true);
    if (lists.size() == 5) engine.SetPaused(false);
    if (lists.size() < 8) return WaitResult::kTimedOut;
    scriptDone.Signal();
    return event.Wait(kLongMs);
  };
  engine.Start();
  engine.Start();
  ASSERT_EQ(scriptDone.Wait(kLongMs), WaitResult::kSignaled);
  engine.Stop();

  EXPECT_EQ(timeouts, (std::vector<std::uint32_t>{30'000, 30'000, 1000, 1000, 1000, 1000, 1000, 1000}));
  EXPECT_EQ(lists, (std::vector<std::size_t>{0, 1, 2, 2, 2, 3, 4, 5}));
  EXPECT_EQ(recording.Take().size(), 8u) << "two in each cycle but the fourth";
  const Texts seen = DiagnosticLines::Take();
  EXPECT_EQ(std::count(seen.begin(), seen.end(), L"MonitorEngine::Start - Already running"), 1);
  EXPECT_EQ(seen.back(), L"MonitorEngine::Stop - Stopped");
}

// The engine, its rules and its sink are gone before the system call that holds the worker up comes back.
TEST_F(MonitorWorker, StuckInASystemCallAtStopItAlertsNobodyLater) {
  const auto barrier = sampler->barrier = std::make_shared<Barrier>();
  auto sink = std::make_unique<RecordingSink>();
  auto engine = StartEngine(*sink);
  ASSERT_EQ(barrier->reached.Wait(kLongMs), WaitResult::kSignaled);
  engine->Stop(20);
  engine.reset();
  EXPECT_TRUE(sink->Take().empty());
  sink.reset();
  rules.reset();

  barrier->goOn.Signal();
  ASSERT_EQ(destroyed->Wait(kLongMs), WaitResult::kSignaled) << "the worker has not let go of its state";
  EXPECT_EQ(DiagnosticLines::Take().back(), L"MonitorEngine::MonitorLoop - Exiting loop");
}

TEST_F(MonitorWorker, StuckInTheSinkAtStopItRaisesNoFurtherAlert) {
  struct StickySink final : IAlertSink {
    void OnAlert(const AlertRecord&) override {
      ++calls;
      barrier.Pass();
    }
    std::atomic<int> calls{0};
    Barrier barrier;
  } sink;
  auto engine = StartEngine(sink);
  ASSERT_EQ(sink.barrier.reached.Wait(kLongMs), WaitResult::kSignaled);
  engine->Stop(20);
  engine.reset();
  sink.barrier.goOn.Signal();
  ASSERT_EQ(destroyed->Wait(kLongMs), WaitResult::kSignaled);
  EXPECT_EQ(sink.calls, 1);
}

}  // namespace
