#include "app/tray_icon.h"

#include <algorithm>
#include <string_view>

#include "res/messages.h"
#include "res/resource.h"
#include "ui/framework/resources.h"
#include "update/version.h"

namespace {

constexpr UINT kIconId = 1;
constexpr UINT kBalloonTimeoutMs = 10'000;

template <std::size_t kSize>
void CopyText(wchar_t (&field)[kSize], std::wstring_view text) {
  std::size_t length = std::min(text.size(), kSize - 1);
  std::copy_n(text.data(), length, field);
  field[length] = L'\0';
}

}  // namespace

NOTIFYICONDATAW TrayIcon::Data(UINT flags) const {
  NOTIFYICONDATAW data{};
  data.cbSize = sizeof(data);
  data.hWnd = window_;
  data.uID = kIconId;
  data.uFlags = flags;
  return data;
}

bool TrayIcon::AddOrRefresh() {
  UniqueIcon image(
      static_cast<HICON>(::LoadImageW(instance_, MAKEINTRESOURCEW(IDI_VANTORA), IMAGE_ICON, ::GetSystemMetrics(SM_CXSMICON),
                                      ::GetSystemMetrics(SM_CYSMICON), LR_DEFAULTCOLOR)));
  NOTIFYICONDATAW data = Data(NIF_MESSAGE | NIF_ICON | NIF_TIP);
  data.uCallbackMessage = UWM_TRAYICON;
  data.hIcon = image.get();
  CopyText(data.szTip, LoadResString(IDS_TOOLTIP) + AppVersionDisplay);

  bool shown = ::Shell_NotifyIconW(NIM_MODIFY, &data) != FALSE;
  if (!shown) {
    ::Shell_NotifyIconW(NIM_DELETE, &data);
    shown = ::Shell_NotifyIconW(NIM_ADD, &data) != FALSE;
  }
  image_ = std::move(image);
  return shown;
}

void TrayIcon::ShowBalloon(const std::wstring& title, const std::wstring& text) {
  NOTIFYICONDATAW data = Data(NIF_INFO);
  data.dwInfoFlags = NIIF_NONE;
  data.uTimeout = kBalloonTimeoutMs;
  CopyText(data.szInfoTitle, title);
  CopyText(data.szInfo, text);
  ::Shell_NotifyIconW(NIM_MODIFY, &data);
}

void TrayIcon::Remove() {
  NOTIFYICONDATAW data = Data(0);
  ::Shell_NotifyIconW(NIM_DELETE, &data);
}
