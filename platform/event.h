#pragma once

// An event that threads wait on: the system's event object on Windows, a condition variable on the host.

#include <cstdint>
#include <memory>

enum class WaitResult { kSignaled, kTimedOut, kFailed };

class Event {
 public:
  enum class Reset { kManual, kAuto };

  Event();
  ~Event();
  Event(Event&&) noexcept;
  Event& operator=(Event&&) noexcept;

  /// Creates the event, not signalled. False with the system's error code in `error` when the system refuses; the event is then
  /// empty.
  [[nodiscard]] bool Create(Reset reset, std::uint32_t& error);
  void Close();
  [[nodiscard]] bool IsOpen() const;

  /// Without effect on an empty event.
  void Signal();
  void Clear();
  /// kFailed on an empty event. `timeoutMs` 0 tests without waiting; an auto-reset event is cleared by a successful wait.
  [[nodiscard]] WaitResult Wait(std::uint32_t timeoutMs);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
