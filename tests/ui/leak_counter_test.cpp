#include "tests/ui/leak_counter.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// The counter itself must see every kept object, or a leak test over it proves nothing.
TEST(LeakCounter, SeesEveryKeptObjectAndNoReturnedOne) {
  std::vector<HBRUSH> brushes;
  std::vector<HANDLE> events;
  std::vector<std::unique_ptr<char[]>> blocks;
  brushes.reserve(60);
  events.reserve(60);
  blocks.reserve(60);
  const LeakCount kept = GrowthOver(50, [&] {
    brushes.push_back(::CreateSolidBrush(RGB(1, 2, 3)));
    events.push_back(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    blocks.push_back(std::make_unique<char[]>(100));
  });
  EXPECT_EQ(kept, (LeakCount{50, 50, 100}));
  for (HBRUSH brush : brushes) ::DeleteObject(brush);
  for (HANDLE event : events) ::CloseHandle(event);

  const LeakCount returned = GrowthOver(50, [] {
    ::DeleteObject(::CreateSolidBrush(RGB(1, 2, 3)));
    ::CloseHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    (void)std::make_unique<char[]>(100);
  });
  EXPECT_EQ(returned, LeakCount{});
}

}  // namespace
