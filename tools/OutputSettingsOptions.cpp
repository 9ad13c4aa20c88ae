#include "OutputSettingsOptions.h"

#include <string>

#include "OptionValues.h"

namespace Qov::Tools {
namespace {

/// Adds an option for a number. CheckSettings knows the ranges.
template <class Number>
void DeclareNumber(CLI::App& app, const char* name, Number& number, const char* unit,
                   const char* help) {
  app.add_option(name, number, help)->option_text(unit)->transform(WholeNumber());
}

}  // namespace

void DeclareOutputSettings(CLI::App& app, std::string& path, QovRyx::OutputSettings& settings) {
  app.add_option("-o,--output", path, "Model file to write")->type_name("OUTPUT")->required();
  app.add_flag("--overwrite", settings.mOverwrite, "Replace OUTPUT if it exists");
  DeclareNumber(app, "--level", settings.mLevel, "LEVEL",
                "Compression level, from 1 (fast) to 9 (small); default 6");
  DeclareNumber(app, "--block-size", settings.mBlockSize, "BYTES",
                "Uncompressed size of a block, at least 1024; default 1 to 8 MiB");
  DeclareNumber(app, "--threads", settings.mThreads, "N",
                "Threads that compress; they do not change the output");
  const std::string help =
      "Copy compressed blocks of the inputs if all their arrays are wanted; "
      "--keep-blocks=unchecked does not compare their checksums";
  app.add_flag("--keep-blocks{checked}", help)
      ->option_text("[=unchecked]")
      ->check(CLI::Validator(
          [&settings](const std::string& word) {
            if (word != "checked" && word != "unchecked") {
              return "must be checked or unchecked, not " + word;
            }
            settings.mKeepBlocks =
                word == "checked" ? QovRyx::BlockKeeping::Checked : QovRyx::BlockKeeping::Unchecked;
            return std::string();
          },
          ""));
}

}  // namespace Qov::Tools
