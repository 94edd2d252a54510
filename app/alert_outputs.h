#pragma once

// What an alert's actions do on this system: a balloon on the tray icon, a line in the log file, a sound.

#include <windows.h>

#include "app/tray_icon.h"
#include "core/alert_delivery.h"
#include "storage/settings.h"

/// The system's call that plays a sound; another one in tests.
using PlaySoundFunction = BOOL(WINAPI*)(LPCWSTR path, HMODULE module, DWORD flags);

/// Tray window's thread only.
class TrayAlertOutputs final : public AlertOutputs {
 public:
  TrayAlertOutputs(TrayIcon& icon, const SettingsStore& settings, PlaySoundFunction playSound)
      : icon_(icon), settings_(settings), playSound_(playSound) {}

  [[nodiscard]] AlertDeliverySettings Settings() override;
  void ShowBalloon(const std::wstring& title, const std::wstring& text) override;
  void AppendToLog(const std::wstring& path, const AlertRecord& record) override;
  void PlaySoundFile(const std::wstring& path) override;

 private:
  TrayIcon& icon_;
  const SettingsStore& settings_;
  PlaySoundFunction playSound_;
};
