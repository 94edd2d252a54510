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
    return text.substr(0, 30) + L"...(" + std::to_wstring(text.size()) + L")..." + text.substr(text.size() - 30);
  }
  void AddRows(HWND list, const std::wstring& name, State& state) const {
    const int columns = static_cast<int>(
        ::SendMessageW(reinterpret_cast<HWND>(::SendMessageW(list, LVM_GETHEADER, 0, 0)), HDM_GETITEMCOUNT, 0, 0));
    const int rows = RowCount(list);
    state[name + L"rows"] = std::to_wstring(rows);
    std::wstring selected;
    for (int row = 0; row < rows; ++row) {
      if (::SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) != 0)
        selected += L" " + std::to_wstring(row);
      if (row >= static_cast<int>(kMostRows) && row != rows - 1) continue;
      std::wstring& cells = state[name + L"row " + std::to_wstring(row)];
      for (int column = 0; column < columns; ++column) cells += L"|" + Shown(Cell(list, row, column));
    }
    state[name + L"rows"] += selected.empty() ? L"" : L", selected" + selected;
    if (const LRESULT focused = ::SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED); focused > 0)
      state[name + L"rows"] += L", keyboard at " + std::to_wstring(focused);
    if (::SendMessageW(list, LVM_GETTOPINDEX, 0, 0) > 0) state[name + L"rows"] += L", scrolled";
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
      if (i < kMostRows || i + 1 == list->size()) state[L"stored rule " + std::to_wstring(i)] = Shown(line);
    }
    state[L"next rule id"] = std::to_wstring(rules.NextRuleId());
    RuleStore saved([] { return std::wstring(); });
    saved.Load(folder.File(L"rules.csv"));
    if (*saved.Snapshot() != *list) state[L"rules file"] = L"differs";

    const AppSettings now = settings.Get();
    state[L"stored actions"] = std::to_wstring(now.alertActions);
    state[L"stored throttle"] = std::to_wstring(now.notificationThrottleSec);
    state[L"stored check interval"] = std::to_wstring(now.updateCheckIntervalHours) + (now.includeBetas ? L" with betas" : L"");
    state[L"stored log"] = Shown(now.logFilePath);
    state[L"stored sound"] = Shown(now.soundFilePath);
    state[L"stored poll interval"] = std::to_wstring(engine.IntervalMs()) + (engine.Paused() ? L" paused" : L"");
    const ExclusionSnapshot exclusions = engine.Exclusions();
    std::wstring joined;
    for (const std::wstring& each : *exclusions) joined += L"|" + each;
    state[L"stored exclusions"] = std::to_wstring(exclusions->size()) + L" " + Shown(joined);
    // Whether the next start reads what the program has in memory now.
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    const AppSettings read = next.settings.Get();
    const auto place = [](const AppSettings& s) { return s.mainDialogPlacement; };
    AppSettings elsewhere = now;
    elsewhere.mainDialogPlacement = place(read);
    if (read != elsewhere || next.engine.IntervalMs() != engine.IntervalMs() || *next.engine.Exclusions() != *exclusions)
      state[L"settings in the registry"] = L"differ";
    const auto placeText = [](const WindowPlacement& p) {
      return std::to_wstring(p.left) + L" " + std::to_wstring(p.top) + L" " + std::to_wstring(p.right) + L" " +
             std::to_wstring(p.bottom);
    };
    state[L"stored place"] = place(now) == first_ ? L"where it first was" : placeText(place(now));
    state[L"stored place in the registry"] = place(read) == place(now) ? L"the same" : L"another";
    if (Main() != nullptr && !::IsIconic(Main()))
      state[L"main / place"] = Frame() == first_ ? L"where it first was" : placeText(Frame());

    DWORD size = 0;
    if (::RegGetValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", RRF_RT_ANY, nullptr, nullptr, &size) == ERROR_SUCCESS)
      state[L"starts with Windows"] = L"yes";
    state[L"recent alerts"] = std::to_wstring(recentAlerts.Size());
    for (const auto& file : std::filesystem::directory_iterator(folder.File(L""))) {
      const std::wstring name = file.path().filename().wstring();
      if (name != L"rules.csv") state[L"file " + name] = Shown(DecodeUtf8Text(TemporaryFolder::Read(file.path().wstring())));
    }
    if (installations != 0) state[L"installations"] = std::to_wstring(installations);
    if (!posts_.empty()) state[L"asked of the tray"] = posts_;
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
      posts_ += L" " + std::to_wstring(message.message - WM_USER) + L":" + std::to_wstring(message.wParam);
    AddStores(state);
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
        {L"Insert", VK_INSERT}, {L"Enter", VK_RETURN}, {L"Delete", VK_DELETE}, {L"Escape", VK_ESCAPE}, {L"F10", VK_F10}};
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
      for (const UINT message : {UINT{WM_LBUTTONDOWN}, UINT{WM_LBUTTONUP}, UINT{WM_LBUTTONDBLCLK}, UINT{WM_LBUTTONUP}})
        ::PostMessageW(Rules(), message, MK_LBUTTON, MAKELPARAM(100, 130));
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

  struct Verb {
    const wchar_t* name;
    void (*run)(Session& session, const std::wstring& words);
  };
  static const Verb kVerbs[];

  void Do(const std::wstring& step) {
    const std::size_t blank = step.find(L' ');
    const std::wstring name = step.substr(0, blank);
    const std::wstring words = blank == std::wstring::npos ? L"" : Unescape(step.substr(blank + 1), folder.File(L""));
    const Verb* verb = std::find_if(kVerbs, kVerbs + kVerbCount, [&](const Verb& each) { return each.name == name; });
    ASSERT_NE(verb, kVerbs + kVerbCount) << "no such step";
    posts_.clear();
    copied_.clear();
    wantsMarks_ = name == L"menu" || name == L"look";
    verb->run(*this, words);
    Settle();
    if (HWND page = ::GetDlgItem(Main(), IDC_RECENT_ALERTS)) {
      const auto showsTheNewest = [&] {
        const std::vector<AlertRecord> alerts = recentAlerts.Copy();
        return Cell(page, 0, 1) == (alerts.empty() ? L"" : std::to_wstring(alerts.back().pid));
      };
      EXPECT_TRUE(WaitUntil(showsTheNewest, 3'500)) << "the window looks every two seconds";
    }
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

  static const std::size_t kVerbCount;
  std::optional<WindowThread> window_;
  WindowPlacement first_;
  std::wstring posts_;  ///< to the tray window in this step
  std::wstring copied_;
  std::wstring marks_;
  bool wantsMarks_ = false;
  UniqueHandle held_;
};

std::vector<int> Numbers(const std::wstring& words) {
  std::wistringstream in(words);
  std::vector<int> numbers;
  for (int number = 0; in >> number;) numbers.push_back(number);
  return numbers;
}

/// The text before and after the first separator.
std::pair<std::wstring, std::wstring> Halves(const std::wstring& words, wchar_t separator) {
  const std::size_t at = words.find(separator);
  return {words.substr(0, at), words.substr(at + 1)};
}

const Session::Verb Session::kVerbs[] = {
    // What others do, and what was there before.
    {L"rule",
     [](Session& s, const std::wstring& words) {
       ThresholdRule rule;
       const wchar_t* reason = ParseRulesCsvLine(words, rule);
       ASSERT_EQ(reason, nullptr) << testing::PrintToString(words) << testing::PrintToString(reason);
       s.rules.Append({rule});
     }},
    {L"rules",  // of the ids from the first to the last
     [](Session& s, const std::wstring& words) {
       RuleList many;
       for (int id = Numbers(words).at(0); id <= Numbers(words).at(1); ++id)
         many.push_back({.ruleId = static_cast<std::uint32_t>(id), .processPattern = L"a" + std::to_wstring(id)});
       s.rules.Append(many);
     }},
    {L"forget", [](Session& s, const std::wstring& words) { s.rules.Remove({static_cast<std::uint32_t>(std::stoi(words))}); }},
    {L"settings",
     [](Session& s, const std::wstring& words) {
       const auto n = Numbers(words);  // actions, throttle, hours between checks, betas, poll interval in ms
       const auto at = [&n](std::size_t i) { return static_cast<std::uint32_t>(n.at(i)); };
       s.engine.SetIntervalMs(at(4));
       s.settings.Update([&](AppSettings& all) {
         all = {at(0), at(1), at(2), n.at(3) != 0, all.logFilePath, all.soundFilePath, all.mainDialogPlacement};
       });
       SaveSettings(s.settings, s.engine);
     }},
    {L"place",
     [](Session& s, const std::wstring& words) {
       const auto n = Numbers(words);
       s.settings.Update([&n](AppSettings& all) { all.mainDialogPlacement = {n.at(0), n.at(1), n.at(2), n.at(3)}; });
     }},
    {L"exclude", [](Session& s, const std::wstring& words) { s.engine.SetExclusions({words}); }},
    {L"autostart",
     [](Session&, const std::wstring& words) {
       if (words == L"on") ::RegSetKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora", REG_SZ, L"", 2);
       if (words == L"off") ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Vantora");
     }},
    {L"alerts",
     [](Session& s, const std::wstring& words) {
       for (int pid = Numbers(words).at(0); pid <= Numbers(words).at(1); ++pid)
         s.recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, static_cast<std::uint32_t>(pid), L"app.exe", 1, L"Threads: 9 > 8"});
     }},
    {L"update",
     [](Session& s, const std::wstring& words) {
       s.updates.SetLatestVersion(words);
       s.updates.UpdateAvailableEvent.Signal();
       ::PostMessageW(s.Main(), UWM_UPDATE_AVAILABLE, 0, 0);
     }},
    {L"file",
     [](Session& s, const std::wstring& words) {
       const auto [name, text] = Halves(words, L'=');
       TemporaryFolder::Write(s.folder.File(name), EncodeUtf8(text));
     }},
    {L"hold",
     [](Session& s, const std::wstring& words) {
       s.held_ = OwnFileHandle(::CreateFileW(s.folder.File(words).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
       ASSERT_TRUE(s.held_);
     }},
    {L"clipboard", [](Session&, const std::wstring& words) { SetClipboard(words); }},
    {L"copied", [](Session& s, const std::wstring&) { s.copied_ = ReadClipboardText(nullptr).value_or(L"nothing"); }},
    {L"stranger",  // posts what only the system may send
     [](Session&, const std::wstring&) {
       for (HWND dialog : DialogsOfThisProcess()) ::PostMessageW(dialog, WM_INITDIALOG, 0, 0);
     }},
    // What the user does.
    {L"open", [](Session& s, const std::wstring&) { s.Open(); }},
    {L"again", [](Session& s, const std::wstring&) { MainDialogThread(s.program); }},
    {L"minimise", [](Session& s, const std::wstring&) { ::ShowWindow(s.Main(), SW_MINIMIZE); }},
    {L"move",
     [](Session& s, const std::wstring& words) {
       const auto n = Numbers(words);
       ::SetWindowPos(s.Main(), nullptr, n.at(0), n.at(1), n.at(2) - n.at(0), n.at(3) - n.at(1), SWP_NOZORDER);
     }},
    {L"close", [](Session& s, const std::wstring&) { ::PostMessageW(s.Top(), WM_CLOSE, 0, 0); }},
    {L"look", [](Session&, const std::wstring&) {}},
    {L"menu",
     [](Session& s, const std::wstring& words) {
       const int id = s.MenuItem(::GetMenu(s.Main()), words);
       ASSERT_NE(id, 0) << "no such item";
       PostCommand(s.Main(), id);
     }},
    {L"press", [](Session& s, const std::wstring& words) { ::PostMessageW(s.Control(words), BM_CLICK, 0, 0); }},
    {L"browse", [](Session& s, const std::wstring& words) { ::PostMessageW(s.Control(words, 2), BM_CLICK, 0, 0); }},
    {L"type",
     [](Session& s, const std::wstring& words) {
       const auto [label, text] = Halves(words, L'=');
       ::SendMessageW(s.Control(label, 1), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
     }},
    {L"focus",
     [](Session& s, const std::wstring& words) {
       HWND control = words == L"link" ? ::GetDlgItem(s.Main(), IDC_VERSION_LINK) : s.Control(words, 1);
       ::PostMessageW(s.Top(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
     }},
    {L"paste", [](Session& s, const std::wstring&) { ::PostMessageW(FocusOf(s.Top()), WM_PASTE, 0, 0); }},
    {L"key", [](Session& s, const std::wstring& words) { s.Press(words, false); }},
    {L"ctrl", [](Session& s, const std::wstring& words) { s.Press(words, true); }},
    {L"select", [](Session& s, const std::wstring& words) { SelectRows(s.Rules(), Numbers(words)); }},
    {L"cell", [](Session& s, const std::wstring& words) { s.DoubleClick(Numbers(words)); }},
    {L"box",
     [](Session& s, const std::wstring& words) {
       ASSERT_TRUE(WaitUntil([&s] { return s.Box() != nullptr; }));
       ::SetWindowTextW(s.Box(), words.c_str());
     }},
    {L"pick", [](Session& s, const std::wstring& words) { ChooseMenuItem(s.Main(), std::stoi(words)); }},
    {L"answer",
     [](Session& s, const std::wstring& words) {
       ::SendMessageW(::GetDlgItem(s.Top(), kFileNameBox), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(words.c_str()));
       PostCommand(s.Top(), IDOK);
     }},
    {L"tab", [](Session& s, const std::wstring& words) { ::SendDlgItemMessageW(s.Main(), IDC_TABS, TCM_SETCURFOCUS, std::stoul(words), 0); }},
    {L"rightclick",
     [](Session& s, const std::wstring&) {
       HWND page = ::GetDlgItem(s.Main(), IDC_RECENT_ALERTS);
       ::PostMessageW(page, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 80));
       ::PostMessageW(page, WM_RBUTTONUP, 0, MAKELPARAM(5, 80));
     }},
    {L"contextkey",
     [](Session& s, const std::wstring&) {
       HWND page = ::GetDlgItem(s.Main(), IDC_RECENT_ALERTS);
       ::PostMessageW(page, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(page), -1);
     }},
    {L"click",
     [](Session& s, const std::wstring&) {
       NMLINK link{};
       link.hdr = {::GetDlgItem(s.Main(), IDC_VERSION_LINK), IDC_VERSION_LINK, static_cast<UINT>(NM_CLICK)};
       ::SendMessageW(s.Main(), WM_NOTIFY, IDC_VERSION_LINK, reinterpret_cast<LPARAM>(&link));
     }},
};
const std::size_t Session::kVerbCount = std::size(kVerbs);

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
