#include "storage/alert_log_reader.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <string_view>

#include "platform/file.h"
#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/alert_log_line.h"

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;

class TailReader {
 public:
  TailReader(const NativeFile& file, std::size_t maxAlerts) : file_(file), maxAlerts_(maxAlerts) {}

  [[nodiscard]] bool Read(std::size_t stepBytes);
  [[nodiscard]] std::vector<AlertRecord> TakeAlerts() {
    return {std::make_move_iterator(alerts_.begin()), std::make_move_iterator(alerts_.end())};
  }

 private:
  [[nodiscard]] bool FindLineStart(std::uint64_t from, std::uint64_t end, std::uint64_t& start);
  [[nodiscard]] bool ReadLines(std::uint64_t begin, std::uint64_t end);
  void AddLines(LineReader& lines, bool complete, std::deque<AlertRecord>& alerts) const;

  const NativeFile& file_;
  std::size_t maxAlerts_;
  TextMark mark_;
  std::string block_;
  std::deque<AlertRecord> alerts_;
};

bool TailReader::Read(std::size_t stepBytes) {
  if (!file_.ReadAt(0, kUtf8Mark.size(), block_)) return false;
  mark_ = FindTextMark(block_);
  const std::uint64_t textStart = mark_.sizeBytes;
  std::uint64_t end = file_.SizeBytes();
  for (std::uint64_t reach = stepBytes; end > textStart && alerts_.size() < maxAlerts_; reach *= 2) {
    const std::uint64_t from = file_.SizeBytes() - std::min(file_.SizeBytes() - textStart, reach);
    std::uint64_t begin = textStart;
    if (from > textStart && !FindLineStart(from, end, begin)) return false;
    if (begin < end && !ReadLines(begin, end)) return false;
    end = begin;
  }
  return true;
}

/// The first position behind a line feed that lies at or after `from`; `end` when there is none before it.
bool TailReader::FindLineStart(std::uint64_t from, std::uint64_t end, std::uint64_t& start) {
  const std::size_t unitBytes = mark_.encoding == TextEncoding::kUtf8 ? 1 : 2;
  // UTF-16 units are counted from behind the mark, which is one unit long.
  from += from % unitBytes;
  std::string_view lineFeed("\n");
  if (mark_.encoding == TextEncoding::kUtf16LittleEndian) lineFeed = std::string_view("\n\0", 2);
  if (mark_.encoding == TextEncoding::kUtf16BigEndian) lineFeed = std::string_view("\0\n", 2);
  start = end;
  for (std::uint64_t offset = from; offset < end; offset += kBlockBytes) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(kBlockBytes, end - offset));
    if (!file_.ReadAt(offset, count, block_)) return false;
    std::size_t at = block_.find(lineFeed);
    while (at != std::string::npos && at % unitBytes != 0) at = block_.find(lineFeed, at + 1);
    if (at == std::string::npos) continue;
    start = offset + at + unitBytes;
    return true;
  }
  return true;
}

/// Puts the alerts between two line starts (or the end of the file) before those already found, as far as they are wanted.
bool TailReader::ReadLines(std::uint64_t begin, std::uint64_t end) {
  std::deque<AlertRecord> alerts;
  std::wstring text;
  TextDecoder decoder(mark_.encoding, LineEnds::kCrLf);
  for (std::uint64_t offset = begin; offset < end; offset += kBlockBytes) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(kBlockBytes, end - offset));
    if (!file_.ReadAt(offset, count, block_)) return false;
    decoder.Decode(block_, text);
    LineReader lines(text);
    AddLines(lines, false, alerts);
    text.erase(0, text.size() - lines.Rest().size());
  }
  decoder.Finish(text);
  LineReader lines(text);
  AddLines(lines, true, alerts);
  alerts_.insert(alerts_.begin(), std::make_move_iterator(alerts.begin()), std::make_move_iterator(alerts.end()));
  return true;
}

void TailReader::AddLines(LineReader& lines, bool complete, std::deque<AlertRecord>& alerts) const {
  std::wstring_view line;
  while (complete ? lines.Next(line) : lines.NextComplete(line)) {
    AlertRecord record;
    if (!ParseAlertLogLine(line, record)) continue;
    alerts.push_back(std::move(record));
    if (alerts.size() + alerts_.size() > maxAlerts_) alerts.pop_front();
  }
}

}  // namespace

std::optional<std::vector<AlertRecord>> ReadNewestAlerts(const std::wstring& path, std::size_t maxAlerts, std::size_t stepBytes) {
  NativeFile file;
  if (!file.Open(path, NativeFile::Mode::kRead)) return std::nullopt;
  TailReader reader(file, maxAlerts);
  if (!reader.Read(stepBytes)) return std::nullopt;
  return reader.TakeAlerts();
}
