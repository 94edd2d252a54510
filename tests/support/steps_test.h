#pragma once

// A test told as a text of steps: a line "> " is a step, below it stands, indented, everything that it changes; lines of any
// other kind are remarks. A step is over when what was expected has come. VANTORA_GOLDEN=write writes the changes anew: then it
// is over when nothing has changed for a while.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "platform/text_encoding.h"
#include "tests/support/shell_stand_in.h"
#include "tests/support/wait.h"
#include "tests/tables/table_text.h"

class StepsTest : public testing::TestWithParam<const char*> {
 protected:
  /// Values by names; what belongs to a window is named "<window> / ...", and "<window> / open" is there as long as the window.
  using State = std::map<std::wstring, std::wstring>;

  virtual void Do(const std::wstring& verb, std::wstring words) = 0;
  [[nodiscard]] virtual State Look() = 0;
  /// What else has happened since the step began, in order.
  [[nodiscard]] virtual std::vector<std::wstring> Hear() { return {}; }
  /// A line of changes without what differs between machines.
  [[nodiscard]] virtual std::wstring Readable(const std::wstring& line) const = 0;

  /// Tells what happens in this step. Any thread.
  static void Note(const std::wstring& text) {
    const std::lock_guard lock(notesMutex_);
    notes_.push_back(text);
  }
  /// How long a source was when the step began that is so long now.
  std::size_t LengthBefore(const char* source, std::size_t length) {
    lengths_[source] = length;
    return lengthsBefore_[source];
  }

  static void DoOneOf(const std::map<std::wstring, std::function<void()>>& verbs, const std::wstring& verb) {
    ASSERT_TRUE(verbs.contains(verb)) << "no such step";
    verbs.at(verb)();
  }

  /// Each pair's second text in place of its first; control characters by their names.
  static std::wstring WithWords(std::wstring text, const std::vector<std::pair<std::wstring, std::wstring>>& words) {
    static const std::pair<std::wstring, std::wstring> kControls[] = {
        {L"\r", L"<CR>"}, {L"\n", L"<LF>"}, {L"\t", L"<TAB>"}, {L"\xFEFF", L"<U+FEFF>"}};
    for (const auto& [plain, word] : words) text = Replace(text, plain, word);
    for (const auto& [plain, word] : kControls) text = Replace(text, plain, word);
    return text;
  }

  e2e::ShellStandIn taskbar_;

  /// Goes through golden/<subject>/<the test's parameter>.txt.
  void GoThrough(const std::string& subject, DWORD quietMs) {
    static const bool kWriting = std::getenv("VANTORA_GOLDEN") != nullptr;
    const std::string path = VANTORA_GOLDEN_FOLDER "/" + subject + "/" + GetParam() + ".txt";
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file) << path;
    std::string written;
    std::string line;
    state_ = Look();
    std::getline(file, line);
    while (!file.eof() && !HasFailure()) {
      const std::string step = line;
      std::string expected;
      while (std::getline(file, line) && line.starts_with("  ")) expected += line + "\n";
      written += step + "\n";
      if (!step.starts_with("> ")) continue;
      SCOPED_TRACE(step);
      std::cout << step << std::endl;  // where it hangs, should it
      lengthsBefore_ = lengths_;
      {
        const std::lock_guard lock(notesMutex_);
        notes_.clear();
      }
      const auto [verb, words] = Halves(DecodeUtf8Text(step.substr(2)), L' ');
      Do(verb, Plain(words));
      State now;
      std::string changes;
      ULONGLONG since = ::GetTickCount64();
      const bool done = e2e::WaitUntil([&] {
        const std::string before = changes;
        changes = Changes(now = Look());
        if (!kWriting) return changes == expected;
        if (changes != before) since = ::GetTickCount64();
        // Later where something was expected that may still come.
        return ::GetTickCount64() - since >= (expected.empty() ? 1 : 5) * quietMs;
      });
      EXPECT_TRUE(done || kWriting) << changes << "in place of\n" << expected;
      written += changes;
      state_ = std::move(now);
    }
    if (kWriting && !HasFailure()) std::ofstream(path, std::ios::binary) << written;
  }

 private:
  /// Adds what was known of a window that is closed: that is one change, and when it opens again it is compared with this.
  [[nodiscard]] std::string Changes(State& now) {
    std::wstring text;
    const auto add = [&](const std::wstring& line) { text += L"  " + Readable(line) + L"\n"; };
    const std::vector<std::wstring> calls = taskbar_.Calls();
    const std::vector<std::wstring> more = Hear();
    {
      const std::lock_guard lock(notesMutex_);
      std::ranges::for_each(notes_, add);
    }
    for (std::size_t call = LengthBefore("taskbar", calls.size()); call < calls.size(); ++call) add(L"taskbar: " + calls[call]);
    std::ranges::for_each(more, add);
    std::vector<std::wstring> gone;
    for (const auto& [name, value] : state_) {
      if (now.contains(name)) continue;
      const std::size_t slash = name.find(L" / ");
      const auto window = slash == std::wstring::npos ? now.end() : now.find(name.substr(0, slash) + L" / open");
      if (slash == std::wstring::npos || (window != now.end() && window->second != L"no")) {
        gone.push_back(name);
      } else {
        now[name] = name.ends_with(L" / open") ? L"no" : value;
      }
    }
    for (const auto& [name, value] : now) {
      const auto before = state_.find(name);
      if (before == state_.end() || before->second != value) add(name + L": " + value);
    }
    for (const std::wstring& name : gone) {
      if (!name.ends_with(L" focus")) add(name + L" is gone");
    }
    return EncodeUtf8(text);
  }

  State state_;
  std::map<std::string, std::size_t> lengths_;
  std::map<std::string, std::size_t> lengthsBefore_;
  inline static std::mutex notesMutex_;
  inline static std::vector<std::wstring> notes_;
};
