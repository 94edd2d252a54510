#include "ui/dialogs/update_installation.h"

#include <windows.h>

#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"
#include "update/update_install.h"

void UpdateInstallThread(Program& program) {
  if (!program.updates.BeginInstallation()) return;
  if (DownloadAndInstallUpdate(program.settings)) {
    // The installation is still under way: its flag stays set, so that nothing starts another while the program ends.
    ::PostMessageW(program.trayWindow, UWM_TERMINATE, 0, 0);
    return;
  }
  program.updates.EndInstallation();
  XMessageBox(nullptr, LoadResString(IDS_UPDATE_FAILED).c_str(), LoadResString(IDS_UPDATE_ERROR_TITLE).c_str(),
              MB_ICONERROR | MB_SETFOREGROUND);
}
