#pragma once

// Download, verification and start of the installer. Windows builds only.

#include "storage/settings.h"

/// True when the installer was started; the program is then to end. Blocks for the whole download; on a thread of its own.
[[nodiscard]] bool DownloadAndInstallUpdate(const SettingsStore& settings);
