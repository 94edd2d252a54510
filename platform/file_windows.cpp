#include <algorithm>
#include <new>
#include <stdexcept>

#include "platform/file.h"
#include "platform/handles.h"

namespace {

constexpr std::size_t kMaxTransferBytes = std::size_t{1} << 30;
/// As the runtime opens files: others may read and write meanwhile, nobody may delete.
constexpr DWORD kShareReadWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;

UniqueHandle OpenPath(const std::wstring& path, DWORD access, DWORD disposition) {
  return OwnFileHandle(
      ::CreateFileW(path.c_str(), access, kShareReadWrite, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool SizeOf(HANDLE file, std::uint64_t& sizeBytes) {
  LARGE_INTEGER size = {};
  if (file == nullptr || ::GetFileSizeEx(file, &size) == FALSE) return false;
  sizeBytes = static_cast<std::uint64_t>(size.QuadPart);
  return true;
}

bool WriteAll(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = static_cast<DWORD>(std::min(bytes.size(), kMaxTransferBytes));
    DWORD written = 0;
    if (::WriteFile(file, bytes.data(), count, &written, nullptr) == FALSE || written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

/// Reads until `count` bytes or the end. The string is resized to what came.
bool ReadAllAt(HANDLE file, std::uint64_t offset, std::size_t count, std::string& bytes) {
  LARGE_INTEGER position = {};
  position.QuadPart = static_cast<LONGLONG>(offset);
  if (::SetFilePointerEx(file, position, nullptr, FILE_BEGIN) == FALSE) return false;
  bytes.resize(count);
  std::size_t have = 0;
  while (have < count) {
    const auto wanted = static_cast<DWORD>(std::min(count - have, kMaxTransferBytes));
    DWORD got = 0;
    if (::ReadFile(file, bytes.data() + have, wanted, &got, nullptr) == FALSE) return false;
    if (got == 0) break;
    have += got;
  }
  bytes.resize(have);
  return true;
}

HANDLE ToHandle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

}  // namespace

std::optional<std::string> ReadWholeFile(const std::wstring& path) {
  const UniqueHandle file = OpenPath(path, GENERIC_READ, OPEN_EXISTING);
  std::uint64_t sizeBytes = 0;
  if (!SizeOf(file.get(), sizeBytes)) return std::nullopt;
  try {
    std::string bytes;
    if (!ReadAllAt(file.get(), 0, static_cast<std::size_t>(sizeBytes), bytes)) return std::nullopt;
    return bytes;
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return std::nullopt;
}

RandomReadFile::~RandomReadFile() {
  if (handle_ != -1) ::CloseHandle(ToHandle(handle_));
}

bool RandomReadFile::Open(const std::wstring& path) {
  UniqueHandle file = OpenPath(path, GENERIC_READ, OPEN_EXISTING);
  std::uint64_t sizeBytes = 0;
  if (handle_ != -1 || !SizeOf(file.get(), sizeBytes)) return false;
  sizeBytes_ = sizeBytes;
  handle_ = reinterpret_cast<std::intptr_t>(file.release());
  return true;
}

bool RandomReadFile::ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes) {
  if (handle_ == -1) return false;
  return ReadAllAt(ToHandle(handle_), offset, count, bytes);
}

WriteResult WriteWholeFile(const std::wstring& path, std::string_view bytes) {
  const UniqueHandle file = OpenPath(path, GENERIC_WRITE, OPEN_ALWAYS);
  std::uint64_t oldSizeBytes = 0;
  if (!SizeOf(file.get(), oldSizeBytes)) return WriteResult::kCannotOpen;
  if (!WriteAll(file.get(), bytes)) return WriteResult::kWriteFailed;
  // The position is behind the last byte written.
  if (oldSizeBytes > bytes.size() && ::SetEndOfFile(file.get()) == FALSE) return WriteResult::kWriteFailed;
  return ::FlushFileBuffers(file.get()) != FALSE ? WriteResult::kWritten : WriteResult::kWriteFailed;
}

WriteResult AppendToFile(const std::wstring& path, std::string_view bytes, std::string_view whenEmpty) {
  const UniqueHandle file = OpenPath(path, FILE_APPEND_DATA, OPEN_ALWAYS);
  std::uint64_t sizeBytes = 0;
  if (!SizeOf(file.get(), sizeBytes)) return WriteResult::kCannotOpen;
  std::string all(sizeBytes == 0 ? whenEmpty : std::string_view());
  all += bytes;
  return WriteAll(file.get(), all) ? WriteResult::kWritten : WriteResult::kWriteFailed;
}

bool RemoveFile(const std::wstring& path) { return ::DeleteFileW(path.c_str()) != FALSE; }
