#include "tests/e2e/profile.h"

#include <shlobj.h>

#include <filesystem>

#include "platform/handles.h"

namespace e2e {

bool ProfileIsThrowaway() {
  const bool wine = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return wine || ::GetEnvironmentVariableW(L"VANTORA_E2E_ON_WINDOWS", nullptr, 0) != 0;
}

std::wstring ShellFolder(int id) {
  wchar_t folder[MAX_PATH]{};
  ::SHGetFolderPathW(nullptr, id, nullptr, 0, folder);
  return folder;
}

RegistryValue RegistryValue::Number(DWORD number) {
  const auto* bytes = reinterpret_cast<const BYTE*>(&number);
  return {REG_DWORD, {bytes, bytes + sizeof(number)}};
}

RegistryValue RegistryValue::Text(const std::wstring& text, DWORD type) {
  const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
  return {type, {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)}};
}

Profile::Profile() : roaming_(ShellFolder(CSIDL_APPDATA)) {
  Clear();
  if (ProfileIsThrowaway()) Set(L"UpdateChecksDisabled", 1);
}

void Profile::Clear() const {
  if (!ProfileIsThrowaway()) return;
  for (const wchar_t* key : {kSettings, kLegacySettings}) ::RegDeleteTreeW(HKEY_CURRENT_USER, key);
  for (const wchar_t* name : {L"Vantora", L"Halvern"}) ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRun, name);
  std::error_code ignored;
  for (const std::wstring& folder : {DataFolder(), LegacyFolder()}) std::filesystem::remove_all(folder, ignored);
}

void Profile::Set(const wchar_t* key, const wchar_t* name, const RegistryValue& value) const {
  ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, value.type, value.bytes.data(), static_cast<DWORD>(value.bytes.size()));
}

std::optional<RegistryValue> Profile::Get(const wchar_t* key, const wchar_t* name) const {
  HKEY opened = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_READ, &opened) != ERROR_SUCCESS) return std::nullopt;
  const UniqueKey owned(opened);
  DWORD size = 65'536;
  RegistryValue value{REG_NONE, std::vector<BYTE>(size)};
  // The call that reads the bytes as they are: others add a terminator that is not there.
  if (::RegQueryValueExW(opened, name, nullptr, &value.type, value.bytes.data(), &size) != ERROR_SUCCESS) return std::nullopt;
  value.bytes.resize(size);
  return value;
}

void Profile::WriteRules(const std::vector<std::string>& rows) const {
  std::string bytes = kRulesHead;
  for (const std::string& row : rows) bytes += row + "\r\n";
  WriteFileBytes(RulesFile(), bytes);
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
  ::CreateDirectoryW(path.substr(0, path.rfind(L'\\')).c_str(), nullptr);
  (void)WriteWholeFile(path, bytes);
}

bool PathExists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

}  // namespace e2e
