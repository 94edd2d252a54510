#pragma once

// A program of a test's own for the windows under test: its rules and files in a throwaway folder, an engine over a made-up
// process table, no tray window. Settings that are saved go to the registry of the test's prefix.

#include <windows.h>

#include <memory>

#include "platform/clock.h"
#include "tests/support/simulated_process_table.h"
#include "tests/support/throwaway_folder.h"
#include "ui/program.h"

struct TestProgram {
  ThrowawayFolder folder;
  std::shared_ptr<SimulatedProcessTable> processes = std::make_shared<SimulatedProcessTable>();
  MonitorEngine engine{processes, SystemClock(), 1};
  RuleStore rules{[this] { return folder.Path(L"rules.csv"); }};
  SettingsStore settings;
  RecentAlerts recentAlerts;
  UpdateState updates;
  Program program{::GetModuleHandleW(nullptr), engine, rules, settings, recentAlerts, updates};
};
