#include "autostart/legacy_migration.h"

#include <windows.h>

#include <iterator>
#include <string>

#include "autostart/executable_path.h"
#include "platform/handles.h"
#include "platform/repeat_while_held.h"
#include "storage/data_folder.h"
#include "storage/settings_registry.h"

namespace {

constexpr wchar_t kOldSettingsKey[] = L"Software\\Halvern";
constexpr wchar_t kOldName[] = L"Halvern";
constexpr wchar_t kNewName[] = L"Vantora";

void CopyValues(HKEY from, HKEY to) {
  wchar_t name[256];
  BYTE data[4096];
  for (DWORD index = 0;; ++index) {
    DWORD nameChars = static_cast<DWORD>(std::size(name));
    DWORD dataBytes = sizeof data;
    DWORD type = REG_NONE;
    if (::RegEnumValueW(from, index, name, &nameChars, nullptr, &type, data, &dataBytes) != ERROR_SUCCESS) return;
    ::RegSetValueExW(to, name, 0, type, data, dataBytes);
  }
}

/// Only into a key that did not exist: settings of this program are never overwritten.
void MigrateRegistryKey() {
  HKEY opened = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, kOldSettingsKey, 0, KEY_READ, &opened) != ERROR_SUCCESS) return;
  const UniqueKey oldKey(opened);
  DWORD disposition = 0;
  if (::RegCreateKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr,
                        &opened, &disposition) != ERROR_SUCCESS) {
    return;
  }
  const UniqueKey newKey(opened);
  if (disposition == REG_CREATED_NEW_KEY) CopyValues(oldKey.get(), newKey.get());
}

void MigrateDataFolder() {
  const std::wstring roaming = RoamingFolder();
  if (roaming.empty()) return;
  const std::wstring oldFolder = roaming + L"\\" + kOldName;
  const std::wstring newFolder = roaming + L"\\" + kNewName;
  const DWORD attributes = ::GetFileAttributesW(oldFolder.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return;
  if (::GetFileAttributesW(newFolder.c_str()) != INVALID_FILE_ATTRIBUTES) return;
  // What is not moved now stays behind: from the end of this run on there is a new folder.
  (void)RepeatWhileHeld([&] { return ::MoveFileExW(oldFolder.c_str(), newFolder.c_str(), MOVEFILE_COPY_ALLOWED) != FALSE; },
                        true);
}

bool RunsAtLogon(const wchar_t* name) {
  return ::RegGetValueW(HKEY_CURRENT_USER, kRunKey, name, RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void MigrateAutostartEntry() {
  if (!RunsAtLogon(kOldName)) return;
  ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, kOldName);
  const std::wstring path = OwnExecutablePath();
  if (RunsAtLogon(kNewName) || path.empty()) return;
  const std::wstring command = L"\"" + path + L"\"";
  const auto sizeBytes = static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t));
  ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, kNewName, REG_SZ, command.c_str(), sizeBytes);
}

/// Runs at every start: asking whether the task exists would cost as much as deleting it.
void DeleteOldLogonTask() {
  // The tool is named by its full path, so that nobody can plant another one beside the program.
  wchar_t tool[MAX_PATH] = {};
  const UINT length = ::GetSystemDirectoryW(tool, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) return;
  const std::wstring toolPath = std::wstring(tool, length) + L"\\schtasks.exe";
  wchar_t commandLine[256] = L"schtasks /Delete /TN \"HalvernAdminAutoStart\" /F";
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION process = {};
  if (::CreateProcessW(toolPath.c_str(), commandLine, nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                       &process) == FALSE) {
    return;
  }
  const UniqueHandle processHandle(process.hProcess);
  const UniqueHandle threadHandle(process.hThread);
  ::WaitForSingleObject(processHandle.get(), 5000);
}

}  // namespace

void MigrateLegacySettings() {
  MigrateRegistryKey();
  MigrateDataFolder();
  MigrateAutostartEntry();
  DeleteOldLogonTask();
}
