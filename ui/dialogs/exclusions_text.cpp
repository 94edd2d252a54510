#include "ui/dialogs/exclusions_text.h"

#include "platform/text_scanner.h"

namespace {

std::wstring_view Trim(std::wstring_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
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
