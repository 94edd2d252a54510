#include "update/version.h"

#include <cwchar>
#include <cwctype>
#include <limits>

namespace {

constexpr std::size_t kMinVersionChars = 7;  // "0.0.0.1"
constexpr int kComponents = 4;

/// Reads one number as the runtime's "%u" does, leading blanks and sign included, and moves `text` past it. A number beyond 32
/// bits saturates, so that a huge component cannot pass for a small one. False when there is none.
bool ReadComponent(const wchar_t*& text, std::uint32_t& value) {
  while (std::iswspace(static_cast<std::wint_t>(*text)) != 0) ++text;
  const bool negative = *text == L'-';
  if (*text == L'+' || *text == L'-') ++text;
  if (*text < L'0' || *text > L'9') return false;
  std::uint64_t number = 0;
  for (; *text >= L'0' && *text <= L'9'; ++text) {
    number = number * 10 + static_cast<std::uint64_t>(*text - L'0');
    if (number > std::numeric_limits<std::uint32_t>::max()) number = std::numeric_limits<std::uint32_t>::max();
  }
  value = static_cast<std::uint32_t>(negative ? 0 - number : number);
  return true;
}

}  // namespace

std::uint32_t VersionToNumber(const wchar_t* text) {
  if (text == nullptr || std::wcslen(text) < kMinVersionChars) return 0;
  std::uint32_t components[kComponents] = {};
  for (int i = 0; i < kComponents; ++i) {
    if (i > 0 && *text++ != L'.') break;
    if (!ReadComponent(text, components[i])) break;
  }
  std::uint32_t number = 0;
  for (const std::uint32_t component : components) number = (number << 8) | component;
  return number;
}

bool IsNewerVersion(const std::wstring& latest) { return VersionToNumber(latest.c_str()) > VersionToNumber(AppVersion); }

std::wstring FilterVersionText(const std::wstring& text) {
  std::wstring filtered;
  for (const wchar_t character : text) {
    if ((character >= L'0' && character <= L'9') || character == L'.') filtered += character;
  }
  return filtered;
}
