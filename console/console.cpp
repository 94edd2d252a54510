#include "console/console.h"

#include <cstdio>

#include "console/console_system.h"
#include "console/watch.h"
#include "platform/diagnostics.h"
#include "platform/out_of_memory.h"
#include "platform/text_encoding.h"
#include "product_config.h"

namespace {

constexpr int kExitUsage = 2;

void WriteToStderr(std::wstring_view line) { std::fprintf(stderr, "%s\n", EncodeUtf8(line).c_str()); }
void Drop(std::wstring_view) {}

}  // namespace

int RunConsole(const std::vector<std::string>& arguments) {
  PrepareOutput();
  std::string error;
  const std::optional<Options> options = ParseOptions(arguments, error);
  if (!options) {
    std::fprintf(stderr, "vantora-console: %s\nvantora-console --help tells more\n", error.c_str());
    return kExitUsage;
  }
  SetDiagnosticHook(options->verbose ? WriteToStderr : Drop);
  if (options->help || options->version || options->manual) {
    const std::string text = options->help     ? HelpText()
                             : options->manual ? ManualPage()
                                               : "vantora-console " VANTORA_VERSION_STRING "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
  }
  return UnlessOutOfMemory(L"vantora-console", kExitUsage, [&] { return RunOptions(*options); });
}
