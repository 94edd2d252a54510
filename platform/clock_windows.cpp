#include <windows.h>

#include "platform/clock.h"
#include "platform/event.h"

namespace {

class WindowsClock final : public Clock {
 public:
  std::uint64_t TickMs() override { return ::GetTickCount64(); }
  std::uint32_t Tick32Ms() override { return ::GetTickCount(); }

  LocalTime Now() override {
    SYSTEMTIME time = {};
    ::GetLocalTime(&time);
    LocalTime now;
    now.year = time.wYear;
    now.month = time.wMonth;
    now.dayOfWeek = time.wDayOfWeek;
    now.day = time.wDay;
    now.hour = time.wHour;
    now.minute = time.wMinute;
    now.second = time.wSecond;
    now.milliseconds = time.wMilliseconds;
    return now;
  }

  WaitResult Wait(Event& event, std::uint32_t timeoutMs) override { return event.Wait(timeoutMs); }
};

}  // namespace

Clock& SystemClock() {
  // Never destroyed: a worker that outlives the entry point may still ask for the time.
  static Clock* const clock = new WindowsClock;
  return *clock;
}
