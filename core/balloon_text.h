#pragma once

// The words of an alert balloon, and how much of them the notification area can show.

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/records.h"

inline constexpr std::size_t kBalloonTitleUnits = 63;
inline constexpr std::size_t kBalloonTextUnits = 255;

struct Balloon {
  std::wstring title;
  std::wstring text;

  bool operator==(const Balloon&) const = default;
};

/// The line that stands for one alert among others.
[[nodiscard]] std::wstring AlertLine(const AlertRecord& record);
[[nodiscard]] Balloon SingleAlertBalloon(const AlertRecord& record);
/// `lines` are the alerts' lines, joined by line feeds.
[[nodiscard]] Balloon MergedAlertsBalloon(std::uint64_t alertCount, const std::wstring& lines);

/// The longest beginning of the text that takes at most `units` UTF-16 units and does not end between the halves of a character.
[[nodiscard]] std::wstring CutToUtf16Units(const std::wstring& text, std::size_t units);
