#include "ui/main_window/main_window.h"

#include "platform/diagnostics.h"
#include "platform/handles.h"
#include "platform/out_of_memory.h"
#include "res/messages.h"
#include "res/resource.h"
#include "storage/settings_registry.h"
#include "ui/dark/dark_list_view.h"
#include "ui/dark/dark_mode.h"
#include "ui/framework/accessible_names.h"
#include "ui/framework/commands.h"
#include "ui/framework/resources.h"
#include "ui/main_window/main_window_thread.h"

namespace {

constexpr UINT kRecentAlertsPollMs = 2000;
/// More than any desktop; a stored size beyond it is damage.
constexpr std::int64_t kMaxWindowPx = 32'767;

constexpr std::uint32_t kFollowCorner = ANCHOR_MOVE_RIGHT | ANCHOR_MOVE_DOWN;
constexpr std::uint32_t kFill = ANCHOR_WIDEN | ANCHOR_GROW_TALLER;

constexpr std::uint32_t kBelowRules = ANCHOR_FOLLOW_GIVEN;
constexpr std::uint32_t kRuleButton = ANCHOR_FOLLOW_GIVEN | ANCHOR_SQUEEZE;

// Width goes to the lists and path fields, all height to the pages; what is not listed stays where it is. A window that has to be
// lower than its template shortens the rule list first.
constexpr AnchorRow kAnchors[] = {
    {IDC_RULES_GROUP, ANCHOR_WIDEN | ANCHOR_GIVE_HEIGHT},
    {IDC_RULE_LIST, ANCHOR_WIDEN | ANCHOR_GIVE_HEIGHT},
    {IDC_ADD_RULE, kRuleButton},
    {IDC_EDIT_RULE, kRuleButton},
    {IDC_REMOVE_RULE, kRuleButton},
    {IDC_PRESETS, kRuleButton},
    {IDC_IMPORT_RULES, ANCHOR_MOVE_RIGHT | kRuleButton},
    {IDC_EXPORT_RULES, ANCHOR_MOVE_RIGHT | kRuleButton},
    {IDC_TABS, kFill | kBelowRules},
    {IDC_RECENT_ALERTS, kFill | kBelowRules},
    {IDC_SETTINGS_GROUP, kFill | kBelowRules},
    {IDC_POLL_LABEL, kBelowRules},
    {IDC_POLL_INTERVAL, kBelowRules},
    {IDC_NOTIFY, kBelowRules},
    {IDC_THROTTLE_LABEL, kBelowRules},
    {IDC_THROTTLE, kBelowRules},
    {IDC_LOG, kBelowRules},
    {IDC_LOG_PATH, ANCHOR_WIDEN | kBelowRules},
    {IDC_LOG_BROWSE, ANCHOR_MOVE_RIGHT | kBelowRules},
    {IDC_SOUND, kBelowRules},
    {IDC_SOUND_PATH, ANCHOR_WIDEN | kBelowRules},
    {IDC_SOUND_BROWSE, ANCHOR_MOVE_RIGHT | kBelowRules},
    {IDC_APPLY, ANCHOR_MOVE_RIGHT | kBelowRules},
    {IDC_VERSION_LINK, ANCHOR_MOVE_DOWN},
    {IDOK, kFollowCorner},
    {IDCANCEL, kFollowCorner},
};

constexpr AccessibleName kNames[] = {
    {IDC_RULE_LIST, L"Rules"},
    {IDC_RECENT_ALERTS, L"Recent alerts"},
    {IDC_LOG_PATH, L"Alert log file"},
    {IDC_LOG_BROWSE, L"Choose the alert log file"},
    {IDC_SOUND_PATH, L"Alert sound file"},
    {IDC_SOUND_BROWSE, L"Choose the alert sound file"},
};

constexpr int kDarkControls[] = {IDC_ADD_RULE,     IDC_EDIT_RULE,     IDC_REMOVE_RULE, IDC_PRESETS,      IDC_IMPORT_RULES,
                                 IDC_EXPORT_RULES, IDC_POLL_INTERVAL, IDC_NOTIFY,      IDC_LOG,          IDC_SOUND,
                                 IDC_LOG_PATH,     IDC_SOUND_PATH,    IDC_APPLY,       IDC_VERSION_LINK, IDOK,
                                 IDCANCEL};

}  // namespace

struct MainDialog::Tables {
  static constexpr CommandRow<MainDialog> kCommands[] = {
      {IDOK, [](MainDialog& window) { window.Close(IDOK); }},
      {IDCANCEL, [](MainDialog& window) { window.Close(IDCANCEL); }},
      {IDM_CLOSE, [](MainDialog& window) { window.Close(IDCANCEL); }},
      {IDM_EXIT, [](MainDialog& window) { window.OnExit(); }},
      {IDM_CLEAR_LOG, [](MainDialog& window) { window.recentAlerts_.Clear(); }},
  };

  /// One control's notification and what it does.
  struct NotifyRow {
    UINT_PTR controlId;
    UINT code;
    void (*run)(MainDialog& window);
  };
  static constexpr NotifyRow kNotifications[] = {
      {IDC_TABS, TCN_SELCHANGE, [](MainDialog& window) { window.tabs_.OnSelectionChange(); }},
      {IDC_RECENT_ALERTS, NM_RCLICK, [](MainDialog& window) { window.recentAlerts_.ShowContextMenu(); }},
      {IDC_VERSION_LINK, NM_CLICK, [](MainDialog& window) { window.versionLink_.OnClick(); }},
      {IDC_VERSION_LINK, NM_RETURN, [](MainDialog& window) { window.versionLink_.OnClick(); }},
  };
};

MainDialog::MainDialog(Program& program)
    : Dialog(program.instance, IDD_MAIN),
      program_(program),
      rules_(program),
      recentAlerts_(program),
      settingsPage_(program),
      settingsMenu_(program, *this, settingsPage_),
      versionLink_(program) {}

bool MainDialog::OnInitDialog() {
  program_.MainDialogHandle.Opened(Window());
  SetAccessibleNames(Window(), kNames);
  AttachMenu();
  PlaceGrip();
  rules_.OnInitDialog(Window());
  settingsPage_.OnInitDialog(Window());
  recentAlerts_.OnInitDialog(Window());
  StartRecentAlerts();
  tabs_.OnInitDialog(Window());
  ApplyDarkColours();
  StartLayout(kAnchors, ::GetMenu(Window()) != nullptr ? ::GetSystemMetrics(SM_CYMENU) : 0, true);
  // After the anchors are known: the size that comes back lays the controls out.
  RestorePlacement();
  FitWorkArea();
  versionLink_.OnInitDialog(Window());
  shortcuts_.Install(Window());
  ::BringWindowToTop(Window());
  ::SetForegroundWindow(Window());
  return true;
}

void MainDialog::AttachMenu() const {
  UniqueMenu menu(::LoadMenuW(Instance(), MAKEINTRESOURCEW(IDR_MAIN_MENU)));
  if (menu && ::SetMenu(Window(), menu.get())) (void)menu.release();  // the window's from now on
}

void MainDialog::PlaceGrip() const {
  // The menu bar has taken its height from the window, so that the grip's place in the template lies below the edge.
  RECT client{};
  RECT grip{};
  ::GetClientRect(Window(), &client);
  ::GetClientRect(Item(IDC_MAIN_GRIP), &grip);
  ::SetWindowPos(Item(IDC_MAIN_GRIP), nullptr, client.right - grip.right, client.bottom - grip.bottom, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER);
}

void MainDialog::StartRecentAlerts() const {
  ::SetTimer(Window(), IDT_RECENT_ALERTS, kRecentAlertsPollMs, nullptr);
  ::PostMessageW(Window(), WM_TIMER, IDT_RECENT_ALERTS, 0);
}

void MainDialog::ApplyDarkColours() {
  if (!DarkModeAvailable()) return;
  ApplyDarkMode(kDarkControls, DarkMenuBar::kDraw);
  for (const int list : {IDC_RULE_LIST, IDC_RECENT_ALERTS}) {
    if (HWND window = Item(list)) ApplyDarkModeToListView(window);
  }
  tabs_.ApplyDarkMode();
  // The system has no dark size grip.
  if (DarkModeOn()) ShowItem(IDC_MAIN_GRIP, false);
}

void MainDialog::RestorePlacement() const {
  const WindowPlacement placement = program_.settings.Get().mainDialogPlacement;
  if (!placement.HasSize()) return;
  const std::int64_t width = std::int64_t{placement.right} - placement.left;
  const std::int64_t height = std::int64_t{placement.bottom} - placement.top;
  if (width > kMaxWindowPx || height > kMaxWindowPx) return;
  const POINT centre = {static_cast<LONG>((std::int64_t{placement.left} + placement.right) / 2),
                        static_cast<LONG>((std::int64_t{placement.top} + placement.bottom) / 2)};
  if (::MonitorFromPoint(centre, MONITOR_DEFAULTTONULL) == nullptr) return;
  ::SetWindowPos(Window(), nullptr, placement.left, placement.top, static_cast<int>(width), static_cast<int>(height),
                 SWP_NOZORDER);
}

void MainDialog::StorePlacement() const {
  RECT rect{};
  if (!::GetWindowRect(Window(), &rect)) return;
  program_.settings.Update([&rect](AppSettings& settings) {
    settings.mainDialogPlacement = {rect.left, rect.top, rect.right, rect.bottom};
  });
}

void MainDialog::EndMainWindow(INT_PTR result) {
  End(result);
  program_.MainDialogHandle.Closed(Window());
}

void MainDialog::Close(INT_PTR result) {
  ::KillTimer(Window(), IDT_RECENT_ALERTS);
  StorePlacement();
  if (result == IDOK) SaveSettings(program_.settings, program_.engine);
  EndMainWindow(result);
}

void MainDialog::OnExit() {
  EndMainWindow(IDCANCEL);
  if (HWND tray = program_.trayWindow) ::PostMessageW(tray, UWM_TERMINATE, 0, 0);
}

bool MainDialog::OnCommand(WORD id, WORD notification) {
  return settingsPage_.OnCommand(id, notification) || RunCommand<MainDialog>(*this, Tables::kCommands, id) ||
         rules_.OnCommand(id) || settingsMenu_.OnCommand(id);
}

INT_PTR MainDialog::OnNotify(const NMHDR& header) {
  for (const Tables::NotifyRow& row : Tables::kNotifications) {
    if (row.controlId != header.idFrom || row.code != header.code) continue;
    row.run(*this);
    return TRUE;
  }
  return rules_.OnNotify(header);
}

void MainDialog::OnTimer(UINT_PTR timerId) {
  if (timerId == IDT_RECENT_ALERTS) recentAlerts_.Refresh();
}

std::optional<INT_PTR> MainDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SIZE:
      PlaceGrip();
      recentAlerts_.FitColumns();
      return std::nullopt;
    case WM_DRAWITEM:
      return tabs_.OnDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_ERASEBKGND:
      if (!tabs_.OnEraseBackground(reinterpret_cast<HDC>(wParam))) return std::nullopt;
      return Reply(TRUE);
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
      return reinterpret_cast<INT_PTR>(tabs_.OnControlColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam)));
    case WM_CONTEXTMENU:
      // From the keyboard; a right click has its own notification.
      if (lParam != -1 || reinterpret_cast<HWND>(wParam) != Item(IDC_RECENT_ALERTS)) return std::nullopt;
      recentAlerts_.ShowContextMenuByKeyboard();
      return TRUE;
    case WM_INITMENUPOPUP:
      settingsMenu_.OnInitMenuPopup(reinterpret_cast<HMENU>(wParam));
      return TRUE;
    case UWM_UPDATE_AVAILABLE:
      versionLink_.Refresh();
      return TRUE;
    case UWM_END_INPLACE_EDIT:
      rules_.EndInPlaceEdit(wParam != 0);
      return TRUE;
    default:
      return std::nullopt;
  }
}

void MainDialog::OnDestroy() {
  ClearAccessibleNames(Window(), kNames);
  shortcuts_.Remove(Window());
  program_.MainDialogHandle.Closed(Window());
}

void MainDialogThread(Program& program) {
  if (!program.MainDialogHandle.Claim()) return;
  DebugLog(L"MainDialogThread");
  const auto run = [&] { return MainDialog(program).RunModal(nullptr); };
  if (UnlessOutOfMemory(L"MainDialogThread", INT_PTR{-1}, run) == -1) program.MainDialogHandle.GiveUp();
}
