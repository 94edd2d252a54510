#include "platform/diagnostics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::wstring>& Lines() {
  static std::vector<std::wstring> lines;
  return lines;
}

class Diagnostics : public testing::Test {
 protected:
  void SetUp() override {
    Lines().clear();
    SetDiagnosticHook([](std::wstring_view line) { Lines().emplace_back(line); });
  }
  void TearDown() override { SetDiagnosticHook(nullptr); }
};

TEST_F(Diagnostics, LinesAreCutAndNothingIsAdded) {
  DebugLog(L"RuleStore::Load - Could not open %ls", L"C:\\rules.csv");
  for (const std::size_t length : {1021u, 1022u, 1023u, 5000u}) DebugLog(L"%ls", std::wstring(length, L'x').c_str());
  const std::vector<std::wstring> expected = {L"RuleStore::Load - Could not open C:\\rules.csv", std::wstring(1021, L'x'),
                                              std::wstring(1022, L'x'), std::wstring(1022, L'x'), std::wstring(1022, L'x')};
  EXPECT_EQ(Lines(), expected);
}

}  // namespace
