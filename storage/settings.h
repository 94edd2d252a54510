#pragma once

// The global settings as a value, and the holder through which threads read and change them: copied out and replaced under a
// mutex, so that no reader ever sees a half-changed path. The poll interval and the exclusions live in the monitor engine.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "core/records.h"

/// Screen coordinates, pixels; all 0: none recorded.
struct WindowPlacement {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  [[nodiscard]] bool HasSize() const { return std::int64_t{right} - left > 0 && std::int64_t{bottom} - top > 0; }
  bool operator==(const WindowPlacement&) const = default;
};

/// Hours between two looks for a newer version.
inline constexpr std::uint32_t kUpdateCheckIntervals[] = {24, 72, 168};

struct AppSettings {
  std::uint32_t alertActions = ACTION_NOTIFY | ACTION_LOG;
  std::uint32_t notificationThrottleSec = 30;
  std::uint32_t updateCheckIntervalHours = kUpdateCheckIntervals[0];  ///< one of kUpdateCheckIntervals
  bool includeBetas = true;
  std::wstring logFilePath;    ///< at most 259 characters; empty: no alert log
  std::wstring soundFilePath;  ///< at most 259 characters; empty: no sound
  WindowPlacement mainDialogPlacement;

  bool operator==(const AppSettings&) const = default;
};

inline constexpr std::uint32_t kMinPollIntervalSec = 1;
inline constexpr std::uint32_t kMaxPollIntervalSec = 86'400;
inline constexpr std::uint32_t kMinThrottleSec = 1;
inline constexpr std::uint32_t kMaxThrottleSec = 3'600;
inline constexpr std::size_t kMaxPathChars = 259;

/// Any thread.
class SettingsStore {
 public:
  [[nodiscard]] AppSettings Get() const {
    std::lock_guard lock(mutex_);
    return settings_;
  }
  /// `change` runs under the lock: it must only assign.
  void Update(const std::function<void(AppSettings&)>& change) {
    std::lock_guard lock(mutex_);
    change(settings_);
  }

 private:
  mutable std::mutex mutex_;
  AppSettings settings_;
};
