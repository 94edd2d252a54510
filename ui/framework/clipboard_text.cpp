#include "ui/framework/clipboard_text.h"

#include <algorithm>
#include <new>

#include "platform/handles.h"

std::optional<std::wstring> ReadClipboardText(HWND owner) {
  if (!::IsClipboardFormatAvailable(CF_UNICODETEXT)) return std::nullopt;
  const ClipboardLock clipboard(owner);
  if (!clipboard.IsOpen()) return std::nullopt;
  HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);
  if (memory == nullptr) return std::nullopt;
  const auto* text = static_cast<const wchar_t*>(::GlobalLock(memory));
  if (text == nullptr) return std::nullopt;
  // Another program filled that memory: its size bounds the text, whether a terminator is there or not.
  const wchar_t* end = text + ::GlobalSize(memory) / sizeof(wchar_t);
  std::optional<std::wstring> copy;
  try {
    copy.emplace(text, std::find(text, end, L'\0'));
  } catch (const std::bad_alloc&) {
    copy.reset();
  }
  ::GlobalUnlock(memory);
  return copy;
}
