#include "core/monitor_engine.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "core/alert_gate.h"
#include "core/monitor_cycle.h"
#include "platform/diagnostics.h"
#include "platform/event.h"
#include "platform/out_of_memory.h"

namespace {

constexpr std::uint32_t kSinkTimeoutMs = 100;

}  // namespace

/// What other threads set while the worker runs.
struct MonitorEngine::Controls {
  std::atomic<std::uint32_t> intervalMs{kDefaultIntervalMs};
  std::atomic<bool> paused{false};
  std::mutex exclusionsLock;
  ExclusionSnapshot exclusions = std::make_shared<const ExclusionList>();

  ExclusionSnapshot Exclusions() {
    std::lock_guard lock(exclusionsLock);
    return exclusions;
  }
};

/// What one worker works on, and nobody else while it runs.
struct MonitorEngine::Session {
  Session(std::shared_ptr<ProcessSampler> processSampler, Clock& systemClock, std::uint32_t processors)
      : sampler(std::move(processSampler)),
        clock(systemClock),
        processorCount(processors),
        cycle(sampler, clock, processorCount) {}

  void RunCycle(Controls& controls, const std::function<bool()>& isStopped);
  void Loop(Controls& controls);

  const std::shared_ptr<ProcessSampler> sampler;
  Clock& clock;
  const std::uint32_t processorCount;
  const RuleSource* rules = nullptr;
  IAlertSink* sink = nullptr;
  AlertGate gate;
  Event stopEvent;
  MonitorCycle cycle;
};

void MonitorEngine::Session::RunCycle(Controls& controls, const std::function<bool()>& isStopped) {
  if (rules == nullptr) return;
  // A snapshot each for the whole cycle: what other threads change meanwhile is the next cycle's.
  cycle.Run(rules->Snapshot(), controls.Exclusions(), gate, isStopped);
}

void MonitorEngine::Session::Loop(Controls& controls) {
  DebugLog(L"MonitorEngine::MonitorLoop - Entering loop");
  const std::function<bool()> isStopped = [this] { return stopEvent.Wait(0) == WaitResult::kSignaled; };
  while (clock.Wait(stopEvent, controls.intervalMs) == WaitResult::kTimedOut) {
    if (controls.paused) continue;
    // Without memory the cycle is lost; the next one may find some again.
    (void)DoUnlessOutOfMemory(L"MonitorEngine::MonitorLoop", [&] { RunCycle(controls, isStopped); });
  }
  DebugLog(L"MonitorEngine::MonitorLoop - Exiting loop");
}

MonitorEngine::MonitorEngine(std::shared_ptr<ProcessSampler> sampler, Clock& clock, std::uint32_t processorCount)
    : controls_(std::make_shared<Controls>()), session_(std::make_shared<Session>(std::move(sampler), clock, processorCount)) {}

MonitorEngine::~MonitorEngine() { Stop(); }

void MonitorEngine::SetRules(const RuleSource* rules) { session_->rules = rules; }

void MonitorEngine::SetSink(IAlertSink* sink) {
  session_->sink = sink;
  session_->gate.SetSink(sink);
}

void MonitorEngine::Start() {
  if (thread_.IsStarted()) {
    DebugLog(L"MonitorEngine::Start - Already running");
    return;
  }
  std::uint32_t error = 0;
  if (!session_->stopEvent.Create(Event::Reset::kManual, error)) {
    DebugLog(L"MonitorEngine::Start - CreateEvent failed: %u", error);
    return;
  }
  if (!thread_.Start([session = session_, controls = controls_] { session->Loop(*controls); }, error)) {
    DebugLog(L"MonitorEngine::Start - CreateThread failed: %u", error);
    session_->stopEvent.Close();
    return;
  }
  thread_.SetIdlePriority();
  DebugLog(L"MonitorEngine::Start - Monitor thread started (TID %u, interval %u ms)", thread_.Id(), IntervalMs());
}

void MonitorEngine::Stop(std::uint32_t timeoutMs) {
  session_->stopEvent.Signal();
  if (thread_.WaitForEnd(timeoutMs)) {
    session_->stopEvent.Close();
    session_->cycle.ForgetHistory();
  } else {
    // The worker is stuck in some call. It keeps its session; the engine goes on with a new one.
    session_->gate.Shut(kSinkTimeoutMs);
    auto fresh = std::make_shared<Session>(session_->sampler, session_->clock, session_->processorCount);
    fresh->rules = session_->rules;
    fresh->sink = session_->sink;
    fresh->gate.SetSink(session_->sink);
    session_ = std::move(fresh);
  }
  thread_.Release();
  DebugLog(L"MonitorEngine::Stop - Stopped");
}

void MonitorEngine::RunCycle() {
  session_->RunCycle(*controls_, [] { return false; });
}

std::uint32_t MonitorEngine::IntervalMs() const { return controls_->intervalMs; }

void MonitorEngine::SetIntervalMs(std::uint32_t intervalMs) { controls_->intervalMs = intervalMs; }

bool MonitorEngine::Paused() const { return controls_->paused; }

void MonitorEngine::SetPaused(bool paused) { controls_->paused = paused; }

ExclusionSnapshot MonitorEngine::Exclusions() const { return controls_->Exclusions(); }

void MonitorEngine::SetExclusions(ExclusionList exclusions) {
  auto snapshot = std::make_shared<const ExclusionList>(std::move(exclusions));
  std::lock_guard lock(controls_->exclusionsLock);
  controls_->exclusions.swap(snapshot);
}

std::size_t MonitorEngine::CpuSampleCount() const { return session_->cycle.Cpu().Size(); }

std::size_t MonitorEngine::CooldownCount() const { return session_->cycle.Cooldowns().Size(); }
