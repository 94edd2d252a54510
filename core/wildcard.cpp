#include "core/wildcard.h"

namespace {

// The runtime's own conversion depends on the locale on some systems and is slower; only A-Z fold.
wchar_t ToLower(wchar_t unit) { return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit; }

}  // namespace

bool WildcardMatch(const wchar_t* name, const wchar_t* pattern) {
  const wchar_t* retryName = nullptr;
  const wchar_t* retryPattern = nullptr;
  while (*name != L'\0') {
    if (*pattern == L'*') {
      retryPattern = ++pattern;
      retryName = name;
    } else if (*pattern == L'?' || *pattern == *name || ToLower(*pattern) == ToLower(*name)) {
      ++pattern;
      ++name;
    } else if (retryPattern == nullptr) {
      return false;
    } else {
      name = ++retryName;
      pattern = retryPattern;
    }
  }
  while (*pattern == L'*') ++pattern;
  return *pattern == L'\0';
}

bool IsExcluded(const wchar_t* name, const std::vector<std::wstring>& exclusions) {
  for (const std::wstring& pattern : exclusions) {
    if (WildcardMatch(name, pattern.c_str())) return true;
  }
  return false;
}
