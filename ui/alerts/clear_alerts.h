#pragma once

// The Clear Log command that both views of alerts offer.

class RecentAlerts;
class SettingsStore;

/// Empties the list, so that every view that polls it empties itself, and deletes the alert log file where one is configured; a
/// file that cannot be deleted stays. Any thread.
void ClearAlerts(RecentAlerts& recentAlerts, const SettingsStore& settings);
