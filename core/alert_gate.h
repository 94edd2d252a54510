#pragma once

// The sink as a worker sees it: it can be shut for good. Once shut, a worker that was given up alerts nobody, however late it
// comes back, and the sink may be destroyed.

#include <cstdint>
#include <mutex>

#include "core/alert_sink.h"
#include "platform/event.h"

class AlertGate final : public IAlertSink {
 public:
  /// Not owned; may be null. Not while a worker uses the gate.
  void SetSink(IAlertSink* sink);
  /// Passes the alert on; without effect once shut or without a sink. No lock is held while the sink works.
  void OnAlert(const AlertRecord& record) override;
  /// Any thread. Gives an alert that is being passed on at this moment `timeoutMs` to come out of the sink.
  void Shut(std::uint32_t timeoutMs);

 private:
  [[nodiscard]] IAlertSink* Enter();
  void Leave();

  std::mutex mutex_;
  IAlertSink* sink_ = nullptr;
  bool passing_ = false;
  Event left_;
};
