#include "platform/text_format.h"

#include <cerrno>
#include <cwchar>

namespace {
// No text of the program comes near this; it only ends the search for room when a runtime reports every failure alike.
constexpr std::size_t kMaxChars = std::size_t{1} << 26;
}  // namespace

std::wstring FormatTextList(const wchar_t* format, std::va_list arguments) {
  std::wstring text;
  // The runtimes agree only on a negative answer when the text does not fit; none says how much room it wants.
  for (std::size_t room = 128; room <= kMaxChars; room *= 4) {
    text.resize(room);
    std::va_list again;
    va_copy(again, arguments);
    errno = 0;
    const int written = std::vswprintf(text.data(), room, format, again);
    va_end(again);
    if (written >= 0 && static_cast<std::size_t>(written) < room) {
      text.resize(static_cast<std::size_t>(written));
      return text;
    }
    if (errno == EILSEQ || errno == EINVAL) break;
  }
  return {};
}

std::wstring FormatText(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::wstring text = FormatTextList(format, arguments);
  va_end(arguments);
  return text;
}
