#pragma once

// What is carried over from the earlier product. Windows builds only; nothing here reports to the user.

/// Takes registry key, data folder, autostart entry and logon task of the earlier product over. Start-up thread, once per start.
void MigrateLegacySettings();
