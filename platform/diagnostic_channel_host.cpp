#include <cstdio>

#include "platform/diagnostic_channel.h"
#include "platform/text_encoding.h"

void WriteDiagnosticLine(const std::wstring& line) {
  std::string bytes;
  EncodeText(line, TextEncoding::kUtf8, bytes);
  bytes.push_back('\n');
  // One call per line: the stream's own lock keeps lines of different threads apart.
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}
