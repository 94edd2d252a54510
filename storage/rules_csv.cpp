#include "storage/rules_csv.h"

#include <algorithm>
#include <limits>

#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "platform/text_format.h"
#include "platform/text_scanner.h"
#include "storage/rule_numbers.h"

namespace {

constexpr std::size_t kMaxPlainPatternChars = 255;
constexpr std::wstring_view kQuotedStart = L"\",\"";
constexpr wchar_t kQuote = L'"';
/// Characters that end a field, a line or the text.
constexpr std::wstring_view kSpecialChars(L",\r\n\0\x1A", 5);

// The longest row but for its pattern: commas, seven 32-bit numbers, the flag, two memory figures, a CPU figure of 309 digits.
constexpr std::size_t kOtherFieldsChars = 11 + 7 * 10 + 1 + 2 * 16 + (1 + 309 + 2);
constexpr std::size_t kMaxPatternFieldChars = LineReader::kMaxReadChars - kOtherFieldsChars;
static_assert(kMaxPatternFieldChars >= 255 * 6 + 4, "every pattern that the editor accepts must fit");

bool IsPlainPattern(std::wstring_view pattern) {
  return !pattern.empty() && pattern.size() <= kMaxPlainPatternChars &&
         pattern.find_first_of(kSpecialChars) == std::wstring_view::npos && IsValidText(pattern);
}

bool IsHalfSurrogatePair(std::wstring_view pattern, std::size_t position) {
  if (IsValidText(pattern.substr(position, 1))) return false;
  const bool startsPair = IsValidText(pattern.substr(position, 2)) && position + 1 < pattern.size();
  const bool endsPair = position > 0 && IsValidText(pattern.substr(position - 1, 2));
  return !startsPair && !endsPair;
}

std::wstring QuotePattern(std::wstring_view pattern) {
  std::wstring field(kQuotedStart);
  for (std::size_t position = 0; position < pattern.size(); ++position) {
    const wchar_t character = pattern[position];
    if (character == L'\\' || character == kQuote) {
      field.push_back(L'\\');
      field.push_back(character);
    } else if (character == L'\n') {
      field += L"\\n";
    } else if (character == L'\r') {
      field += L"\\r";
    } else if (character == L'\0' || character == L'\x1A' || IsHalfSurrogatePair(pattern, position)) {
      field += FormatText(L"\\u%04x", static_cast<unsigned>(character) & 0xFFFFU);
    } else {
      field.push_back(character);
    }
  }
  field.push_back(kQuote);
  return field;
}

/// The character that "\u" and four hexadecimal digits at the start of the text stand for.
bool ParseUnicodeEscape(std::wstring_view text, wchar_t& character) {
  if (text.size() < 4) return false;
  unsigned value = 0;
  for (const wchar_t digit : text.substr(0, 4)) {
    constexpr std::wstring_view kDigits = L"0123456789abcdef";
    const std::size_t number = kDigits.find(digit);
    if (number == std::wstring_view::npos) return false;
    value = value * 16 + static_cast<unsigned>(number);
  }
  character = static_cast<wchar_t>(value);
  return true;
}

/// Scans a quoted pattern whose start has been passed, up to and including its closing quote.
bool ScanQuotedPattern(TextScanner& scanner, std::wstring& pattern) {
  while (!scanner.Rest().empty()) {
    wchar_t character = scanner.Rest().front();
    scanner.Skip(1);
    if (character == kQuote) return true;
    if (character == L'\\') {
      if (scanner.Rest().empty()) return false;
      character = scanner.Rest().front();
      scanner.Skip(1);
      if (character == L'u') {
        if (!ParseUnicodeEscape(scanner.Rest(), character)) return false;
        scanner.Skip(4);
      } else if (character == L'n') {
        character = L'\n';
      } else if (character == L'r') {
        character = L'\r';
      } else if (character != L'\\' && character != kQuote) {
        return false;
      }
    }
    pattern.push_back(character);
  }
  return false;
}

bool ScanPattern(TextScanner& scanner, std::wstring& pattern) {
  if (scanner.Rest().starts_with(kQuotedStart)) {
    scanner.Skip(kQuotedStart.size());
    // What could not be written again would be torn at the next save.
    return ScanQuotedPattern(scanner, pattern) && FitsRulesCsv(pattern);
  }
  const std::wstring_view longest = scanner.Rest().substr(0, kMaxPlainPatternChars);
  const std::wstring_view plain = longest.substr(0, longest.find(L','));
  if (plain.empty()) return false;
  pattern = plain;
  scanner.Skip(plain.size());
  return true;
}

bool ScanNumber(TextScanner& scanner, std::uint32_t& count) {
  return scanner.Unsigned(std::numeric_limits<std::uint32_t>::max(), count);
}
bool ScanNumber(TextScanner& scanner, double& value) { return scanner.Decimal(value); }
bool ScanNumber(TextScanner& scanner, std::uint64_t& bytes) {
  double megabytes = 0.0;
  if (!scanner.Decimal(megabytes)) return false;
  bytes = BytesFromMegabytes(megabytes);
  return true;
}

/// The fields after the flag: each is left at its default from the first one on that is missing or no number.
void ScanNumbers(TextScanner& scanner, ThresholdRule& rule) {
  for (const RuleNumber& number : RuleNumbers()) {
    if (!scanner.Literal(L',')) return;
    if (!std::visit([&](auto field) { return ScanNumber(scanner, rule.*field); }, number.field)) return;
  }
}

/// The line up to a NUL and without the CR or LF among its last two characters.
std::wstring_view CutLineEnd(std::wstring_view line) {
  line = line.substr(0, line.find(L'\0'));
  const auto isLineEnd = [](wchar_t character) { return character == L'\n' || character == L'\r'; };
  std::size_t length = line.size();
  if (length >= 1 && isLineEnd(line[length - 1])) --length;
  if (line.size() >= 2 && isLineEnd(line[line.size() - 2])) length = line.size() - 2;
  return line.substr(0, length);
}

}  // namespace

const wchar_t* ParseRulesCsvLine(std::wstring_view line, ThresholdRule& rule) {
  TextScanner scanner(CutLineEnd(line));
  if (!scanner.Unsigned(std::numeric_limits<std::uint32_t>::max(), rule.ruleId) || !scanner.Literal(L',')) {
    return L"no rule number in front of the first comma";
  }
  if (!ScanPattern(scanner, rule.processPattern)) return L"no pattern, or one that cannot be kept";
  if (!scanner.Literal(L',')) return L"the pattern has more than 255 characters, or no field follows it";
  if (!scanner.IsNonZero(rule.enabled)) return L"the third field, enabled, is no number";
  ScanNumbers(scanner, rule);
  return nullptr;
}

std::wstring FormatRulesCsv(const RuleList& rules) {
  std::wstring text = L"RuleId,ProcessPattern,Enabled";
  for (const RuleNumber& number : RuleNumbers()) text.append(1, L',').append(number.column);
  text += L'\n';
  for (const ThresholdRule& rule : rules) {
    text += FormatText(L"%u,", rule.ruleId);
    text += IsPlainPattern(rule.processPattern) ? rule.processPattern : QuotePattern(rule.processPattern);
    text += rule.enabled ? L",1" : L",0";
    for (const RuleNumber& number : RuleNumbers()) text.append(1, L',').append(RuleNumberText(number, rule));
    text += L'\n';
  }
  return text;
}

std::optional<RuleList> ParseRulesCsv(std::wstring_view text) {
  LineReader lines(text);
  std::wstring_view line;
  if (!lines.Next(line)) return std::nullopt;
  RuleList rules;
  while (lines.Next(line)) {
    ThresholdRule rule;
    if (ParseRulesCsvLine(line, rule) == nullptr) rules.push_back(std::move(rule));
  }
  return rules;
}

bool FitsRulesCsv(std::wstring_view pattern) {
  return IsPlainPattern(pattern) ||
         (pattern.size() < kMaxPatternFieldChars && QuotePattern(pattern).size() <= kMaxPatternFieldChars);
}
