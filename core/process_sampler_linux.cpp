#include "core/process_sampler.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/text_encoding.h"

namespace {

constexpr std::uint64_t kTimeUnitsPerSecond = 10'000'000;
/// Seconds from 1601, where the records' times begin, to 1970.
constexpr std::uint64_t kSecondsBefore1970 = 11'644'473'600;
constexpr std::uint64_t kBytesPerKb = 1024;

// The fields of a process's "stat" that are read, counted from the state letter behind the name.
enum StatField : int { kUserTicks = 11, kKernelTicks = 12, kThreads = 17, kStartTicks = 19 };

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  [[nodiscard]] int Get() const { return descriptor_; }
  [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using UniqueFolder = std::unique_ptr<DIR, FolderCloser>;

/// One of the system's small generated files, read into a buffer that every read uses again.
class GeneratedFile {
 public:
  /// The content; empty when it cannot be read. Valid until the next read.
  std::string_view Read(int folder, const char* path) {
    const FileDescriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC));
    std::size_t size = 0;
    while (file.IsOpen() && size < sizeof bytes_) {
      const ssize_t got = ::read(file.Get(), bytes_ + size, sizeof bytes_ - size);
      if (got <= 0) break;
      size += static_cast<std::size_t>(got);
    }
    return {bytes_, size};
  }

 private:
  char bytes_[8192];
};

std::uint64_t ParseNumber(std::string_view text) {
  std::uint64_t number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') break;
    number = number * 10 + static_cast<std::uint64_t>(digit - '0');
  }
  return number;
}

/// The number behind `key` in a file of "key: number unit" or "key number" lines; 0 without such a line.
std::uint64_t FindNumber(std::string_view content, std::string_view key) {
  while (!content.empty()) {
    const std::size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    if (line.substr(0, key.size()) != key) continue;
    line.remove_prefix(key.size());
    const std::size_t digits = line.find_first_not_of(" \t");
    return digits == std::string_view::npos ? 0 : ParseNumber(line.substr(digits));
  }
  return 0;
}

/// "pid (name) state ...": the name may itself hold blanks and brackets, so the last closing one ends it.
struct StatLine {
  explicit StatLine(std::string_view content) {
    const std::size_t open = content.find('(');
    const std::size_t close = content.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close + 2 > content.size()) return;
    name = content.substr(open + 1, close - open - 1);
    fields = content.substr(close + 2);
  }

  [[nodiscard]] bool IsValid() const { return !fields.empty(); }

  [[nodiscard]] std::uint64_t Number(StatField field) const {
    std::string_view rest = fields;
    for (int skipped = 0; skipped < field; ++skipped) {
      const std::size_t blank = rest.find(' ');
      if (blank == std::string_view::npos) return 0;
      rest.remove_prefix(blank + 1);
    }
    return ParseNumber(rest);
  }

  std::string_view name;
  std::string_view fields;
};

std::uint64_t TimeFromTicks(std::uint64_t ticks) {
  static const auto ticksPerSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
  return ticks * (kTimeUnitsPerSecond / ticksPerSecond);
}

class LinuxProcess final : public ProcessSampler::Process {
 public:
  /// `folder` is the process's own below /proc: held open, it never shows the next process with the same ID.
  LinuxProcess(int folder, std::uint64_t bootTime) : folder_(folder), bootTime_(bootTime) {}

  bool HasFullAccess() const override { return ::faccessat(folder_.Get(), "fd", R_OK | X_OK, AT_EACCESS) == 0; }

  bool ReadHandleCount(std::uint32_t& handles) override {
    const int descriptors = ::openat(folder_.Get(), "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const UniqueFolder folder(descriptors >= 0 ? ::fdopendir(descriptors) : nullptr);
    if (folder == nullptr) return false;
    std::uint32_t count = 0;
    while (const dirent* entry = ::readdir(folder.get())) count += entry->d_name[0] != '.' ? 1 : 0;
    handles = count;
    return true;
  }

  bool ReadMemory(ProcessMemory& memory) override {
    GeneratedFile file;
    const std::string_view status = file.Read(folder_.Get(), "status");
    if (status.empty()) return false;
    memory.workingSet = FindNumber(status, "VmRSS:") * kBytesPerKb;
    // Anonymous pages, resident or swapped out. Exact figures cost the kernel a walk over the process's whole page table.
    memory.privateBytes = (FindNumber(status, "RssAnon:") + FindNumber(status, "VmSwap:")) * kBytesPerKb;
    return true;
  }

  bool ReadTimes(ProcessTimes& times) override {
    GeneratedFile file;
    const StatLine stat(file.Read(folder_.Get(), "stat"));
    if (!stat.IsValid()) return false;
    times.creationTime = bootTime_ + TimeFromTicks(stat.Number(kStartTicks));
    times.kernelTime = TimeFromTicks(stat.Number(kKernelTicks));
    times.userTime = TimeFromTicks(stat.Number(kUserTicks));
    return true;
  }

  std::uint32_t ReadGdiObjects() override { return 0; }
  std::uint32_t ReadUserObjects() override { return 0; }

 private:
  FileDescriptor folder_;
  std::uint64_t bootTime_;
};

class LinuxProcessSampler final : public ProcessSampler {
 public:
  LinuxProcessSampler() {
    // Asked once: the answer moves with the wall clock, and a process's creation time must not.
    GeneratedFile file;
    bootTime_ = (FindNumber(file.Read(AT_FDCWD, "/proc/stat"), "btime ") + kSecondsBefore1970) * kTimeUnitsPerSecond;
  }

  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    std::size_t count = 0;
    error = 0;
    const UniqueFolder folder(::opendir("/proc"));
    if (folder == nullptr) error = static_cast<std::uint32_t>(errno);
    while (const dirent* found = folder != nullptr ? ::readdir(folder.get()) : nullptr) {
      const std::uint64_t pid = ParseNumber(found->d_name);
      if (pid == 0) continue;
      if (count == entries.size()) entries.emplace_back();
      // Written over, so that the texts' memory is used again; a process that has ended meanwhile leaves its place to the next.
      if (Describe(static_cast<std::uint32_t>(pid), entries[count])) ++count;
    }
    entries.resize(count);
    return count != 0;
  }

  std::unique_ptr<Process> OpenProcess(std::uint32_t pid) override {
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%u", pid);
    const int folder = ::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return nullptr;
    return std::make_unique<LinuxProcess>(folder, bootTime_);
  }

 private:
  static bool Describe(std::uint32_t pid, ProcessEntry& entry) {
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%u/stat", pid);
    GeneratedFile file;
    const StatLine stat(file.Read(AT_FDCWD, path));
    if (!stat.IsValid()) return false;
    entry.pid = pid;
    entry.threads = static_cast<std::uint32_t>(stat.Number(kThreads));

    // The kernel keeps only 15 bytes of the name; the executable's link has it whole, for those processes that we may look into.
    char target[PATH_MAX];
    std::snprintf(path, sizeof path, "/proc/%u/exe", pid);
    const ssize_t length = ::readlink(path, target, sizeof target);
    SetName(entry.name, length > 0 ? FileName({target, static_cast<std::size_t>(length)}) : stat.name);
    return true;
  }

  static std::string_view FileName(std::string_view path) {
    constexpr std::string_view kDeleted = " (deleted)";
    if (path.size() > kDeleted.size() && path.substr(path.size() - kDeleted.size()) == kDeleted) {
      path.remove_suffix(kDeleted.size());
    }
    return path.substr(path.rfind('/') + 1);
  }

  static void SetName(std::wstring& name, std::string_view bytes) {
    name.clear();
    TextDecoder decoder(TextEncoding::kUtf8);
    decoder.Decode(bytes, name);
    decoder.Finish(name);
  }

  std::uint64_t bootTime_ = 0;
};

}  // namespace

std::shared_ptr<ProcessSampler> MakeSystemProcessSampler() { return std::make_shared<LinuxProcessSampler>(); }

std::uint32_t SystemProcessorCount() {
  const long count = ::sysconf(_SC_NPROCESSORS_ONLN);
  return count > 0 ? static_cast<std::uint32_t>(count) : 1;
}
