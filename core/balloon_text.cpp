#include "core/balloon_text.h"

#include "platform/text_format.h"

namespace {

bool IsHighSurrogate(wchar_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(wchar_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
// Where wide characters are wider than UTF-16 units, some of them become two.
std::size_t Utf16Units(std::uint32_t character) { return character > 0xFFFF ? 2 : 1; }

}  // namespace

std::wstring AlertLine(const AlertRecord& record) {
  return FormatText(L"%ls (PID %u): %ls", record.processName.c_str(), record.pid, record.violation.c_str());
}

Balloon SingleAlertBalloon(const AlertRecord& record) {
  const std::wstring title = FormatText(L"Vantora Alert: %ls (PID %u)", record.processName.c_str(), record.pid);
  return {CutToUtf16Units(title, kBalloonTitleUnits), CutToUtf16Units(record.violation, kBalloonTextUnits)};
}

Balloon MergedAlertsBalloon(std::uint64_t alertCount, const std::wstring& lines) {
  const std::wstring title = FormatText(L"Vantora: %llu Alerts", static_cast<unsigned long long>(alertCount));
  return {CutToUtf16Units(title, kBalloonTitleUnits), CutToUtf16Units(lines, kBalloonTextUnits)};
}

std::wstring CutToUtf16Units(const std::wstring& text, std::size_t units) {
  std::size_t length = 0;
  for (const wchar_t character : text) {
    const std::size_t needed = Utf16Units(static_cast<std::uint32_t>(character));
    if (needed > units) break;
    units -= needed;
    ++length;
  }
  const bool isCut = length != 0 && length < text.size();
  if (isCut && IsHighSurrogate(text[length - 1]) && IsLowSurrogate(text[length])) --length;
  return text.substr(0, length);
}
