#include "console/metrics.h"

#include <cstdio>

#include "console/console_system.h"
#include "core/printable_text.h"
#include "platform/file.h"
#include "platform/text_encoding.h"

namespace {

std::string LabelText(const std::wstring& text) {
  std::string label;
  for (const char character : EncodeUtf8(PrintableText(text))) {
    if (character == '"' || character == '\\') label += '\\';
    label += character;
  }
  return label;
}

void AddHead(std::string& text, const char* name, const char* type, const char* help) {
  text += std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
}

void AddGauge(std::string& text, const char* name, const char* help, double value) {
  AddHead(text, name, "gauge", help);
  char number[64];
  std::snprintf(number, sizeof number, " %.6f\n", value);
  text += std::string(name) + number;
}

}  // namespace

void Metrics::CountAlert(std::size_t place, const ProcessMetrics& metrics) {
  std::size_t index = 0;
  for (const Ceiling& ceiling : Ceilings()) alerts_[place][index++] += ceiling.IsExceeded(rules_[place], metrics) ? 1U : 0U;
}

void Metrics::Add(std::string& text, const char* name, const Counts& counts) const {
  for (std::size_t place = 0; place < rules_.size(); ++place) {
    std::size_t index = 0;
    for (const Ceiling& ceiling : Ceilings()) {
      const std::uint64_t count = counts[place][index++];
      const bool limited = std::visit([&](const auto& limit) { return rules_[place].*limit.allowed > 0; }, ceiling.limit);
      // A rule number may stand in the list twice; the place tells the two apart.
      if (!limited) continue;
      text += std::string(name) + "{rule=\"" + std::to_string(rules_[place].ruleId) + "\",line=\"" + std::to_string(place + 1) +
              "\",pattern=\"" + LabelText(rules_[place].processPattern) + "\",ceiling=\"" + ceiling.key + "\"} " +
              std::to_string(count) + "\n";
    }
  }
}

std::string Metrics::Text(const ProcessSample& sample, double cycleSeconds, std::uint64_t unixTime) const {
  Counts over(rules_.size());
  double unreadable = 0;
  for (const SampledProcess& process : sample) {
    if (process.rules == nullptr) continue;
    unreadable += process.opened ? 0 : 1;
    for (const std::uint32_t place : *process.rules) {
      std::size_t index = 0;
      for (const Ceiling& ceiling : Ceilings())
        over[place][index++] += ceiling.IsExceeded(rules_[place], process.metrics) ? 1U : 0U;
    }
  }
  std::string text;
  AddHead(text, "vantora_alerts_total", "counter", "Alerts raised since the start, by rule and exceeded ceiling.");
  Add(text, "vantora_alerts_total", alerts_);
  AddHead(text, "vantora_processes_over_limit", "gauge", "Processes over a ceiling in the last cycle.");
  Add(text, "vantora_processes_over_limit", over);
  AddGauge(text, "vantora_cycle_duration_seconds", "How long the last cycle took.", cycleSeconds);
  AddGauge(text, "vantora_last_cycle_timestamp_seconds", "When the last cycle ended, in Unix time.",
           static_cast<double>(unixTime));
  AddGauge(text, "vantora_unreadable_processes", "Processes that a rule matches but that could not be read.", unreadable);
  return text;
}

bool WriteMetrics(const std::wstring& path, const std::string& text) {
  const std::wstring beside = path + L".tmp";
  return WriteWholeFile(beside, text) == WriteResult::kWritten && RenameOver(beside, path);
}
