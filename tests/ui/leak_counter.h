#pragma once

// Counts what this process holds, exactly, so that a test can open and close a window many times and ask for flat counts: GDI
// objects, kernel handles and the memory of C++ objects. The system's own counters answer 0 on some compatible systems; there the
// tables behind them are read.

#include <windows.h>

#include <winternl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

struct LeakCount {
  unsigned gdiObjects = 0;
  unsigned handles = 0;
  std::size_t bytesPerRun = 0;  ///< of growth, rounded down: a leak comes with every run, a grown buffer does not
  bool operator==(const LeakCount&) const = default;
};

inline void PrintTo(const LeakCount& count, std::ostream* out) {
  *out << count.gdiObjects << " GDI objects, " << count.handles << " handles, " << count.bytesPerRun << " bytes a run";
}

/// Bytes that C++ objects of this process hold. Defined in live_memory.cpp, which each program that counts links.
std::size_t LiveBytes();

template <class Function>
Function NtdllFunction(const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name)));
}

/// Non-empty entries of the process's GDI handle table, found through the process environment block.
inline unsigned CountGdiTableEntries() {
  struct Entry {
    void* object;
    std::uint16_t processId;
    std::uint16_t lock;
    std::uint16_t unique;
    std::uint16_t type;
    void* user;
  };
  static_assert(sizeof(Entry) == 24);
  constexpr std::size_t kTableOffset = 0xF8;
  constexpr std::size_t kTableEntries = 0x10000;

  const auto currentPeb = NtdllFunction<const std::byte*(NTAPI*)()>("RtlGetCurrentPeb");
  const std::byte* peb = currentPeb();
  const auto* table = *reinterpret_cast<const Entry* const*>(peb + kTableOffset);
  MEMORY_BASIC_INFORMATION memory{};
  if (table == nullptr || ::VirtualQuery(table, &memory, sizeof(memory)) == 0) return 0;
  const auto room =
      static_cast<const std::byte*>(memory.BaseAddress) + memory.RegionSize - reinterpret_cast<const std::byte*>(table);
  const std::size_t count = std::min(kTableEntries, static_cast<std::size_t>(room) / sizeof(Entry));
  unsigned used = 0;
  for (std::size_t i = 0; i < count; ++i) used += table[i].type != 0 ? 1 : 0;
  return used;
}

/// This process's rows of the system-wide handle list.
inline unsigned CountHandleListEntries() {
  struct Entry {
    std::uint16_t processId;
    std::uint16_t traceIndex;
    std::uint8_t type;
    std::uint8_t attributes;
    std::uint16_t handle;
    void* object;
    std::uint32_t access;
  };
  static_assert(sizeof(Entry) == 24);
  constexpr auto kSystemHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(16);
  constexpr std::size_t kFirstEntry = 8;

  const auto query = NtdllFunction<decltype(&::NtQuerySystemInformation)>("NtQuerySystemInformation");
  std::vector<std::byte> buffer(1 << 20);
  ULONG needed = 0;
  while (query(kSystemHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &needed) != 0) {
    if (buffer.size() > (std::size_t{1} << 28)) return 0;
    buffer.resize(buffer.size() * 2);
  }
  const auto count = *reinterpret_cast<const std::uint32_t*>(buffer.data());
  const auto* entries = reinterpret_cast<const Entry*>(buffer.data() + kFirstEntry);
  const auto self = static_cast<std::uint16_t>(::GetCurrentProcessId());
  unsigned used = 0;
  for (std::uint32_t i = 0; i < count; ++i) used += entries[i].processId == self ? 1 : 0;
  return used;
}

inline LeakCount CountLeaks() {
  LeakCount count;
  count.gdiObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
  if (count.gdiObjects == 0) count.gdiObjects = CountGdiTableEntries();
  DWORD handles = 0;
  if (!::GetProcessHandleCount(::GetCurrentProcess(), &handles) || handles == 0) handles = CountHandleListEntries();
  count.handles = handles;
  return count;
}

/// Runs the routine a few times, so that what the system makes once and keeps is there, then `times` more, and returns the growth
/// over those: all 0 for a routine that gives everything back.
template <class Routine>
LeakCount GrowthOver(int times, Routine routine) {
  for (int i = 0; i < 10; ++i) routine();
  const LeakCount before = CountLeaks();
  const std::size_t bytesBefore = LiveBytes();
  for (int i = 0; i < times; ++i) routine();
  const std::size_t bytesAfter = LiveBytes();
  const LeakCount after = CountLeaks();
  return {after.gdiObjects > before.gdiObjects ? after.gdiObjects - before.gdiObjects : 0,
          after.handles > before.handles ? after.handles - before.handles : 0,
          bytesAfter > bytesBefore ? (bytesAfter - bytesBefore) / static_cast<std::size_t>(times) : 0};
}
