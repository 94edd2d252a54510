#include <windows.h>

#include <exception>
#include <vector>

#include "autostart/elevation.h"
#include "platform/diagnostics.h"
#include "platform/text_format.h"
#include "update/download.h"
#include "update/http_client_windows.h"
#include "update/installer_folder.h"
#include "update/update_channel.h"
#include "update/update_install.h"
#include "update/update_values.h"

namespace {

constexpr wchar_t kFolderName[] = L"Vantora";
constexpr wchar_t kFileName[] = L"vantorasetup.exe";
constexpr DWORD kTempPathChars = 4096;

/// Says which step failed; true when the file holds the download and is held itself.
bool CreateInstallerFile(InstallerFile& file, const std::string& bytes, bool protect, InstallerFile::WriteCall write) {
  switch (file.Create(bytes, protect, write)) {
    case InstallerFileResult::kReady:
      return true;
    case InstallerFileResult::kCannotCreate:
      DebugLog(L"ERROR creating file");
      break;
    case InstallerFileResult::kCannotWrite:
      DebugLog(L"ERROR writing file");
      break;
    case InstallerFileResult::kChanged:
      DebugLog(L"ERROR: file was changed while it was written: %ls", file.Path().c_str());
      break;
  }
  return false;
}

bool IsSignatureAccepted(const InstallationSteps& steps, const std::wstring& path) {
  const LONG verdict = steps.verify(path);
  if (verdict == 0) return true;
  DebugLog(L"WinVerifyTrust failed with 0x%08X for %ls", static_cast<unsigned>(verdict), path.c_str());
  DebugLog(L"ERROR: digital signature verification failed for %ls", path.c_str());
  return false;
}

bool Launch(const InstallationSteps& steps, const std::wstring& path) {
  DebugLog(L"Launching installer: %ls", path.c_str());
  // Before the launch: the installer may end this program and start the next one at any moment.
  SetUpdateFinished(true);
  const LaunchResult result = steps.launch(path);
  if (result.accepted && result.hasProcess) return true;
  DebugLog(L"ERROR Launching %ls", path.c_str());
  SetUpdateFinished(false);
  return result.accepted;
}

/// From the bytes in memory to the running installer.
bool InstallFrom(const InstallationSteps& steps, const std::wstring& folderPath, const std::string& bytes) {
  const bool protect = steps.isElevated();
  InstallerFolder folder;
  if (!folder.Hold(folderPath, protect)) {
    DebugLog(L"ERROR creating file");
    return false;
  }
  folder.Empty();

  InstallerFile file(FormatText(L"%ls\\%ls", folderPath.c_str(), kFileName));
  bool launched = CreateInstallerFile(file, bytes, protect, steps.write) && IsSignatureAccepted(steps, file.Path());
  if (launched && !folder.HoldsOnly(kFileName)) {
    DebugLog(L"ERROR: unexpected files beside %ls", file.Path().c_str());
    launched = false;
  }
  launched = launched && Launch(steps, file.Path());
  if (launched) {
    file.Keep();
    folder.KeepProtected();
  }
  return launched;
}

bool DownloadWithSystem(const std::wstring& url, std::string& body) {
  WinInetClient http;
  return DownloadFile(http, url, body);
}

}  // namespace

InstallationSteps SystemInstallationSteps() {
  return {DownloadWithSystem, ::WriteFile, VerifyInstallerSignature,
          [](const std::wstring& path) { return LaunchInstaller(path, IsProcessElevated()); }, IsProcessElevated};
}

std::wstring InstallerFolderPath() {
  std::vector<wchar_t> buffer(kTempPathChars);
  const DWORD length = ::GetTempPathW(kTempPathChars, buffer.data());
  if (length == 0 || length >= kTempPathChars) return {};
  std::wstring path(buffer.data(), length);
  if (path.back() == L'\\') path.pop_back();
  return FormatText(L"%ls\\%ls", path.c_str(), kFolderName);
}

bool DownloadAndInstallUpdate(const InstallationSteps& steps, bool includeBetas) {
  try {
    const std::wstring folder = InstallerFolderPath();
    ::CreateDirectoryW(folder.c_str(), nullptr);
    DebugLog(L"Download save path: %ls\\%ls", folder.c_str(), kFileName);
    std::string bytes;
    if (!steps.download(InstallerUrl(includeBetas), bytes) || bytes.empty()) {
      DebugLog(L"ERROR downloading file");
      return false;
    }
    return InstallFrom(steps, folder, bytes);
  } catch (const std::exception&) {
    return false;  // no memory
  }
}

bool DownloadAndInstallUpdate(const SettingsStore& settings) {
  return DownloadAndInstallUpdate(SystemInstallationSteps(), settings.Get().includeBetas);
}
