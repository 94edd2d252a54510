#pragma once

// The version check: asks the update server for the newest version and stores its answer. Windows builds only.

#include "platform/event.h"
#include "storage/settings.h"
#include "system/update_state.h"

/// Runs one check on the calling thread and signals `done` at its end, whatever happened. A failed check leaves the program's own
/// version as the latest.
void CheckForUpdatesThread(UpdateState& updates, const SettingsStore& settings, Event& done);
