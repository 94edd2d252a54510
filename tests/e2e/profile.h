#pragma once

// The user's profile as the program sees it, made empty for each test and emptied again after it: the settings keys, the Run
// values and the roaming folders of this program and of the earlier product. Meant for a Wine prefix of the tests' own; on a real
// Windows every test is skipped unless VANTORA_E2E_ON_WINDOWS says that the profile may be lost.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/file.h"

namespace e2e {

inline constexpr wchar_t kSettings[] = L"Software\\Vantora";
inline constexpr wchar_t kLegacySettings[] = L"Software\\Halvern";
inline constexpr wchar_t kRun[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

/// How a rules.csv of the program's own begins.
inline constexpr char kRulesHead[] =
    "\xEF\xBB\xBF"
    "RuleId,ProcessPattern,Enabled,MaxHandles,MaxWorkingSetMB,MaxPrivateBytesMB,MaxCPU,MaxThreads,MaxGDI,MaxUSER,AlertActions,"
    "CooldownSec\r\n";

/// True where the profile may be thrown away.
[[nodiscard]] bool ProfileIsThrowaway();

[[nodiscard]] std::wstring ShellFolder(int id);

struct RegistryValue {
  DWORD type = REG_NONE;
  std::vector<BYTE> bytes;

  bool operator==(const RegistryValue&) const = default;
  [[nodiscard]] static RegistryValue Number(DWORD number);
  [[nodiscard]] static RegistryValue Text(const std::wstring& text, DWORD type = REG_SZ);
};

class Profile {
 public:
  /// Empties the profile; update checks are switched off, so that no test asks a server by accident.
  Profile();
  ~Profile() { Clear(); }
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;

  void Set(const wchar_t* key, const wchar_t* name, const RegistryValue& value) const;
  void Set(const wchar_t* name, DWORD number) const { Set(kSettings, name, RegistryValue::Number(number)); }
  /// The bytes as they are stored.
  [[nodiscard]] std::optional<RegistryValue> Get(const wchar_t* key, const wchar_t* name) const;

  [[nodiscard]] std::wstring DataFolder() const { return roaming_ + L"\\Vantora"; }
  [[nodiscard]] std::wstring LegacyFolder() const { return roaming_ + L"\\Halvern"; }
  [[nodiscard]] std::wstring RulesFile() const { return DataFolder() + L"\\rules.csv"; }
  [[nodiscard]] std::wstring LogFile() const { return DataFolder() + L"\\alerts.log"; }

  /// rules.csv with these rows, as the program itself would write it.
  void WriteRules(const std::vector<std::string>& rows) const;

 private:
  void Clear() const;

  const std::wstring roaming_;
};

/// Creates the file's folder too.
void WriteFileBytes(const std::wstring& path, const std::string& bytes);
/// Empty optional: no such file.
[[nodiscard]] inline std::optional<std::string> ReadFileBytes(const std::wstring& path) { return ReadWholeFile(path); }
[[nodiscard]] bool PathExists(const std::wstring& path);

}  // namespace e2e
