#include <windows.h>

#include "platform/handles.h"
#include "storage/settings_registry.h"
#include "update/update_values.h"

namespace {

constexpr wchar_t kChecksDisabled[] = L"UpdateChecksDisabled";
constexpr wchar_t kFinished[] = L"UpdateFinished";

UniqueKey OpenSettingsKey(REGSAM access) {
  HKEY key = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, access, &key) != ERROR_SUCCESS) return nullptr;
  return UniqueKey(key);
}

/// Any value of four bytes counts as a number, whatever its type says.
DWORD ReadNumber(HKEY key, const wchar_t* name) {
  DWORD value = 0;
  DWORD size = sizeof value;
  const LSTATUS result = ::RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
  return result == ERROR_SUCCESS && size == sizeof value ? value : 0;
}

void WriteNumber(HKEY key, const wchar_t* name, DWORD value) {
  ::RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

}  // namespace

bool UpdateChecksDisabled() {
  const UniqueKey key = OpenSettingsKey(KEY_READ);
  return key != nullptr && ReadNumber(key.get(), kChecksDisabled) != 0;
}

void SetUpdateFinished(bool finished) {
  HKEY opened = nullptr;
  if (::RegCreateKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr) != ERROR_SUCCESS)
    return;
  const UniqueKey key(opened);
  WriteNumber(key.get(), kFinished, finished ? 1 : 0);
}

bool TakeUpdateFinished() {
  const UniqueKey key = OpenSettingsKey(KEY_READ | KEY_WRITE);
  if (key == nullptr || ReadNumber(key.get(), kFinished) == 0) return false;
  WriteNumber(key.get(), kFinished, 0);
  return true;
}
