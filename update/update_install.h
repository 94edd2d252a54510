#pragma once

// Download, verification and start of the installer. Windows builds only.

#include <functional>
#include <string>

#include "storage/settings.h"
#include "update/installer_file.h"
#include "update/installer_start.h"

/// What an installation asks of the system, step by step, so that each step can be made to fail.
struct InstallationSteps {
  std::function<bool(const std::wstring& url, std::string& body)> download;
  InstallerFile::WriteCall write;
  std::function<LONG(const std::wstring& path)> verify;
  std::function<LaunchResult(const std::wstring& path)> launch;
  std::function<bool()> isElevated;
};
[[nodiscard]] InstallationSteps SystemInstallationSteps();

/// True when the installer was started; the program is then to end. Blocks for the whole download; on a thread of its own, which
/// nobody waits for: what it refers to lives as long as the process.
[[nodiscard]] bool DownloadAndInstallUpdate(const SettingsStore& settings);
[[nodiscard]] bool DownloadAndInstallUpdate(const InstallationSteps& steps, bool includeBetas);

/// The folder in the user's temporary folder that an installer is downloaded to; empty when there is none.
[[nodiscard]] std::wstring InstallerFolderPath();
