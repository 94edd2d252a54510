#include "core/rule_matcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "core/process_sampler.h"
#include "core/wildcard.h"

namespace {

/// Short, out of few letters, so that many match; stars and question marks for patterns.
std::wstring RandomText(std::mt19937& random, std::wstring_view letters) {
  std::wstring text;
  for (std::size_t length = random() % 6; length > 0; --length) text += letters[random() % letters.size()];
  return text;
}

// Against the plain loop over all rules, while rules and exclusions change under it.
TEST(RuleMatcher, GivesWhatThePlainLoopGives) {
  std::mt19937 random(4);
  RuleMatcher matcher;
  auto rules = std::make_shared<const RuleList>();
  auto exclusions = std::make_shared<const ExclusionList>();
  for (int round = 0; round < 400; ++round) {
    if (round % 4 == 0) {
      RuleList list(random() % 12);
      for (ThresholdRule& rule : list) {
        rule = {.processPattern = RandomText(random, L"aAb*?"),
                .enabled = random() % 4 != 0,
                .maxHandles = static_cast<std::uint32_t>(random() % 2),
                .maxPrivateBytes = static_cast<std::uint32_t>(random() % 2)};
      }
      rules = std::make_shared<const RuleList>(std::move(list));
    }
    if (round % 7 == 0) exclusions = std::make_shared<const ExclusionList>(random() % 3, RandomText(random, L"ab*?"));
    matcher.Use(rules, exclusions);
    for (int names = 0; names < 50; ++names) {
      const std::wstring name = RandomText(random, L"aBb");
      std::vector<std::uint32_t> places;
      std::uint32_t wanted = 0;
      for (std::uint32_t place = 0; place < rules->size() && !IsExcluded(name.c_str(), *exclusions); ++place) {
        const ThresholdRule& rule = (*rules)[place];
        if (!rule.enabled || !WildcardMatch(name.c_str(), rule.processPattern.c_str())) continue;
        places.push_back(place);
        wanted |= (rule.maxHandles != 0 ? kWantHandles : 0U) | (rule.maxPrivateBytes != 0 ? kWantPrivateBytes : 0U);
      }
      const RuleMatch& match = matcher.Find(name);
      EXPECT_EQ(match.rules == nullptr ? std::vector<std::uint32_t>() : *match.rules, places) << name;
      EXPECT_EQ(match.wanted, wanted) << name;
    }
  }
}

TEST(RuleMatcher, StaysSmallWhileNamesKeepChanging) {
  RuleMatcher matcher;
  const auto rules = std::make_shared<const RuleList>(10, ThresholdRule{.processPattern = L"*"});
  const auto exclusions = std::make_shared<const ExclusionList>();
  std::size_t most = 0;
  for (int name = 0; name < 200'000; ++name) {
    if (name % 1000 == 0) matcher.Use(rules, exclusions);
    (void)matcher.Find(L"process-" + std::to_wstring(name) + L".exe");
    most = std::max(most, matcher.KeptBytes());
  }
  EXPECT_GT(most, RuleMatcher::kMaxKeptBytes);
  EXPECT_LT(most, RuleMatcher::kMaxKeptBytes + 250'000);
}

}  // namespace
