#include "core/printable_text.h"

#include <algorithm>
#include <iterator>

namespace {

struct Range {
  wchar_t first;
  wchar_t last;
};

constexpr Range kUnprintable[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

bool IsUnprintable(wchar_t character) {
  return std::any_of(std::begin(kUnprintable), std::end(kUnprintable),
                     [character](const Range& range) { return character >= range.first && character <= range.last; });
}

}  // namespace

std::wstring PrintableText(std::wstring text) {
  std::replace_if(text.begin(), text.end(), IsUnprintable, L'?');
  return text;
}
