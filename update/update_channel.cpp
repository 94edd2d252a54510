#include "update/update_channel.h"

std::wstring VersionInfoUrl(bool includeBetas) {
  return UpdateServer() + (includeBetas ? L"/versioninfo/vantora/beta/" : L"/versioninfo/vantora/");
}

std::wstring InstallerUrl(bool includeBetas) {
  return UpdateServer() + (includeBetas ? L"/files/beta/vantorasetup.exe" : L"/files/vantorasetup.exe");
}
