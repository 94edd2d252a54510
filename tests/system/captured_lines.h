#pragma once

// The diagnostic lines that the program writes while this lives. One at a time.

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/diagnostics.h"

class CapturedLines {
 public:
  CapturedLines() {
    Store().clear();
    SetDiagnosticHook([](std::wstring_view line) {
      std::lock_guard lock(Mutex());
      Store().emplace_back(line);
    });
  }
  ~CapturedLines() { SetDiagnosticHook(nullptr); }
  CapturedLines(const CapturedLines&) = delete;
  CapturedLines& operator=(const CapturedLines&) = delete;

  [[nodiscard]] std::vector<std::wstring> Lines() const {
    std::lock_guard lock(Mutex());
    return Store();
  }
  [[nodiscard]] bool Has(std::wstring_view start) const {
    for (const std::wstring& line : Lines()) {
      if (line.starts_with(start)) return true;
    }
    return false;
  }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }
  static std::vector<std::wstring>& Store() {
    static std::vector<std::wstring> lines;
    return lines;
  }
};
