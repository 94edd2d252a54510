#pragma once

// A hidden top-level window of this test's own, found by class and title as another product's would be.

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

namespace e2e {

class StandInWindow {
 public:
  enum class Manner { kCloses, kStays };

  /// Counts the message; closes on it, unless its manner is to stay.
  StandInWindow(std::wstring windowClass, std::wstring title, UINT message, Manner manner = Manner::kCloses);
  ~StandInWindow();
  StandInWindow(const StandInWindow&) = delete;
  StandInWindow& operator=(const StandInWindow&) = delete;

  [[nodiscard]] int Asked() const { return asked_; }
  [[nodiscard]] bool IsOpen() const { return ::IsWindow(window_) != FALSE; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void Run(HANDLE ready);

  std::wstring windowClass_;
  std::wstring title_;
  UINT message_;
  Manner manner_;
  std::atomic<int> asked_{0};
  HWND window_ = nullptr;
  std::thread thread_;
};

}  // namespace e2e
