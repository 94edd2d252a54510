#pragma once

// The settings in the current user's registry hive, and what is carried over from the earlier product. Windows builds only;
// nothing here reports to the user.

#include <string>

#include "core/monitor_engine.h"
#include "storage/settings.h"

inline constexpr wchar_t kSettingsKey[] = L"Software\\Vantora";
inline constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

/// Start-up thread. Values that are missing, of the wrong kind or out of range leave their field as it was.
void LoadSettings(SettingsStore& settings, MonitorEngine& engine);
/// Writes every setting. Any window thread.
void SaveSettings(const SettingsStore& settings, const MonitorEngine& engine);
/// Takes registry key, data folder, autostart entry and logon task of the earlier product over. Start-up thread, once per start.
void MigrateLegacySettings();

/// The default alert log in the roaming folder; empty when the folder cannot be determined.
[[nodiscard]] std::wstring DefaultLogFilePath();
/// The rules file in the roaming folder, whose folder is created; the bare file name when it cannot be determined.
[[nodiscard]] std::wstring GetRulesFilePath();
