#include "ui/framework/clipboard_text.h"

#include <algorithm>
#include <cstring>

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

void WriteClipboardText(HWND owner, const std::wstring& text) {
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  UniqueGlobal memory(::GlobalAlloc(GMEM_MOVEABLE, bytes));
  void* target = memory != nullptr ? ::GlobalLock(memory.get()) : nullptr;
  if (target == nullptr) return;
  std::memcpy(target, text.c_str(), bytes);
  ::GlobalUnlock(memory.get());
  const ClipboardLock clipboard(owner);
  if (!clipboard.IsOpen() || !::EmptyClipboard()) return;
  // From here on the clipboard owns the memory.
  if (::SetClipboardData(CF_UNICODETEXT, memory.get()) != nullptr) memory.release();
}
