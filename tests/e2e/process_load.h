#pragma once

// What makes this test's own process exceed a rule's ceiling, for as long as the object lives.

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace e2e {

/// The executable name under which a rule finds this process.
[[nodiscard]] std::string OwnName();
/// As the system's process list counts them.
[[nodiscard]] unsigned OwnThreadCount();
[[nodiscard]] unsigned OwnWorkingSetMb();

/// Keeps another process's window, and so that process, busy with messages.
class BusyWindow {
 public:
  explicit BusyWindow(HWND window);
  ~BusyWindow();
  BusyWindow(const BusyWindow&) = delete;
  BusyWindow& operator=(const BusyWindow&) = delete;

 private:
  std::atomic<bool> end_{false};
  std::thread thread_;
};

/// Memory that has been touched.
class TouchedMemory {
 public:
  explicit TouchedMemory(std::size_t mb) : bytes_(mb * 1'048'576, '\x5A') {}
  [[nodiscard]] std::size_t SizeMb() const { return bytes_.size() / 1'048'576; }

 private:
  std::vector<char> bytes_;
};

}  // namespace e2e
