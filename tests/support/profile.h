#pragma once

// The user's profile as the program sees it, made empty for each test and emptied again after it: the settings keys, the Run
// values and the roaming folders of this program and of the earlier product. Meant for a Wine prefix of the tests' own; on a real
// Windows the test program ends with a failure unless VANTORA_E2E_ON_WINDOWS says that the profile may be lost.

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <utility>

#include "platform/file.h"
#include "platform/handles.h"

namespace e2e {

inline constexpr wchar_t kSettings[] = L"Software\\Vantora";
inline constexpr wchar_t kLegacySettings[] = L"Software\\Halvern";
inline constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

/// How a rules.csv of the program's own begins.
inline constexpr char kRulesHead[] =
    "\xEF\xBB\xBF"
    "RuleId,ProcessPattern,Enabled,MaxHandles,MaxWorkingSetMB,MaxPrivateBytesMB,MaxCPU,MaxThreads,MaxGDI,MaxUSER,AlertActions,"
    "CooldownSec\r\n";

inline bool PathExists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }
/// Creates the file's folder too.
inline void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
  ::CreateDirectoryW(path.substr(0, path.rfind(L'\\')).c_str(), nullptr);
  (void)WriteWholeFile(path, bytes);
}

/// A value's type and, of a number its digits, of a text the characters as they are stored: some calls add a terminator.
using RegistryValue = std::pair<DWORD, std::wstring>;

class Profile {
 public:
  /// Empties the profile; update checks are switched off, so that no test asks a server by accident.
  Profile() {
    const bool wine = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    if (!wine && ::_wgetenv(L"VANTORA_E2E_ON_WINDOWS") == nullptr) {
      std::cerr << "this profile is not the tests' own\n";
      std::exit(1);
    }
    Clear();
    Set(L"UpdateChecksDisabled", 1);
  }
  ~Profile() { Clear(); }
  Profile(const Profile&) = delete;

  static void Set(const wchar_t* name, DWORD number, const wchar_t* key = kSettings) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, REG_DWORD, &number, sizeof number);
  }
  static void SetText(const wchar_t* key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, type, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }
  /// All of a key's values by their names.
  [[nodiscard]] static std::map<std::wstring, RegistryValue> Values(const wchar_t* key) {
    std::map<std::wstring, RegistryValue> values;
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) != ERROR_SUCCESS) return values;
    const UniqueKey owned(opened);
    wchar_t name[300];
    wchar_t text[32'768];
    const auto* number = reinterpret_cast<const DWORD*>(text);
    DWORD type = REG_NONE;
    for (DWORD index = 0, chars = 300, bytes = sizeof text;
         ::RegEnumValueW(opened, index, name, &chars, nullptr, &type, reinterpret_cast<BYTE*>(text), &bytes) == ERROR_SUCCESS;
         ++index, chars = 300, bytes = sizeof text)
      values[name] = {type, type == REG_DWORD ? std::to_wstring(*number) : std::wstring(text, bytes / sizeof(wchar_t))};
    return values;
  }

  [[nodiscard]] std::wstring DataFolder() const { return roaming_ + L"\\Vantora"; }
  [[nodiscard]] std::wstring LegacyFolder() const { return roaming_ + L"\\Halvern"; }
  [[nodiscard]] std::wstring RulesFile() const { return DataFolder() + L"\\rules.csv"; }

 private:
  void Clear() const {
    for (const wchar_t* key : {kSettings, kLegacySettings}) ::RegDeleteTreeW(HKEY_CURRENT_USER, key);
    for (const wchar_t* name : {L"Vantora", L"Halvern", L"Other"}) ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRun, name);
    std::error_code ignored;
    for (const std::wstring& folder : {DataFolder(), LegacyFolder()}) std::filesystem::remove_all(folder, ignored);
  }

  const std::wstring roaming_ = ::_wgetenv(L"APPDATA");
};

}  // namespace e2e
