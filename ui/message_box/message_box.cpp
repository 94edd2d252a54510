#include "ui/message_box/message_box.h"

#include <dwmapi.h>
#include <uxtheme.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/out_of_memory.h"
#include "ui/framework/clipboard_text.h"
#include "ui/framework/dialog.h"
#include "ui/framework/resources.h"
#include "ui/message_box/message_box_model.h"

namespace {

constexpr COLORREF kDarkBoxText = 0xDCDCDC;
constexpr COLORREF kDarkBoxBackground = 0x202020;

UniqueFont CreateMessageFont() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  if (!::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) return nullptr;
  return UniqueFont(::CreateFontIndirectW(&metrics.lfMessageFont));
}

class FontMeasurer : public TextMeasurer {
 public:
  explicit FontMeasurer(HFONT font) : screen_(nullptr, font) {}

  PixelSize MeasureMessage(std::wstring_view text, int maxWidthPx) override {
    return Measure(text, maxWidthPx, DT_WORDBREAK | DT_EXPANDTABS | DT_NOPREFIX);
  }
  int MeasureLabel(std::wstring_view label) override { return Measure(label, 0, DT_SINGLELINE).width; }

 private:
  [[nodiscard]] PixelSize Measure(std::wstring_view text, int maxWidthPx, UINT flags) const {
    RECT rect{0, 0, maxWidthPx, 0};
    ::DrawTextW(screen_.Get(), text.data(), static_cast<int>(text.size()), &rect, flags | DT_CALCRECT);
    return {rect.right, rect.bottom};
  }

  WindowDc screen_;
};

MessageBoxMetrics SystemMetrics() {
  const LONG baseUnits = ::GetDialogBaseUnits();
  MessageBoxMetrics metrics;
  metrics.dialogBaseX = LOWORD(baseUnits);
  metrics.dialogBaseY = HIWORD(baseUnits);
  metrics.screenWidth = ::GetSystemMetrics(SM_CXSCREEN);
  metrics.iconSize = {::GetSystemMetrics(SM_CXICON), ::GetSystemMetrics(SM_CYICON)};
  metrics.dpi = ScaleForDpi(USER_DEFAULT_SCREEN_DPI);
  return metrics;
}

/// The user's choice for applications; no choice means light.
bool UserWantsDark() {
  DWORD light = 1;
  DWORD size = sizeof(light);
  const LSTATUS status = ::RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                                        L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
  return status == ERROR_SUCCESS && light == 0;
}

/// The system's icons are shared and never destroyed.
HICON SystemIcon(MessageBoxIcon icon) {
  switch (icon) {
    case MessageBoxIcon::kHand:
      return ::LoadIconW(nullptr, IDI_HAND);
    case MessageBoxIcon::kQuestion:
      return ::LoadIconW(nullptr, IDI_QUESTION);
    case MessageBoxIcon::kExclamation:
      return ::LoadIconW(nullptr, IDI_EXCLAMATION);
    case MessageBoxIcon::kAsterisk:
      return ::LoadIconW(nullptr, IDI_ASTERISK);
    case MessageBoxIcon::kNone:
      break;
  }
  return nullptr;
}

/// One box from its opening to its end.
class MessageBoxWindow : public Dialog {
 public:
  MessageBoxWindow(MessageBoxContent content, UINT style, bool dark)
      : Dialog(::GetModuleHandleW(nullptr), kNoTemplate),
        content_(std::move(content)),
        style_(style),
        dark_(dark),
        buttons_(ButtonsOfStyle(style)),
        font_(CreateMessageFont()),
        darkBrush_(dark ? ::CreateSolidBrush(kDarkBoxBackground) : nullptr) {}

  int Run(HWND owner) {
    const MessageBoxMetrics metrics = SystemMetrics();
    FontMeasurer measurer(font_.get());
    layout_ = LayOutMessageBox(content_, style_, metrics, measurer);
    const std::vector<std::byte> bytes = MakeMessageBoxTemplate(content_, style_, layout_, metrics).Pack();

    ::MessageBeep(style_ & MB_ICONMASK);
    if (CreateFrom(bytes, owner) == nullptr) return -1;
    const bool disabledOwner = owner != nullptr && !::EnableWindow(owner, FALSE);
    Pump();
    if (disabledOwner) ::EnableWindow(owner, TRUE);
    if (Window() != nullptr) ::DestroyWindow(Window());
    return result_;
  }

 private:
  std::optional<INT_PTR> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    switch (message) {
      case WM_ERASEBKGND:
        OnErase(reinterpret_cast<HDC>(wParam));
        return TRUE;
      case WM_DRAWITEM:
        OnDrawIcon(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
      case WM_CTLCOLORSTATIC:
        return OnStaticColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
      case WM_CTLCOLORBTN:
      case WM_CTLCOLORDLG:
        return dark_ ? DarkColors(reinterpret_cast<HDC>(wParam)) : FALSE;
      default:
        return std::nullopt;
    }
  }

  /// With its owner, without an answer.
  void OnDestroy() override { Finish(IDCANCEL); }

  bool OnInitDialog() override {
    const auto font = reinterpret_cast<WPARAM>(font_.get());
    ::SendDlgItemMessageW(Window(), kMessageBoxTextId, WM_SETFONT, font, FALSE);
    for (const MessageBoxButton& button : buttons_.buttons) {
      ::SendMessageW(Item(button.id), WM_SETFONT, font, FALSE);
      if (dark_) ::SetWindowTheme(Item(button.id), L"Explorer", nullptr);
    }
    const std::size_t place = DefaultButtonOfStyle(style_, buttons_.buttons.size());
    ::SetFocus(Item(buttons_.buttons[place].id));
    if (dark_) {
      constexpr DWORD kImmersiveDarkMode = 20;
      const BOOL on = TRUE;
      ::DwmSetWindowAttribute(Window(), kImmersiveDarkMode, &on, sizeof(on));
    }
    if (buttons_.escapeResult == 0) ::EnableMenuItem(::GetSystemMenu(Window(), FALSE), SC_CLOSE, MF_BYCOMMAND | MF_GRAYED);
    if ((style_ & MB_TOPMOST) != 0) ::SetWindowPos(Window(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    CenterOverOwner();
    // Also without MB_SETFOREGROUND: a box that waits behind other windows is an application that hangs.
    ::SetForegroundWindow(Window());
    return false;  // the focus is on the default button already
  }

  void CenterOverOwner() {
    HWND owner = ::GetWindow(Window(), GW_OWNER);
    RECT over{};
    RECT box{};
    if (owner == nullptr || ::IsIconic(owner) || !::GetWindowRect(owner, &over) || !::GetWindowRect(Window(), &box)) return;
    const int x = over.left + ((over.right - over.left) - (box.right - box.left)) / 2;
    const int y = over.top + ((over.bottom - over.top) - (box.bottom - box.top)) / 2;
    ::SetWindowPos(Window(), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  }

  void OnErase(HDC dc) const {
    RECT client{};
    ::GetClientRect(Window(), &client);
    ::FillRect(dc, &client, dark_ ? darkBrush_.get() : ::GetSysColorBrush(COLOR_3DFACE));
    if (dark_) return;
    client.bottom = layout_.message.bottom;
    ::FillRect(dc, &client, ::GetSysColorBrush(COLOR_WINDOW));
  }

  void OnDrawIcon(const DRAWITEMSTRUCT& draw) const {
    ::FillRect(draw.hDC, &draw.rcItem, dark_ ? darkBrush_.get() : ::GetSysColorBrush(COLOR_WINDOW));
    ::DrawIcon(draw.hDC, 0, 0, SystemIcon(IconOfStyle(style_)));
  }

  INT_PTR OnStaticColor(HDC dc, HWND control) const {
    if (dark_) {
      const INT_PTR brush = DarkColors(dc);
      wchar_t name[32];
      const int length = ::GetClassNameW(control, name, static_cast<int>(std::size(name)));
      if (::CompareStringOrdinal(name, length, WC_BUTTONW, -1, TRUE) == CSTR_EQUAL) ::SetBkMode(dc, TRANSPARENT);
      return brush;
    }
    if (::GetDlgCtrlID(control) != kMessageBoxTextId) return FALSE;
    ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
    ::SetBkColor(dc, ::GetSysColor(COLOR_WINDOW));
    return reinterpret_cast<INT_PTR>(::GetSysColorBrush(COLOR_WINDOW));
  }

  INT_PTR DarkColors(HDC dc) const {
    ::SetTextColor(dc, kDarkBoxText);
    ::SetBkColor(dc, kDarkBoxBackground);
    return reinterpret_cast<INT_PTR>(darkBrush_.get());
  }

  bool OnCommand(WORD id, WORD) override {
    if (id == IDCANCEL) {
      if (buttons_.escapeResult != 0) Finish(buttons_.escapeResult);
      return true;
    }
    for (const MessageBoxButton& button : buttons_.buttons) {
      if (button.id == id) Finish(id);
    }
    return true;
  }

  void Finish(int result) {
    if (ended_) return;
    ended_ = true;
    result_ = result;
    // What ended the box may have been sent from elsewhere, which does not wake the loop.
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_NULL, 0, 0);
  }

  void Pump() {
    MSG message{};
    while (!ended_) {
      if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (!ended_) ::WaitMessage();
        continue;
      }
      if (message.message == WM_QUIT) {
        ::PostQuitMessage(static_cast<int>(message.wParam));
        return;
      }
      if (IsCopyKey(message)) {
        Copy();
      } else if (!::IsDialogMessageW(Window(), &message)) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
      }
    }
  }

  // Without memory as with a clipboard that is not available: nothing is copied and the box stays open.
  void Copy() const {
    (void)DoUnlessOutOfMemory(L"XMessageBox", [this] { WriteClipboardText(Window(), MessageBoxCopyText(content_)); });
  }

  [[nodiscard]] static bool IsCopyKey(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == L'C' && ::GetKeyState(VK_CONTROL) < 0;
  }

  MessageBoxContent content_;
  UINT style_;
  bool dark_;
  const MessageBoxButtons& buttons_;
  UniqueFont font_;
  UniqueBrush darkBrush_;
  MessageBoxLayout layout_;
  bool ended_ = false;
  int result_ = IDCANCEL;
};

std::wstring TextOrResource(const wchar_t* text) {
  return IS_INTRESOURCE(text) ? LoadResString(static_cast<UINT>(reinterpret_cast<UINT_PTR>(text))) : std::wstring(text);
}

MessageBoxContent MakeContent(const wchar_t* text, const wchar_t* caption, UINT style) {
  MessageBoxContent content;
  content.message = TextOrResource(text);
  content.caption = caption != nullptr ? TextOrResource(caption) : L"Error";
  for (const MessageBoxButton& button : ButtonsOfStyle(style).buttons) {
    std::wstring translated = LoadResString(button.label->stringId);
    content.labels.push_back(translated.empty() ? std::wstring(button.label->text) : std::move(translated));
  }
  return content;
}

}  // namespace

int XMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, UINT style) {
  return UnlessOutOfMemory(L"XMessageBox", int{IDCANCEL}, [&] {
    HWND active = owner == nullptr ? ::GetActiveWindow() : nullptr;
    HWND over = active != nullptr ? ::GetLastActivePopup(active) : owner;
    MessageBoxContent content = MakeContent(text, caption, style);
    if ((style & MB_SYSTEMMODAL) != 0 && (style & MB_ICONMASK) == MB_ICONHAND) {
      return ::MessageBoxW(over, content.message.c_str(), content.caption.c_str(), style);
    }
    return MessageBoxWindow(std::move(content), style, UserWantsDark()).Run(over);
  });
}

bool BringMessageBoxForward(const std::wstring& caption) {
  for (HWND box = nullptr; (box = ::FindWindowExW(nullptr, box, WC_DIALOG, caption.c_str())) != nullptr;) {
    DWORD processId = 0;
    ::GetWindowThreadProcessId(box, &processId);
    if (processId == ::GetCurrentProcessId() && ::GetDlgItem(box, kMessageBoxTextId) != nullptr) {
      return ::SetForegroundWindow(box) != FALSE;
    }
  }
  return false;
}
