#include "ui/rules/number_text.h"

#include <limits>

#include "platform/text_scanner.h"

namespace {

constexpr std::uint32_t kHighest = std::numeric_limits<std::uint32_t>::max();

TextScanner::Integer ReadInteger(std::wstring_view text) {
  TextScanner::Integer integer;
  (void)TextScanner(text).TakeInteger(integer);
  return integer;
}

}  // namespace

std::uint32_t ReadCellInteger(std::wstring_view text) {
  constexpr std::uint32_t kLeastSignedMagnitude = 0x8000'0000;
  const TextScanner::Integer number = ReadInteger(text);
  return number.negative ? 0U - number.Saturated(kLeastSignedMagnitude) : number.Saturated(kHighest);
}

std::uint32_t ReadFieldInteger(std::wstring_view text) {
  const TextScanner::Integer number = ReadInteger(text);
  return number.negative ? 0 : number.Saturated(kHighest);
}

double ReadDecimal(std::wstring_view text) {
  TextScanner scanner(text);
  scanner.SkipBlanks();
  return ParseDecimal(scanner.Rest()).value;
}
