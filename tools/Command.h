#pragma once

#include <memory>
#include <vector>

#include "Output.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// Exit statuses: success, findings or differences, and failures of any kind, including a wrong
/// command line.
inline constexpr int kSuccess = 0;
inline constexpr int kFindings = 1;
inline constexpr int kTrouble = 2;
/// The exit status if a part of what was chosen cannot be written, drawn or shown.
inline constexpr int kIncomplete = 1;

/// A subcommand of the program.
class Command {
 public:
  virtual ~Command() = default;

  virtual const char* GetName() const = 0;
  /// Returns one line for the list of subcommands.
  virtual const char* GetSummary() const = 0;
  /// Returns the part of its help below the options, with at least one example.
  virtual const char* GetFooter() const = 0;
  /// Declares its arguments. Parsing stores them in this object. Opens no file.
  virtual void Declare(CLI::App& app) = 0;
  /// Runs with the parsed arguments. Returns the exit status.
  virtual int Run(Output& output, Output& errors) = 0;
  /// Returns true if the subcommand only shows data, so that a reader may close the pipe early
  /// without losing a verdict.
  virtual bool OnlyShows() const { return false; }
};

/// Each factory is defined in the source of its subcommand.
std::unique_ptr<Command> MakeCheckCommand();
std::unique_ptr<Command> MakeDiffCommand();
std::unique_ptr<Command> MakeDumpCommand();
std::unique_ptr<Command> MakeExportCommand();
std::unique_ptr<Command> MakeExtractCommand();
std::unique_ptr<Command> MakeHtmlCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeLsCommand();
std::unique_ptr<Command> MakeMergeCommand();
std::unique_ptr<Command> MakePictureCommand();
std::unique_ptr<Command> MakePlanCommand();
std::unique_ptr<Command> MakeSampleCommand();
std::unique_ptr<Command> MakeStatsCommand();
std::unique_ptr<Command> MakeVerifyCommand();

/// Returns all subcommands, in the order of the help.
std::vector<std::unique_ptr<Command>> MakeCommands();

}  // namespace Qov::Tools
