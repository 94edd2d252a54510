#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/diagnostics.h"

namespace {

constexpr DWORD kDebugPrint = 0x40010006;

std::string& Printed() {
  static std::string printed;
  return printed;
}

LONG CALLBACK CollectPrints(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (record.ExceptionCode == kDebugPrint) Printed() += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

TEST(DiagnosticChannel, WindowsLinesReachTheDebugger) {
  void* const handler = ::AddVectoredExceptionHandler(1, CollectPrints);
  DebugLog(L"Monitoring paused %u|", 1u);
  DebugLog(L"Monitoring resumed|");
  ::RemoveVectoredExceptionHandler(handler);
  EXPECT_EQ(Printed(), "Monitoring paused 1|Monitoring resumed|");
}
