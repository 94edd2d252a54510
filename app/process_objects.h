#pragma once

// The process-wide objects: everything that lives from before the entry point to the process's end. They are never destroyed:
// when the program ends, windows and update threads may still be using them.

#include "app/gui_alert_sink.h"
#include "app/tray_window.h"
#include "core/monitor_engine.h"
#include "core/recent_alerts.h"
#include "storage/rule_store.h"
#include "storage/settings.h"
#include "ui/program.h"
#include "update/update_state.h"

struct ProcessObjects {
  ProcessObjects();

  MonitorEngine engine;
  GUIAlertSink sink;
  RuleStore rules;
  SettingsStore settings;
  RecentAlerts recentAlerts;
  UpdateState updates;
  Program program;
  TrayWindow tray;
};

/// The one set of them.
ProcessObjects& TheProcess();
