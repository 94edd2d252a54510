#include <cstdint>
#include <cstdio>

#include "platform/diagnostic_channel.h"

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& bytes, std::uint32_t code) {
  if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = kReplacement;
  const auto put = [&bytes](std::uint32_t byte) { bytes.push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | (code >> 6));
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3F));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

}  // namespace

void WriteDiagnosticLine(const std::wstring& line) {
  std::string bytes;
  bytes.reserve(line.size() + 1);
  for (const wchar_t unit : line) AppendUtf8(bytes, static_cast<std::uint32_t>(unit));
  bytes.push_back('\n');
  // One call per line: the stream's own lock keeps lines of different threads apart.
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}
