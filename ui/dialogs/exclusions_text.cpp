#include "ui/dialogs/exclusions_text.h"

namespace {

/// What the Windows runtime's wide-character test calls white space. Spelled out, because the test of another runtime depends on
/// its locale and a list must not change with the machine it is edited on.
bool IsWhiteSpace(wchar_t character) {
  constexpr std::wstring_view kOthers = L" \x00A0\x1680\x2028\x2029\x202F\x205F\x3000";
  return (character >= L'\t' && character <= L'\r') || (character >= L'\x2000' && character <= L'\x200A') ||
         kOthers.find(character) != std::wstring_view::npos;
}

std::wstring_view Trim(std::wstring_view text) {
  while (!text.empty() && IsWhiteSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsWhiteSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace

std::vector<std::wstring> SplitExclusions(std::wstring_view text) {
  std::vector<std::wstring> exclusions;
  while (!text.empty()) {
    const std::size_t lineEnd = text.find_first_of(L"\r\n");
    const std::wstring_view pattern = Trim(text.substr(0, lineEnd));
    if (!pattern.empty()) exclusions.emplace_back(pattern);
    if (lineEnd == std::wstring_view::npos) break;
    text.remove_prefix(lineEnd + 1);
  }
  return exclusions;
}

std::wstring JoinExclusions(const std::vector<std::wstring>& exclusions) {
  std::wstring text;
  for (const std::wstring& pattern : exclusions) {
    if (!text.empty()) text += L"\r\n";
    text += pattern;
  }
  return text;
}

std::wstring WithEditLineEnds(std::wstring_view text) {
  std::wstring lines;
  lines.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n') continue;
    if (text[i] == L'\r' || text[i] == L'\n') {
      lines += L"\r\n";
    } else {
      lines += text[i];
    }
  }
  return lines;
}
