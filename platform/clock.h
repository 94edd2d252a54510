#pragma once

// Time behind a seam: ticks, local time and waiting, so that intervals, cooldowns, throttles and tick wrap-around are tested
// without waiting. The system's clock and the tests' fake implement it.

#include <cstdint>

#include "platform/event.h"

/// Local date and time; the layout of the system's own SYSTEMTIME.
struct LocalTime {
  std::uint16_t year = 0;
  std::uint16_t month = 0;
  std::uint16_t dayOfWeek = 0;
  std::uint16_t day = 0;
  std::uint16_t hour = 0;
  std::uint16_t minute = 0;
  std::uint16_t second = 0;
  std::uint16_t milliseconds = 0;

  bool operator==(const LocalTime&) const = default;
};

class Clock {
 public:
  virtual ~Clock() = default;

  /// Milliseconds since the system started, 64 bits: never wraps.
  [[nodiscard]] virtual std::uint64_t TickMs() = 0;
  /// The same count in 32 bits: wraps every 49.7 days, so only differences mean anything.
  [[nodiscard]] virtual std::uint32_t Tick32Ms() = 0;
  [[nodiscard]] virtual LocalTime Now() = 0;
  /// Waits for the event at most `timeoutMs`. The worker's only way to sleep.
  [[nodiscard]] virtual WaitResult Wait(Event& event, std::uint32_t timeoutMs) = 0;
};

/// The machine's clock. Lives as long as the process; any thread.
Clock& SystemClock();
