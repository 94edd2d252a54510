#include "ui/alerts/clear_alerts.h"

#include "core/recent_alerts.h"
#include "platform/file.h"
#include "storage/settings.h"

void ClearAlerts(RecentAlerts& recentAlerts, const SettingsStore& settings) {
  recentAlerts.Clear();
  const std::wstring logFilePath = settings.Get().logFilePath;
  if (!logFilePath.empty()) RemoveFile(logFilePath);
}
