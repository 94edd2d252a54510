// Sessions: what a user does step by step, and everything that each step changes in what the program shows, keeps and has saved,
// one text for each subject in golden/sessions. A line with "> " is a step; the lines under it are what it changed.
// VANTORA_GOLDEN=write writes those anew.

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/text_encoding.h"
#include "res/messages.h"
#include "res/resource.h"
#include "storage/data_folder.h"
#include "storage/rules_csv.h"
#include "storage/settings_registry.h"
#include "tests/support/test_program.h"
#include "tests/support/window_driver.h"
#include "ui/dialogs/update_installation.h"
#include "ui/framework/clipboard_text.h"
#include "ui/main_window/main_window_thread.h"

namespace {
std::atomic<int> installations{0};
}

/// The linker finds this one before the program's own, which would download.
void UpdateInstallThread(Program&) { ++installations; }

namespace {

const bool kWriting = std::getenv("VANTORA_GOLDEN") != nullptr;
constexpr std::size_t kMostRows = 30;
constexpr std::size_t kMostChars = 200;

template <class... Parts>
std::wstring Words(const Parts&... parts) {
  std::wostringstream text;
  (text << ... << parts);
  return text.str();
}

/// Backslash r, n, t, 0 stand for characters, <folder> for the session's own, {300*q} for 300 of them with # as their number.
std::wstring Unescape(const std::wstring& text, const std::wstring& folder) {
  std::wstring plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    constexpr std::wstring_view kLetters = L"rnt0";
    constexpr std::wstring_view kCharacters(L"\r\n\t\0", 4);
    const std::size_t letter = text[i] == L'\\' && i + 1 < text.size() ? kLetters.find(text[i + 1]) : std::wstring_view::npos;
    if (letter != std::wstring_view::npos) {
      plain += kCharacters[letter];
      ++i;
    } else if (text.compare(i, 8, L"<folder>") == 0) {
      plain += folder;
      i += 7;
    } else if (const std::size_t star = text.find(L'*', i); text[i] == L'{' && i + 1 < text.size() && iswdigit(text[i + 1])) {
      const std::size_t end = text.find(L'}', star);
      const std::wstring unit = Unescape(text.substr(star + 1, end - star - 1), folder);
      for (int number = 0; number < std::stoi(text.substr(i + 1)); ++number) {
        for (const wchar_t c : unit) plain += c == L'#' ? std::to_wstring(number) : std::wstring(1, c);
      }
      i = end;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

/// The text before and after the first separator; all of it is before where there is none.
std::pair<std::wstring, std::wstring> Halves(const std::wstring& words, wchar_t separator) {
  const std::size_t at = std::min(words.find(separator), words.size());
  return {words.substr(0, at), words.substr(std::min(at + 1, words.size()))};
}

/// As it stands, with a terminator only when the text holds one; none leaves the clipboard empty.
void SetClipboard(const std::wstring& text) {
  const ClipboardLock clipboard(nullptr);
  ASSERT_TRUE(clipboard.IsOpen());
  ::EmptyClipboard();
  if (text.empty()) return;
  HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, text.size() * sizeof(wchar_t));
  text.copy(static_cast<wchar_t*>(::GlobalLock(memory)), text.size());
  ::GlobalUnlock(memory);
  ASSERT_NE(::SetClipboardData(CF_UNICODETEXT, memory), nullptr);
}

/// What stands in the words as numbers, up to the first that is none.
std::vector<std::int32_t> Numbers(const std::wstring& words) {
  std::wistringstream in(words);
  return {std::istream_iterator<std::int32_t, wchar_t>(in), {}};
}

class Session : public testing::TestWithParam<const char*>, protected TestProgram {
 protected:
  using State = std::map<std::wstring, std::wstring>;

  Session() {
    settings.Update([this](AppSettings& s) { s.logFilePath = folder.File(L"alerts.log"); });
    std::filesystem::create_directories(L"C:\\windows\\Media");  // which some compatible systems lack
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
    SaveSettings(settings, engine);
    program.trayWindow = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    std::uint32_t error = 0;
    EXPECT_TRUE(updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora");
    SetClipboard(L"");
  }
  ~Session() override {
    window_.reset();
    ::DestroyWindow(program.trayWindow);
  }

  // What there is to see.

  [[nodiscard]] HWND Main() const { return program.MainDialogHandle.Get(); }
  [[nodiscard]] HWND Rules() const { return ::GetDlgItem(Main(), IDC_RULE_LIST); }
  [[nodiscard]] HWND Page() const { return ::GetDlgItem(Main(), IDC_RECENT_ALERTS); }
  [[nodiscard]] HWND Box() const { return ::FindWindowExW(Rules(), nullptr, L"Edit", nullptr); }

  /// On one line, short, and the same on every machine.
  [[nodiscard]] std::wstring Shown(std::wstring text) const {
    const std::pair<std::wstring, std::wstring> names[] = {
        {L"\r", L"\\r"},
        {L"\n", L"\\n"},
        {L"\xFEFF", L"<mark>"},
        {L"\t", L"\\t"},
        {folder.File(L""), L"<folder>"},
        {std::filesystem::path(folder.File(L"")).parent_path().filename().wstring(), L"<folder>"},
        {DefaultLogFilePath(), L"<default log>"}};
    for (const auto& [from, to] : names) {
      for (std::size_t at = 0; (at = text.find(from, at)) != std::wstring::npos; at += to.size())
        text.replace(at, from.size(), to);
    }
    if (text.size() <= kMostChars) return text;
    return Words(text.substr(0, 30), L"...(", text.size(), L")...", text.substr(text.size() - 30));
  }
  [[nodiscard]] std::wstring Shown(const WindowPlacement& place) const {
    if (place == first_) return L"where it first was";
    return Words(place.left, L" ", place.top, L" ", place.right, L" ", place.bottom);
  }
  void AddRows(HWND list, const std::wstring& name, State& state) const {
    HWND header = reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0));
    const int columns = static_cast<int>(::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    const int rows = RowCount(list);
    std::wstring selected;
    for (int row = 0; row < rows; ++row) {
      if (::SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) != 0)
        selected += Words(L", selected ", row);
      if (row >= static_cast<int>(kMostRows) && row != rows - 1) continue;
      std::wstring& cells = state[Words(name, L"row ", row)];
      for (int column = 0; column < columns; ++column) cells += L"|" + Shown(Cell(list, row, column));
    }
    const LRESULT focused = ::SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
    state[name + L"rows"] = Words(rows, selected, focused > 0 ? Words(L", keyboard at ", focused) : L"",
                                  ::SendMessageW(list, LVM_GETTOPINDEX, 0, 0) > 0 ? L", scrolled" : L"");
  }
  [[nodiscard]] static std::wstring ButtonState(HWND button) {
    const LONG_PTR type = ::GetWindowLongPtrW(button, GWL_STYLE) & BS_TYPEMASK;
    if (type == BS_AUTOCHECKBOX) return ::SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED ? L"on" : L"off";
    return !::IsWindowEnabled(button) ? L"disabled" : type == BS_DEFPUSHBUTTON ? L"default" : L"enabled";
  }
  void AddDialog(HWND dialog, State& state) const {
    const std::wstring prefix = (dialog == Main() ? L"main" : TextOf(dialog)) + L" / ";
    state[prefix + L"open"] = ::IsIconic(dialog) ? L"as an icon" : ::IsWindowEnabled(dialog) ? L"yes" : L"behind its box";
    HWND focus = FocusOf(dialog);
    if (::GetDlgItem(dialog, kFileNameBox) != nullptr) {
      state[prefix + L"name"] = L"\"" + Shown(TextOfItem(dialog, kFileNameBox)) + L"\", " + TextOfItem(dialog, kFileTypeBox) +
                                (TextOfItem(dialog, kFolderBox) == L"Media" ? L", in Media" : L"");
      return;
    }
    const bool says = dialog != Main() && ::GetDlgItem(dialog, IDC_PATTERN) == nullptr;  // more than its fields' names
    std::wstring label;
    for (HWND control : ControlsOf(dialog)) {
      const std::wstring kind = ClassOf(control);
      const std::wstring text = WithoutMnemonic(TextOf(control));
      const LONG_PTR style = ::GetWindowLongPtrW(control, GWL_STYLE);
      if (kind == L"Edit") {
        state[prefix + L"field " + label] = L"\"" + Shown(TextOf(control)) + L"\"";
      } else if (kind == L"Button" && (style & BS_TYPEMASK) != BS_GROUPBOX) {
        state[prefix + L"button " + text] = ButtonState(control);
      } else if (kind == L"SysLink" || (kind == L"Static" && says && (style & SS_TYPEMASK) != SS_ICON)) {
        std::wstring& all = state[prefix + L"text"];
        if (!TextOf(control).empty())
          all += (all.empty() ? L"" : L" / ") + Shown(TextOf(control)) + (::IsWindowVisible(control) ? L"" : L" (hidden)");
      } else if (kind == L"SysListView32") {
        AddRows(control, prefix + (control == Rules() ? L"rule " : L"alert "), state);
      }
      if (control == focus) state[prefix + L"focus"] = kind == L"Edit" ? L"field " + label : kind + L" " + text;
      label = text;
    }
    if (dialog == Main() && Box() != nullptr) {
      state[L"main / box"] = L"\"" + Shown(TextOf(Box())) + L"\"";
      if (::SendMessageW(Box(), WM_GETFONT, 0, 0) != ::SendMessageW(Rules(), WM_GETFONT, 0, 0))
        state[L"main / box"] += L" in another font";
    }
  }
  /// What the menus with states show when they open.
  [[nodiscard]] std::wstring Marks() const {
    std::wstring marks;
    for (const int position : {2, 3}) {
      HMENU popup = ::GetSubMenu(::GetMenu(Main()), position);
      ::SendMessageW(Main(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup), position);
      for (UINT id = IDM_PAUSE; id <= UINT{IDM_ADMIN_AT_LOGIN}; ++id) {
        const UINT state = ::GetMenuState(popup, id, MF_BYCOMMAND);
        if (state == static_cast<UINT>(-1) || (state & (MF_CHECKED | MF_GRAYED)) == 0) continue;
        wchar_t text[64] = L"";
        ::GetMenuStringW(popup, id, text, 64, MF_BYCOMMAND);
        marks += L" / " + WithoutMnemonic(text) + ((state & MF_GRAYED) != 0 ? L" grey" : L"");
        marks += (state & MFT_RADIOCHECK) != 0 ? L" chosen" : (state & MF_CHECKED) != 0 ? L" on" : L"";
      }
    }
    return marks;
  }
  void AddStores(State& state) const {
    const RuleSnapshot list = rules.Snapshot();
    std::wistringstream lines(FormatRulesCsv(*list));
    std::wstring line;
    std::getline(lines, line);
    for (std::size_t i = 0; std::getline(lines, line); ++i) {
      if (i < kMostRows || i + 1 == list->size()) state[Words(L"stored rule ", i)] = Shown(line);
    }
    state[L"next rule id"] = Words(rules.NextRuleId());
    RuleStore saved([] { return std::wstring(); });
    saved.Load(folder.File(L"rules.csv"));
    if (*saved.Snapshot() != *list) state[L"rules file"] = L"differs";
    state[L"recent alerts"] = Words(recentAlerts.Size());
    for (const auto& file : std::filesystem::directory_iterator(folder.File(L""))) {
      const std::wstring name = file.path().filename().wstring();
      if (name != L"rules.csv") state[L"file " + name] = Shown(DecodeUtf8Text(TemporaryFolder::Read(file.path().wstring())));
    }

    const AppSettings now = settings.Get();
    const ExclusionSnapshot exclusions = engine.Exclusions();
    std::wstring joined;
    for (const std::wstring& each : *exclusions) joined += L"|" + each;
    state[L"stored actions"] = Words(now.alertActions);
    state[L"stored throttle"] = Words(now.notificationThrottleSec);
    state[L"stored check interval"] = Words(now.updateCheckIntervalHours, now.includeBetas ? L" with betas" : L"");
    state[L"stored log"] = Shown(now.logFilePath);
    state[L"stored sound"] = Shown(now.soundFilePath);
    state[L"stored poll interval"] = Words(engine.IntervalMs(), engine.Paused() ? L" paused" : L"");
    state[L"stored exclusions"] = Words(exclusions->size(), L" ", Shown(joined));
    state[L"stored place"] = Shown(now.mainDialogPlacement);
    if (Main() != nullptr && !::IsIconic(Main())) state[L"main / place"] = Shown(Frame());
    if (::RegGetValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS)
      state[L"starts with Windows"] = L"yes";
    // Whether the next start reads what the program has in memory now.
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    AppSettings read = next.settings.Get();
    state[L"stored place in the registry"] = read.mainDialogPlacement == now.mainDialogPlacement ? L"the same" : L"another";
    read.mainDialogPlacement = now.mainDialogPlacement;
    if (read != now || next.engine.IntervalMs() != engine.IntervalMs() || *next.engine.Exclusions() != *exclusions)
      state[L"settings in the registry"] = L"differ";
  }
  [[nodiscard]] WindowPlacement Frame() const {
    RECT rect{};
    ::GetWindowRect(Main(), &rect);
    return {rect.left, rect.top, rect.right, rect.bottom};
  }

  State Look() {
    State state;
    for (HWND dialog : DialogsOfThisProcess()) AddDialog(dialog, state);
    if (HWND popup = FindPopup()) {
      for (const std::wstring& text : MenuTexts(popup)) state[L"popup"] += L" / " + text;
    }
    MSG message;
    while (::PeekMessageW(&message, program.trayWindow, WM_USER, WM_APP, PM_REMOVE))
      posts_ += Words(L" ", message.message - WM_USER, L":", message.wParam);
    AddStores(state);
    if (!posts_.empty()) state[L"asked of the tray"] = posts_;
    if (installations != 0) state[L"installations"] = Words(installations.load());
    if (wantsMarks_ && Main() != nullptr && ::IsWindowEnabled(Main())) marks_ = Marks();
    state[L"menus"] = marks_;
    if (!copied_.empty()) state[L"clipboard"] = Shown(copied_);
    return state;
  }

  // What can be done.

  static HWND Top() {
    HWND top = WaitForEnabledDialog([](HWND) { return true; });
    EXPECT_NE(top, nullptr) << "no window";
    return top;
  }
  /// The control with the text, or the one that comes so many places after it in the window on top.
  HWND Control(const std::wstring& text, std::size_t after = 0) {
    HWND found = e2e::WaitForResult([&] {
      const std::vector<HWND> controls = ControlsOf(Top());
      for (std::size_t i = 0; i + after < controls.size(); ++i) {
        if (WithoutMnemonic(TextOf(controls[i])) == text) return controls[i + after];
      }
      return HWND{nullptr};
    });
    EXPECT_NE(found, nullptr) << "no control: " << testing::PrintToString(text);
    return found;
  }
  int MenuItem(HMENU menu, const std::wstring& text) const {
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
      wchar_t item[64] = L"";
      ::GetMenuStringW(menu, static_cast<UINT>(i), item, 64, MF_BYPOSITION);
      if (WithoutMnemonic(item) == text) return static_cast<int>(::GetMenuItemID(menu, i));
      HMENU popup = ::GetSubMenu(menu, i);
      if (const int id = popup != nullptr ? MenuItem(popup, text) : 0; id != 0) return id;
    }
    return 0;
  }
  void Press(const std::wstring& keyName, bool ctrl) {
    const std::map<std::wstring, WPARAM> names = {
        {L"Insert", VK_INSERT}, {L"Enter", VK_RETURN}, {L"Delete", VK_DELETE}, {L"Escape", VK_ESCAPE}};
    HWND focus = FocusOf(Top());
    const auto hold = [&](BYTE state) {
      RunInWindowThread(focus, [state] {
        BYTE keys[256] = {};
        keys[VK_CONTROL] = state;
        ::SetKeyboardState(keys);
      });
    };
    if (ctrl) hold(0x80);
    ::PostMessageW(focus, WM_KEYDOWN, names.contains(keyName) ? names.at(keyName) : keyName.front(), 0);
    if (keyName.size() == 1 && !ctrl) ::PostMessageW(focus, WM_CHAR, keyName.front(), 0);
    Settle();
    if (ctrl) hold(0);
  }
  void DoubleClick(const std::vector<int>& cell) {
    if (cell.at(0) < 0) {
      for (const int message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
        Post(Rules(), message, MK_LBUTTON, MAKELPARAM(100, 130));
      return;
    }
    // All of it between two of the window's messages, as by a mouse: a box that is open has asked for its end when the next
    // comes.
    RunInWindowThread(Main(), [&] {
      ::SetFocus(Rules());
      NotifyDoubleClick(Rules(), cell.at(0), cell.at(1));
    });
  }
  void Open() {
    window_.emplace([this] { MainDialogThread(program); });
    EXPECT_TRUE(WaitUntil([this] { return Main() != nullptr && ::IsWindowVisible(Main()); }));
    Settle();
    if (!first_.HasSize()) first_ = Frame();
  }

  static void Post(HWND window, int message, WPARAM wParam = 0, LPARAM lParam = 0) {
    ::PostMessageW(window, static_cast<UINT>(message), wParam, lParam);
  }
  void SetText(HWND field, const std::wstring& text) {
    EXPECT_NE(field, nullptr);
    ::SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
  }
  void AddRule(const std::wstring& csvLine) {
    ThresholdRule rule;
    EXPECT_EQ(ParseRulesCsvLine(csvLine, rule), nullptr);
    rules.Append({rule});
  }
  void SetSettings(const std::vector<std::int32_t>& n) {
    const auto at = [&n](std::size_t i) { return static_cast<std::uint32_t>(n.at(i)); };
    settings.Update(
        [&](AppSettings& s) { s = {at(0), at(1), at(2), at(3) != 0, s.logFilePath, s.soundFilePath, s.mainDialogPlacement}; });
    engine.SetIntervalMs(at(4));
    SaveSettings(settings, engine);
  }
  void OfferUpdate(const std::wstring& version) {
    updates.SetLatestVersion(version);
    updates.UpdateAvailableEvent.Signal();
    Post(Main(), int{UWM_UPDATE_AVAILABLE});
  }
  void ClickLink() {
    NMLINK link{};
    link.hdr = {::GetDlgItem(Main(), IDC_VERSION_LINK), IDC_VERSION_LINK, static_cast<UINT>(NM_CLICK)};
    ::SendMessageW(Main(), WM_NOTIFY, IDC_VERSION_LINK, reinterpret_cast<LPARAM>(&link));
  }

  void Do(const std::wstring& step) {
    const auto [name, escaped] = Halves(step, L' ');
    const std::wstring words = Unescape(escaped, folder.File(L""));
    const std::pair halves = Halves(words, L'=');  // no structured binding: clang 14 cannot capture those
    const std::vector<std::int32_t> n = Numbers(words);
    const auto forEach = [&n](auto action) {
      for (std::int32_t number = n.at(0); number <= n.at(1); ++number) action(static_cast<std::uint32_t>(number));
    };
    const AlertRecord alert{{2026, 3, 4, 5, 9, 7, 3, 0}, 0, L"app.exe", 1, L"Threads: 9 > 8"};
    const std::map<std::wstring, std::function<void()>> verbs = {
        // What others do, and what was there before.
        {L"rule", [&] { AddRule(words); }},
        {L"rules", [&] { forEach([this](std::uint32_t id) { AddRule(Words(id, L",a", id, L",1")); }); }},
        {L"forget", [&] { rules.Remove({static_cast<std::uint32_t>(n.at(0))}); }},
        {L"settings", [&] { SetSettings(n); }},  // actions, throttle, hours between checks, betas, poll interval in ms
        {L"place",
         [&] { settings.Update([&n](AppSettings& s) {
                 s.mainDialogPlacement = {n.at(0), n.at(1), n.at(2), n.at(3)};
               }); }},
        {L"exclude", [&] { engine.SetExclusions({words}); }},
        {L"autostart on", [] { ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2); }},
        {L"autostart off", [] { ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora"); }},
        {L"alerts",
         [&] {
           forEach([&](std::uint32_t pid) { recentAlerts.Append({alert.time, pid, alert.processName, 1, alert.violation}); });
         }},
        {L"update", [&] { OfferUpdate(words); }},
        {L"file", [&] { TemporaryFolder::Write(folder.File(halves.first), EncodeUtf8(halves.second)); }},
        {L"hold",
         [&] {
           held_ = OwnFileHandle(::CreateFileW(folder.File(words).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
         }},
        {L"clipboard", [&] { SetClipboard(words); }},
        {L"copied", [&] { copied_ = ReadClipboardText(nullptr).value_or(L"nothing"); }},
        {L"stranger",
         [] {
           for (HWND dialog : DialogsOfThisProcess()) Post(dialog, WM_INITDIALOG);
         }},
        // What the user does.
        {L"open", [&] { Open(); }},
        {L"again", [&] { MainDialogThread(program); }},
        {L"minimise", [&] { ::ShowWindow(Main(), SW_MINIMIZE); }},
        {L"move", [&] { ::SetWindowPos(Main(), nullptr, n.at(0), n.at(1), n.at(2) - n.at(0), n.at(3) - n.at(1), SWP_NOZORDER); }},
        {L"close", [&] { Post(Top(), WM_CLOSE); }},
        {L"look", [] {}},
        {L"menu", [&] { PostCommand(Main(), MenuItem(::GetMenu(Main()), words)); }},
        {L"press", [&] { Post(Control(words), BM_CLICK); }},
        {L"browse", [&] { Post(Control(words, 2), BM_CLICK); }},
        {L"type", [&] { SetText(Control(halves.first, 1), halves.second); }},
        {L"focus", [&] { Post(Top(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(words, 1)), TRUE); }},
        {L"link", [&] { Post(Top(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(::GetDlgItem(Main(), IDC_VERSION_LINK)), TRUE); }},
        {L"click", [&] { ClickLink(); }},
        {L"paste", [&] { Post(FocusOf(Top()), WM_PASTE); }},
        {L"key", [&] { Press(words, false); }},
        {L"ctrl", [&] { Press(words, true); }},
        {L"select", [&] { SelectRows(Rules(), n); }},
        {L"cell", [&] { DoubleClick(n); }},
        {L"box", [&] { SetText(e2e::WaitForResult([this] { return Box(); }), words); }},
        {L"pick", [&] { ChooseMenuItem(Main(), n.at(0)); }},
        {L"answer", [&] { SetText(::GetDlgItem(Top(), kFileNameBox), words), PostCommand(Top(), IDOK); }},
        {L"tab", [&] { ::SendDlgItemMessageW(Main(), IDC_TABS, TCM_SETCURFOCUS, static_cast<WPARAM>(n.at(0)), 0); }},
        {L"rightclick",
         [&] {
           for (const int message : {WM_RBUTTONDOWN, WM_RBUTTONUP}) Post(Page(), message, 0, MAKELPARAM(5, 80));
         }},
        {L"contextkey", [&] { Post(Page(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(Page()), -1); }},
    };
    const std::wstring verb = verbs.contains(step) ? step : name;
    ASSERT_TRUE(verbs.contains(verb)) << "no such step";
    posts_.clear();
    copied_.clear();
    wantsMarks_ = verb == L"menu" || verb == L"look";
    verbs.at(verb)();
    Settle();
    const std::vector<AlertRecord> alerts = recentAlerts.Copy();
    const std::wstring newest = alerts.empty() ? L"" : Words(alerts.back().pid);
    EXPECT_TRUE(Page() == nullptr || WaitUntil([&] { return Cell(Page(), 0, 1) == newest; }, 3'500)) << "it looks every 2 s";
  }
  /// What differs from the state before. A window that is closed is one change; when it opens again it is compared with its last
  /// state.
  [[nodiscard]] static std::string Changes(const State& before, State& now) {
    std::wstring text;
    for (const auto& [name, value] : before) {
      if (now.contains(name) || name.starts_with(L"asked") || name.starts_with(L"clipboard")) continue;
      const std::size_t slash = name.find(L" / ");
      const auto window = slash == std::wstring::npos ? now.end() : now.find(name.substr(0, slash) + L" / open");
      const bool open = slash == std::wstring::npos || (window != now.end() && window->second != L"no");
      if (open && !name.ends_with(L" focus")) text += L"  no " + name + L"\n";
      if (!open) now[name] = name.ends_with(L" / open") ? L"no" : value;
    }
    for (const auto& [name, value] : now) {
      const auto old = before.find(name);
      if (old == before.end() || old->second != value) text += L"  " + name + L": " + value + L"\n";
    }
    return EncodeUtf8(text);
  }

  std::optional<WindowThread> window_;
  WindowPlacement first_;
  std::wstring posts_;  ///< to the tray window in this step
  std::wstring copied_;
  std::wstring marks_;
  bool wantsMarks_ = false;
  UniqueHandle held_;
};

TEST_P(Session, GoesAsWritten) {
  const std::string path = std::string(VANTORA_GOLDEN_FOLDER) + "/sessions/" + GetParam() + ".txt";
  std::ifstream file(path, std::ios::binary);
  ASSERT_TRUE(file) << path;
  std::string written;
  State before = Look();
  std::string line;
  std::getline(file, line);
  while (!file.eof()) {
    const std::string step = line;
    std::string expected;
    while (std::getline(file, line) && line.starts_with("  ")) expected += line + "\n";
    written += step + "\n";
    if (!step.starts_with("> ")) continue;
    SCOPED_TRACE(step);
    std::cout << step << std::endl;  // where it hangs, should it
    Do(DecodeUtf8Text(step.substr(2)));
    State now;
    std::string changes;
    WaitUntil([&] {
      now = Look();
      changes = Changes(before, now);
      if (!kWriting) return changes == expected;
      ::Sleep(300);
      State later = Look();
      return changes == Changes(before, later);
    });
    written += changes;
    EXPECT_TRUE(kWriting || changes == expected) << changes << "was expected to be\n" << expected;
    if (HasFailure()) break;
    before = std::move(now);
  }
  if (kWriting && !HasFailure()) std::ofstream(path, std::ios::binary) << written;
}

INSTANTIATE_TEST_SUITE_P(Of, Session,
                         testing::Values("rules", "editor", "keys", "exchange", "presets", "settings_menu", "settings_page",
                                         "alerts", "update", "frame", "dialogs"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
