#include "update/version_answer.h"

#include "platform/diagnostics.h"
#include "update/version.h"

std::string_view VersionAnswerBytes(std::string_view body) { return body.substr(0, body.find('\0')); }

std::wstring LatestVersionFromAnswer(const std::wstring& text) {
  std::wstring version = FilterVersionText(text);
  if (VersionToNumber(version.c_str()) != 0) return version;
  DebugLog(L"WARNING: Invalid version string received: %ls", version.c_str());
  return AppVersionDisplay;
}
