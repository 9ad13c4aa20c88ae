#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "Output.h"
#include "export/ExportContent.h"

namespace Qov::Tools {

/// The options that choose the content, for all subcommands that show or write meshes.
class ContentOptions {
 public:
  /// Adds --nodes, --results and --steps.
  void DeclareChoice(CLI::App& app);
  /// Adds --cells.
  void DeclareCells(CLI::App& app);
  /// Reads --cells into the request. Raises InvalidEnumeration.
  void Finish();

  ExportRequest mRequest;

 private:
  std::vector<std::string> mCells;
};

/// Adds a repeatable option for patterns.
CLI::Option* AddPatterns(CLI::App& app, const char* name, std::vector<std::string>& words,
                         const char* help);

/// Reads a model without its views. Returns false if it cannot be read, and prints the reason after
/// the name of the subcommand.
bool LoadForExport(const char* command, const std::string& path, QovRyx::Tree& tree,
                   Output& errors);

/// Removes all but the first of equal notes.
void RemoveRepeated(std::vector<std::string>& notes);

/// Prints the first notes, each after the name of the subcommand, and the number of the others,
/// which --`allOption` shows.
void PrintNotes(const char* command, const std::vector<std::string>& notes, const char* allOption,
                Output& errors);

}  // namespace Qov::Tools
