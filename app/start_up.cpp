#include "app/start_up.h"

#include "autostart/legacy_migration.h"
#include "platform/diagnostics.h"
#include "res/messages.h"
#include "storage/alert_log.h"
#include "storage/data_folder.h"
#include "storage/settings_registry.h"

bool InitInstance(ProcessObjects& objects, const InstanceName& name, bool startInTray) {
  if (HWND running = FindInstance(name)) {
    DebugLog(L"Existing instance found, invoking settings dialog");
    OpenInstance(running);
    return false;
  }
  MigrateLegacySettings();
  LoadSettings(objects.settings, objects.engine);
  LoadAlertLog(objects.settings.Get().logFilePath, objects.recentAlerts);
  objects.recentAlerts.SetAlertsChanged();
  objects.rules.Load(GetRulesFilePath());
  objects.engine.SetRules(&objects.rules);
  objects.engine.SetSink(&objects.sink);

  HWND tray = objects.tray.Create(name);
  if (tray == nullptr) return false;
  ::SendMessageW(tray, UWM_ADD_ICON, 0, 0);
  objects.engine.Start();
  if (!startInTray) ::SendMessageW(tray, UWM_TRAYICON, 0, WM_LBUTTONUP);
  return true;
}
