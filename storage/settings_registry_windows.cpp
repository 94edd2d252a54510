#include "storage/data_folder.h"
#include "storage/settings_registry.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/handles.h"

namespace {

/// The value's data in at most `capacity` bytes, whatever its type; false when it is missing or longer.
bool ReadBytes(HKEY key, const wchar_t* name, void* data, DWORD capacity, DWORD& sizeBytes) {
  sizeBytes = capacity;
  return ::RegQueryValueExW(key, name, nullptr, nullptr, static_cast<BYTE*>(data), &sizeBytes) == ERROR_SUCCESS;
}

std::optional<std::uint32_t> ReadNumber(HKEY key, const wchar_t* name) {
  std::uint32_t value = 0;
  DWORD sizeBytes = 0;
  if (!ReadBytes(key, name, &value, sizeof value, sizeBytes)) return std::nullopt;
  return value;
}

std::optional<std::uint32_t> ReadNumberInRange(HKEY key, const wchar_t* name, std::uint32_t lowest, std::uint32_t highest) {
  const std::optional<std::uint32_t> value = ReadNumber(key, name);
  return value && *value >= lowest && *value <= highest ? value : std::nullopt;
}

void ReadPath(HKEY key, const wchar_t* name, std::wstring& path) {
  wchar_t buffer[kMaxPathChars + 1] = {};
  DWORD sizeBytes = 0;
  if (!ReadBytes(key, name, buffer, sizeof buffer, sizeBytes)) return;
  const std::wstring_view text(buffer, std::size(buffer));
  const std::size_t end = text.find(L'\0');
  if (end != std::wstring_view::npos) path = text.substr(0, end);
}

void ReadPlacement(HKEY key, WindowPlacement& placement) {
  static_assert(sizeof(WindowPlacement) == 16, "the registry's own layout");
  WindowPlacement read;
  DWORD sizeBytes = 0;
  if (ReadBytes(key, L"MainDialogPlacement", &read, sizeof read, sizeBytes) && sizeBytes == sizeof read && read.HasSize()) {
    placement = read;
  }
}

void ReadPollInterval(HKEY key, MonitorEngine& engine) {
  constexpr std::uint32_t kMsPerSecond = 1000;
  if (const auto seconds = ReadNumberInRange(key, L"PollIntervalSec", kMinPollIntervalSec, kMaxPollIntervalSec)) {
    engine.SetIntervalMs(*seconds * kMsPerSecond);
    return;
  }
  // Written by early versions only; the next save writes the seconds.
  constexpr const wchar_t* kLegacyName = L"PollIntervalMs";
  const auto legacyMs =
      ReadNumberInRange(key, kLegacyName, kMinPollIntervalSec * kMsPerSecond, kMaxPollIntervalSec * kMsPerSecond);
  if (!legacyMs) return;
  engine.SetIntervalMs(*legacyMs);
  ::RegDeleteValueW(key, kLegacyName);
}

/// The strings before the first empty one.
ExclusionList SplitMultiString(std::wstring_view text) {
  ExclusionList strings;
  while (!text.empty() && text.front() != L'\0') {
    const std::wstring_view entry = text.substr(0, text.find(L'\0'));
    strings.emplace_back(entry);
    text.remove_prefix(std::min(text.size(), entry.size() + 1));
  }
  return strings;
}

void ReadExclusions(HKEY key, MonitorEngine& engine) {
  constexpr const wchar_t* kName = L"Exclusions";
  DWORD type = REG_NONE;
  DWORD sizeBytes = 0;
  if (::RegQueryValueExW(key, kName, nullptr, &type, nullptr, &sizeBytes) != ERROR_SUCCESS) return;
  if (type != REG_MULTI_SZ || sizeBytes <= sizeof(wchar_t)) return;
  // One character more than whole ones: an odd last byte has room and is then ignored.
  std::wstring data(sizeBytes / sizeof(wchar_t) + 1, L'\0');
  if (!ReadBytes(key, kName, data.data(), sizeBytes, sizeBytes)) return;
  engine.SetExclusions(SplitMultiString(std::wstring_view(data).substr(0, sizeBytes / sizeof(wchar_t))));
}

struct NumberSetting {
  const wchar_t* name;
  std::uint32_t AppSettings::*member;
  bool (*allowed)(std::uint32_t value);
};

constexpr NumberSetting kNumbers[] = {
    {L"AlertActions", &AppSettings::alertActions, [](std::uint32_t) { return true; }},
    {L"NotificationThrottleSec", &AppSettings::notificationThrottleSec,
     [](std::uint32_t seconds) { return seconds >= kMinThrottleSec && seconds <= kMaxThrottleSec; }},
    {L"UpdateCheckIntervalHours", &AppSettings::updateCheckIntervalHours,
     [](std::uint32_t hours) { return std::ranges::find(kUpdateCheckIntervals, hours) != std::end(kUpdateCheckIntervals); }},
};

struct PathSetting {
  const wchar_t* name;
  std::wstring AppSettings::*member;
};

constexpr PathSetting kPaths[] = {{L"LogFilePath", &AppSettings::logFilePath}, {L"SoundFilePath", &AppSettings::soundFilePath}};

void ReadSettings(HKEY key, AppSettings& settings) {
  for (const NumberSetting& number : kNumbers) {
    if (const auto value = ReadNumber(key, number.name); value && number.allowed(*value)) settings.*number.member = *value;
  }
  if (const auto betas = ReadNumber(key, L"IncludeBetas")) settings.includeBetas = *betas != 0;
  for (const PathSetting& path : kPaths) ReadPath(key, path.name, settings.*path.member);
  ReadPlacement(key, settings.mainDialogPlacement);
}

void WriteBytes(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t sizeBytes) {
  ::RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(sizeBytes));
}

void WriteNumber(HKEY key, const wchar_t* name, std::uint32_t value) { WriteBytes(key, name, REG_DWORD, &value, sizeof value); }

void WriteText(HKEY key, const wchar_t* name, const std::wstring& text) {
  WriteBytes(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void WriteExclusions(HKEY key, const ExclusionList& exclusions) {
  std::wstring data;
  for (const std::wstring& pattern : exclusions) {
    data += pattern;
    data.push_back(L'\0');
  }
  data.push_back(L'\0');
  WriteBytes(key, L"Exclusions", REG_MULTI_SZ, data.data(), data.size() * sizeof(wchar_t));
}

}  // namespace

void LoadSettings(SettingsStore& store, MonitorEngine& engine) {
  AppSettings settings = store.Get();
  HKEY opened = nullptr;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, KEY_READ | KEY_WRITE, &opened) == ERROR_SUCCESS) {
    const UniqueKey key(opened);
    ReadPollInterval(key.get(), engine);
    ReadSettings(key.get(), settings);
    ReadExclusions(key.get(), engine);
  }
  if (settings.logFilePath.empty()) settings.logFilePath = DefaultLogFilePath();
  store.Update([&](AppSettings& current) { current = settings; });
}

void SaveSettings(const SettingsStore& store, const MonitorEngine& engine) {
  HKEY opened = nullptr;
  if (::RegCreateKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &opened,
                        nullptr) != ERROR_SUCCESS) {
    return;
  }
  const UniqueKey key(opened);
  const AppSettings settings = store.Get();
  WriteNumber(key.get(), L"PollIntervalSec", engine.IntervalMs() / 1000);
  for (const NumberSetting& number : kNumbers) WriteNumber(key.get(), number.name, settings.*number.member);
  WriteNumber(key.get(), L"IncludeBetas", settings.includeBetas ? 1 : 0);
  for (const PathSetting& path : kPaths) WriteText(key.get(), path.name, settings.*path.member);
  WriteExclusions(key.get(), *engine.Exclusions());
  const WindowPlacement& placement = settings.mainDialogPlacement;
  if (placement.HasSize()) WriteBytes(key.get(), L"MainDialogPlacement", REG_BINARY, &placement, sizeof placement);
}
