#pragma once

// The settings in the current user's registry hive. Windows builds only;
// nothing here reports to the user.

#include "core/monitor_engine.h"
#include "storage/settings.h"

inline constexpr wchar_t kSettingsKey[] = L"Software\\Vantora";
inline constexpr wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";

/// Start-up thread. Values that are missing, of the wrong kind or out of range leave their field as it was.
void LoadSettings(SettingsStore& settings, MonitorEngine& engine);
/// Writes every setting. Any window thread.
void SaveSettings(const SettingsStore& settings, const MonitorEngine& engine);
