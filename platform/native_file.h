#pragma once

// One open file of the system, with no more than file.h needs of it. Errors are not told apart: nobody upstairs could act on
// them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

class NativeFile {
 public:
  enum class Mode {
    kRead,
    kOverwrite,  ///< created when missing, otherwise left as it is; writing begins at the start
    kAppend,     ///< created when missing; every write goes to the end
  };

  NativeFile() = default;
  ~NativeFile();
  NativeFile(NativeFile&& other) noexcept : handle_(std::exchange(other.handle_, kNoHandle)), sizeBytes_(other.sizeBytes_) {}
  NativeFile& operator=(NativeFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    sizeBytes_ = other.sizeBytes_;
    return *this;
  }

  /// False also for a folder. Once per object. A file that another program holds is tried again for about half a second.
  [[nodiscard]] bool Open(const std::wstring& path, Mode mode);
  /// As it was when the file was opened; 0 for what is no file on a disk.
  [[nodiscard]] std::uint64_t SizeBytes() const { return sizeBytes_; }

  /// Reads until `count` bytes or the end; `bytes` is resized to what came.
  [[nodiscard]] bool ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes) const;
  [[nodiscard]] bool Write(std::string_view bytes) const;
  [[nodiscard]] bool CutAt(std::uint64_t sizeBytes) const;
  /// Takes the room for a longer file (zeros until it is written) before anything is written over. False, the file as it was,
  /// when there is none.
  [[nodiscard]] bool Reserve(std::uint64_t sizeBytes) const;
  /// Returns when the bytes are on the disk.
  [[nodiscard]] bool Flush() const;

 private:
  static constexpr std::intptr_t kNoHandle = -1;

  std::intptr_t handle_ = kNoHandle;
  std::uint64_t sizeBytes_ = 0;
};

/// The folder is there and holds no such file. False also when that cannot be told.
[[nodiscard]] bool IsMissingFile(const std::wstring& path);

/// Deletes a file; the result is the system's word and callers mostly ignore it.
bool RemoveFile(const std::wstring& path);
