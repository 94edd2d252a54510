#pragma once

// Whole-file byte access: the only place where the stores touch the file system. Paths are wide text; the host converts them to
// UTF-8.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Reads a file whole. Empty optional when it cannot be opened or read, is a folder, or memory for it cannot be had.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::wstring& path);

/// A file opened for reading at any offset. The loader of a large log reads its end through this.
class RandomReadFile {
 public:
  RandomReadFile() = default;
  ~RandomReadFile();
  RandomReadFile(const RandomReadFile&) = delete;
  RandomReadFile& operator=(const RandomReadFile&) = delete;

  [[nodiscard]] bool Open(const std::wstring& path);
  [[nodiscard]] std::uint64_t SizeBytes() const { return sizeBytes_; }
  /// Reads up to `count` bytes at `offset` into `bytes` (resized to what was read). False on a system error.
  [[nodiscard]] bool ReadAt(std::uint64_t offset, std::size_t count, std::string& bytes);

 private:
  std::intptr_t handle_ = -1;
  std::uint64_t sizeBytes_ = 0;
};

enum class WriteResult { kWritten, kCannotOpen, kWriteFailed };

/// Makes the bytes the file's whole content, in place: one write over what is there, the rest of a longer old file cut off,
/// flushed before it is closed. A program killed meanwhile leaves the old file or the new one; only in the moment between write
/// and cut the new bytes are followed by the rest of the old ones. A disk that fills up leaves the file damaged (kWriteFailed)
/// until the next whole write.
[[nodiscard]] WriteResult WriteWholeFile(const std::wstring& path, std::string_view bytes);

/// Appends the bytes with one write, creating the file when it is missing; `whenEmpty` goes first when the file had no bytes.
[[nodiscard]] WriteResult AppendToFile(const std::wstring& path, std::string_view bytes, std::string_view whenEmpty);

/// Deletes a file; the result is the system's word and callers mostly ignore it.
bool RemoveFile(const std::wstring& path);
