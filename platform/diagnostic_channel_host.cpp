#include <cstdio>

#include "platform/diagnostic_channel.h"
#include "platform/text_encoding.h"

void WriteDiagnosticLine(const std::wstring& line) {
  const std::string bytes = EncodeUtf8(line) + '\n';
  // One call per line: the stream's own lock keeps lines of different threads apart.
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}
