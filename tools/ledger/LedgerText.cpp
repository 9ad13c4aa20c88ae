#include "LedgerText.h"

#include <fmt/format.h>

#include <algorithm>

#include "TextTable.h"

namespace Qov::Tools {
namespace {

using Align = TextTable::Align;
constexpr std::size_t kWidthLimit = 40;

/// Returns a count as text, "-" for 0.
std::string CountOrNothing(std::uint64_t count) {
  return count == 0 ? "-" : fmt::format("{}", count);
}

/// Returns the counts of the rules and the difference to `found`, if there is any.
template <class Rule>
std::string RulesText(const std::map<Rule, std::uint64_t>& counts, std::uint64_t found,
                      std::uint64_t copied) {
  std::string text;
  const auto add = [&text](std::uint64_t count, const char* name) {
    if (count != 0) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, name);
  };
  for (const auto& [rule, count] : counts) add(count, NameOf(rule));
  const std::uint64_t known = copied + Sum(counts);
  add(found - std::min(found, known), "UNACCOUNTED FOR");
  add(known - std::min(found, known), "MISSING");
  return text;
}

void PrintTable(const TextTable& table, Output& output) {
  for (const std::string& line : table.GetLines()) output.Line("  " + line);
}

void PrintTallies(const InputLedger& input, Output& output) {
  TextTable table({{"ITEM"},
                   {"FOUND", Align::Right},
                   {"COPIED", Align::Right},
                   {"DROPPED", Align::Right},
                   {"WHY"}},
                  kWidthLimit);
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const InputTally& tally = input.mTallies[i];
    if (tally == InputTally{}) continue;
    table.AddRow({NameOf(static_cast<Item>(i)), CountOrNothing(tally.mFound),
                  CountOrNothing(tally.mCopied), CountOrNothing(Sum(tally.mDropped)),
                  DropsText(tally)});
  }
  PrintTable(table, output);
}

void PrintPairs(const char* heading, const char* arrow, const std::vector<NamePair>& pairs,
                Output& output) {
  if (pairs.empty()) return;
  const TextStyle& style = output.GetStyle();
  output.Line(std::string("  ") + heading);
  for (const NamePair& pair : pairs) {
    std::string line =
        fmt::format("    {} {} {}", Escape(pair.mFrom, style), arrow, Escape(pair.mTo, style));
    if (pair.mCount != 1) line += Dim(fmt::format(" ({} times)", pair.mCount), style);
    output.Line(line);
  }
}

void PrintOutputTallies(const Ledger& ledger, Output& output) {
  TextTable table({{"ITEM"},
                   {"COPIED", Align::Right},
                   {"MADE", Align::Right},
                   {"IN ALL", Align::Right},
                   {"WHAT IS MADE"}},
                  kWidthLimit);
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const OutputTally& tally = ledger.mOutput[i];
    if (tally == OutputTally{}) continue;
    table.AddRow({NameOf(static_cast<Item>(i)), CountOrNothing(tally.mCopied),
                  CountOrNothing(Sum(tally.mMade)), CountOrNothing(tally.mFound), MadeText(tally)});
  }
  PrintTable(table, output);
}

}  // namespace

std::map<std::string, std::string> ExplainRules(const Ledger& ledger) {
  std::map<std::string, std::string> legend;
  for (const InputLedger& input : ledger.mInputs) {
    for (const InputTally& tally : input.mTallies) {
      for (const auto& [rule, count] : tally.mDropped) legend[NameOf(rule)] = Explain(rule);
    }
  }
  for (const OutputTally& tally : ledger.mOutput) {
    for (const auto& [rule, count] : tally.mMade) legend.emplace(NameOf(rule), Explain(rule));
  }
  if (ledger.mOutput[static_cast<std::size_t>(Item::UnknownNode)].mFound != 0) {
    legend[NameOf(Item::UnknownNode)] = "only their names and tree positions are read and written";
  }
  return legend;
}

std::string DropsText(const InputTally& tally) {
  return RulesText(tally.mDropped, tally.mFound, tally.mCopied);
}

std::string MadeText(const OutputTally& tally) {
  return RulesText(tally.mMade, tally.mFound, tally.mCopied);
}

namespace {

/// Prints an explanation of each word in the last columns of the tables.
void PrintLegend(const Ledger& ledger, Output& output) {
  const std::map<std::string, std::string> legend = ExplainRules(ledger);
  if (legend.empty()) return;
  output.Line();
  for (const auto& [name, explanation] : legend) {
    output.Line(Dim(fmt::format("{}: {}", name, explanation), output.GetStyle()));
  }
}

void PrintInput(const InputLedger& input, const std::string& mark, Output& output) {
  const TextStyle& style = output.GetStyle();
  output.Line();
  output.Line(Bold(Escape(input.mPath, style), style) + mark);
  PrintTallies(input, output);
  PrintPairs("renamed", "->", input.mRenamed, output);
  PrintPairs("shared", "=>", input.mLinked, output);
}

/// Prints "3 to 500: as 2 (run3.ryx to run500.ryx)".
void PrintLikeInputs(const Ledger& ledger, const InputGroup& group,
                     const std::vector<std::size_t>& numbers, Output& output) {
  const TextStyle& style = output.GetStyle();
  const std::size_t last = group.mFirst + group.mCount - 1;
  std::string line = fmt::format("{}", numbers[group.mFirst]);
  std::string paths = Escape(ledger.mInputs[group.mFirst].mPath, style);
  if (group.mCount > 1) {
    line += fmt::format(" to {}", numbers[last]);
    paths += " to " + Escape(ledger.mInputs[last].mPath, style);
  }
  output.Line();
  output.Line(fmt::format("{}: as {} ({})", line, numbers[group.mLike], paths));
}

void PrintInputs(const Ledger& ledger, LedgerDetail detail, Output& output) {
  const std::vector<InputGroup> groups = GroupInputs(ledger.mInputs, detail);
  const std::vector<std::size_t> numbers = NumberModels(ledger.mInputs);
  std::vector<bool> hasLike(ledger.mInputs.size());
  for (const InputGroup& group : groups)
    hasLike[group.mLike] = hasLike[group.mLike] || !group.IsNew();
  for (const InputGroup& group : groups) {
    if (!group.IsNew()) {
      PrintLikeInputs(ledger, group, numbers, output);
      continue;
    }
    const std::size_t i = group.mFirst;
    const std::string mark = hasLike[i] ? fmt::format(" (input {})", numbers[i]) : "";
    PrintInput(ledger.mInputs[i], mark, output);
  }
}

}  // namespace

void PrintLedger(const Ledger& ledger, const std::string& outputPath, LedgerDetail detail,
                 Output& output) {
  const TextStyle& style = output.GetStyle();
  PrintInputs(ledger, detail, output);
  output.Line();
  output.Line(Bold(Escape(outputPath, style), style));
  PrintOutputTallies(ledger, output);
  PrintLegend(ledger, output);
}

}  // namespace Qov::Tools
