#pragma once

// The store of rules and its file, step by step, also on a full disk and beside another program.

#include <gtest/gtest.h>

#include <thread>

#include "platform/text_encoding.h"
#include "platform/text_file.h"
#include "storage/rule_store.h"
#include "storage/rules_csv.h"
#include "tests/support/diagnostic_lines.h"
#include "tests/support/throwaway_folder.h"
#include "tests/tables/table_text.h"

#ifdef _WIN32
#include "platform/handles.h"
#else
#include <sys/resource.h>

#include <csignal>
#endif

/// The rows of a list as rules.csv has them, without the header.
inline std::wstring Rows(const std::optional<RuleList>& rules) {
  if (!rules.has_value()) return L"nothing";
  const std::wstring file = FormatRulesCsv(*rules);
  return file.substr(file.find(L'\n') + 1);
}

/// A step on the store, and what it gives: its answer, the rules' ids, the next one, what was said.
class StoreSteps {
 public:
  std::wstring operator()(const std::wstring& step) {
    const std::pair halves = Halves(step, L' ');  // no structured binding: clang 14 cannot capture those
    const std::wstring& words = halves.second;
    std::wistringstream numbers(words);
    const std::map<std::wstring, std::function<std::wstring()>> verbs = {
        {L"file", [&] { return ThrowawayFolder::Write(folder_.Path(L"rules.csv"), EncodeUtf8(words)), L"put"; }},
        {L"new", [&] { return store_ = std::make_unique<RuleStore>([this] { return folder_.Path(L"rules.csv"); }), L"made"; }},
        {L"load", [&] { return YesNo(store_->Load(folder_.Path(words))); }},
        {L"take", [&] { return std::to_wstring(store_->TakeRuleId()); }},
        {L"append", [&] { return store_->Append({MakeNewRule(Next<std::uint32_t>(numbers))}), L"done"; }},
        {L"edit",
         [&] {
           return YesNo(store_->Edit(Next<std::uint32_t>(numbers), [](ThresholdRule& rule) { rule.processPattern = L"b,\x1A"; }));
         }},
        {L"remove", [&] { return store_->Remove({Next<std::uint32_t>(numbers)}), L"done"; }},
        {L"clear", [&] { return store_->RemoveAll(), L"done"; }},
        {L"export", [&] { return YesNo(store_->ExportJson(folder_.Path(words))); }},
        {L"import", [&] { return YesNo(store_->ImportJson(folder_.Path(words))); }},
        {L"json", [&] { return YesNo(store_->ImportJsonString(words)); }},
        {L"close", [&] { return YesNo(store_->SaveAndClose(folder_.Path(words))); }},
        {L"line", [&] { return YesNo(AppendTextFile(folder_.Path(words), L"line\n") == WriteResult::kWritten); }},
        {L"read", [&] { return DecodeUtf8Text(ThrowawayFolder::Read(folder_.Path(words))); }},
#ifdef _WIN32
        // Another program opens the file with this access and sharing, and closes it after so many milliseconds.
        {L"held",
         [&] {
           const auto access = Next<DWORD>(numbers);
           const auto sharing = Next<DWORD>(numbers);
           const auto ms = Next<DWORD>(numbers);
           UniqueHandle handle = OwnFileHandle(
               ::CreateFileW(folder_.Path(L"rules.csv").c_str(), access << 30, sharing, nullptr, OPEN_EXISTING, 0, nullptr));
           const bool opened = handle != nullptr;
           holder_ = std::jthread([handle = std::move(handle), ms](const std::stop_token& end) {
             for (DWORD waited = 0; waited < ms && !end.stop_requested(); waited += 10) ::Sleep(10);
           });
           return YesNo(opened);
         }},
        {L"free", [&] { return holder_ = std::jthread(), L"done"; }},
#else
        // The disk has no room for a longer file, and has again.
        {L"full", [&] { return LimitFiles(ThrowawayFolder::Read(folder_.Path(L"rules.csv")).size()), L"done"; }},
        {L"free", [&] { return LimitFiles(RLIM_INFINITY), L"done"; }},
#endif
    };
    const std::wstring answer = verbs.at(halves.first)();
    std::wstring rules;
    for (const ThresholdRule& rule : *store_->Snapshot()) rules += Words(L" ", rule.ruleId, L":", rule.processPattern);
    const bool saved =
        Rows(ParseRulesCsv(ReadTextFile(folder_.Path(L"rules.csv"), CtrlZ::kIsText).value_or(L""))) == Rows(*store_->Snapshot());
    const std::wstring said = std::regex_replace(Join(DiagnosticLines::Take()), std::wregex(L"[^ ]*vantora-test-[0-9]+."), L"");
    return Words(answer, L",", rules, L" next ", store_->NextRuleId(), saved ? L" saved" : L" unsaved",
                 said.empty() ? L"" : L": ", said);
  }

 private:
#ifdef _WIN32
  std::jthread holder_;
#else
  static void LimitFiles(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
#endif

  ThrowawayFolder folder_;
  std::unique_ptr<RuleStore> store_;
};
