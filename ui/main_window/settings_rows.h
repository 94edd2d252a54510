#pragma once

// The settings that both the menu bar and the Settings page show, a row each.

#include <windows.h>

#include <cstdint>

#include "core/records.h"
#include "res/resource.h"
#include "storage/settings.h"

struct AlertActionRow {
  std::uint32_t action;
  WORD menuItem;
  WORD checkBox;
};

inline constexpr AlertActionRow kAlertActionRows[] = {
    {ACTION_NOTIFY, IDM_NOTIFY, IDC_NOTIFY},
    {ACTION_LOG, IDM_LOG, IDC_LOG},
    {ACTION_SOUND, IDM_SOUND, IDC_SOUND},
};

struct UpdateIntervalRow {
  std::uint32_t hours;
  WORD menuItem;
};

/// Rising; one for each of kUpdateCheckIntervals.
inline constexpr UpdateIntervalRow kUpdateIntervalRows[] = {
    {kUpdateCheckIntervals[0], IDM_UPDATE_DAILY},
    {kUpdateCheckIntervals[1], IDM_UPDATE_3_DAYS},
    {kUpdateCheckIntervals[2], IDM_UPDATE_WEEKLY},
};
