#include "core/process_sampler.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <string_view>

#include "platform/text_encoding.h"

namespace {

constexpr std::uint64_t kTimeUnitsPerSecond = 10'000'000;
/// Seconds from 1601, where the records' times begin, to 1970.
constexpr std::uint64_t kSecondsBefore1970 = 11'644'473'600;
constexpr std::uint64_t kBytesPerKb = 1024;
/// What the kernel keeps of a process's name: a longer one is cut.
constexpr std::size_t kMaxKernelNameBytes = 15;

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

/// One of the system's small generated files. They come whole in one read, or cut where we need no more of them.
class GeneratedFile {
 public:
  /// The content; empty when it cannot be read. Valid until the next read.
  std::string_view Read(int folder, const char* path) {
    const FileDescriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC));
    const ssize_t size = file.IsOpen() ? ::read(file.Get(), bytes_, sizeof bytes_) : 0;
    return {bytes_, size > 0 ? static_cast<std::size_t>(size) : 0};
  }

 private:
  char bytes_[8192];
};

/// The path of a process's file below /proc: "123/stat".
class ProcessPath {
 public:
  ProcessPath(std::uint32_t pid, std::string_view file) {
    char* end = std::to_chars(path_, path_ + sizeof path_, pid).ptr;
    end = std::copy(file.begin(), file.end(), end);
    *end = '\0';
  }
  operator const char*() const { return path_; }  // NOLINT(google-explicit-constructor): it is one

 private:
  char path_[32];
};

std::uint64_t ParseNumber(std::string_view text) {
  std::uint64_t number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') break;
    number = number * 10 + static_cast<std::uint64_t>(digit - '0');
  }
  return number;
}

/// The number behind `key` in a file of "key: number unit" lines; 0 without such a line.
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
  /// The fields behind the name that are read, counted from the state letter; in the order of the line.
  enum Field : std::size_t { kUserTicks = 11, kKernelTicks = 12, kThreads = 17, kStartTicks = 19, kResidentPages = 21, kFields };

  explicit StatLine(std::string_view content) {
    const std::size_t open = content.find('(');
    const std::size_t close = content.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close + 2 > content.size()) return;
    name = content.substr(open + 1, close - open - 1);
    const char* at = content.data() + close + 2;
    const char* const end = content.data() + content.size();
    for (std::uint64_t& number : numbers) {
      for (; at != end && *at != ' '; ++at) number = number * 10 + static_cast<std::uint64_t>(*at - '0');
      if (at == end) return;
      ++at;
    }
    valid = true;
  }

  std::string_view name;
  std::uint64_t numbers[kFields] = {};  ///< nonsense where the field is no positive number
  bool valid = false;
};

std::string_view FileName(std::string_view path) {
  constexpr std::string_view kDeleted = " (deleted)";
  if (path.ends_with(kDeleted)) path.remove_suffix(kDeleted.size());
  return path.substr(path.rfind('/') + 1);
}

void SetName(std::wstring& name, std::string_view bytes) {
  if (std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; })) {
    name.resize(bytes.size());  // an assignment from narrow characters would go by way of another string
    std::copy(bytes.begin(), bytes.end(), name.begin());
    return;
  }
  name.clear();
  TextDecoder decoder(TextEncoding::kUtf8, LineEnds::kAsTheyAre);
  decoder.Decode(bytes, name);
  decoder.Finish(name);
}

class LinuxProcessSampler final : public ProcessSampler {
 public:
  LinuxProcessSampler()
      : proc_(::opendir("/proc")),
        pageBytes_(static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE))),
        timePerTick_(kTimeUnitsPerSecond / static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK))) {
    // Asked once: the answer moves with the wall clock, and a process's creation time must not.
    std::timespec now = {};
    std::timespec sinceBoot = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    ::clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
    bootTime_ = (static_cast<std::uint64_t>(now.tv_sec - sinceBoot.tv_sec) + kSecondsBefore1970) * kTimeUnitsPerSecond;
    struct stat own = {};
    folderSizeTells_ = ::stat("/proc/self/fd", &own) == 0 && own.st_size > 0;
  }

  bool ListProcesses(std::vector<ProcessEntry>& entries, std::uint32_t& error) override {
    std::size_t count = 0;
    error = 0;
    if (proc_ == nullptr) proc_.reset(::opendir("/proc"));
    if (proc_ == nullptr) {
      error = static_cast<std::uint32_t>(errno);
    } else {
      ::rewinddir(proc_.get());
    }
    while (const dirent* found = proc_ != nullptr ? ::readdir(proc_.get()) : nullptr) {
      const std::uint64_t pid = ParseNumber(found->d_name);
      if (pid == 0) continue;
      if (count == entries.size()) entries.emplace_back();
      // Written over, so that the texts' memory is used again; a process that has ended meanwhile leaves its place to the next.
      if (Describe(static_cast<std::uint32_t>(pid), entries[count])) ++count;
    }
    entries.resize(count);
    struct sysinfo machine = {};
    noSwap_ = ::sysinfo(&machine) == 0 && machine.totalswap == 0;
    return count != 0;
  }

  bool ReadCounters(const ProcessEntry& entry, std::uint32_t wanted, ProcessMetrics& metrics) override {
    metrics.workingSet = entry.workingSet;
    metrics.kernelTime = entry.kernelTime;
    metrics.userTime = entry.userTime;
    metrics.creationTime = entry.creationTime;
    metrics.known |= kWorkingSetKnown | kTimesKnown;
    if ((wanted & kWantHandles) != 0) ReadHandles(entry.pid, metrics);
    if ((wanted & kWantPrivateBytes) != 0) ReadPrivateBytes(entry.pid, metrics);
    return true;
  }

 private:
  bool Describe(std::uint32_t pid, ProcessEntry& entry) const {
    GeneratedFile file;
    const StatLine stat(file.Read(::dirfd(proc_.get()), ProcessPath(pid, "/stat")));
    if (!stat.valid) return false;
    entry.pid = pid;
    entry.threads = static_cast<std::uint32_t>(stat.numbers[StatLine::kThreads]);
    entry.workingSet = stat.numbers[StatLine::kResidentPages] * pageBytes_;
    entry.kernelTime = stat.numbers[StatLine::kKernelTicks] * timePerTick_;
    entry.userTime = stat.numbers[StatLine::kUserTicks] * timePerTick_;
    entry.creationTime = bootTime_ + stat.numbers[StatLine::kStartTicks] * timePerTick_;
    if (stat.name.size() < kMaxKernelNameBytes || !SetWholeName(pid, stat.name, entry.name)) SetName(entry.name, stat.name);
    return true;
  }

  /// From the executable's link, of a process that we may look into; false when that is no longer form of the kernel's name.
  bool SetWholeName(std::uint32_t pid, std::string_view cutName, std::wstring& name) const {
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(::dirfd(proc_.get()), ProcessPath(pid, "/exe"), target, sizeof target);
    if (length <= 0) return false;
    const std::string_view whole = FileName({target, static_cast<std::size_t>(length)});
    if (!whole.starts_with(cutName)) return false;
    SetName(name, whole);
    return true;
  }

  void ReadHandles(std::uint32_t pid, ProcessMetrics& metrics) const {
    const ProcessPath path(pid, "/fd");
    struct stat folder = {};
    if (folderSizeTells_) {
      if (::fstatat(::dirfd(proc_.get()), path, &folder, 0) != 0) return;
      metrics.handles = static_cast<std::uint32_t>(folder.st_size);
      metrics.known |= kHandlesKnown;
      return;
    }
    const int descriptors = ::openat(::dirfd(proc_.get()), path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const UniqueFolder counted(descriptors >= 0 ? ::fdopendir(descriptors) : nullptr);
    if (counted == nullptr) return;
    metrics.handles = 0;
    metrics.known |= kHandlesKnown;
    while (const dirent* entry = ::readdir(counted.get())) metrics.handles += entry->d_name[0] != '.' ? 1 : 0;
  }

  /// Anonymous pages, resident or swapped out. Exact figures cost the kernel a walk over the process's whole page table.
  void ReadPrivateBytes(std::uint32_t pid, ProcessMetrics& metrics) const {
    GeneratedFile file;
    if (!noSwap_) {
      const std::string_view status = file.Read(::dirfd(proc_.get()), ProcessPath(pid, "/status"));
      if (status.empty()) return;
      metrics.privateBytes = (FindNumber(status, "RssAnon:") + FindNumber(status, "VmSwap:")) * kBytesPerKb;
      metrics.known |= kPrivateBytesKnown;
      return;
    }
    // "size resident shared ...", in pages: the same figure where nothing can be swapped out, for a fraction of the price.
    const std::string_view statm = file.Read(::dirfd(proc_.get()), ProcessPath(pid, "/statm"));
    const std::size_t resident = statm.find(' ');
    const std::size_t shared = statm.find(' ', resident + 1);
    if (resident == std::string_view::npos || shared == std::string_view::npos) return;
    metrics.known |= kPrivateBytesKnown;
    const std::uint64_t residentPages = ParseNumber(statm.substr(resident + 1));
    metrics.privateBytes = (residentPages - std::min(residentPages, ParseNumber(statm.substr(shared + 1)))) * pageBytes_;
  }

  UniqueFolder proc_;
  std::uint64_t pageBytes_;
  std::uint64_t timePerTick_;
  std::uint64_t bootTime_ = 0;
  bool folderSizeTells_ = false;  ///< the kernel gives a descriptor folder's size as the number of descriptors
  bool noSwap_ = false;           ///< when the last list was made
};

}  // namespace

std::shared_ptr<ProcessSampler> MakeSystemProcessSampler() { return std::make_shared<LinuxProcessSampler>(); }

std::uint32_t SystemProcessorCount() {
  const long count = ::sysconf(_SC_NPROCESSORS_ONLN);
  return count > 0 ? static_cast<std::uint32_t>(count) : 1;
}
