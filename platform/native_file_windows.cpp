#include "platform/native_file.h"

#include <windows.h>

#include <algorithm>

#include "platform/repeat_while_held.h"

namespace {

constexpr std::size_t kMaxTransferBytes = std::size_t{1} << 30;

HANDLE ToHandle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

DWORD AccessOf(NativeFile::Mode mode) {
  switch (mode) {
    case NativeFile::Mode::kRead:
      return GENERIC_READ;
    case NativeFile::Mode::kOverwrite:
      return GENERIC_WRITE;
    case NativeFile::Mode::kAppend:
      return FILE_APPEND_DATA;
  }
  return GENERIC_READ;
}

}  // namespace

NativeFile::~NativeFile() {
  if (handle_ != kNoHandle) ::CloseHandle(ToHandle(handle_));
}

bool NativeFile::Open(const std::wstring& path, Mode mode) {
  static_assert(kNoHandle == -1, "the value of INVALID_HANDLE_VALUE");
  if (handle_ != kNoHandle) return false;
  // As the runtime opens files: others may read and write meanwhile, nobody may delete.
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
  const DWORD disposition = mode == Mode::kRead ? OPEN_EXISTING : OPEN_ALWAYS;
  const bool opened = RepeatWhileHeld([&] {
    handle_ = reinterpret_cast<std::intptr_t>(
        ::CreateFileW(path.c_str(), AccessOf(mode), kShare, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    return handle_ != kNoHandle;
  });
  LARGE_INTEGER size = {};
  if (!opened || ::GetFileSizeEx(ToHandle(handle_), &size) == FALSE) return false;
  sizeBytes_ = static_cast<std::uint64_t>(size.QuadPart);
  return true;
}

bool NativeFile::ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes) const {
  LARGE_INTEGER position = {};
  position.QuadPart = static_cast<LONGLONG>(offset);
  if (::SetFilePointerEx(ToHandle(handle_), position, nullptr, FILE_BEGIN) == FALSE) return false;
  bytes.resize(count);
  std::size_t have = 0;
  while (have < count) {
    const auto wanted = static_cast<DWORD>(std::min(count - have, kMaxTransferBytes));
    DWORD got = 0;
    const auto read = [&] { return ::ReadFile(ToHandle(handle_), bytes.data() + have, wanted, &got, nullptr) != FALSE; };
    if (!RepeatWhileHeld(read)) return false;
    if (got == 0) break;
    have += got;
  }
  bytes.resize(have);
  return true;
}

bool NativeFile::Write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = static_cast<DWORD>(std::min(bytes.size(), kMaxTransferBytes));
    DWORD written = 0;
    const auto write = [&] { return ::WriteFile(ToHandle(handle_), bytes.data(), count, &written, nullptr) != FALSE; };
    if (!RepeatWhileHeld(write) || written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

bool NativeFile::CutAt(std::uint64_t sizeBytes) const {
  LARGE_INTEGER start = {};
  LARGE_INTEGER position = {};
  position.QuadPart = static_cast<LONGLONG>(sizeBytes);
  return ::SetFilePointerEx(ToHandle(handle_), position, nullptr, FILE_BEGIN) != FALSE &&
         ::SetEndOfFile(ToHandle(handle_)) != FALSE && ::SetFilePointerEx(ToHandle(handle_), start, nullptr, FILE_BEGIN) != FALSE;
}

// The end of the file moved out takes the room on the volume, except where files are sparse.
bool NativeFile::Reserve(std::uint64_t sizeBytes) const {
  if (CutAt(sizeBytes)) return true;
  (void)CutAt(sizeBytes_);
  return false;
}

bool NativeFile::Flush() const { return ::FlushFileBuffers(ToHandle(handle_)) != FALSE; }

bool IsMissingFile(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool RemoveFile(const std::wstring& path) { return ::DeleteFileW(path.c_str()) != FALSE; }
