#include "ui/dark/dark_mode_entry_points.h"

#include "platform/handles.h"

namespace {

template <class Function>
void Resolve(Function& slot, HMODULE module, LPCSTR name) {
  slot = module != nullptr ? reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name))) : nullptr;
}

}  // namespace

ThemeEntryPoints LoadThemeEntryPoints(unsigned build) {
  ThemeEntryPoints found;
  UniqueModule library(::LoadLibraryExW(L"uxtheme.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (library == nullptr) return found;
  // The entries are used until the process ends.
  HMODULE theme = library.release();
  Resolve(found.openNonClientTheme, theme, MAKEINTRESOURCEA(49));
  Resolve(found.refreshColorPolicy, theme, MAKEINTRESOURCEA(104));
  Resolve(found.refreshHighContrast, theme, MAKEINTRESOURCEA(106));
  Resolve(found.systemAsksForDark, theme, MAKEINTRESOURCEA(132));
  Resolve(found.allowForWindow, theme, MAKEINTRESOURCEA(133));
  if (build >= kComposedTitleBarBuild) {
    Resolve(found.setApplicationMode, theme, MAKEINTRESOURCEA(135));
  } else {
    Resolve(found.allowForApplication, theme, MAKEINTRESOURCEA(135));
  }
  Resolve(found.isAllowedForWindow, theme, MAKEINTRESOURCEA(137));
  Resolve(found.setComposition, ::GetModuleHandleW(L"user32.dll"), "SetWindowCompositionAttribute");
  return found;
}
