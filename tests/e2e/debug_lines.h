#pragma once

// The diagnostic lines of other processes, read from the system debugger's channel while this lives. One reader at a time in a
// session.

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/handles.h"
#include "tests/e2e/wait.h"

namespace e2e {

class DebugLines {
 public:
  DebugLines();
  ~DebugLines();
  DebugLines(const DebugLines&) = delete;
  DebugLines& operator=(const DebugLines&) = delete;

  /// The lines of one process so far, in order; 0: of all.
  [[nodiscard]] std::vector<std::string> Of(DWORD processId) const;
  /// How many of the process's lines hold the text.
  [[nodiscard]] std::size_t Count(DWORD processId, const std::string& text) const;
  [[nodiscard]] bool WaitFor(DWORD processId, const std::string& text, DWORD timeoutMs = kPatienceMs) const;

 private:
  struct Line {
    DWORD processId;
    std::string text;
  };
  void Read();

  mutable std::mutex mutex_;
  std::vector<Line> lines_;
  UniqueHandle mapping_;
  UniqueHandle bufferReady_;
  UniqueHandle dataReady_;
  UniqueHandle end_;
  std::thread reader_;
};

}  // namespace e2e
