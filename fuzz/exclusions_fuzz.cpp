// Any text in the exclusions' edit box: the patterns are single trimmed lines, and come back when they are shown and read again.

#include "fuzz/require.h"
#include "platform/text_file.h"
#include "ui/dialogs/exclusions_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::wstring> patterns = SplitExclusions(DecodeTextFile(Bytes(data, size)));
  for (const std::wstring& pattern : patterns) {
    Require(!pattern.empty() && pattern.find_first_of(L"\r\n") == std::wstring::npos, "a pattern is one line");
    Require(pattern.front() != L' ' && pattern.back() != L' ' && pattern.front() != L'\t' && pattern.back() != L'\t', "trimmed");
  }
  Require(SplitExclusions(JoinExclusions(patterns)) == patterns, "the patterns come back");
  return 0;
}
