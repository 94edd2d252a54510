#include "platform/file.h"

#include "platform/out_of_memory.h"

namespace {

/// What a longer old file may be longer by and still be written over before it is cut.
constexpr std::uint64_t kMaxPaddingBytes = std::uint64_t{16} * 1024 * 1024;

/// Cuts a longer old file so that at no moment the new bytes are followed by the rest of old lines: line feeds go over that
/// first.
WriteResult WriteOverLonger(const NativeFile& file, std::string_view bytes) {
  const bool cutFirst = file.SizeBytes() - bytes.size() > kMaxPaddingBytes;
  if (cutFirst) return file.CutAt(bytes.size()) && file.Write(bytes) ? WriteResult::kWritten : WriteResult::kWriteFailed;
  std::string padded(bytes);
  padded.resize(static_cast<std::size_t>(file.SizeBytes()), '\n');
  return file.Write(padded) && file.CutAt(bytes.size()) ? WriteResult::kWritten : WriteResult::kWriteFailed;
}

}  // namespace

std::optional<std::string> ReadWholeFile(const std::wstring& path) {
  using Bytes = std::optional<std::string>;
  return UnlessOutOfMemory(L"ReadWholeFile", Bytes(), [&]() -> Bytes {
    NativeFile file;
    std::string bytes;
    if (!file.Open(path, NativeFile::Mode::kRead) || !file.ReadAt(0, static_cast<std::size_t>(file.SizeBytes()), bytes)) {
      return std::nullopt;
    }
    return bytes;
  });
}

WriteResult WriteWholeFile(const std::wstring& path, std::string_view bytes) {
  NativeFile file;
  if (!file.Open(path, NativeFile::Mode::kOverwrite)) return WriteResult::kCannotOpen;
  if (file.SizeBytes() > bytes.size()) {
    const WriteResult result = WriteOverLonger(file, bytes);
    if (result != WriteResult::kWritten) return result;
  } else if (!file.Reserve(bytes.size()) || !file.Write(bytes)) {
    return WriteResult::kWriteFailed;
  }
  return file.Flush() ? WriteResult::kWritten : WriteResult::kWriteFailed;
}

WriteResult AppendToFile(const std::wstring& path, std::string_view bytes, std::string_view whenEmpty) {
  NativeFile file;
  if (!file.Open(path, NativeFile::Mode::kAppend)) return WriteResult::kCannotOpen;
  std::string all(file.SizeBytes() == 0 ? whenEmpty : std::string_view());
  all += bytes;
  return file.Write(all) ? WriteResult::kWritten : WriteResult::kWriteFailed;
}
