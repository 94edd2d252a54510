#pragma once

// A worker thread with what the engine needs from one: the system's error when it cannot start, idle priority, its id, and an end
// that is waited for only so long.

#include <cstdint>
#include <functional>
#include <memory>

class Thread {
 public:
  Thread();
  /// Lets a thread that still runs go its way; join first with WaitForEnd where that matters.
  ~Thread();
  Thread(Thread&&) noexcept;
  Thread& operator=(Thread&&) noexcept;

  /// Starts `routine` on a new thread. False with the system's error code when there is none. A routine that runs out of
  /// memory just ends.
  [[nodiscard]] bool Start(std::function<void()> routine, std::uint32_t& error);
  [[nodiscard]] bool IsStarted() const;
  [[nodiscard]] std::uint32_t Id() const;
  /// The thread then runs only when nothing else wants the processor. Best effort.
  void SetIdlePriority();
  /// True when the thread has ended within the time, or was never started.
  [[nodiscard]] bool WaitForEnd(std::uint32_t timeoutMs);
  /// Gives the thread up without waiting for it.
  void Release();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Runs `routine` on a thread of its own that nobody waits for. False when none could be started.
bool StartDetachedThread(std::function<void()> routine);
