#include <windows.h>

#include <string>

#include "autostart/executable_path.h"
#include "autostart/run_value.h"
#include "storage/settings_registry.h"

namespace {

constexpr wchar_t kValueName[] = L"Vantora";

}  // namespace

bool IsStartWithWindowsEnabled() {
  return ::RegGetValueW(HKEY_CURRENT_USER, kRunKey, kValueName, RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void ToggleStartWithWindows() {
  if (IsStartWithWindowsEnabled()) {
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, kValueName);
    return;
  }
  const std::wstring path = OwnExecutablePath();
  if (path.empty()) return;
  // Quoted, because the path may contain blanks; the switch keeps the started program in the notification area.
  const std::wstring command = L"\"" + path + L"\" /tray";
  const auto sizeBytes = static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t));
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, kValueName, REG_SZ, command.c_str(), sizeBytes);
}
