#pragma once

// The version check: asks the update server for the newest version and stores its answer. Windows builds only.

#include <string>

#include "platform/event.h"
#include "storage/settings.h"
#include "update/http_client.h"
#include "update/update_state.h"

/// Runs one check on the calling thread and signals `done` at its end, whatever happened. A failed check leaves the program's own
/// version as the latest; one that is switched off leaves what was there. Nobody waits for it: what it refers to lives as long as
/// the process.
void CheckForUpdatesThread(UpdateState& updates, const SettingsStore& settings, Event& done);

/// The check's question and its answer: the newest version of the channel, or the program's own on any failure.
[[nodiscard]] std::wstring AskForLatestVersion(HttpClient& http, bool includeBetas);
