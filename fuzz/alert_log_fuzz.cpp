// Any bytes in place of alerts.log: reading its end gives what reading all of it gives, and every alert read can be written and
// read again.

#include <unistd.h>

#include <string>

#include "fuzz/require.h"
#include "platform/file.h"
#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log_line.h"
#include "storage/alert_log_reader.h"

namespace {

std::vector<AlertRecord> ReadWhole(std::string_view bytes, std::size_t maxAlerts) {
  const TextMark mark = FindTextMark(bytes);
  TextDecoder decoder(mark.encoding, LineEnds::kCrLf);
  std::wstring text;
  decoder.Decode(bytes.substr(mark.sizeBytes), text);
  decoder.Finish(text);
  LineReader lines(text);
  std::vector<AlertRecord> alerts;
  for (std::wstring_view line; lines.Next(line);) {
    AlertRecord record;
    if (ParseAlertLogLine(line, record)) alerts.push_back(std::move(record));
  }
  if (alerts.size() > maxAlerts) alerts.erase(alerts.begin(), alerts.end() - static_cast<std::ptrdiff_t>(maxAlerts));
  return alerts;
}

void RequireRewritable(const AlertRecord& record) {
  AlertRecord second;
  AlertRecord third;
  Require(ParseAlertLogLine(FormatAlertLogLine(record), second), "an alert's line is an alert");
  // Line ends that a stray TAB had kept inside a line go with the next line end, and nothing else does.
  const bool endsInLineEnd = record.violation.ends_with(L'\r') || record.violation.ends_with(L'\n');
  Require(endsInLineEnd || second == record, "an alert comes back");
  Require(ParseAlertLogLine(FormatAlertLogLine(second), third) && third == second, "a rewritten alert stays");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  static const std::wstring path = L"/dev/shm/vantora-alert-log-fuzz-" + std::to_wstring(::getpid());
  const std::size_t maxAlerts = data[0] % 16 + 1U;
  const std::size_t stepBytes = data[1] + 1U;
  const std::string_view bytes = Bytes(data + 2, size - 2);
  Require(WriteWholeFile(path, bytes) == WriteResult::kWritten, "the file is written");
  const auto alerts = ReadNewestAlerts(path, maxAlerts, stepBytes);
  Require(alerts && *alerts == ReadWhole(bytes, maxAlerts), "the end reads as the whole does");
  for (const AlertRecord& record : *alerts) RequireRewritable(record);
  return 0;
}
