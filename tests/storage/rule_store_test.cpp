#include "storage/rule_store.h"

#include <gtest/gtest.h>

#include "tests/support/diagnostic_lines.h"
#include "tests/support/throwaway_folder.h"

namespace {

using Lines = std::vector<std::wstring>;
using IdList = std::vector<std::uint32_t>;

ThresholdRule Rule(std::uint32_t ruleId, const wchar_t* pattern) {
  ThresholdRule rule = MakeNewRule(ruleId);
  rule.processPattern = pattern;
  return rule;
}

class RuleStoreTest : public testing::Test {
 protected:
  IdList Ids() const {
    IdList ids;
    for (const ThresholdRule& rule : *store_.Snapshot()) ids.push_back(rule.ruleId);
    return ids;
  }

  const DiagnosticLines lines_;
  ThrowawayFolder folder_;
  const std::wstring path_ = folder_.Path("rules.csv");
  RuleStore store_{[this] { return path_; }};
};

TEST_F(RuleStoreTest, IdsAreNeverHandedOutTwiceNorZeroNorInUse) {
  ThrowawayFolder::Write(path_, "header\n1,a,1\n2,a,1\n4294967294,b,1\n");
  EXPECT_TRUE(store_.Load(path_));
  EXPECT_EQ(store_.TakeRuleId(), 4294967295U);
  EXPECT_EQ(store_.TakeRuleId(), 3U);
  store_.RemoveAll();
  EXPECT_EQ(store_.TakeRuleId(), 4U);
  store_.Append({Rule(5, L"x"), Rule(6, L"y")});
  EXPECT_EQ(store_.NextRuleId(), 7U);
}

TEST_F(RuleStoreTest, AnImportAppendsSavesOnceAndKeepsAllOrNothing) {
  store_.Append({Rule(store_.TakeRuleId(), L"a"), Rule(store_.TakeRuleId(),
                                                       L"b,\x1A"
                                                       L"c")});
  const std::wstring json = folder_.Path("rules.json");
  EXPECT_TRUE(store_.ExportJson(json));
  (void)DiagnosticLines::Take();
  EXPECT_TRUE(store_.ImportJson(json));
  EXPECT_EQ(DiagnosticLines::Take(),
            (Lines{L"RuleStore::ImportJsonString - Imported 2 rules", L"RuleStore::Save - Saved 4 rules to " + path_}));
  EXPECT_EQ(Ids(), (IdList{1, 2, 3, 4}));
  EXPECT_EQ(store_.Snapshot()->back().processPattern,
            L"b,\x1A"
            L"c");

  EXPECT_FALSE(store_.ImportJsonString(L"{}"));
  EXPECT_FALSE(store_.ImportJsonString(L"\"rules\" {\"processPattern\":\"\"}"));
  EXPECT_FALSE(store_.ImportJson(folder_.Path("missing")));
  EXPECT_EQ(DiagnosticLines::Take(),
            (Lines{L"RuleStore::ImportJsonString - No 'rules' array found", L"RuleStore::ImportJsonString - No valid rules found",
                   L"RuleStore::ImportJson - Could not open " + folder_.Path("missing")}));
  EXPECT_EQ(Ids(), (IdList{1, 2, 3, 4}));
  EXPECT_EQ(store_.NextRuleId(), 5U);
}

TEST_F(RuleStoreTest, AListThatWasNeverReadIsSavedOnlyWhenSomethingHasChanged) {
  const std::wstring unreadable = folder_.Path("missing/rules.csv");
  EXPECT_FALSE(store_.Load(unreadable));
  ThrowawayFolder::Write(path_, "what another run wrote");
  EXPECT_FALSE(store_.SaveAndClose(path_));
  EXPECT_EQ(ThrowawayFolder::Read(path_), "what another run wrote");

  RuleStore changed([&] { return unreadable; });
  EXPECT_FALSE(changed.Load(unreadable));
  changed.Append({Rule(1, L"a.exe")});
  EXPECT_TRUE(changed.SaveAndClose(path_));

  RuleStore first([&] { return path_; });
  EXPECT_FALSE(first.Load(folder_.Path("new.csv")));
  EXPECT_TRUE(first.SaveAndClose(folder_.Path("new.csv"))) << "a missing file is made";
}

TEST_F(RuleStoreTest, AClosedStoreKeepsListAndFileWhateverIsAsked) {
  store_.Append({Rule(1, L"a.exe")});
  ASSERT_TRUE(store_.SaveAndClose(path_));
  const std::string saved = ThrowawayFolder::Read(path_);
  store_.Append({Rule(2, L"b.exe")});
  EXPECT_FALSE(store_.Edit(1, [](ThresholdRule& rule) { rule.enabled = false; }));
  EXPECT_FALSE(store_.ImportJsonString(L"{\"rules\":[{\"processPattern\":\"c.exe\"}]}"));
  store_.Remove({1});
  store_.RemoveAll();
  EXPECT_EQ(Ids(), IdList{1});
  EXPECT_EQ(ThrowawayFolder::Read(path_), saved);
}

}  // namespace
