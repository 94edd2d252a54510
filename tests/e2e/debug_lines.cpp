#include "tests/e2e/debug_lines.h"

#include <algorithm>
#include <cstring>

namespace e2e {

namespace {

constexpr DWORD kBufferBytes = 4096;

bool Holds(const std::string& line, const std::string& text) { return line.find(text) != std::string::npos; }

}  // namespace

DebugLines::DebugLines()
    : mapping_(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kBufferBytes, L"DBWIN_BUFFER")),
      bufferReady_(::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_BUFFER_READY")),
      dataReady_(::CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY")),
      end_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      reader_([this] { Read(); }) {}

DebugLines::~DebugLines() {
  ::SetEvent(end_.get());
  reader_.join();
}

void DebugLines::Read() {
  // The channel's layout: the writer's process id, then its text with a terminator.
  auto* const view = static_cast<char*>(::MapViewOfFile(mapping_.get(), FILE_MAP_READ, 0, 0, kBufferBytes));
  if (view == nullptr) return;
  const HANDLE waits[] = {end_.get(), dataReady_.get()};
  ::SetEvent(bufferReady_.get());
  while (::WaitForMultipleObjects(2, waits, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
    Line line{};
    std::memcpy(&line.processId, view, sizeof(line.processId));
    const char* text = view + sizeof(line.processId);
    line.text.assign(text, ::strnlen(text, kBufferBytes - sizeof(line.processId)));
    {
      std::lock_guard lock(mutex_);
      lines_.push_back(std::move(line));
    }
    ::SetEvent(bufferReady_.get());
  }
  ::UnmapViewOfFile(view);
}

std::vector<std::string> DebugLines::Of(DWORD processId) const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> texts;
  for (const Line& line : lines_) {
    if (processId == 0 || line.processId == processId) texts.push_back(line.text);
  }
  return texts;
}

std::size_t DebugLines::Count(DWORD processId, const std::string& text) const {
  const auto lines = Of(processId);
  return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&](const auto& line) { return Holds(line, text); }));
}

bool DebugLines::WaitFor(DWORD processId, const std::string& text, DWORD timeoutMs) const {
  return WaitUntil([&] { return Count(processId, text) != 0; }, timeoutMs);
}

}  // namespace e2e
