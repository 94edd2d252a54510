#pragma once

// The diagnostic lines of other processes, read from the system debugger's channel while this lives. One reader at a time in a
// session.

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>

#include "platform/handles.h"

namespace e2e {

class DebugLines {
 public:
  /// "<process id> <text>" of every line so far, each after a line feed.
  [[nodiscard]] std::string All() const {
    std::lock_guard lock(mutex_);
    return lines_;
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
