// Sessions: what a user does step by step, and everything that each step changes in what the program shows, keeps and has saved,
// one text for each subject in golden/sessions.

#include <optional>

#include "app/tray_window.h"
#include "autostart/elevation_system.h"
#include "autostart/run_value.h"
#include "platform/handles.h"
#include "platform/text_encoding.h"
#include "platform/text_format.h"
#include "res/messages.h"
#include "res/resource.h"
#include "storage/data_folder.h"
#include "storage/rules_csv.h"
#include "storage/settings_registry.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/fake_task_scheduler.h"
#include "tests/support/profile.h"
#include "tests/support/steps_test.h"
#include "tests/support/test_program.h"
#include "tests/support/theme_recorder.h"
#include "tests/support/window_driver.h"
#include "ui/dark/dark_mode.h"
#include "ui/dark/dark_scroll_bar.h"
#include "ui/dialogs/about_dialog.h"
#include "ui/dialogs/update_installation.h"
#include "ui/dialogs/update_progress_dialog.h"
#include "ui/framework/clipboard_text.h"
#include "ui/main_window/main_window_thread.h"
#include "ui/message_box/message_box.h"

namespace {

constexpr std::size_t kMostRows = 30;
constexpr std::size_t kMostChars = 400;
// Of the system's file dialogs.
constexpr int kFileNameBox = 0x47C;
constexpr int kFileTypeBox = 0x470;
constexpr int kFolderBox = 0x471;
constexpr wchar_t kThemesKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";

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

class Session : public StepsTest, protected TestProgram {
 public:
  using StepsTest::Note;

 protected:
  Session() {
    settings.Update([this](AppSettings& s) { s.logFilePath = folder.Path(L"alerts.log"); });
    std::filesystem::create_directories(L"C:\\windows\\Media");  // which some compatible systems lack
    SaveSettings(settings, engine);
    program.trayWindow = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    elevated_ = accepts_ = TRUE;
    checksHang_ = false;
    SetElevationSystem(&kElevation);
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kThemesKey, L"AppsUseLightTheme");
    std::uint32_t error = 0;
    EXPECT_TRUE(updates.UpdateAvailableEvent.Create(Event::Reset::kManual, error));
    SetClipboard(L"");
  }
  ~Session() override {
    ::PostMessageW(program.trayWindow, UWM_TERMINATE, 0, 0);
    window_.reset();
    second_.reset();
    SetElevationSystem(nullptr);
    ::DestroyWindow(program.trayWindow);
  }

  // What there is to see.

  [[nodiscard]] HWND Main() const { return program.MainDialogHandle.Get(); }
  [[nodiscard]] HWND Rules() const { return ::GetDlgItem(Main(), IDC_RULE_LIST); }
  [[nodiscard]] HWND Page() const { return ::GetDlgItem(Main(), IDC_RECENT_ALERTS); }
  [[nodiscard]] HWND Box() const { return ::FindWindowExW(Rules(), nullptr, L"Edit", nullptr); }

  [[nodiscard]] std::wstring Readable(const std::wstring& line) const override {
    const std::filesystem::path path(folder.Path(L""));
    const std::wstring text = WithWords(line, {{path.wstring(), L"<folder>"},
                                               {path.parent_path().filename().wstring(), L"<folder>"},
                                               {DefaultLogFilePath(), L"<default log>"}});
    if (text.size() <= kMostChars) return text;
    return Words(text.substr(0, 60), L"...(", text.size(), L")...", text.substr(text.size() - 30));
  }
  static std::wstring PlaceText(const WindowPlacement& place) {
    return Words(place.left, L" ", place.top, L" ", place.right, L" ", place.bottom);
  }
  void AddRows(HWND list, const std::wstring& name, State& state) const {
    const int columns = Header_GetItemCount(ListView_GetHeader(list));
    const int rows = RowCount(list);
    std::wstring selected;
    for (int row = 0; row < rows; ++row) {
      if (ListView_GetItemState(list, row, LVIS_SELECTED) != 0) selected += Words(L", selected ", row);
      if (row >= static_cast<int>(kMostRows) && row != rows - 1) continue;
      std::wstring& cells = state[Words(name, L"row ", row)];
      for (int column = 0; column < columns; ++column) cells += L"|" + Cell(list, row, column);
    }
    const int focused = ListView_GetNextItem(list, -1, LVNI_FOCUSED);
    state[name + L"rows"] = Words(rows, selected, focused > 0 ? Words(L", keyboard at ", focused) : L"",
                                  ListView_GetTopIndex(list) > 0 ? L", scrolled" : L"");
  }
  [[nodiscard]] static std::wstring ButtonState(HWND button) {
    const LONG_PTR type = ::GetWindowLongPtrW(button, GWL_STYLE) & BS_TYPEMASK;
    if (type == BS_AUTOCHECKBOX) return ::SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED ? L"on" : L"off";
    return !::IsWindowEnabled(button) ? L"disabled" : type == BS_DEFPUSHBUTTON ? L"default" : L"enabled";
  }
  [[nodiscard]] std::wstring Prefix(HWND dialog) const { return (dialog == Main() ? L"main" : TextOf(dialog)) + L" / "; }
  void AddDialog(HWND dialog, State& state) const {
    const std::wstring prefix = Prefix(dialog);
    std::wstring& open = state[prefix + L"open"];
    open = ::IsIconic(dialog) ? L"as an icon" : ::IsWindowEnabled(dialog) ? L"yes" : L"behind its box";
    if ((::GetMenuState(::GetSystemMenu(dialog, FALSE), SC_CLOSE, MF_BYCOMMAND) & MF_GRAYED) != 0) open += L", without a way out";
    HWND focus = FocusOf(dialog);
    if (::GetDlgItem(dialog, kFileNameBox) != nullptr) {
      state[prefix + L"name"] = L"\"" + TextOfItem(dialog, kFileNameBox) + L"\", " + TextOfItem(dialog, kFileTypeBox) +
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
        state[prefix + L"field " + label] = L"\"" + TextOf(control) + L"\"";
      } else if (kind == L"Button" && (style & BS_TYPEMASK) != BS_GROUPBOX) {
        state[prefix + L"button " + text] = ButtonState(control);
      } else if (kind == L"SysLink" || (kind == L"Static" && says && (style & SS_TYPEMASK) != SS_ICON)) {
        std::wstring& all = state[prefix + L"text"];
        if (!TextOf(control).empty())
          all += (all.empty() ? L"" : L" / ") + TextOf(control) + (::IsWindowVisible(control) ? L"" : L" (hidden)");
      } else if (kind == L"SysListView32") {
        AddRows(control, prefix + (control == Rules() ? L"rule " : L"alert "), state);
      }
      if (control == focus) state[prefix + L"focus"] = kind == L"Edit" ? L"field " + label : kind + L" " + text;
      label = text;
    }
    if (dialog == Main() && Box() != nullptr) {
      state[L"main / box"] = L"\"" + TextOf(Box()) + L"\"";
      if (::SendMessageW(Box(), WM_GETFONT, 0, 0) != ::SendMessageW(Rules(), WM_GETFONT, 0, 0))
        state[L"main / box"] += L" in another font";
      RECT room{};
      if (!::GetClientRect(Box(), &room) || room.right < 20 || room.bottom < 10) state[L"main / box"] += L" without room";
    }
  }
  /// What the menus with states show when they open.
  [[nodiscard]] std::wstring Marks() const {
    std::wstring marks;
    for (const int position : {2, 3}) {
      HMENU popup = ::GetSubMenu(::GetMenu(Main()), position);
      ::SendMessageW(Main(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup), position);
      ForEachMenuItem(popup, [&marks](const MenuItem& item) {
        if (item.popup != nullptr || item.text.empty() || (item.state & (MF_CHECKED | MF_GRAYED)) == 0) return;
        marks += L" / " + WithoutMnemonic(item.text) + ((item.state & MF_GRAYED) != 0 ? L" grey" : L"");
        marks += (item.state & MFT_RADIOCHECK) != 0 ? L" chosen" : (item.state & MF_CHECKED) != 0 ? L" on" : L"";
      });
    }
    return marks;
  }
  void AddStores(State& state) {
    const RuleSnapshot list = rules.Snapshot();
    std::wistringstream lines(FormatRulesCsv(*list));
    std::wstring line;
    std::getline(lines, line);
    for (std::size_t i = 0; std::getline(lines, line); ++i) {
      if (i < kMostRows || i + 1 == list->size()) state[Words(L"stored rule ", i)] = line;
    }
    if (updates.UpdateAvailableEvent.Wait(0) == WaitResult::kSignaled) state[L"update"] = L"is known";
    if (sink_.OutstandingCount() != 0) state[L"alerts on their way"] = Words(sink_.OutstandingCount());
    state[L"next rule id"] = Words(rules.NextRuleId());
    RuleStore saved([] { return std::wstring(); });
    saved.Load(folder.Path(L"rules.csv"));
    if (*saved.Snapshot() != *list) state[L"rules file"] = L"differs";
    state[L"recent alerts"] = Words(recentAlerts.Size());
    for (const auto& file : std::filesystem::directory_iterator(folder.Path(L""))) {
      const std::wstring name = file.path().filename().wstring();
      if (name != L"rules.csv") state[L"file " + name] = DecodeUtf8Text(ThrowawayFolder::Read(file.path().wstring()));
    }

    const AppSettings now = settings.Get();
    const ExclusionSnapshot exclusions = engine.Exclusions();
    std::wstring joined;
    for (const std::wstring& each : *exclusions) joined += L"|" + each;
    state[L"stored actions"] = Words(now.alertActions);
    state[L"stored throttle"] = Words(now.notificationThrottleSec);
    state[L"stored check interval"] = Words(now.updateCheckIntervalHours, now.includeBetas ? L" with betas" : L"");
    state[L"stored log"] = now.logFilePath;
    state[L"stored sound"] = now.soundFilePath;
    state[L"stored poll interval"] = Words(engine.IntervalMs(), engine.Paused() ? L" paused" : L"");
    state[L"stored exclusions"] = Words(exclusions->size(), L" ", joined);
    state[L"stored place"] = PlaceText(now.mainDialogPlacement);
    RECT frame{};
    if (!::IsIconic(Main()) && ::GetWindowRect(Main(), &frame))
      state[L"main / place"] = PlaceText(WindowPlacement{frame.left, frame.top, frame.right, frame.bottom});
    if (e2e::Profile::Values(e2e::kRun).contains(L"Vantora")) state[L"starts with Windows"] = L"yes";
    // Whether the next start reads what the program has in memory now.
    TestProgram next;
    LoadSettings(next.settings, next.engine);
    AppSettings read = next.settings.Get();
    state[L"stored place in the registry"] = read.mainDialogPlacement == now.mainDialogPlacement ? L"the same" : L"another";
    read.mainDialogPlacement = now.mainDialogPlacement;
    if (read != now || next.engine.IntervalMs() != engine.IntervalMs() || *next.engine.Exclusions() != *exclusions)
      state[L"settings in the registry"] = L"differ";
  }
  [[nodiscard]] std::wstring ThemeText() const {
    ThemeNotes& notes = ThemeRecorder::notes;
    DarkScrollBarThemeHook(program.trayWindow, L"ScrollBar");
    DarkScrollBarThemeHook(program.trayWindow, L"scrollbar");
    return Words(DarkModeOn() ? L"dark, " : L"", notes.application, L", colours ", notes.colorRefreshes, L", contrast ",
                 notes.contrastRefreshes, L", title bar ", notes.titleBar, L" ",
                 ::GetPropW(Main(), L"UseImmersiveDarkModeColors") != nullptr, L", opens", std::exchange(notes.opened, L""));
  }

  [[nodiscard]] State Look() override {
    State state = views_;
    for (HWND dialog : DialogsOfThisProcess()) AddDialog(dialog, state);
    if (HWND popup = WaitForPopup(0)) {
      auto* menu = reinterpret_cast<HMENU>(::SendMessageW(popup, MN_GETHMENU, 0, 0));
      ForEachMenuItem(menu, [&state](const MenuItem& item) { state[L"popup"] += L" / " + item.text; });
    }
    MSG message;
    while (::PeekMessageW(&message, program.trayWindow, WM_USER, WM_APP, PM_REMOVE))
      Note(Words(L"tray ", message.message - WM_USER, L":", message.wParam));
    AddStores(state);
    if (FakeTaskScheduler* scheduler = scheduler_; scheduler != nullptr && scheduler->taskExists) state[L"logon task"] = L"yes";
    if (theme_) state[L"theme"] = ThemeText();
    if (wantsMarks_ && Main() != nullptr && ::IsWindowEnabled(Main())) {
      marks_ = Marks();
      RunInWindowThread(Main(),
                        [this] { marks_ += ::GetCursor() == ::LoadCursorW(nullptr, IDC_WAIT) ? L" / wait cursor" : L""; });
    }
    state[L"menus"] = marks_;
    return state;
  }

  // What can be done.

  static HWND Top() {
    HWND top = WaitForTopDialog();
    EXPECT_NE(top, nullptr) << "no window";
    return top;
  }
  /// The control with the text, or the one that comes so many places after it in the window on top.
  HWND Control(const std::wstring& text, std::size_t after = 0) {
    HWND found = e2e::WaitForResult([&] { return FindControl(Top(), text, after); });
    EXPECT_NE(found, nullptr) << "no control: " << testing::PrintToString(text);
    return found;
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
    if (cell.at(0) < 0) return Click(Rules(), 2, MAKELPARAM(100, 130));
    // All of it between two of the window's messages, as by a mouse: a box that is open has asked for its end when the next
    // comes.
    RunInWindowThread(Main(), [&] {
      ::SetFocus(Rules());
      NotifyDoubleClick(Rules(), cell.at(0), cell.at(1));
    });
  }
  static void Click(HWND control, int times, LPARAM place = MAKELPARAM(3, 3)) {
    for (int time = 0; time < times; ++time) {
      Post(control, time == 0 ? WM_LBUTTONDOWN : WM_LBUTTONDBLCLK, MK_LBUTTON, place);
      Post(control, WM_LBUTTONUP, 0, place);
    }
  }
  void Open() {
    window_.emplace([this] {
      FakeTaskScheduler scheduler;
      scheduler_ = &scheduler;
      MainDialogThread(program);
      scheduler_ = nullptr;
    });
    EXPECT_TRUE(WaitUntil([this] { return Main() != nullptr && ::IsWindowVisible(Main()); }));
    Settle();
  }

  /// The tray window in place of one that does nothing; what it starts elsewhere is told.
  void OpenTray() {
    window_.emplace([this] {
      TrayWindow tray(
          program, sink_,
          {[] { Note(L"opens the main window"); }, [] { Note(L"opens the alert log"); }, [] { Note(L"installs the update"); },
           [](Event& done) {
             Note(L"asks for the latest version");
             if (!checksHang_) done.Signal();
           }},
          [](LPCWSTR path, HMODULE, DWORD flags) -> BOOL {
            Note(Words(L"plays ", path, L" with ", flags));
            return TRUE;
          });
      static const InstanceName kName{L"VANTORA_TEST_TRAY", L"Vantora under test"};
      static const bool kRegistered = TrayWindow::RegisterWindowClass(program.instance, kName.windowClass);
      EXPECT_TRUE(kRegistered && tray.Create(kName) != nullptr);
      MSG message{};
      while (::GetMessageW(&message, nullptr, 0, 0) > 0) ::DispatchMessageW(&message);
    });
  }
  /// Two requests at once: one of them finds that the other is opening it.
  void OpenTwice() {
    window_.emplace([this] { MainDialogThread(program); });
    second_.emplace([this] { MainDialogThread(program); });
    EXPECT_TRUE(WaitUntil([this] { return second_->WaitForEnd(0) || window_->WaitForEnd(0); }));
  }
  void OpenAbout() {
    window_.emplace([this] {
      RunAboutDialog(nullptr, program,
                     [this](HWND owner, const wchar_t* address) { Note(Words(address, L" opens from ", TextOf(owner))); });
    });
  }
  void OpenBox(const std::wstring& style) {
    window_.emplace([this, style] {
      HWND owner = ::CreateWindowW(L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 500, 400, nullptr, nullptr,
                                   nullptr, nullptr);
      const int answer = XMessageBox(owner, L"Text", style.c_str(), std::stoul(style, nullptr, 0));
      MSG quit{};
      ::PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
      Note(Words(L"answer ", answer, ::IsWindowEnabled(owner) ? L"" : L", no owner", L", quit ", quit.wParam));
      ::DestroyWindow(owner);
    });
  }
  void SetTheme(const std::vector<std::int32_t>& n) {
    theme_.reset();
    theme_.emplace(n.at(0), n.at(1) != 0, n.at(2) != 0, n.at(3) != 0);
    const DWORD light = n.at(1) != 0 ? 0 : 1;  // message boxes ask this
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kThemesKey, L"AppsUseLightTheme", REG_DWORD, &light, sizeof light);
  }
  void ChangeSetting(const std::wstring& name) {
    ThemeRecorder::notes.windows.clear();
    ::SendMessageW(Top(), WM_SETTINGCHANGE, 0, name.empty() ? 0 : reinterpret_cast<LPARAM>(name.c_str()));
  }
  void View(const std::wstring& kind, const std::vector<std::wstring>& lines) {
    const std::wstring prefix = Prefix(Top()) + kind;
    std::erase_if(views_, [&prefix](const auto& line) { return line.first.starts_with(prefix); });
    for (int number = 0; const std::wstring& line : lines) views_[prefix + FormatText(L" %02d", number++)] = line;
  }
  void Choose(const std::wstring& text) {
    ForEachMenuItem(::GetMenu(Main()), [&](const MenuItem& item) {
      if (item.popup == nullptr && WithoutMnemonic(item.text) == text) PostCommand(Main(), static_cast<int>(item.id));
    });
  }

  static void Post(HWND window, int message, WPARAM wParam = 0, LPARAM lParam = 0) {
    ::PostMessageW(window, static_cast<UINT>(message), wParam, lParam);
  }
  void SetText(HWND field, const std::wstring& text) {
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
  void CopyLines(std::int32_t count, const std::wstring& end) {
    std::wstring text;
    for (int line = 0; line < count; ++line) text += Words(L"process number ", line, L".exe", end);
    SetClipboard(text);
  }

  void Do(const std::wstring& verb, std::wstring words) override {
    words = Replace(words, L"<folder>", folder.Path(L""));
    const std::pair halves = Halves(words, L'=');  // no structured binding: clang 14 cannot capture those
    std::wistringstream numbers(words);
    const std::vector<std::int32_t> n{std::istream_iterator<std::int32_t, wchar_t>(numbers), {}};
    const auto forEach = [&n](auto action) {
      for (std::int32_t number = n.at(0); number <= n.at(1); ++number) action(static_cast<std::uint32_t>(number));
    };
    const auto alert = [this](std::uint32_t pid) {
      recentAlerts.Append({{2026, 3, 4, 5, 9, 7, 3, 0}, pid, L"app.exe", 1, L"Threads: 9 > 8"});
    };
    wantsMarks_ = verb == L"menu" || verb == L"look";
    DoOneOf(
        {
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
            {L"autostart", &ToggleStartWithWindows},
            {L"alerts", [&] { forEach(alert); }},
            {L"cleared", [&] { recentAlerts.Clear(), forEach(alert); }},
            {L"update", [&] { OfferUpdate(words); }},
            {L"latest", [&] { updates.SetLatestVersion(words); }},
            {L"sound", [&] { settings.Update([&words](AppSettings& s) { s.soundFilePath = words; }); }},
            {L"checks", [&] { checksHang_ = words == L"hang"; }},
            {L"alert", [&] { sink_.OnAlert({}); }},
            {L"taskbar", [&] { taskbar_.refusing = words == L"refuses"; }},
            {L"file", [&] { ThrowawayFolder::Write(folder.Path(halves.first), EncodeUtf8(halves.second)); }},
            {L"hold",
             [&] {
               held_ =
                   OwnFileHandle(::CreateFileW(folder.Path(words).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
             }},
            {L"clipboard", [&] { SetClipboard(words); }},
            {L"lines", [&] { CopyLines(n.at(0), Halves(words, L' ').second); }},
            {L"copied", [&] { Note(L"copied " + ReadClipboardText(nullptr).value_or(L"nothing")); }},
            {L"theme", [&] { SetTheme(n); }},  // build, whether dark is asked for, high contrast, whether that can be refreshed
            {L"now",
             [&] {
               ThemeRecorder::notes.asksForDark = n.at(0) != 0;
               ThemeRecorder::notes.highContrast = n.at(1) != 0;
               ThemeRecorder::notes.allowedForWindow = n.at(2) != 0;
             }},
            {L"setting", [&] { ChangeSetting(words); }},
            {L"administrator", [&] { elevated_ = n.at(0), accepts_ = n.at(1); }},
            {L"task", [&] { scheduler_.load()->taskExists = n.at(0) != 0; }},
            {L"stranger",
             [&] {
               for (HWND dialog : DialogsOfThisProcess()) Post(dialog, WM_INITDIALOG);
               static std::byte nothingOfOurs[sizeof(TrayWindow)];
               CREATESTRUCTW create{};
               create.lpCreateParams = nothingOfOurs;
               ::SendMessageW(program.trayWindow, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&create));
             }},
            {L"send",
             [&] { ::SendMessageW(program.trayWindow, static_cast<UINT>(n.at(0)), static_cast<WPARAM>(n.at(1)), n.at(2)); }},
            {L"timer",
             [&] {
               RunInWindowThread(program.trayWindow, [&] {
                 Note(::KillTimer(program.trayWindow, static_cast<UINT_PTR>(n.at(0))) ? L"ran until now" : L"does not run");
               });
             }},
            // What the user does.
            {L"open", [&] { words == L"twice" ? OpenTwice() : Open(); }},
            {L"tray", [&] { OpenTray(); }},
            {L"about", [&] { OpenAbout(); }},
            {L"progress", [&] { window_.emplace([this] { UpdateProgressDialog(program.instance).RunModal(nullptr); }); }},
            {L"ask", [&] { OpenBox(words); }},
            {L"again", [&] { MainDialogThread(program); }},
            {L"minimise", [&] { ::ShowWindow(Main(), SW_MINIMIZE); }},
            {L"move",
             [&] { ::SetWindowPos(Top(), nullptr, n.at(0), n.at(1), n.at(2) - n.at(0), n.at(3) - n.at(1), SWP_NOZORDER); }},
            {L"close", [&] { Post(words == L"owner" ? ::GetWindow(Top(), GW_OWNER) : Top(), WM_CLOSE); }},
            {L"quit",
             [&] { ::PostThreadMessageW(::GetWindowThreadProcessId(Top(), nullptr), WM_QUIT, static_cast<WPARAM>(n.at(0)), 0); }},
            {L"look", [] {}},
            {L"layout", [&] { View(L"layout", LayoutOf(Top())); }},
            {L"colours", [&] { View(L"colours", ColoursOf(Top())); }},
            {L"names", [] { TellNames(); }},
            {L"menu", [&] { Choose(words); }},
            {L"press", [&] { Click(Control(words), 1); }},
            {L"twice", [&] { Click(Control(words), 2); }},
            {L"browse", [&] { Click(Control(words, 2), 1); }},
            {L"type", [&] { SetText(Control(halves.first, 1), halves.second); }},
            {L"focus", [&] { Post(Top(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(words, 1)), TRUE); }},
            {L"link",
             [&] { Post(Top(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(::GetDlgItem(Main(), IDC_VERSION_LINK)), TRUE); }},
            {L"click", [&] { Click(::GetDlgItem(Main(), IDC_VERSION_LINK), 1, MAKELPARAM(170, 5)); }},
            {L"paste", [&] { Post(FocusOf(Top()), WM_PASTE); }},
            {L"key", [&] { Press(words, false); }},
            {L"ctrl", [&] { Press(words, true); }},
            {L"select", [&] { SelectRows(Rules(), n); }},
            {L"cell", [&] { DoubleClick(n); }},
            {L"box", [&] { SetText(e2e::WaitForResult([this] { return Box(); }), words); }},
            {L"pick",
             [&] {
               for (int i = 0; i <= n.at(0); ++i) Post(Main(), WM_KEYDOWN, VK_DOWN);
               Post(Main(), WM_KEYDOWN, VK_RETURN);
             }},
            {L"answer", [&] { SetText(::GetDlgItem(Top(), kFileNameBox), words), PostCommand(Top(), IDOK); }},
            {L"tab", [&] { ::SendDlgItemMessageW(Main(), IDC_TABS, TCM_SETCURFOCUS, static_cast<WPARAM>(n.at(0)), 0); }},
            {L"rightclick",
             [&] {
               for (const int message : {WM_RBUTTONDOWN, WM_RBUTTONUP}) Post(Page(), message, 0, MAKELPARAM(5, 80));
             }},
            {L"contextkey", [&] { Post(Page(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(Page()), -1); }},
        },
        verb);
    Settle();
    const std::vector<AlertRecord> alerts = recentAlerts.Copy();
    const std::wstring newest = alerts.empty() ? L"" : Words(alerts.back().pid);
    EXPECT_TRUE(WaitUntil([&] { return Page() == nullptr || Cell(Page(), 0, 1) == newest; }, 3'500)) << "it looks every 2 s";
  }

  /// Those given since the last look. This system refuses them, which the program tells by a line.
  static void TellNames() {
    for (const std::wstring& line : DiagnosticLines::Take()) {
      if (line.starts_with(L"SetAccessibleNames - ")) Note(line.substr(21, line.rfind(L':') - 21));
    }
  }
  static BOOL TellToken(HANDLE, TOKEN_INFORMATION_CLASS, void* data, DWORD, DWORD*) {
    *static_cast<BOOL*>(data) = elevated_;
    return TRUE;
  }
  static BOOL Elevate(SHELLEXECUTEINFOW* request) {
    const bool waited = (request->fMask & SEE_MASK_NOCLOSEPROCESS) != 0;
    const bool waiting = ::GetCursor() == ::LoadCursorW(nullptr, IDC_WAIT);
    Note(Words(L"elevated ", request->lpParameters, waited ? L", waited for" : L"", waiting ? L", wait cursor" : L""));
    return accepts_;
  }

  inline static std::atomic<BOOL> elevated_ = TRUE;
  inline static std::atomic<BOOL> accepts_ = TRUE;
  inline static std::atomic<bool> checksHang_ = false;
  inline static const ElevationSystem kElevation = {::OpenProcessToken, &TellToken, &Elevate};

  const e2e::Profile profile_;
  const DiagnosticLines lines_;
  std::optional<ThemeRecorder> theme_;
  std::optional<WindowThread> window_;
  std::optional<WindowThread> second_;
  std::atomic<FakeTaskScheduler*> scheduler_ = nullptr;
  GUIAlertSink sink_;
  State views_;
  std::wstring marks_;
  bool wantsMarks_ = false;
  UniqueHandle held_;
};

TEST_P(Session, GoesAsWritten) { GoThrough("sessions", 100); }

INSTANTIATE_TEST_SUITE_P(Of, Session,
                         testing::Values("windows", "dark", "boxes", "rules", "editor", "keys", "exchange", "presets",
                                         "settings_menu", "settings_page", "alerts", "update", "frame", "dialogs", "tray"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace

/// The linker finds this one before the program's own, which would download.
void UpdateInstallThread(Program&) { Session::Note(L"installs the update"); }
