#pragma once

// The diagnostic lines that the program writes while this lives. One at a time.

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/diagnostics.h"

class CapturedLines {
 public:
  CapturedLines() {
    lines_.clear();
    SetDiagnosticHook([](std::wstring_view line) {
      std::lock_guard lock(mutex_);
      lines_.emplace_back(line);
    });
  }
  ~CapturedLines() { SetDiagnosticHook(nullptr); }
  CapturedLines(const CapturedLines&) = delete;
  CapturedLines& operator=(const CapturedLines&) = delete;

  [[nodiscard]] std::vector<std::wstring> Lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  [[nodiscard]] bool Has(std::wstring_view start) const {
    const auto lines = Lines();
    return std::any_of(lines.begin(), lines.end(), [start](const std::wstring& line) { return line.starts_with(start); });
  }

 private:
  inline static std::mutex mutex_;
  inline static std::vector<std::wstring> lines_;
};
