#pragma once

// The diagnostic lines of other processes, read from the system debugger's channel while this lives. One reader at a time in a
// session.

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/handles.h"
#include "tests/support/wait.h"

namespace e2e {

class DebugLines {
 public:
  ~DebugLines() {
    ::SetEvent(end_.get());
    reader_.join();
  }

  /// The places, among the lines of all processes, of those of one process that hold the text.
  [[nodiscard]] std::vector<std::size_t> Places(DWORD processId, const std::string& text) const {
    std::lock_guard lock(mutex_);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (lines_[i].first == processId && lines_[i].second.find(text) != std::string::npos) places.push_back(i);
    }
    return places;
  }
  [[nodiscard]] std::size_t Count(DWORD processId, const std::string& text) const { return Places(processId, text).size(); }
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

  void Read() {
    const auto* channel = static_cast<const Channel*>(::MapViewOfFile(mapping_.get(), FILE_MAP_READ, 0, 0, sizeof(Channel)));
    const HANDLE waits[] = {end_.get(), dataReady_.get()};
    ::SetEvent(bufferReady_.get());
    while (channel != nullptr && ::WaitForMultipleObjects(2, waits, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
      {
        std::lock_guard lock(mutex_);
        lines_.emplace_back(channel->processId, channel->text);
      }
      ::SetEvent(bufferReady_.get());
    }
    ::UnmapViewOfFile(channel);
  }

  mutable std::mutex mutex_;
  std::vector<std::pair<DWORD, std::string>> lines_;
  const UniqueHandle mapping_{
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Channel), L"DBWIN_BUFFER")};
  const UniqueHandle bufferReady_{::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY")};
  const UniqueHandle dataReady_{::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY")};
  const UniqueHandle end_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::thread reader_{[this] { Read(); }};
};

}  // namespace e2e
