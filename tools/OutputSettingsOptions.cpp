#include "OutputSettingsOptions.h"

#include <cstdint>
#include <limits>

#include "OptionValues.h"

namespace Qov::Tools {
namespace {

template <class Number>
void DeclareNumber(CLI::App& app, const char* name, Number& number, std::uint64_t least,
                   std::uint64_t most, const char* unit, const char* help) {
  app.add_option(name, number, help)
      ->option_text(unit)
      ->transform(WholeNumber())
      ->check(CLI::Range(least, most));
}

}  // namespace

void DeclareOutputSettings(CLI::App& app, std::string& path, QovRyx::OutputSettings& settings) {
  constexpr std::uint64_t kMostThreads = 1024;
  app.add_option("-o,--output", path, "Model file to write")->type_name("OUTPUT")->required();
  app.add_flag("--overwrite", settings.mOverwrite, "Replace OUTPUT if it exists");
  DeclareNumber(app, "--level", settings.mLevel, 1, 9, "LEVEL",
                "Compression level, from 1 (fast) to 9 (small); default 6");
  DeclareNumber(app, "--block-size", settings.mBlockSize, 1,
                std::numeric_limits<std::uint32_t>::max(), "BYTES", "Uncompressed size of a block");
  DeclareNumber(app, "--threads", settings.mThreads, 1, kMostThreads, "N",
                "Threads that compress; they do not change the output");
  app.add_flag("--keep-blocks", settings.mKeepBlocks,
               "Copy compressed blocks of the inputs if all their arrays are wanted");
}

}  // namespace Qov::Tools
