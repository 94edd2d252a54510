#include "console/console.h"
#include "platform/text_encoding.h"

extern "C" int wmain(int count, wchar_t** arguments);
extern "C" int wmain(int count, wchar_t** arguments) {
  std::vector<std::string> texts;
  for (int index = 1; index < count; ++index) texts.push_back(EncodeUtf8(arguments[index]));
  return RunConsole(texts);
}
