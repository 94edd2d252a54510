#include "ui/dialogs/update_installation.h"

#include <windows.h>

#include "platform/out_of_memory.h"
#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box.h"
#include "update/update_install.h"

namespace {

/// True when the program is to end for the installer.
bool Install(Program& program) {
  if (DownloadAndInstallUpdate(program.settings)) return true;
  XMessageBox(nullptr, LoadResString(IDS_UPDATE_FAILED).c_str(), LoadResString(IDS_UPDATE_ERROR_TITLE).c_str(),
              MB_ICONERROR | MB_SETFOREGROUND);
  return false;
}

}  // namespace

void UpdateInstallThread(Program& program) {
  if (!program.updates.BeginInstallation()) {
    BringMessageBoxForward(LoadResString(IDS_UPDATE_ERROR_TITLE));
    return;
  }
  const bool installing = UnlessOutOfMemory(L"UpdateInstallThread", false, [&] { return Install(program); });
  if (installing) {
    // The installation is still under way: its flag stays set, so that nothing starts another while the program ends.
    ::PostMessageW(program.trayWindow, UWM_TERMINATE, 0, 0);
  } else {
    program.updates.EndInstallation();
  }
}
