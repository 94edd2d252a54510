#include <windows.h>

#include <string>

#include "autostart/executable_path.h"
#include "autostart/run_value.h"
#include "platform/handles.h"
#include "storage/settings_registry.h"

namespace {

constexpr wchar_t kValueName[] = L"Vantora";

UniqueKey OpenRunKey(REGSAM access) {
  HKEY key = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, kRunKey, 0, access, &key) != ERROR_SUCCESS) return nullptr;
  return UniqueKey(key);
}

void WriteValue(HKEY key) {
  const std::wstring path = OwnExecutablePath();
  if (path.empty()) return;
  // Quoted, because the path may contain blanks; the switch keeps the started program in the notification area.
  const std::wstring data = L"\"" + path + L"\" /tray";
  const DWORD sizeBytes = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
  ::RegSetValueExW(key, kValueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()), sizeBytes);
}

}  // namespace

bool IsStartWithWindowsEnabled() {
  const UniqueKey key = OpenRunKey(KEY_READ);
  return key != nullptr && ::RegQueryValueExW(key.get(), kValueName, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void ToggleStartWithWindows() {
  const bool enabled = IsStartWithWindowsEnabled();
  const UniqueKey key = OpenRunKey(KEY_WRITE);
  if (key == nullptr) return;
  if (enabled) {
    ::RegDeleteValueW(key.get(), kValueName);
  } else {
    WriteValue(key.get());
  }
}
