#include "ui/main_window/menu_marks.h"

#include "res/resource.h"
#include "ui/main_window/settings_rows.h"

namespace {

/// What a fact about the program does to an item.
struct MarkRow {
  WORD id;
  bool (*holds)(const SettingsMenuFacts& facts);
};

constexpr MarkRow kChecked[] = {
    {IDM_START_WITH_WINDOWS, [](const SettingsMenuFacts& facts) { return facts.startsWithWindows; }},
    {IDM_INCLUDE_BETAS, [](const SettingsMenuFacts& facts) { return facts.settings.includeBetas; }},
};

constexpr MarkRow kGreyed[] = {
    {IDM_PAUSE, [](const SettingsMenuFacts& facts) { return facts.paused; }},
    {IDM_RESUME, [](const SettingsMenuFacts& facts) { return !facts.paused; }},
    {IDM_RUN_AS_ADMIN, [](const SettingsMenuFacts& facts) { return facts.elevated; }},
};

UINT UpdateIntervalItem(std::uint32_t hours) {
  for (const UpdateIntervalRow& row : kUpdateIntervalRows) {
    if (hours <= row.hours) return row.menuItem;
  }
  return IDM_UPDATE_WEEKLY;
}

void Check(HMENU popup, UINT id, bool checked) {
  ::CheckMenuItem(popup, id, MF_BYCOMMAND | static_cast<UINT>(checked ? MF_CHECKED : MF_UNCHECKED));
}

}  // namespace

void ShowMenuState(HMENU popup, const SettingsMenuFacts& facts) {
  for (const AlertActionRow& row : kAlertActionRows) Check(popup, row.menuItem, (facts.settings.alertActions & row.action) != 0);
  for (const MarkRow& row : kChecked) Check(popup, row.id, row.holds(facts));
  for (const MarkRow& row : kGreyed) {
    ::EnableMenuItem(popup, row.id, MF_BYCOMMAND | static_cast<UINT>(row.holds(facts) ? MF_GRAYED : MF_ENABLED));
  }
  ::CheckMenuRadioItem(popup, IDM_UPDATE_DAILY, IDM_UPDATE_WEEKLY, UpdateIntervalItem(facts.settings.updateCheckIntervalHours),
                       MF_BYCOMMAND);
}

void ShowAdminTaskMark(HMENU popup, bool installed) { Check(popup, IDM_ADMIN_AT_LOGIN, installed); }

HWND FindPopupWindow(HMENU popup) {
  constexpr wchar_t kMenuClass[] = L"#32768";
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, kMenuClass, nullptr)) != nullptr) {
    if (::GetWindowThreadProcessId(window, nullptr) != ::GetCurrentThreadId()) continue;
    if (::SendMessageW(window, MN_GETHMENU, 0, 0) == reinterpret_cast<LRESULT>(popup)) return window;
  }
  return nullptr;
}
