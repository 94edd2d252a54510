// Journeys: what a user, Windows and other programs do with the built program step by step, and everything that changes with each
// step: its windows and its end, the taskbar's calls, what it says, the registry, its files and what the update server is asked,
// one text for each subject in golden/journeys. The programs are A, B and so on in the order of their starts.

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include "core/records.h"
#include "platform/text_encoding.h"
#include "tests/support/debug_lines.h"
#include "tests/support/profile.h"
#include "tests/support/program_test.h"
#include "tests/support/steps_test.h"
#include "tests/update_server/test_server.h"
#include "update/version.h"

namespace e2e {
namespace {

class Journey : public StepsTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(::FindWindowW(kTrayClass, nullptr), nullptr) << "an instance is running";
    if (::_wgetenv(L"VANTORA_TEST_SERVER_FOLDER") != nullptr) server_.emplace();
    // What a journey has left that did not come to its end.
    const std::wstring uninstaller = folder_ + L"\\uninstall.exe";
    if (!PathExists(uninstaller)) return;
    Run(uninstaller, L"/S /PURGE");
    EXPECT_TRUE(WaitUntil([this] { return Profile::Values(Keys().at(L"entry")).empty() && !PathExists(folder_); }));
    Profile::Set(L"UpdateChecksDisabled", 1);
  }

  // What there is to see.

  /// All of the process, or those that only run while nobody else wants to.
  static std::size_t CountThreads(DWORD processId, bool idle) {
    const UniqueHandle snapshot = OwnFileHandle(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL more = ::Thread32First(snapshot.get(), &entry); more; more = ::Thread32Next(snapshot.get(), &entry)) {
      // Some compatible systems tell the priority that was set in place of the base that comes of it.
      const bool isIdle = entry.tpBasePri == 1 || entry.tpBasePri == THREAD_PRIORITY_IDLE;
      if (entry.th32OwnerProcessID == processId && (isIdle || !idle)) ++count;
    }
    return count;
  }
  /// Figures that are right are shown in words; the others stay as they are.
  [[nodiscard]] std::wstring WithoutFigures(std::wstring text) const {
    static const std::wregex kFigure(L"(Working Set: |CPU: )([0-9.]+)");
    PROCESS_MEMORY_COUNTERS counters{};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    const double workingSetMb = static_cast<double>(counters.WorkingSetSize) / kBytesPerMb;
    std::wstring shown;
    for (std::wsmatch found; std::regex_search(text, found, kFigure); text = found.suffix().str()) {
      const double figure = std::stod(found[2]);
      std::wstring word = found[2];
      if (found[1] == L"Working Set: " && std::abs(figure - workingSetMb) <= 8) word = L"(own)";
      if (found[1] == L"CPU: " && figure >= 0.5 && figure <= 100.0) word = L"(share)";
      shown += found.prefix().str() + found[1].str() + word;
    }
    return std::regex_replace(shown + text, std::wregex(L"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"), L"(time)");
  }
  /// What differs between machines, and the words that stand for it in steps and in what they change.
  [[nodiscard]] std::vector<std::pair<std::wstring, std::wstring>> Names() const {
    wchar_t own[MAX_PATH]{};
    ::GetModuleFileNameW(nullptr, own, MAX_PATH);
    std::vector<std::pair<std::wstring, std::wstring>> names = {{ProgramPath(), L"(program)"},
                                                                {FullPath(VANTORA_UPDATED_EXE), L"(updatable program)"},
                                                                {FullPath(VANTORA_PLANTED_LIBRARY), L"(planted library)"},
                                                                {FullPath(VANTORA_SETUP), L"(setup)"},
                                                                {FullPath(VANTORA_OLD_SETUP), L"(old setup)"},
                                                                {FullPath(L"" VANTORA_GOLDEN_FOLDER), L"(golden)"},
                                                                {profile_.DataFolder(), L"(data)"},
                                                                {profile_.LegacyFolder(), L"(old data)"},
                                                                {DecodeUtf8Text(kRulesHead), L"(head)"},
                                                                {folder_, L"(installed)"},
                                                                {AppVersionDisplay, L"(version)"},
                                                                {AppVersion, L"(number)"},
                                                                {std::filesystem::path(own).filename().wstring(), L"(self)"}};
    if (server_) {
      names.emplace_back(TestServer::Path(L""), L"(served)\\");
      names.emplace_back(::_wgetenv(L"VANTORA_TEST_UPDATE_SERVER"), L"(server)");
    }
    return names;
  }
  [[nodiscard]] std::wstring Readable(const std::wstring& line) const override {
    std::wstring text = WithWords(line, Names());
    const auto replaceId = [&text](DWORD id, const std::wstring& word) {
      text = std::regex_replace(text, std::wregex(Words(L"\\b", id, L"\\b")), word);
    };
    replaceId(::GetCurrentProcessId(), L"(pid)");
    for (std::size_t i = 0; i < programs_.size(); ++i) replaceId(programs_[i]->Id(), Letter(i));
    std::replace(text.begin(), text.end(), L'\0', L'|');
    return WithoutFigures(text);
  }
  static void AddValues(State& state, const wchar_t* word) {
    for (const auto& [name, value] : Profile::Values(Keys().at(word))) {
      if (name != L"MainDialogPlacement")  // a session's affair
        state[Words(word, L" ", name)] = value.second.substr(0, value.second.find_last_not_of(L'\0') + 1);
    }
  }
  /// Keeps nobody from writing or deleting the file.
  static std::string ReadShared(const std::wstring& path) {
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueHandle file = OwnFileHandle(::CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string bytes(file != nullptr ? ::GetFileSize(file.get(), nullptr) : 0, '\0');
    DWORD count = 0;
    if (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) return "(held)";
    return bytes.substr(0, count);
  }
  static void AddFiles(State& state, const std::wstring& word, const std::wstring& folder) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, ignored)) {
      if (!entry.is_regular_file() || entry.path().extension() == L".exe" || entry.path().extension() == L".dll") continue;
      const std::wstring name = std::filesystem::relative(entry.path(), folder).wstring();
      state[word + L" " + name] = DecodeUtf8Text(ReadShared(entry.path().wstring()));
    }
  }
  void AddProgram(State& state, const std::wstring& letter, const RunningProgram& program) const {
    const std::optional<DWORD> code = program.WaitForExit(0);
    state[letter] = code ? Words(L"ended with ", *code) : L"runs";
    std::map<std::wstring, int> shown;
    const auto add = [&](HWND window) {
      if (!::IsWindowVisible(window)) return false;
      const bool isMain = ::GetDlgItem(window, IDC_VERSION_LINK) != nullptr;
      HWND alerts = TextOf(window).ends_with(L"Alert Log") ? ::GetDlgItem(window, IDC_ALERT_LIST) : nullptr;
      const std::wstring text =
          alerts != nullptr ? Words(RowCount(alerts), L" alerts") : TextOfItem(window, isMain ? IDC_VERSION_LINK : 1001);
      ++shown[Words(letter, L" shows ", ClassOf(window) == kMenuClass ? L"a menu" : TextOf(window), text.empty() ? L"" : L" | ",
                    text)];
      return false;
    };
    for (const wchar_t* name : {kDialogClass, kMenuClass}) FindWindowOf(program.Id(), name, add);
    for (const auto& [name, count] : shown) state[name] = std::to_wstring(count);
  }
  void AddInstallation(State& state) const {
    std::error_code ignored;
    std::uint64_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder_, ignored)) {
      WIN32_FILE_ATTRIBUTE_DATA data{};  // asked for without opening the file, which may be about to be deleted
      ::GetFileAttributesExW(entry.path().c_str(), GetFileExInfoStandard, &data);
      state[L"installed " + entry.path().filename().wstring()] = L"there";
      bytes += data.nFileSizeLow;
    }
    if (PathExists(shortcut_)) state[L"shortcut"] = L"there";
    const auto size = state.find(L"entry EstimatedSize");
    if (size != state.end()) {
      const bool isNear = std::abs(std::stol(size->second) - static_cast<long>(bytes / 1024)) <= 100;
      size->second = isNear ? L"that of the files" : L"another";
    }
  }
  /// Who runs without having been started here, an installation's program, is the next letter.
  void Adopt() {
    DWORD id = 0;
    ::GetWindowThreadProcessId(::FindWindowW(kTrayClass, nullptr), &id);
    const auto isKnown = [id](const auto& program) { return program->Id() == id; };
    if (id != 0 && std::none_of(programs_.begin(), programs_.end(), isKnown))
      programs_.push_back(std::make_unique<RunningProgram>(id));
  }
  [[nodiscard]] State Look() override {
    State state;
    Adopt();
    for (std::size_t i = 0; i < programs_.size(); ++i) AddProgram(state, Letter(i), *programs_[i]);
    for (const wchar_t* word : {L"settings", L"old settings", L"run", L"entry"}) AddValues(state, word);
    AddFiles(state, L"file", profile_.DataFolder());
    AddFiles(state, L"old file", profile_.LegacyFolder());
    AddInstallation(state);
    if (server_) {
      for (const std::wstring& file : {TestServer::File(), TestServer::Path(L"elsewhere\\vantorasetup.exe")})
        if (PathExists(file)) state[file] = L"there";
    }
    if (UniqueHandle(::OpenEventW(SYNCHRONIZE, FALSE, kRunningEvent)) != nullptr) state[L"running"] = L"signed up";
    MSG message{};
    while (::PeekMessageW(&message, oldProgram_, UWM_TERMINATE, UWM_TERMINATE, PM_REMOVE)) ++asked_;
    state[L"old program is asked"] = std::to_wstring(asked_);
    return state;
  }
  static std::wstring Letter(std::size_t program) { return std::wstring(1, static_cast<wchar_t>(L'A' + program)); }

  [[nodiscard]] std::vector<std::wstring> Hear() override {
    std::vector<std::wstring> heard;
    static const std::regex kLine(
        "\n(\\d+) ((?:MonitorEngine::Stop|RuleStore::|ALERT|Existing instance|Monitoring |MainDialogThread|"
        "ERROR|WinVerifyTrust)[^\n]*)");
    const std::string all = debug_.All();
    const std::string lines = all.substr(LengthBefore("lines", all.size()));
    for (std::sregex_iterator line(lines.begin(), lines.end(), kLine); line != std::sregex_iterator(); ++line) {
      for (std::size_t i = 0; i < programs_.size(); ++i) {
        const std::string text = (*line)[2];
        if (std::to_string(programs_[i]->Id()) == (*line)[1])
          heard.push_back(Letter(i) + L" says " + std::wstring(text.begin(), text.end()));
      }
    }
    if (!server_) return heard;
    for (std::size_t at = 0; (at = lines.find(" Update check finished", at)) != std::string::npos; ++at)
      heard.push_back(L"a check ends");
    const std::string requests = TestServer::Requests();
    const std::string asked = requests.substr(LengthBefore("requests", requests.size()));
    if (!asked.empty()) heard.push_back(L"server: " + DecodeUtf8Text(asked));
    return heard;
  }
  // What is done.

  static const std::map<std::wstring, const wchar_t*>& Keys() {
    static const std::map<std::wstring, const wchar_t*> keys = {
        {L"settings", kSettings},
        {L"old settings", kLegacySettings},
        {L"run", kRun},
        {L"entry", L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Vantora"},
        {L"Wine", L"Software\\Wine\\AppDefaults\\vantora.exe"}};
    return keys;
  }
  /// "key name=value".
  static void Set(const std::wstring& words, DWORD type) {
    const std::size_t equals = words.find(L'=');
    const std::size_t blank = words.rfind(L' ', equals);
    const std::wstring text = words.substr(equals + 1);
    std::wstring texts = text + L'\0';
    std::replace(texts.begin(), texts.end(), L'|', L'\0');
    const wchar_t* key = Keys().at(words.substr(0, blank));
    const std::wstring name = words.substr(blank + 1, equals - blank - 1);
    if (type == REG_DWORD) return Profile::Set(name.c_str(), static_cast<DWORD>(std::stoul(text)), key);
    Profile::SetText(key, name.c_str(), type == REG_MULTI_SZ ? texts : text, type);
  }
  void Start(const std::wstring& arguments, const std::wstring& path) {
    programs_.push_back(std::make_unique<RunningProgram>(arguments, path));
  }
  static void Run(const std::wstring& path, const std::wstring& arguments) {
    const auto code = RunningProgram(arguments, path).WaitForExit(40'000);
    Note(code ? Words(L"ends with ", *code) : L"does not end");
  }
  /// Presses a button of the box or the window in front.
  static void Answer(const RunningProgram& program, const std::wstring& text) {
    const auto find = [&] {
      HWND button = nullptr;
      FindWindowOf(program.Id(), kDialogClass,
                   [&](HWND window) { return ::IsWindowVisible(window) && (button = FindControl(window, text)) != nullptr; });
      return button;
    };
    ::PostMessageW(WaitForResult(find), BM_CLICK, 0, 0);
  }
  /// What Windows tells its user of a program's version.
  static void TellVersion(const std::wstring& path) {
    std::wstring block(::GetFileVersionInfoSizeW(path.c_str(), nullptr) / sizeof(wchar_t), L'\0');
    ::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size() * sizeof(wchar_t)), block.data());
    for (const std::size_t at : {24U, 28U}) {  // the file's and the product's as numbers
      Note(Words(int{block.at(at + 1)}, L".", int{block[at]}, L".", int{block[at + 3]}, L".", int{block[at + 2]}));
    }
    static const std::wregex kText(L"[ -~]{4,}");
    for (std::wsregex_iterator text(block.begin(), block.end(), kText); text != std::wsregex_iterator(); ++text)
      Note(text->str());
  }
  /// Opens the pattern's cell of the first rule and types into it.
  static void EditCell(const RunningProgram& program) {
    HWND list = ::GetDlgItem(program.WaitForMainWindow(), IDC_RULE_LIST);
    ASSERT_TRUE(WaitUntil([&] { return RowCount(list) == 1; }));
    // Right of the first column, in the row below the header.
    for (const int message : {WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP}) {
      ::PostMessageW(list, static_cast<UINT>(message), message == WM_LBUTTONUP ? 0 : MK_LBUTTON, MAKELPARAM(120, 28));
    }
    HWND box = WaitForResult([&] { return ::FindWindowExW(list, nullptr, L"Edit", nullptr); });
    EXPECT_EQ(TextOf(box), L"a.exe");
    ::SendMessageW(box, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"b.exe"));
  }
  void Do(const std::wstring& verb, std::wstring words) override {
    for (const auto& [plain, word] : Names()) words = Replace(words, word, plain);
    // Most are done to a program: "verb A words".
    const auto program = [&]() -> RunningProgram& { return *programs_.at(static_cast<std::size_t>(words.at(0) - L'A')); };
    const std::wstring rest = words.size() > 2 ? words.substr(2) : L"";
    const std::pair file = Halves(words, L'|');
    const std::pair text = Halves(words, L'=');
    static const std::map<std::wstring, int> commands = {{L"log", IDM_ALERT_LOG},
                                                         {L"add", IDM_ADD_RULE},
                                                         {L"reset", IDM_RESET_RULES},
                                                         {L"export", IDM_EXPORT_RULES},
                                                         {L"exit", IDM_EXIT}};
    DoOneOf(
        {
            {L"start", [&] { Start(words, ProgramPath()); }},
            {L"launch", [&] { Start(file.second, file.first); }},
            {L"run", [&] { Run(file.first, file.second); }},
            {L"write", [&] { WriteFileBytes(text.first, EncodeUtf8(text.second)); }},
            {L"copy",
             [&] {
               std::filesystem::create_directories(std::filesystem::path(text.second).parent_path());
               EXPECT_TRUE(::CopyFileW(text.first.c_str(), text.second.c_str(), FALSE));
             }},
            {L"compare", [&] { Note(ReadShared(text.first) == ReadShared(text.second) ? L"the same" : L"another"); }},
            {L"version", [&] { TellVersion(words); }},
            {L"tray", [&] { program().ChooseFromTrayMenu(rest.at(0)); }},
            {L"traymenu", [&] { EXPECT_TRUE(program().OpenTrayMenu()); }},
            {L"click", [&] { program().PostToTray(UWM_TRAYICON, 0, WM_LBUTTONUP); }},
            {L"clickballoon", [&] { program().PostToTray(UWM_TRAYICON, 0, NIN_BALLOONUSERCLICK); }},
            {L"check", [&] { program().PostToTray(UWM_CHECK_FOR_UPDATES, rest == L"by hand" ? 1 : 0, 0); }},
            {L"choose", [&] { PostCommand(program().WaitForMainWindow(), commands.at(rest)); }},
            {L"answer", [&] { Answer(program(), rest); }},
            {L"end", [&] { program().PostToTray(UWM_TERMINATE, 0, 0); }},
            {L"edit", [&] { EditCell(program()); }},
            // An instance that nothing ends, as one with more rights would be.
            {L"block", [&] { blocker_.reset(::CreateEventW(nullptr, FALSE, FALSE, kRunningEvent)); }},
            {L"unblock", [&] { blocker_.reset(); }},
            {L"server", [&] { TestServer::Use(EncodeUtf8(words)); }},
            // For the programs that are started from now on.
            {L"host", [&] { TestServer::UseServer(words.c_str()); }},
            {L"temp", [&] { TestServer::UseTemp(TestServer::Path(words)); }},
            {L"taskbar", [&] { ::SendNotifyMessageW(HWND_BROADCAST, ::RegisterWindowMessageW(L"TaskbarCreated"), 0, 0); }},
            {L"number", [&] { Set(words, REG_DWORD); }},
            {L"text", [&] { Set(words, REG_SZ); }},
            {L"texts", [&] { Set(words, REG_MULTI_SZ); }},
            {L"forget", [&] { ::RegDeleteTreeW(HKEY_CURRENT_USER, Keys().at(words)); }},
            {L"threads",
             [&] {
               while (CountThreads(::GetCurrentProcessId(), false) < std::stoul(words)) {
                 threads_.emplace_back([](const std::stop_token& end) {
                   while (!end.stop_requested()) ::Sleep(20);
                 });
               }
             }},
            {L"busy",
             [&] {
               threads_.emplace_back([tray = program().WaitForTray()](const std::stop_token& end) {
                 while (!end.stop_requested()) ::SendMessageW(tray, WM_NULL, 0, 0);
               });
             }},
            {L"idle",
             [&] {
               const auto runs = [&] { return CountThreads(program().Id(), true) == 1; };
               Note(WaitUntil(runs) ? L"a thread for idle moments" : L"no thread for idle moments");
             }},
            {L"pause", [&] { ::Sleep(std::stoul(words)); }},
            {L"escape", [&] { program().PostToTray(WM_CANCELMODE, 0, 0); }},
            {L"clock", [&] { clock_ = ::GetTickCount64(); }},
            {L"passed", [&] { Note(::GetTickCount64() - clock_ >= std::stoul(words) ? L"yes" : L"no"); }},
            {L"oldprogram",
             [&] {
               // A window of the test's own stands for it, which hangs: requests wait in this thread's queue.
               static const WNDCLASSW kClass{0, ::DefWindowProcW, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, L"HALVERNW"};
               static const ATOM kRegistered = ::RegisterClassW(&kClass);
               EXPECT_NE(kRegistered, 0);
               oldProgram_ = ::CreateWindowW(L"HALVERNW", L"Halvern", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
             }},
            {L"oldprogramends", [&] { ::DestroyWindow(oldProgram_); }},
        },
        verb);
  }

  Profile profile_;
  DebugLines debug_;
  std::vector<std::unique_ptr<RunningProgram>> programs_;
  /// Where with_update_server runs the tests.
  std::optional<TestServer> server_;
  /// Where an installation goes.
  const std::wstring folder_ = ::_wgetenv(L"LOCALAPPDATA") + std::wstring(L"\\Programs\\Vantora");
  const std::wstring shortcut_ =
      ::_wgetenv(L"APPDATA") + std::wstring(L"\\Microsoft\\Windows\\Start Menu\\Programs\\Vantora.lnk");
  UniqueHandle blocker_;
  std::vector<std::jthread> threads_;
  ULONGLONG clock_ = 0;
  HWND oldProgram_ = nullptr;
  int asked_ = 0;
};

TEST_P(Journey, GoesAsWritten) { GoThrough("journeys", 2000); }

INSTANTIATE_TEST_SUITE_P(Of, Journey,
                         testing::Values("start_up", "alerts", "earlier_product", "end", "update", "update_refused", "upgrade",
                                         "uninstall"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
}  // namespace e2e
