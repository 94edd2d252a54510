#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "core/monitor_engine.h"
#include "tests/support/monitor_doubles.h"

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

/// A machine with two processes that break the rule, and whose lists do what a test wants before they are given.
class TroubledSampler final : public ProcessSampler {
 public:
  explicit TroubledSampler(std::function<void(std::size_t)> beforeList, std::shared_ptr<Event> destroyed = nullptr)
      : beforeList_(std::move(beforeList)), destroyed_(std::move(destroyed)) {
    for (const std::uint32_t pid : {10u, 11u}) table_.Put(MakeProcess(pid, L"busy.exe", 5));
  }
  ~TroubledSampler() override {
    if (destroyed_ != nullptr) destroyed_->Signal();
  }
  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    const bool listed = table_.ListProcesses(entries, error);
    beforeList_(table_.ListCount());
    return listed;
  }
  bool ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) override {
    return table_.ReadCounters(entry, wanted, metrics);
  }
  [[nodiscard]] std::size_t ListCount() const { return table_.ListCount(); }

 private:
  SimulatedProcessTable table_;
  std::function<void(std::size_t)> beforeList_;
  std::shared_ptr<Event> destroyed_;
};

TEST(MonitorWorker, WaitsBeforeTheFirstCycleObeysIntervalAndPauseAndSurvivesACycleWithoutMemory) {
  const DiagnosticLines lines;
  const auto sampler = std::make_shared<TroubledSampler>([](std::size_t list) {
    if (list == 4) throw std::bad_alloc();
  });
  FakeClock clock;
  const FakeRules rules({ThreadRule(1, 1)});
  RecordingSink sink;
  MonitorEngine engine(sampler, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
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
  EXPECT_EQ(engine.CooldownCount(), 2u);
  engine.Stop();
  engine.Stop();
  EXPECT_EQ(engine.CooldownCount(), 0u);

  EXPECT_EQ(timeouts, (std::vector<std::uint32_t>{30'000, 30'000, 1000, 1000, 1000, 1000, 1000, 1000}));
  EXPECT_EQ(lists, (std::vector<std::size_t>{0, 1, 2, 2, 2, 3, 4, 5}));
  EXPECT_EQ(sink.Take().size(), 8u) << "two in each cycle but the fourth";
  const Texts seen = DiagnosticLines::Take();
  EXPECT_EQ(std::count(seen.begin(), seen.end(), L"MonitorEngine::Start - Already running"), 1);
  EXPECT_EQ(std::count(seen.begin(), seen.end(), L"MonitorEngine::Stop - Stopped"), 2);
}

// A system call or the sink holds the worker up; the engine and its rules, and in the first case the sink, are gone before that
// comes back.
TEST(MonitorWorker, StuckAtStopItAlertsNobodyLater) {
  struct StickySink final : IAlertSink {
    void OnAlert(const AlertRecord&) override {
      ++calls;
      barrier->Pass();
    }
    std::shared_ptr<Barrier> barrier;
    std::atomic<int> calls{0};
  };
  for (const bool inSink : {false, true}) {
    SCOPED_TRACE(inSink);
    const DiagnosticLines lines;
    FakeClock clock;
    auto rules = std::make_unique<FakeRules>(RuleList{ThreadRule(1, 1)});
    const auto barrier = std::make_shared<Barrier>();
    const auto destroyed = std::make_shared<TestEvent>();
    auto sink = std::make_unique<StickySink>();
    sink->barrier = barrier;
    const auto beforeList = [inSink, barrier](std::size_t) {
      if (!inSink) barrier->Pass();
    };
    auto engine = std::make_unique<MonitorEngine>(std::make_shared<TroubledSampler>(beforeList, destroyed), clock, 1);
    engine->SetRules(rules.get());
    engine->SetSink(sink.get());
    engine->Start();
    ASSERT_EQ(barrier->reached.Wait(kLongMs), WaitResult::kSignaled);
    engine->Stop(20);
    engine.reset();
    rules.reset();
    EXPECT_EQ(sink->calls, inSink ? 1 : 0);
    if (!inSink) sink.reset();
    barrier->goOn.Signal();
    ASSERT_EQ(destroyed->Wait(kLongMs), WaitResult::kSignaled) << "the worker has not let go of its state";
    EXPECT_TRUE(!inSink || sink->calls == 1);
  }
}

}  // namespace
