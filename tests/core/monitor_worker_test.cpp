#include <gtest/gtest.h>

#include <future>
#include <new>
#include <thread>

#include "core/monitor_engine.h"
#include "tests/support/monitor_doubles.h"

namespace {

/// A machine with two processes that break the rule, and whose lists do what a test wants before they are given.
struct TroubledMachine final : SimulatedProcessTable {
  explicit TroubledMachine(std::function<void(std::size_t)> change) : beforeList(std::move(change)) {
    for (const std::uint32_t pid : {10U, 11U}) Put(MakeProcess(pid, L"busy.exe", 5));
  }
  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    const bool listed = SimulatedProcessTable::ListProcesses(entries, error);
    beforeList(lists);
    return listed;
  }
  const std::function<void(std::size_t)> beforeList;
};

TEST(MonitorWorker, WaitsBeforeTheFirstCycleObeysIntervalAndPauseAndSurvivesACycleWithoutMemory) {
  const DiagnosticLines lines;
  const auto machine = std::make_shared<TroubledMachine>([](std::size_t list) {
    if (list == 4) throw std::bad_alloc();
  });
  FakeClock clock;
  const FakeRules rules({ThreadRule(1, 1)});
  RecordingSink sink;
  MonitorEngine engine(machine, clock, 1);
  engine.SetRules(&rules);
  engine.SetSink(&sink);
  std::promise<void> scriptDone;
  std::vector<std::uint32_t> timeouts;
  std::vector<std::size_t> lists;
  clock.onWait = [&](Event& event, std::uint32_t timeoutMs) {
    timeouts.push_back(timeoutMs);
    lists.push_back(machine->lists);
    if (lists.size() == 2) engine.SetIntervalMs(1000);
    if (lists.size() == 3) engine.SetPaused(true);
    if (lists.size() == 5) engine.SetPaused(false);
    if (lists.size() < 8) return WaitResult::kTimedOut;
    scriptDone.set_value();
    return event.Wait(30'000);
  };
  engine.Start();
  engine.Start();
  scriptDone.get_future().wait();
  EXPECT_EQ(engine.CooldownCount(), 2U);
  engine.Stop();
  engine.Stop();
  EXPECT_EQ(engine.CooldownCount(), 0U);

  EXPECT_EQ(timeouts, (std::vector<std::uint32_t>{30'000, 30'000, 1000, 1000, 1000, 1000, 1000, 1000}));
  EXPECT_EQ(lists, (std::vector<std::size_t>{0, 1, 2, 2, 2, 3, 4, 5}));
  EXPECT_EQ(sink.Take().size(), 8U) << "two in each cycle but the fourth";
  const Texts seen = DiagnosticLines::Take();
  EXPECT_EQ(std::count(seen.begin(), seen.end(), L"MonitorEngine::Start - Already running"), 1);
  EXPECT_EQ(std::count(seen.begin(), seen.end(), L"MonitorEngine::Stop - Stopped"), 2);
}

// A system call or the sink holds the worker up; the engine and its rules, and in the first case the sink, are gone before that
// comes back.
TEST(MonitorWorker, StuckAtStopItAlertsNobodyLater) {
  struct StickySink final : IAlertSink {
    explicit StickySink(std::function<void()> held) : hold(std::move(held)) {}
    void OnAlert(const AlertRecord&) override {
      ++calls;
      hold();
    }
    const std::function<void()> hold;
    std::atomic<int> calls{0};
  };
  for (const bool inSink : {false, true}) {
    SCOPED_TRACE(inSink);
    const DiagnosticLines lines;
    FakeClock clock;
    auto rules = std::make_unique<FakeRules>(RuleList{ThreadRule(1, 1)});
    std::promise<void> reached;
    std::promise<void> goOn;
    const auto stick = [&] {
      reached.set_value();
      goOn.get_future().wait();
    };
    auto sink = std::make_unique<StickySink>(stick);
    auto machine = std::make_shared<TroubledMachine>([inSink, stick](std::size_t) {
      if (!inSink) stick();
    });
    const std::weak_ptr<TroubledMachine> watched = machine;
    auto engine = std::make_unique<MonitorEngine>(std::move(machine), clock, 1);
    engine->SetRules(rules.get());
    engine->SetSink(sink.get());
    engine->Start();
    reached.get_future().wait();
    engine->Stop(20);
    engine.reset();
    rules.reset();
    EXPECT_EQ(sink->calls, inSink ? 1 : 0);
    if (!inSink) sink.reset();
    goOn.set_value();
    while (!watched.expired()) std::this_thread::yield();  // until the worker lets go of its state
    EXPECT_TRUE(!inSink || sink->calls == 1);
  }
}

}  // namespace
