#include "platform/text_file.h"

#include <algorithm>

#include "platform/out_of_memory.h"
#include "platform/text_encoding.h"

namespace {

constexpr wchar_t kCtrlZ = L'\x1A';

/// How a text is to be appended to a file: UTF-8 on a line that is begun, where the file is missing or cannot be read.
struct FileEnd {
  TextEncoding encoding = TextEncoding::kUtf8;
  bool endsLine = true;
};

FileEnd FindFileEnd(const std::wstring& path) {
  FileEnd end;
  NativeFile file;
  std::string bytes;
  if (!file.Open(path, NativeFile::Mode::kRead) || !file.ReadAt(0, kUtf8Mark.size(), bytes)) return end;
  const TextMark mark = FindTextMark(bytes);
  end.encoding = mark.encoding;
  const std::uint64_t unitBytes = mark.encoding == TextEncoding::kUtf8 ? 1 : 2;
  if (file.SizeBytes() < mark.sizeBytes + unitBytes) return end;
  if (!file.ReadAt(file.SizeBytes() - unitBytes, static_cast<std::size_t>(unitBytes), bytes)) return end;
  end.endsLine = bytes.find('\n') != std::string::npos;
  return end;
}

}  // namespace

std::string EncodeTextFile(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size() + text.size() / 16);
  EncodeText(text, TextEncoding::kUtf8, LineEnds::kCrLf, bytes);
  return bytes;
}

std::wstring DecodeTextFile(std::string_view bytes, CtrlZ ctrlZ) {
  const TextMark mark = FindTextMark(bytes);
  bytes.remove_prefix(mark.sizeBytes);
  std::wstring text;
  text.reserve(bytes.size());
  TextDecoder decoder(mark.encoding, LineEnds::kCrLf);
  decoder.Decode(bytes, text);
  decoder.Finish(text);
  if (ctrlZ == CtrlZ::kEndsText) text.resize(std::min(text.size(), text.find(kCtrlZ)));
  return text;
}

std::optional<std::wstring> ReadTextFile(const std::wstring& path, CtrlZ ctrlZ) {
  using Text = std::optional<std::wstring>;
  return UnlessOutOfMemory(L"ReadTextFile", Text(), [&]() -> Text {
    const std::optional<std::string> bytes = ReadWholeFile(path);
    if (!bytes) return std::nullopt;
    return DecodeTextFile(*bytes, ctrlZ);
  });
}

WriteResult WriteTextFile(const std::wstring& path, std::wstring_view text) {
  return UnlessOutOfMemory(L"WriteTextFile", WriteResult::kWriteFailed, [&] {
    std::string bytes(kUtf8Mark);
    bytes += EncodeTextFile(text);
    return WriteWholeFile(path, bytes);
  });
}

WriteResult AppendTextFile(const std::wstring& path, std::wstring_view text) {
  return UnlessOutOfMemory(L"AppendTextFile", WriteResult::kWriteFailed, [&] {
    std::string bytes;
    const FileEnd end = FindFileEnd(path);
    if (!end.endsLine) EncodeText(L"\n", end.encoding, LineEnds::kCrLf, bytes);
    EncodeText(text, end.encoding, LineEnds::kCrLf, bytes);
    return AppendToFile(path, bytes, kUtf8Mark);
  });
}

bool LineReader::Next(std::wstring_view& line) {
  if (rest_.empty()) return false;
  const std::wstring_view longest = rest_.substr(0, kMaxReadChars);
  const std::size_t lineFeed = longest.find(L'\n');
  line = lineFeed == std::wstring_view::npos ? longest : longest.substr(0, lineFeed + 1);
  rest_.remove_prefix(line.size());
  return true;
}

bool LineReader::NextComplete(std::wstring_view& line) {
  if (rest_.size() < kMaxReadChars && rest_.find(L'\n') == std::wstring_view::npos) return false;
  return Next(line);
}
