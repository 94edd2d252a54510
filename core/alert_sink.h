#pragma once

// The engine's only way out. Whoever receives alerts implements this.

#include "core/records.h"

class IAlertSink {
 public:
  /// Called on the engine's worker thread; the record is the caller's, and the call must not block for long.
  virtual void OnAlert(const AlertRecord& record) = 0;
  virtual ~IAlertSink() = default;
};
