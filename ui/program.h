#pragma once

// What the program's windows work on. The entry point makes one and every window gets it; tests make their own with other stores.

#include <windows.h>

#include <atomic>

#include "core/monitor_engine.h"
#include "core/recent_alerts.h"
#include "storage/rule_store.h"
#include "storage/settings.h"
#include "ui/single_window.h"
#include "update/update_state.h"

struct Program {
  HINSTANCE instance;
  MonitorEngine& engine;
  RuleStore& rules;
  SettingsStore& settings;
  RecentAlerts& recentAlerts;
  UpdateState& updates;
  std::atomic<HWND> trayWindow{nullptr};  ///< set by start-up; every message to the program as a whole goes there
  SingleWindow MainDialogHandle{};        ///< the main window, kept by that window itself
};
