#include <malloc.h>
#include <sys/resource.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "MergeRun.h"
#include "ProgressLine.h"
#include "Qov/Log/Record.h"
#include "SetLogFile.h"
#include "StandardStreams.h"
#include "diagnostics/Printable.h"
#include "terminal/Printable.h"

namespace {

constexpr int kUsageError = 1;
constexpr int kErrorOutsideMerges = 3;

/// Limits malloc to one arena if the address space is limited (ulimit -v), because malloc reserves
/// 64 MiB of address space for each thread.
void SaveAddressSpace() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    ::mallopt(M_ARENA_MAX, 1);
  }
}

int Run(const std::string& program, const std::vector<std::string>& arguments) {
  const std::optional<CommandLine> commandLine = ParseCommandLine(arguments);
  if (!commandLine) {
    std::cerr << "Usage: " << program << " <files_to_merge> <output_file>" << std::endl;
    return kUsageError;
  }
  SaveAddressSpace();
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is reported as an error
  std::vector<std::string> models = commandLine->mInputs;
  models.push_back(commandLine->mOutput);
  SetLogFile(models);
  const TerminalProgress progress;
  return RunMerge(*commandLine);
}

}  // namespace

int main(int argc, char** argv) {
  Qov::OccupyStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe must not stop a merge
  const std::string program = Qov::Util::EscapeName(argc > 0 ? argv[0] : "RyxMerge");
  const Qov::PrintableErrors printableErrors;
  try {
    const int numNames = argc > 0 ? 1 : 0;
    return Run(program, std::vector<std::string>(argv + numNames, argv + argc));
  } catch (const std::exception& error) {
    Qov::Log::Record(Qov::Log::kErrorLevel, "app/main", __LINE__, "<unknown>") << error.what();
    std::cerr << program << ": " << error.what() << std::endl;
    return kErrorOutsideMerges;
  }
}
