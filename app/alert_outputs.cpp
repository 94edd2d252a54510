#include "app/alert_outputs.h"

#include <mmsystem.h>

#include "storage/alert_log.h"

AlertDeliverySettings TrayAlertOutputs::Settings() {
  AppSettings settings = settings_.Get();
  return {settings.alertActions, settings.notificationThrottleSec, std::move(settings.logFilePath),
          std::move(settings.soundFilePath)};
}

void TrayAlertOutputs::ShowBalloon(const std::wstring& title, const std::wstring& text) { icon_.ShowBalloon(title, text); }

void TrayAlertOutputs::AppendToLog(const std::wstring& path, const AlertRecord& record) { AppendAlertLog(path, record); }

void TrayAlertOutputs::PlaySoundFile(const std::wstring& path) { playSound_(path.c_str(), nullptr, SND_FILENAME | SND_ASYNC); }
