#pragma once

// The two registry values by which updates talk to the outside and to the next start. Windows builds only.

/// Set from outside the program: no check is to be made. False when the value is missing or cannot be read as a number.
[[nodiscard]] bool UpdateChecksDisabled();

/// Whether the next start is to report a finished update. A failure is ignored.
void SetUpdateFinished(bool finished);
/// Reads the same once: true when it was set; it then no longer is.
[[nodiscard]] bool TakeUpdateFinished();
