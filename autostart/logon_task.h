#pragma once

// The scheduled task that starts the program with administrator rights at logon. Each call initialises COM for its thread and
// puts it back; all block for as long as the Task Scheduler takes.

/// True exactly when the task can be read; any failure is false.
[[nodiscard]] bool IsAdminTaskInstalled();
/// Replaces a task of the same name. Needs administrator rights.
bool InstallAdminTask();
/// A task that does not exist counts as removed.
bool RemoveAdminTask();
