#include "core/alert_gate.h"

void AlertGate::SetSink(IAlertSink* sink) {
  std::lock_guard lock(mutex_);
  sink_ = sink;
}

IAlertSink* AlertGate::Enter() {
  std::lock_guard lock(mutex_);
  passing_ = sink_ != nullptr;
  return sink_;
}

void AlertGate::Leave() {
  std::lock_guard lock(mutex_);
  passing_ = false;
  left_.Signal();
}

void AlertGate::OnAlert(const AlertRecord& record) {
  IAlertSink* const sink = Enter();
  if (sink == nullptr) return;
  struct Leaver {
    AlertGate& gate;
    ~Leaver() { gate.Leave(); }
  } const leaver{*this};
  sink->OnAlert(record);
}

void AlertGate::Shut(std::uint32_t timeoutMs) {
  {
    std::lock_guard lock(mutex_);
    sink_ = nullptr;
    if (!passing_) return;
    std::uint32_t error = 0;
    if (!left_.Create(Event::Reset::kManual, error)) return;
  }
  // Only a sink that blocks, which it must not, is still at work after this.
  (void)left_.Wait(timeoutMs);
}
