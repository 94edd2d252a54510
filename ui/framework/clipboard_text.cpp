#include "ui/framework/clipboard_text.h"

#include <algorithm>

#include "platform/handles.h"
#include "platform/out_of_memory.h"

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
  const auto take = [&] { copy.emplace(text, std::find(text, end, L'\0')); };
  if (!DoUnlessOutOfMemory(L"ReadClipboardText", take)) copy.reset();
  ::GlobalUnlock(memory);
  return copy;
}
