#include "console/rules_file.h"

#include <algorithm>
#include <string_view>

#include "platform/text_file.h"
#include "platform/text_scanner.h"
#include "storage/rules_csv.h"
#include "storage/rules_json.h"

namespace {

std::vector<std::wstring_view> Split(std::wstring_view text) {
  std::vector<std::wstring_view> fields;
  for (;;) {
    const std::size_t comma = text.find(L',');
    fields.push_back(text.substr(0, comma));
    if (comma == std::wstring_view::npos) return fields;
    text.remove_prefix(comma + 1);
  }
}

/// Two figures are the same however they are written: 512 and 512.0.
bool IsSameFigure(std::wstring_view one, std::wstring_view other) {
  if (one == other) return true;
  const DecimalNumber first = ParseDecimal(one);
  const DecimalNumber second = ParseDecimal(other);
  return first.length == one.size() && second.length == other.size() && !one.empty() && first.value == second.value;
}

/// What differs between a row and the rule read from it, by the names of the header; empty when nothing does.
std::wstring Differences(std::wstring_view row, const ThresholdRule& rule) {
  const std::wstring canonical = FormatRulesCsv({rule});
  const std::vector<std::wstring_view> names = Split(std::wstring_view(canonical).substr(0, canonical.find(L'\n')));
  std::wstring_view read = std::wstring_view(canonical).substr(canonical.find(L'\n') + 1);
  read.remove_suffix(1);
  // A quoted pattern may hold commas of its own: the fields behind it are as many further on.
  const std::vector<std::wstring_view> kept = Split(read);
  const std::vector<std::wstring_view> given = Split(row);
  const std::size_t shift = kept.size() - names.size();
  std::wstring differences;
  for (std::size_t index = 2; index < names.size(); ++index) {
    const std::size_t place = index + shift;
    const bool missing = place >= given.size();
    if (!missing && IsSameFigure(given[place], kept[place])) continue;
    if (!differences.empty()) differences += L"; ";
    differences += std::wstring(names[index]) + (missing ? L" is missing and " : L" '" + std::wstring(given[place]) + L"' ") +
                   L"is read as " + std::wstring(kept[place]);
  }
  if (given.size() > kept.size())
    differences += std::wstring(differences.empty() ? L"" : L"; ") + L"there are more fields than twelve";
  return differences;
}

std::wstring_view WithoutLineEnd(std::wstring_view line) {
  while (!line.empty() && (line.back() == L'\n' || line.back() == L'\r')) line.remove_suffix(1);
  return line;
}

RulesFile ReadCsv(std::wstring_view text) {
  RulesFile file;
  LineReader lines(text);
  std::wstring_view line;
  (void)lines.Next(line);  // the header
  for (std::size_t number = 2; lines.Next(line); ++number) {
    ThresholdRule rule;
    if (WithoutLineEnd(line).empty()) continue;
    if (const wchar_t* fault = ParseRulesCsvLine(line, rule)) {
      file.findings.push_back({number, true, fault});
      continue;
    }
    const std::wstring differences = Differences(WithoutLineEnd(line), rule);
    if (!differences.empty()) file.findings.push_back({number, false, differences});
    file.rules.push_back(std::move(rule));
  }
  return file;
}

RulesFile ReadJson(std::wstring_view text) {
  RulesFile file;
  std::uint32_t ruleId = 0;
  const bool hasRules = ForEachRuleObject(text, [&](std::size_t position, const ThresholdRule* rule) {
    if (rule != nullptr) {
      file.rules.push_back(*rule);
      file.rules.back().ruleId = ++ruleId;
      return;
    }
    const auto lines =
        static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), L'\n'));
    file.findings.push_back({lines + 1, true, L"no processPattern, or one that rules.csv cannot carry"});
  });
  if (!hasRules) file.findings.push_back({1, true, L"no \"rules\" in the document"});
  return file;
}

}  // namespace

std::optional<RulesFile> ReadRulesFile(const std::wstring& path) {
  const std::optional<std::wstring> text = ReadTextFile(path, CtrlZ::kIsText);
  if (!text) return std::nullopt;
  const std::size_t start = text->find_first_not_of(L" \t\r\n");
  if (start != std::wstring::npos && (*text)[start] == L'{') return ReadJson(*text);
  return ReadCsv(std::wstring_view(*text).substr(0, text->find(L'\x1A')));
}
