#include "storage/alert_log_line.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/text_format.h"
#include "platform/text_scanner.h"

namespace {

/// "%hu" for each part; the first one that does not convert leaves itself and the rest as they were.
void ScanTime(std::wstring_view text, LocalTime& time) {
  TextScanner scanner(text);
  const auto part = [&](std::uint16_t& field) {
    std::uint32_t value = 0;
    if (!scanner.Unsigned(std::numeric_limits<std::uint16_t>::max(), value)) return false;
    field = static_cast<std::uint16_t>(value);
    return true;
  };
  if (!part(time.year) || !scanner.Literal(L'-') || !part(time.month) || !scanner.Literal(L'-') || !part(time.day)) return;
  scanner.SkipBlanks();
  (void)(part(time.hour) && scanner.Literal(L':') && part(time.minute) && scanner.Literal(L':') && part(time.second));
}

/// The next token of a line, a run of TABs being one separator; false when nothing is left.
bool NextToken(std::wstring_view& rest, std::wstring_view& token) {
  rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(L'\t')));
  if (rest.empty()) return false;
  token = rest.substr(0, rest.find(L'\t'));
  rest.remove_prefix(token.size());
  return true;
}

}  // namespace

std::wstring FormatAlertTime(const LocalTime& time) {
  return FormatText(L"%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month, time.day, time.hour, time.minute, time.second);
}

std::wstring FormatAlertLogLine(const AlertRecord& record) {
  return FormatText(L"%ls\t%u\t%ls\t%ls\n", FormatAlertTime(record.time).c_str(), record.pid, record.processName.c_str(),
                    record.violation.c_str());
}

bool ParseAlertLogLine(std::wstring_view line, AlertRecord& record) {
  line = line.substr(0, line.find(L'\0'));
  line = line.substr(0, line.find_last_not_of(L"\r\n") + 1);
  std::array<std::wstring_view, 4> tokens;
  std::size_t count = 0;
  while (count < tokens.size() && NextToken(line, tokens[count])) ++count;
  if (count < 3) return false;
  record = AlertRecord();
  ScanTime(tokens[0], record.time);
  (void)TextScanner(tokens[1]).Unsigned(std::numeric_limits<std::uint32_t>::max(), record.pid);
  record.processName = tokens[2];
  record.violation = tokens[3];
  return true;
}
