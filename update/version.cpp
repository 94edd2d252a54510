#include "update/version.h"

#include <algorithm>
#include <cwchar>
#include <limits>

#include "platform/diagnostics.h"
#include "platform/text_scanner.h"

namespace {

constexpr std::size_t kMinVersionChars = 7;  // "0.0.0.1"
constexpr int kComponents = 4;

/// Reads one number as the runtime's "%u" does, leading blanks and sign included. A number beyond 32 bits saturates, so that a
/// huge component cannot pass for a small one. False when there is none.
bool ReadComponent(TextScanner& text, std::uint32_t& value) {
  TextScanner::Integer number;
  if (!text.TakeInteger(number)) return false;
  value = number.Saturated(std::numeric_limits<std::uint32_t>::max());
  if (number.negative) value = 0U - value;
  return true;
}

}  // namespace

std::uint32_t VersionToNumber(const wchar_t* text) {
  if (text == nullptr || std::wcslen(text) < kMinVersionChars) return 0;
  TextScanner scanner(text);
  std::uint32_t components[kComponents] = {};
  for (int i = 0; i < kComponents; ++i) {
    if ((i > 0 && !scanner.Literal(L'.')) || !ReadComponent(scanner, components[i])) break;
  }
  std::uint32_t number = 0;
  for (const std::uint32_t component : components) number = (number << 8) | component;
  return number;
}

bool IsNewerVersion(const std::wstring& latest) { return VersionToNumber(latest.c_str()) > VersionToNumber(AppVersion); }

std::string_view VersionAnswerBytes(std::string_view body) { return body.substr(0, body.find('\0')); }

std::wstring LatestVersionFromAnswer(const std::wstring& text) {
  std::wstring version = text;
  std::erase_if(version, [](wchar_t character) { return (character < L'0' || character > L'9') && character != L'.'; });
  if (VersionToNumber(version.c_str()) != 0) return version;
  DebugLog(L"WARNING: Invalid version string received: %ls", version.c_str());
  return AppVersionDisplay;
}
