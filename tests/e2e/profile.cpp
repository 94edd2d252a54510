#include "tests/e2e/profile.h"

#include <shellapi.h>
#include <shlobj.h>

#include "platform/handles.h"

namespace e2e {

namespace {

/// With a doubled terminator, as the shell's file operation wants its list.
void DeleteFolder(const std::wstring& path) {
  std::wstring list = path;
  list.append(2, L'\0');
  SHFILEOPSTRUCTW operation{};
  operation.wFunc = FO_DELETE;
  operation.pFrom = list.c_str();
  operation.fFlags = FOF_NO_UI;
  if (PathExists(path)) ::SHFileOperationW(&operation);
}

void DeleteValue(const wchar_t* key, const wchar_t* name) {
  HKEY opened = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, key, 0, KEY_WRITE, &opened) != ERROR_SUCCESS) return;
  ::RegDeleteValueW(UniqueKey(opened).get(), name);
}

}  // namespace

bool ProfileIsThrowaway() {
  const bool wine = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return wine || ::GetEnvironmentVariableW(L"VANTORA_E2E_ON_WINDOWS", nullptr, 0) != 0;
}

RegistryValue RegistryValue::Number(DWORD number) {
  const auto* bytes = reinterpret_cast<const BYTE*>(&number);
  return {REG_DWORD, {bytes, bytes + sizeof(number)}};
}

RegistryValue RegistryValue::Text(const std::wstring& text, DWORD type) {
  const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
  return {type, {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)}};
}

Profile::Profile() {
  if (!ProfileIsThrowaway()) return;
  wchar_t folder[MAX_PATH]{};
  ::SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder);
  roaming_ = folder;
  Clear();
  Set(L"UpdateChecksDisabled", 1);
}

Profile::~Profile() {
  if (ProfileIsThrowaway()) Clear();
}

void Profile::Clear() const {
  for (const wchar_t* key : {kSettings, kLegacySettings}) DeleteKey(key);
  for (const wchar_t* name : {L"Vantora", L"Halvern"}) DeleteValue(kRun, name);
  for (const std::wstring& folder : {DataFolder(), LegacyFolder()}) DeleteFolder(folder);
}

void Profile::Set(const wchar_t* key, const wchar_t* name, const RegistryValue& value) const {
  ::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, value.type, value.bytes.data(), static_cast<DWORD>(value.bytes.size()));
}

std::optional<RegistryValue> Profile::Get(const wchar_t* key, const wchar_t* name) const {
  RegistryValue value;
  DWORD size = 0;
  constexpr DWORD kAnyKind = RRF_RT_ANY | RRF_NOEXPAND;
  if (::RegGetValueW(HKEY_CURRENT_USER, key, name, kAnyKind, &value.type, nullptr, &size) != ERROR_SUCCESS) return std::nullopt;
  value.bytes.resize(size);
  if (::RegGetValueW(HKEY_CURRENT_USER, key, name, kAnyKind, &value.type, value.bytes.data(), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  value.bytes.resize(size);
  return value;
}

void Profile::DeleteKey(const wchar_t* key) const { ::RegDeleteTreeW(HKEY_CURRENT_USER, key); }

void Profile::WriteRules(const std::vector<std::string>& rows) const {
  std::string bytes = std::string(kMark) + kRulesHeader + "\r\n";
  for (const std::string& row : rows) bytes += row + "\r\n";
  WriteFileBytes(RulesFile(), bytes);
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
  ::CreateDirectoryW(path.substr(0, path.rfind(L'\\')).c_str(), nullptr);
  const UniqueHandle file =
      OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD written = 0;
  if (file) ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

std::optional<std::string> ReadFileBytes(const std::wstring& path) {
  const UniqueHandle file = OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return std::nullopt;
  std::string bytes(::GetFileSize(file.get(), nullptr), '\0');
  DWORD read = 0;
  ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
  bytes.resize(read);
  return bytes;
}

bool PathExists(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

}  // namespace e2e
