#include "platform/native_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/text_encoding.h"

namespace {

std::string NarrowPath(const std::wstring& path) { return EncodeUtf8(path); }

int FlagsOf(NativeFile::Mode mode) {
  switch (mode) {
    case NativeFile::Mode::kRead:
      return O_RDONLY;
    case NativeFile::Mode::kOverwrite:
      return O_WRONLY | O_CREAT;
    case NativeFile::Mode::kAppend:
      return O_WRONLY | O_CREAT | O_APPEND;
  }
  return O_RDONLY;
}

}  // namespace

NativeFile::~NativeFile() {
  if (handle_ != kNoHandle) ::close(static_cast<int>(handle_));
}

bool NativeFile::Open(const std::wstring& path, Mode mode) {
  if (handle_ != kNoHandle) return false;
  const int descriptor = ::open(NarrowPath(path).c_str(), FlagsOf(mode) | O_CLOEXEC, 0666);
  if (descriptor < 0) return false;
  handle_ = descriptor;
  struct stat status = {};
  // A folder can be opened for reading here.
  if (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) return false;
  sizeBytes_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  return true;
}

bool NativeFile::ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes) const {
  bytes.resize(count);
  std::size_t have = 0;
  while (have < count) {
    const ssize_t got = ::pread(static_cast<int>(handle_), bytes.data() + have, count - have, static_cast<off_t>(offset + have));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  bytes.resize(have);
  return true;
}

bool NativeFile::Write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool NativeFile::CutAt(std::uint64_t sizeBytes) const {
  return ::ftruncate(static_cast<int>(handle_), static_cast<off_t>(sizeBytes)) == 0;
}

bool NativeFile::Reserve(std::uint64_t sizeBytes) const {
  const int error = ::posix_fallocate(static_cast<int>(handle_), 0, static_cast<off_t>(sizeBytes));
  if (error != ENOSPC && error != EFBIG && error != EDQUOT) return true;
  (void)CutAt(sizeBytes_);
  return false;
}

bool NativeFile::Flush() const {
  // What is no file on a disk (a terminal, a pipe) has nothing to flush and says so.
  return ::fsync(static_cast<int>(handle_)) == 0 || errno == EINVAL;
}

bool IsMissingFile(const std::wstring& path) {
  const std::string narrow = NarrowPath(path);
  const std::size_t slash = narrow.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : narrow.substr(0, slash + 1);
  return ::access(folder.c_str(), F_OK) == 0 && ::access(narrow.c_str(), F_OK) != 0 && errno == ENOENT;
}

bool RemoveFile(const std::wstring& path) { return ::unlink(NarrowPath(path).c_str()) == 0; }
