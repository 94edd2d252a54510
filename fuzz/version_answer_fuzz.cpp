// Any answer of an update server: what is taken from it is a version of digits and dots, or the program's own.

#include "fuzz/require.h"
#include "platform/diagnostics.h"
#include "platform/text_file.h"
#include "update/version.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SetDiagnosticHook([](std::wstring_view) {});
  const std::string_view bytes = VersionAnswerBytes(Bytes(data, size));
  Require(bytes.find('\0') == std::string_view::npos, "ends at the first NUL");
  const std::wstring latest = LatestVersionFromAnswer(DecodeTextFile(bytes));
  Require(VersionToNumber(latest.c_str()) != 0, "a usable version");
  Require(latest == AppVersionDisplay || latest.find_first_not_of(L"0123456789.") == std::wstring::npos, "digits and dots");
  return 0;
}
