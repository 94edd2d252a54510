#include "ui/dark/dark_scroll_bar.h"

#include <psapi.h>

#include <cstddef>
#include <cstring>
#include <cwchar>
#include <span>

#include "platform/handles.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_mode_entry_points.h"
#include "ui/dark/delay_import_slot.h"

namespace {

constexpr std::uint16_t kOpenNonClientThemeOrdinal = 49;

/// The module as it lies in memory; empty when the system does not tell its size.
std::span<std::byte> ModuleImage(HMODULE module) {
  MODULEINFO info{};
  if (!::K32GetModuleInformation(::GetCurrentProcess(), module, &info, sizeof(info))) return {};
  return {static_cast<std::byte*>(info.lpBaseOfDll), info.SizeOfImage};
}

}  // namespace

void InstallDarkScrollBars() {
  if (!DarkModeAvailable()) return;
  UniqueModule library(::LoadLibraryExW(L"comctl32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (library == nullptr) return;
  // Never let go: the patched slot lies in it.
  const std::span<std::byte> image = ModuleImage(library.release());
  const std::size_t offset = FindDelayImportSlot(image, "uxtheme.dll", kOpenNonClientThemeOrdinal);
  if (offset == 0) return;

  const auto replacement = &DarkScrollBarThemeHook;
  std::byte* slot = image.data() + offset;
  DWORD protection = 0;
  if (!::VirtualProtect(slot, sizeof(replacement), PAGE_READWRITE, &protection)) return;
  std::memcpy(slot, &replacement, sizeof(replacement));
  ::VirtualProtect(slot, sizeof(replacement), protection, &protection);
}

HTHEME WINAPI DarkScrollBarThemeHook(HWND window, LPCWSTR classList) {
  if (DarkModeOn() && classList != nullptr && std::wcscmp(classList, L"ScrollBar") == 0) {
    return Theme().openNonClientTheme(nullptr, L"Explorer::ScrollBar");
  }
  return Theme().openNonClientTheme(window, classList);
}
