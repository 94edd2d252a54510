#pragma once

// Start with Windows: the presence of one value in the current user's Run list is the whole state. Failures are silent.

/// True exactly when the value exists, whatever it holds.
[[nodiscard]] bool IsStartWithWindowsEnabled();
/// Writes the value, or deletes it when it exists.
void ToggleStartWithWindows();
