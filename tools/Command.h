#pragma once

#include <memory>
#include <vector>

#include "Output.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// Exit statuses. What a subcommand finds is told by 0 and 1; trouble of every kind, a command
/// line that makes no sense included, is 2.
inline constexpr int kSuccess = 0;
inline constexpr int kFindings = 1;
inline constexpr int kTrouble = 2;

/// A subcommand of the program.
class Command {
 public:
  virtual ~Command() = default;

  virtual const char* GetName() const = 0;
  /// One line for the list of subcommands.
  virtual const char* GetSummary() const = 0;
  /// What its help shows beneath the options: an example at least.
  virtual const char* GetFooter() const = 0;
  /// Declares its arguments, which parsing stores in this object. Opens no file.
  virtual void Declare(CLI::App& app) = 0;
  /// Does the work with the arguments that were parsed; returns the exit status.
  virtual int Run(Output& output, Output& errors) = 0;
  /// Whether it does nothing but show: who has seen enough may go, and misses no verdict.
  virtual bool OnlyShows() const { return false; }
};

std::unique_ptr<Command> MakeCheckCommand();
std::unique_ptr<Command> MakeDiffCommand();
std::unique_ptr<Command> MakeDumpCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeLsCommand();
std::unique_ptr<Command> MakePlanCommand();
std::unique_ptr<Command> MakeSampleCommand();
std::unique_ptr<Command> MakeVerifyCommand();

/// All subcommands, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> MakeCommands();

}  // namespace Qov::Tools
