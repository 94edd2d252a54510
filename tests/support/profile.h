#pragma once

// The user's profile as the program sees it, made empty for each test and emptied again after it: the settings keys, the Run
// values and the roaming folders of this program and of the earlier product. Meant for a Wine prefix of the tests' own; on a real
// Windows the test program ends with a failure unless VANTORA_E2E_ON_WINDOWS says that the profile may be lost.

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

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

struct RegistryValue {
  DWORD type = REG_NONE;
  std::vector<BYTE> bytes;

  bool operator==(const RegistryValue&) const = default;
  static RegistryValue Number(DWORD number) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&number);
    return {REG_DWORD, {bytes, bytes + sizeof(number)}};
  }
  static RegistryValue Text(const std::wstring& text, DWORD type = REG_SZ) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {type, {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)}};
  }
};

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
  Profile& operator=(const Profile&) = delete;

  void Set(const wchar_t* name, DWORD number) const { Set(kSettings, name, RegistryValue::Number(number)); }
  void Set(const wchar_t* key, const wchar_t* name, const RegistryValue& value) const {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, value.type, value.bytes.data(), static_cast<DWORD>(value.bytes.size()));
  }
  /// The bytes as they are stored: calls that are easier to use add a terminator that is not there.
  [[nodiscard]] std::optional<RegistryValue> Get(const wchar_t* key, const wchar_t* name) const {
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) != ERROR_SUCCESS) return std::nullopt;
    const UniqueKey owned(opened);
    DWORD size = 65'536;
    RegistryValue value{REG_NONE, std::vector<BYTE>(size)};
    if (::RegQueryValueExW(opened, name, nullptr, &value.type, value.bytes.data(), &size) != ERROR_SUCCESS) return std::nullopt;
    value.bytes.resize(size);
    return value;
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
