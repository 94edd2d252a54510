#include "core/alert_delivery.h"

#include <algorithm>

#include "core/balloon_text.h"

namespace {

constexpr std::uint32_t kMsPerSecond = 1000;

/// The actions of the first rule with the id, which may be gone since the alert was raised.
std::uint32_t ActionsFor(const RuleList& rules, std::uint32_t ruleId, std::uint32_t otherwise) {
  const auto rule = std::ranges::find(rules, ruleId, &ThresholdRule::ruleId);
  return rule == rules.end() ? otherwise : rule->alertActions;
}

}  // namespace

AlertDelivery::AlertDelivery(RecentAlerts& recentAlerts, const RuleSource& rules, Clock& clock, AlertOutputs& outputs)
    : recentAlerts_(recentAlerts), rules_(rules), clock_(clock), outputs_(outputs) {}

void AlertDelivery::DeliverAlert(const AlertRecord& record) {
  recentAlerts_.Append(record);
  const AlertDeliverySettings settings = outputs_.Settings();
  const std::uint32_t actions = ActionsFor(*rules_.Snapshot(), record.ruleId, settings.alertActions);
  if ((actions & ACTION_NOTIFY) != 0) Notify(record, settings.notificationThrottleSec);
  if ((actions & ACTION_LOG) != 0 && !settings.logFilePath.empty()) outputs_.AppendToLog(settings.logFilePath, record);
  if ((actions & ACTION_SOUND) != 0 && !settings.soundFilePath.empty()) outputs_.PlaySoundFile(settings.soundFilePath);
}

void AlertDelivery::Notify(const AlertRecord& record, std::uint32_t throttleSec) {
  // Text that already fills a balloon makes further lines pointless: they only count.
  if (pendingLines_.size() <= kBalloonTextUnits) {
    if (pendingCount_ != 0) pendingLines_ += L'\n';
    pendingLines_ += AlertLine(record);
  }
  ++pendingCount_;

  const std::uint32_t now = clock_.Tick32Ms();
  if (now - lastBalloonTick_ < throttleSec * kMsPerSecond) return;
  lastBalloonTick_ = now;
  const Balloon balloon = pendingCount_ == 1 ? SingleAlertBalloon(record) : MergedAlertsBalloon(pendingCount_, pendingLines_);
  pendingCount_ = 0;
  pendingLines_ = {};
  outputs_.ShowBalloon(balloon.title, balloon.text);
}
