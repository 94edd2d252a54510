#include "app/tray_window.h"

#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/out_of_memory.h"
#include "platform/thread.h"
#include "res/messages.h"
#include "res/resource.h"
#include "storage/data_folder.h"
#include "storage/settings_registry.h"

namespace {

constexpr int kMaxAddIconRetries = 20;
constexpr UINT kAddIconRetryPeriodMs = 250;

}  // namespace

TrayWindow::TrayWindow(Program& program, GUIAlertSink& sink, TrayRoutines routines, PlaySoundFunction playSound)
    : program_(program),
      sink_(sink),
      routines_(std::move(routines)),
      icon_(program.instance),
      updates_(program, icon_, routines_.checkForUpdates, routines_.installUpdate),
      alertOutputs_(icon_, program.settings, playSound),
      alertDelivery_(program.recentAlerts, program.rules, SystemClock(), alertOutputs_) {}

bool TrayWindow::RegisterWindowClass(HINSTANCE instance, const std::wstring& windowClass) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof(description);
  description.style = CS_HREDRAW | CS_VREDRAW;
  description.lpfnWndProc = &TrayWindow::TrayWndProc;
  description.hInstance = instance;
  description.hIcon = ::LoadIconW(instance, MAKEINTRESOURCEW(IDI_VANTORA));
  description.hIconSm = ::LoadIconW(instance, MAKEINTRESOURCEW(IDI_VANTORA_SMALL));
  description.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
  description.hbrBackground = ::GetSysColorBrush(COLOR_WINDOW);
  description.lpszMenuName = MAKEINTRESOURCEW(IDR_TRAY_MENU);
  description.lpszClassName = windowClass.c_str();
  return ::RegisterClassExW(&description) != 0;
}

HWND TrayWindow::Create(const InstanceName& name) {
  return ::CreateWindowExW(0, name.windowClass.c_str(), name.title.c_str(), WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, 0, CW_USEDEFAULT,
                           0, nullptr, nullptr, program_.instance, this);
}

LRESULT CALLBACK TrayWindow::TrayWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  auto* self = reinterpret_cast<TrayWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_NCCREATE) {
    // Any program can send it again: what it then points at is none of ours, nor fit for the system.
    if (self != nullptr) return FALSE;
    auto* created = static_cast<TrayWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
    created->window_ = window;
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    self = created;
  }
  if (self == nullptr) return ::DefWindowProcW(window, message, wParam, lParam);
  const LRESULT failed = message == WM_CREATE ? -1 : 0;
  return UnlessOutOfMemory(L"TrayWindow", failed, [&] { return self->Handle(message, wParam, lParam); });
}

const TrayWindow::MessageRow TrayWindow::kMessages[] = {
    {WM_CREATE, [](TrayWindow& tray, WPARAM, LPARAM) { tray.OnCreate(); }},
    {WM_DESTROY, [](TrayWindow& tray, WPARAM, LPARAM) { tray.OnDestroy(); }},
    {WM_TIMER, [](TrayWindow& tray, WPARAM timerId, LPARAM) { tray.OnTimer(timerId); }},
    {UWM_TRAYICON, [](TrayWindow& tray, WPARAM, LPARAM notification) { tray.OnTrayIcon(notification); }},
    {UWM_TERMINATE, [](TrayWindow& tray, WPARAM, LPARAM) { ::DestroyWindow(tray.window_); }},
    {UWM_ADD_ICON, [](TrayWindow& tray, WPARAM, LPARAM) { tray.OnAddIcon(); }},
    {UWM_ALERT, [](TrayWindow& tray, WPARAM, LPARAM address) { tray.OnAlert(address); }},
    {UWM_SHOW_POST_UPDATE_NOTIFICATION, [](TrayWindow& tray, WPARAM, LPARAM) { tray.updates_.ShowPostUpdateBalloon(); }},
    {UWM_SHOW_UPDATE_AVAILABLE_NOTIFICATION,
     [](TrayWindow& tray, WPARAM, LPARAM) { tray.updates_.ShowUpdateAvailableBalloon(); }},
    {UWM_CHECK_FOR_UPDATES, [](TrayWindow& tray, WPARAM manual, LPARAM) { tray.updates_.RequestCheck(manual != 0); }},
    {UWM_UPDATE_INTERVAL_CHANGED, [](TrayWindow& tray, WPARAM, LPARAM) { tray.updates_.ArmCheckTimer(); }},
};

LRESULT TrayWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  for (const MessageRow& row : kMessages) {
    if (row.message == message) {
      row.handle(*this, wParam, lParam);
      return 0;
    }
  }
  if (message == taskbarCreated_ && taskbarCreated_ != 0) {
    // Explorer has started anew and knows nothing of the icon.
    ::PostMessageW(window_, UWM_ADD_ICON, 0, 0);
    return 0;
  }
  return ::DefWindowProcW(window_, message, wParam, lParam);
}

void TrayWindow::OnCreate() {
  if (program_.trayWindow == window_) return;  // sent by a stranger
  program_.trayWindow = window_;
  sink_.SetTarget(window_);
  icon_.Attach(window_);
  taskbarCreated_ = ::RegisterWindowMessageW(L"TaskbarCreated");
  // When elevated, the shell's broadcast would otherwise not get through.
  ::ChangeWindowMessageFilterEx(window_, taskbarCreated_, MSGFLT_ALLOW, nullptr);
  menu_.Load(program_.instance);
  updates_.OnCreate(window_);
}

void TrayWindow::OnDestroy() {
  // An open menu runs a message loop of its own.
  ::EndMenu();
  program_.engine.Stop();
  SaveSettings(program_.settings, program_.engine);
  program_.rules.SaveAndClose(GetRulesFilePath());
  icon_.Remove();
  updates_.OnDestroy();
  sink_.SetTarget(nullptr);
  ::PostQuitMessage(0);
}

void TrayWindow::OnTimer(WPARAM timerId) {
  switch (timerId) {
    case IDT_UPDATE_POLL:
      return updates_.PollCheck();
    case IDT_UPDATE_CHECK:
      return updates_.PostAutomaticCheck();
    case IDT_ADD_ICON_RETRY:
      ::KillTimer(window_, IDT_ADD_ICON_RETRY);
      ::PostMessageW(window_, UWM_ADD_ICON, 0, 0);
      return;
    default:
      return;
  }
}

void TrayWindow::OnTrayIcon(LPARAM notification) {
  switch (notification) {
    case WM_LBUTTONUP:
      StartDetachedThread(routines_.runMainWindow);
      return;
    case WM_RBUTTONUP:
      return ShowMenu();
    case NIN_BALLOONHIDE:
    case NIN_BALLOONTIMEOUT:
      return updates_.OnBalloonClosed();
    case NIN_BALLOONUSERCLICK:
      return OnBalloonClicked();
    default:
      return;
  }
}

void TrayWindow::OnBalloonClicked() {
  if (!updates_.OnBalloonClicked()) StartDetachedThread(routines_.runMainWindow);
}

void TrayWindow::OnAddIcon() {
  DebugLog(L"UWM_ADD_ICON");
  if (!icon_.AddOrRefresh() && AddIconRetries_ < kMaxAddIconRetries) {
    ++AddIconRetries_;
    ::SetTimer(window_, IDT_ADD_ICON_RETRY, kAddIconRetryPeriodMs, nullptr);
    return;
  }
  AddIconRetries_ = 0;
  ::KillTimer(window_, IDT_ADD_ICON_RETRY);
}

void TrayWindow::OnAlert(LPARAM address) {
  if (const auto record = sink_.TakeAlert(address)) alertDelivery_.DeliverAlert(*record);
}

void TrayWindow::ShowMenu() {
  const UINT command = menu_.Choose(window_, program_.engine.Paused());
  if (!::IsWindow(window_)) {
    // The end came while the menu was open, and the menu's loop may have swallowed the quit message.
    ::PostQuitMessage(0);
    return;
  }
  switch (command) {
    case IDM_TRAY_OPEN:
      StartDetachedThread(routines_.runMainWindow);
      return;
    case IDM_TRAY_PAUSE:
      return SetPaused(true);
    case IDM_TRAY_RESUME:
      return SetPaused(false);
    case IDM_TRAY_ALERT_LOG:
      StartDetachedThread(routines_.runAlertLog);
      return;
    case IDM_TRAY_EXIT:
      ::DestroyWindow(window_);
      return;
    default:
      return;
  }
}

void TrayWindow::SetPaused(bool paused) {
  program_.engine.SetPaused(paused);
  DebugLog(paused ? L"Monitoring paused" : L"Monitoring resumed");
}
