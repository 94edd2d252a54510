#include "console/alert_output.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "core/ceilings.h"
#include "platform/text_encoding.h"
#include "storage/alert_log_line.h"

namespace {

/// "+01:00": what local time is ahead of the world's.
std::string UtcOffset() {
  const std::time_t now = std::time(nullptr);
  const std::tm local = *std::localtime(&now);
  const std::tm world = *std::gmtime(&now);
  int days = local.tm_yday - world.tm_yday;
  if (local.tm_year != world.tm_year) days = local.tm_year - world.tm_year;
  const int minutes = (days * 24 + local.tm_hour - world.tm_hour) * 60 + local.tm_min - world.tm_min;
  char text[16];
  std::snprintf(text, sizeof text, "%c%02d:%02d", minutes < 0 ? '-' : '+', std::abs(minutes) / 60 % 100, std::abs(minutes) % 60);
  return text;
}

/// Neither one's exponent nor digits that the figure does not have.
template <class Value>
std::string NumberText(Value value) {
  if constexpr (std::is_same_v<Value, double>) {
    char text[400];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
  } else {
    return std::to_string(value);
  }
}

}  // namespace

std::string JsonText(const std::wstring& text) {
  std::string json = "\"";
  for (const char character : EncodeUtf8(text)) {
    if (character == '"' || character == '\\') {
      json += {'\\', character};
    } else if (static_cast<unsigned char>(character) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(character));
      json += escape;
    } else {
      json += character;
    }
  }
  return json + '"';
}

std::string FormatAlertText(const AlertRecord& record, bool color) {
  std::string line = EncodeUtf8(FormatAlertLogLine(record));
  while (line.ends_with('\n') || line.ends_with('\r')) line.pop_back();
  if (!color) return line;
  return line.insert(line.rfind('\t') + 1, "\x1B[1;33m") + "\x1B[0m";
}

std::string FormatAlertJson(const AlertRecord& record, const ThresholdRule& rule, const ProcessMetrics& metrics,
                            const std::string& host) {
  std::string time = EncodeUtf8(FormatAlertTime(record.time));
  time[time.find(' ')] = 'T';
  std::string json = "{\"time\":\"" + time + UtcOffset() + "\",\"host\":" + JsonText(DecodeUtf8Text(host)) +
                     ",\"pid\":" + std::to_string(record.pid) + ",\"process\":" + JsonText(record.processName) +
                     ",\"rule\":" + std::to_string(record.ruleId) + ",\"pattern\":" + JsonText(rule.processPattern) +
                     ",\"exceeded\":[";
  bool first = true;
  for (const Ceiling& ceiling : Ceilings()) {
    if (!ceiling.IsExceeded(rule, metrics)) continue;
    json += std::string(first ? "" : ",") + "{\"ceiling\":\"" + ceiling.key + "\",\"measured\":";
    std::visit(
        [&](const auto& limit) {
          json += NumberText(metrics.*limit.measured) + ",\"allowed\":" + NumberText(rule.*limit.allowed);
        },
        ceiling.limit);
    json += std::string(",\"unit\":\"") + ceiling.Unit() + "\"}";
    first = false;
  }
  return json + "]}";
}
