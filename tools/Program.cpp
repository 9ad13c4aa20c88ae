#include "Program.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"
#include "Completion.h"
#include "ErrorText.h"
#include "ProgressLine.h"
#include "Suggestion.h"

namespace Qov::Tools {
namespace {

constexpr const char* kName = "ryx";
/// Status that a shell reports for a program that SIGPIPE ended.
constexpr int kEndedByClosedPipe = 128 + SIGPIPE;
constexpr const char* kFooter =
    "Every subcommand has its own help with an example: ryx help SUBCOMMAND\n"
    "Exit status: 0 success, 1 findings or differences, 2 failure or wrong command line.";

constexpr const char* kHelp = "help";
constexpr const char* kHelpFooter = "Example: ryx help ls";

/// The parser, and the subcommands that receive its results.
struct CommandLine {
  CommandLine();

  CLI::App mApp{"Shows, checks and compares ryx models, and makes samples.", kName};
  std::vector<std::unique_ptr<Command>> mCommands = MakeCommands();
  std::string mTopic;  ///< The subcommand that help is requested for.
};

CommandLine::CommandLine() {
  mApp.set_version_flag("--version", std::string(kName) + " " QOV_TOOLS_VERSION);
  mApp.footer(kFooter);
  mApp.require_subcommand(0, 1);  // further names of subcommands are arguments
  for (const auto& command : mCommands) {
    CLI::App* subcommand = mApp.add_subcommand(command->GetName(), command->GetSummary());
    subcommand->footer(command->GetFooter());
    command->Declare(*subcommand);
  }
  CLI::App* help = mApp.add_subcommand(kHelp, "Show the help of a subcommand");
  help->footer(kHelpFooter);
  help->add_option("COMMAND", mTopic, "A subcommand; all of them are listed without it");
}

void PrintText(std::string text, Output& output) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  output.Line(text);
}

const CLI::App& ChosenApp(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : *chosen.front();
}

std::string DescribeUnknownWord(const CLI::App& app, const std::string& word,
                                const TextStyle& style) {
  const bool isOption = word.starts_with('-');
  const char* kind = isOption ? "option" : app.get_parent() == nullptr ? "subcommand" : "argument";
  std::string text = fmt::format("unknown {} \"{}\"", kind, Escape(word, style));
  const std::string suggestion = Suggest(word, KnownWords(app));
  if (!suggestion.empty()) text += fmt::format(", did you mean \"{}\"?", suggestion);
  return text;
}

int PrintHelp(const std::string& topic, Output& output, Output& errors) {
  const CommandLine line;  // unparsed, because a parser shows the help of the parsed subcommand
  if (topic.empty()) {
    PrintText(line.mApp.help(), output);
  } else if (const CLI::App* subcommand = FindSubcommand(line.mApp, topic)) {
    PrintText(subcommand->help(kName), output);
  } else {
    errors.Line(
        fmt::format("{}: {}", kName, DescribeUnknownWord(line.mApp, topic, errors.GetStyle())));
    errors.Line(fmt::format("Try \"{} --help\".", kName));
    return kTrouble;
  }
  output.Flush();
  return kSuccess;
}

int ReportMisuse(const CLI::App& app, const CLI::ParseError& error, Output& errors) {
  const CLI::App& chosen = ChosenApp(app);
  std::vector<std::string> unknown = app.remaining(true);
  std::erase(unknown, "--");  // the parser keeps it, but it is not an error
  const std::string text = unknown.empty()
                               ? Escape(error.what(), errors.GetStyle())
                               : DescribeUnknownWord(chosen, unknown.front(), errors.GetStyle());
  errors.Line(fmt::format("{}: {}", kName, text));
  errors.Line(
      fmt::format("Try \"{}{} --help\".", kName, &chosen == &app ? "" : " " + chosen.get_name()));
  return kTrouble;
}

int Run(Command& command, Output& output, Output& errors) {
  const TerminalProgress progress;
  std::optional<int> status;
  try {
    status = command.Run(output, errors);
    output.Flush();
  } catch (const ClosedPipe&) {
    // The reader has closed the pipe.
  }
  // An unknown verdict must not look like success.
  return status.value_or(command.OnlyShows() ? kSuccess : kEndedByClosedPipe);
}

int RunChosen(CommandLine& line, Output& output, Output& errors) {
  if (line.mApp.got_subcommand(kHelp)) return PrintHelp(line.mTopic, output, errors);
  for (const auto& command : line.mCommands) {
    if (line.mApp.got_subcommand(command->GetName())) return Run(*command, output, errors);
  }
  PrintText(line.mApp.help(), errors);
  return kTrouble;
}

int PrintCompletions(const CommandLine& line, std::vector<std::string> words, Output& output) {
  for (const std::string& word : Complete(line.mApp, std::move(words))) output.Line(word);
  output.Flush();
  return kSuccess;
}

int ParseAndRun(int argc, const char* const* argv, Output& output, Output& errors) {
  CommandLine line;
  if (argc > 1 && argv[1] == std::string(kCompleteWord)) {
    return PrintCompletions(line, {argv + 2, argv + argc}, output);
  }
  try {
    line.mApp.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    PrintText(line.mApp.help(), output);
    output.Flush();
    return kSuccess;
  } catch (const CLI::CallForVersion& version) {
    PrintText(version.what(), output);
    output.Flush();
    return kSuccess;
  } catch (const CLI::ParseError& error) {
    return ReportMisuse(line.mApp, error, errors);
  }
  return RunChosen(line, output, errors);
}

int ReportTrouble(const std::exception& error, Output& errors) {
  try {
    errors.Line(fmt::format("{}: {}", kName, DescribeError(error, errors.GetStyle())));
  } catch (...) {
    // The message cannot be written. The status reports the failure.
  }
  return kTrouble;
}

}  // namespace

int RunProgram(int argc, const char* const* argv, Output& output, Output& errors) {
  try {
    return ParseAndRun(argc, argv, output, errors);
  } catch (const ClosedPipe&) {
    return kSuccess;
  } catch (const std::exception& error) {
    return ReportTrouble(error, errors);
  }
}

}  // namespace Qov::Tools
