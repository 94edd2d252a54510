#include "app/process_objects.h"

#include <mmsystem.h>

#include "platform/clock.h"
#include "storage/data_folder.h"
#include "ui/alerts/alert_log_window.h"
#include "ui/dialogs/update_installation.h"
#include "ui/main_window/main_window_thread.h"
#include "update/update_check.h"

namespace {

TrayRoutines MakeTrayRoutines(ProcessObjects& objects) {
  TrayRoutines routines;
  routines.runMainWindow = [&program = objects.program] { MainDialogThread(program); };
  routines.runAlertLog = [&program = objects.program] { AlertLogDialogThread(program); };
  routines.installUpdate = [&program = objects.program] { UpdateInstallThread(program); };
  routines.checkForUpdates = [&objects](Event& done) { CheckForUpdatesThread(objects.updates, objects.settings, done); };
  return routines;
}

ProcessObjects& processObjects = *new ProcessObjects;

}  // namespace

ProcessObjects::ProcessObjects()
    : engine(MakeSystemProcessSampler(), SystemClock(), SystemProcessorCount()),
      rules(GetRulesFilePath),
      program{::GetModuleHandleW(nullptr), engine, rules, settings, recentAlerts, updates},
      tray(program, sink, MakeTrayRoutines(*this), ::PlaySoundW) {}

ProcessObjects& TheProcess() { return processObjects; }
