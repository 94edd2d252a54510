#include "platform/text_file.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "platform/text_encoding.h"

namespace {

constexpr wchar_t kCtrlZ = L'\x1A';

/// The encoding in which a line is to be appended; UTF-8 for a file that is missing or has no mark.
TextEncoding EncodingOfFile(const std::wstring& path) {
  RandomReadFile file;
  std::string head;
  if (!file.Open(path) || !file.ReadAt(0, kUtf8Mark.size(), head)) return TextEncoding::kUtf8;
  return FindTextMark(head).encoding;
}

}  // namespace

std::string EncodeTextFile(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size() + text.size() / 16);
  EncodeText(text, TextEncoding::kUtf8, bytes);
  return bytes;
}

std::wstring DecodeTextFile(std::string_view bytes) {
  const TextMark mark = FindTextMark(bytes);
  bytes.remove_prefix(mark.sizeBytes);
  std::wstring text;
  text.reserve(bytes.size());
  TextDecoder decoder(mark.encoding);
  decoder.Decode(bytes, text);
  decoder.Finish(text);
  text.resize(std::min(text.size(), text.find(kCtrlZ)));
  return text;
}

std::optional<std::wstring> ReadTextFile(const std::wstring& path) {
  try {
    const std::optional<std::string> bytes = ReadWholeFile(path);
    if (!bytes) return std::nullopt;
    return DecodeTextFile(*bytes);
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return std::nullopt;
}

WriteResult WriteTextFile(const std::wstring& path, std::wstring_view text) {
  try {
    std::string bytes(kUtf8Mark);
    bytes += EncodeTextFile(text);
    return WriteWholeFile(path, bytes);
  } catch (const std::bad_alloc&) {
    return WriteResult::kWriteFailed;
  }
}

WriteResult AppendTextFile(const std::wstring& path, std::wstring_view text) {
  std::string bytes;
  EncodeText(text, EncodingOfFile(path), bytes);
  return AppendToFile(path, bytes, kUtf8Mark);
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
