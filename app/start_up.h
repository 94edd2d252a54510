#pragma once

// The road from a fresh process to a running program: hand-over to a running instance, the loading order, the tray window, the
// engine, the first window.

#include "app/process_objects.h"
#include "app/running_instance.h"

/// Main thread. False: there is nothing to run, because an instance that runs already has taken over or the tray window could not
/// be created; the process is then to exit with 0. With `startInTray` the main window stays closed.
[[nodiscard]] bool InitInstance(ProcessObjects& objects, const InstanceName& name, bool startInTray);
