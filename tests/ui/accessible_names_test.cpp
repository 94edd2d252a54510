// What screen readers say of controls that no text on the screen names.

#include <initguid.h>
#include <oleacc.h>

#include "platform/com_apartment.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/main_window_fixture.h"

namespace {

/// Read back as a screen reader does. Wine lacks the names: what the system refused, the program has told by a line.
void ExpectName(HWND dialog, int id, const std::wstring& name) {
  const ComApartment apartment;
  void* found = nullptr;
  BSTR text = nullptr;
  VARIANT self{};
  self.vt = VT_I4;
  ASSERT_EQ(::AccessibleObjectFromWindow(::GetDlgItem(dialog, id), static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible, &found),
            S_OK);
  auto* accessible = static_cast<IAccessible*>(found);
  accessible->get_accName(self, &text);
  accessible->Release();
  EXPECT_TRUE((text != nullptr && name == text) ||
              DiagnosticLines::Has(L"SetAccessibleNames - " + std::to_wstring(id) + L", " + name + L": 80004001"))
      << id;
  ::SysFreeString(text);
}

TEST_F(MainWindowTest, ControlsWithoutAVisibleNameHaveOneForScreenReaders) {
  const DiagnosticLines lines;
  Open();
  const std::pair<int, const wchar_t*> names[] = {{IDC_RULE_LIST, L"Rules"},
                                                  {IDC_RECENT_ALERTS, L"Recent alerts"},
                                                  {IDC_LOG_PATH, L"Alert log file"},
                                                  {IDC_LOG_BROWSE, L"Choose the alert log file"},
                                                  {IDC_SOUND_PATH, L"Alert sound file"},
                                                  {IDC_SOUND_BROWSE, L"Choose the alert sound file"}};
  for (const auto& [id, name] : names) ExpectName(Window(), id, name);
}

}  // namespace
