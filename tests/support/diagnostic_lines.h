#pragma once

// The diagnostic lines that the code under test writes while this lives. One at a time.

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/diagnostics.h"

class DiagnosticLines {
 public:
  DiagnosticLines() {
    (void)Take();
    SetDiagnosticHook([](std::wstring_view line) {
      std::lock_guard lock(mutex_);
      lines_.emplace_back(line);
    });
  }
  ~DiagnosticLines() { SetDiagnosticHook(nullptr); }
  DiagnosticLines(const DiagnosticLines&) = delete;

  /// What has come since the last call.
  static std::vector<std::wstring> Take() {
    std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

 private:
  inline static std::mutex mutex_;
  inline static std::vector<std::wstring> lines_;
};
