#pragma once

// The diagnostic lines of other processes, read from the system debugger's channel while this lives. One reader at a time in a
// session.

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>

#include "platform/handles.h"
#include "tests/support/wait.h"

namespace e2e {

class DebugLines {
 public:
  /// "<process id> <text>" of every line so far, each after a line feed.
  [[nodiscard]] std::string All() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  /// How many lines of the process begin with the text.
  [[nodiscard]] int Count(DWORD processId, const std::string& text) const {
    const std::string start = "\n" + std::to_string(processId) + " " + text;
    const std::string lines = All();
    int count = 0;
    for (std::size_t at = 0; (at = lines.find(start, at)) != std::string::npos; ++at) ++count;
    return count;
  }
  [[nodiscard]] bool WaitFor(DWORD processId, const std::string& text) const {
    return WaitUntil([&] { return Count(processId, text) != 0; });
  }
  /// True when the text comes, and comes once: a process may be gone a moment before its last line has been read.
  [[nodiscard]] bool ComesOnce(DWORD processId, const std::string& text) const {
    return WaitFor(processId, text) && Count(processId, text) == 1;
  }

 private:
  /// The channel's layout; the text ends with a terminator.
  struct Channel {
    DWORD processId;
    char text[4092];
  };

  void Read(const std::stop_token& end) {
    const auto* channel = static_cast<const Channel*>(::MapViewOfFile(mapping_.get(), FILE_MAP_READ, 0, 0, sizeof(Channel)));
    ::SetEvent(bufferReady_.get());
    while (channel != nullptr && !end.stop_requested()) {
      if (::WaitForSingleObject(dataReady_.get(), 20) != WAIT_OBJECT_0) continue;
      std::lock_guard lock(mutex_);
      lines_ += "\n" + std::to_string(channel->processId) + " " + channel->text;
      ::SetEvent(bufferReady_.get());
    }
    ::UnmapViewOfFile(channel);
  }

  mutable std::mutex mutex_;
  std::string lines_;
  const UniqueHandle mapping_{
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Channel), L"DBWIN_BUFFER")};
  const UniqueHandle bufferReady_{::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY")};
  const UniqueHandle dataReady_{::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY")};
  std::jthread reader_{[this](const std::stop_token& end) { Read(end); }};
};

}  // namespace e2e
