#include <time.h>

#include "platform/clock.h"
#include "platform/event.h"

namespace {

constexpr std::int64_t kMsPerSecond = 1000;
constexpr std::int64_t kNsPerMs = 1'000'000;

std::uint16_t Narrow(int value) { return static_cast<std::uint16_t>(value); }

class HostClock final : public Clock {
 public:
  std::uint64_t TickMs() override {
    // The clock that goes on counting while the machine sleeps, as the product's tick does.
    timespec now = {};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec * kMsPerSecond + now.tv_nsec / kNsPerMs);
  }

  std::uint32_t Tick32Ms() override { return static_cast<std::uint32_t>(TickMs()); }

  LocalTime Now() override {
    timespec wall = {};
    ::clock_gettime(CLOCK_REALTIME, &wall);
    tm parts = {};
    ::localtime_r(&wall.tv_sec, &parts);
    LocalTime now;
    now.year = Narrow(parts.tm_year + 1900);
    now.month = Narrow(parts.tm_mon + 1);
    now.dayOfWeek = Narrow(parts.tm_wday);
    now.day = Narrow(parts.tm_mday);
    now.hour = Narrow(parts.tm_hour);
    now.minute = Narrow(parts.tm_min);
    now.second = Narrow(parts.tm_sec);
    now.milliseconds = static_cast<std::uint16_t>(wall.tv_nsec / kNsPerMs);
    return now;
  }

  WaitResult Wait(Event& event, std::uint32_t timeoutMs) override { return event.Wait(timeoutMs); }
};

}  // namespace

Clock& SystemClock() {
  // Never destroyed: a worker that outlives the entry point may still ask for the time.
  static Clock* const clock = new HostClock;
  return *clock;
}
