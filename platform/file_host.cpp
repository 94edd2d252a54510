#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <utility>

#include "platform/file.h"
#include "platform/text_encoding.h"

namespace {

/// An open file descriptor; closed with its owner.
class Descriptor {
 public:
  Descriptor(const std::wstring& path, int flags) {
    std::string name;
    EncodeText(path, TextEncoding::kUtf8, name);
    value_ = ::open(name.c_str(), flags | O_CLOEXEC, 0666);
  }
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int Get() const { return value_; }
  [[nodiscard]] int Release() { return std::exchange(value_, -1); }
  /// False for a folder and for what is not open.
  [[nodiscard]] bool SizeOf(std::uint64_t& sizeBytes) const {
    struct stat status = {};
    if (value_ < 0 || ::fstat(value_, &status) != 0 || S_ISDIR(status.st_mode)) return false;
    sizeBytes = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    return true;
  }

 private:
  int value_ = -1;
};

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Reads until `count` bytes or the end. The string is resized to what came.
bool ReadAllAt(int descriptor, std::uint64_t offset, std::size_t count, std::string& bytes) {
  bytes.resize(count);
  std::size_t have = 0;
  while (have < count) {
    const ssize_t got = ::pread(descriptor, bytes.data() + have, count - have, static_cast<off_t>(offset + have));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  bytes.resize(have);
  return true;
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::wstring& path) {
  const Descriptor file(path, O_RDONLY);
  std::uint64_t sizeBytes = 0;
  if (!file.SizeOf(sizeBytes)) return std::nullopt;
  try {
    std::string bytes;
    if (!ReadAllAt(file.Get(), 0, static_cast<std::size_t>(sizeBytes), bytes)) return std::nullopt;
    return bytes;
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return std::nullopt;
}

RandomReadFile::~RandomReadFile() {
  if (handle_ != -1) ::close(static_cast<int>(handle_));
}

bool RandomReadFile::Open(const std::wstring& path) {
  Descriptor file(path, O_RDONLY);
  std::uint64_t sizeBytes = 0;
  if (handle_ != -1 || !file.SizeOf(sizeBytes)) return false;
  sizeBytes_ = sizeBytes;
  handle_ = file.Release();
  return true;
}

bool RandomReadFile::ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes) {
  if (handle_ == -1) return false;
  return ReadAllAt(static_cast<int>(handle_), offset, count, bytes);
}

WriteResult WriteWholeFile(const std::wstring& path, std::string_view bytes) {
  const Descriptor file(path, O_WRONLY | O_CREAT);
  std::uint64_t oldSizeBytes = 0;
  if (!file.SizeOf(oldSizeBytes)) return WriteResult::kCannotOpen;
  if (!WriteAll(file.Get(), bytes)) return WriteResult::kWriteFailed;
  if (oldSizeBytes > bytes.size() && ::ftruncate(file.Get(), static_cast<off_t>(bytes.size())) != 0)
    return WriteResult::kWriteFailed;
  // What is no file on a disk (a terminal, a pipe) has nothing to flush and says so.
  if (::fsync(file.Get()) != 0 && errno != EINVAL) return WriteResult::kWriteFailed;
  return WriteResult::kWritten;
}

WriteResult AppendToFile(const std::wstring& path, std::string_view bytes, std::string_view whenEmpty) {
  const Descriptor file(path, O_WRONLY | O_CREAT | O_APPEND);
  std::uint64_t sizeBytes = 0;
  if (!file.SizeOf(sizeBytes)) return WriteResult::kCannotOpen;
  std::string all(sizeBytes == 0 ? whenEmpty : std::string_view());
  all += bytes;
  return WriteAll(file.Get(), all) ? WriteResult::kWritten : WriteResult::kWriteFailed;
}

bool RemoveFile(const std::wstring& path) {
  std::string name;
  EncodeText(path, TextEncoding::kUtf8, name);
  return ::unlink(name.c_str()) == 0;
}
