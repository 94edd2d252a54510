#include "storage/rules_json.h"

#include "platform/text_format.h"
#include "platform/text_scanner.h"
#include "storage/rule_numbers.h"
#include "storage/rules_csv.h"

namespace {

constexpr std::size_t kNone = std::wstring_view::npos;

std::wstring EscapeJsonString(std::wstring_view text) {
  std::wstring escaped;
  escaped.reserve(text.size());
  for (const wchar_t character : text) {
    switch (character) {
      case L'\\':
        escaped += L"\\\\";
        break;
      case L'"':
        escaped += L"\\\"";
        break;
      case L'\n':
        escaped += L"\\n";
        break;
      case L'\r':
        escaped += L"\\r";
        break;
      case L'\t':
        escaped += L"\\t";
        break;
      default:
        escaped.push_back(character);
    }
  }
  return escaped;
}

/// Every occurrence of `from`, left to right, by `to`, which is no longer: in place and in one pass.
void ReplaceAll(std::wstring& text, std::wstring_view from, wchar_t to) {
  std::size_t out = text.find(from);
  if (out == kNone) return;
  for (std::size_t in = out; in < text.size();) {
    if (std::wstring_view(text).substr(in, from.size()) == from) {
      text[out++] = to;
      in += from.size();
    } else {
      text[out++] = text[in++];
    }
  }
  text.resize(out);
}

void UnescapeJsonString(std::wstring& text) {
  // Pairs of backslashes step aside first, so that what follows one is not taken for an escape.
  ReplaceAll(text, L"\\\\", L'\x01');
  ReplaceAll(text, L"\\\"", L'"');
  ReplaceAll(text, L"\\n", L'\n');
  ReplaceAll(text, L"\\r", L'\r');
  ReplaceAll(text, L"\\t", L'\t');
  ReplaceAll(text, L"\x01", L'\\');
}

/// The position after the closing quote of the key's first occurrence.
std::size_t FindKeyEnd(std::wstring_view object, std::wstring_view key) {
  std::wstring quoted = L"\"";
  quoted += key;
  quoted += L'"';
  const std::size_t start = object.find(quoted);
  return start == kNone ? kNone : start + quoted.size();
}

bool IsEnabled(std::wstring_view object) {
  if (object.find(L"\"enabled\": true") != kNone || object.find(L"\"enabled\":true") != kNone) return true;
  const std::optional<std::wstring> text = FindJsonStringValue(object, L"enabled");
  return text && (*text == L"true" || *text == L"1");
}

void StoreNumber(double number, std::uint32_t& count) { count = SaturateToUnsigned32(number); }
void StoreNumber(double number, std::uint64_t& bytes) { bytes = BytesFromMegabytes(number); }
void StoreNumber(double number, double& value) { value = number; }

bool ParseRuleObject(std::wstring_view object, ThresholdRule& rule) {
  std::optional<std::wstring> pattern = FindJsonStringValue(object, L"processPattern");
  if (!pattern || pattern->empty() || !FitsRulesCsv(*pattern)) return false;
  rule.processPattern = std::move(*pattern);
  rule.enabled = IsEnabled(object);
  for (const RuleNumber& number : RuleNumbers()) {
    const std::optional<double> value = FindJsonNumberValue(object, number.key);
    if (value) std::visit([&](auto field) { StoreNumber(*value, rule.*field); }, number.field);
  }
  return true;
}

}  // namespace

std::optional<std::wstring> FindJsonStringValue(std::wstring_view object, std::wstring_view key) {
  const std::size_t keyEnd = FindKeyEnd(object, key);
  // One character, normally the colon, is passed over unseen.
  if (keyEnd == kNone || keyEnd + 1 >= object.size()) return std::nullopt;
  const std::size_t opening = object.find(L'"', keyEnd + 1);
  if (opening == kNone) return std::nullopt;
  const std::size_t start = opening + 1;
  for (std::size_t end = start; end < object.size(); ++end) {
    if (object[end] == L'\\') {
      ++end;
    } else if (object[end] == L'"') {
      std::wstring value(object.substr(start, end - start));
      UnescapeJsonString(value);
      return value;
    }
  }
  return std::nullopt;
}

std::optional<double> FindJsonNumberValue(std::wstring_view object, std::wstring_view key) {
  const std::size_t keyEnd = FindKeyEnd(object, key);
  if (keyEnd == kNone) return std::nullopt;
  const std::size_t colon = object.find(L':', keyEnd);
  if (colon == kNone) return std::nullopt;
  TextScanner scanner(object.substr(colon + 1));
  scanner.SkipBlanks();
  return ParseDecimal(scanner.Rest()).value;
}

std::wstring FormatRulesJson(const RuleList& rules) {
  std::wstring text = L"{\n  \"rules\": [\n";
  for (const ThresholdRule& rule : rules) {
    text += L"    {\n      \"processPattern\": \"";
    text += EscapeJsonString(rule.processPattern);
    text += FormatText(L"\",\n      \"enabled\": %ls", rule.enabled ? L"true" : L"false");
    for (const RuleNumber& number : RuleNumbers())
      text += FormatText(L",\n      \"%ls\": %ls", number.key, RuleNumberText(number, rule).c_str());
    text += &rule == &rules.back() ? L"\n    }\n" : L"\n    },\n";
  }
  text += L"  ]\n}\n";
  return text;
}

bool ForEachRuleObject(std::wstring_view text, const std::function<void(std::size_t position, const ThresholdRule* rule)>& take) {
  const std::size_t start = text.find(L"\"rules\"");
  if (start == kNone) return false;
  std::size_t opening = text.find(L'{', start);
  while (opening != kNone) {
    const std::size_t closing = text.find(L'}', opening);
    if (closing == kNone) break;
    ThresholdRule rule;
    take(opening, ParseRuleObject(text.substr(opening, closing + 1 - opening), rule) ? &rule : nullptr);
    opening = text.find(L'{', closing + 1);
  }
  return true;
}

std::optional<RuleList> ParseRulesJson(std::wstring_view text) {
  RuleList rules;
  const bool hasRules = ForEachRuleObject(text, [&rules](std::size_t, const ThresholdRule* rule) {
    if (rule != nullptr) rules.push_back(*rule);
  });
  if (!hasRules) return std::nullopt;
  return rules;
}
