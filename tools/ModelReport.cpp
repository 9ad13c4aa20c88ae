#include "ModelReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <utility>

#include "ErrorText.h"
#include "LinkTarget.h"
#include "Plural.h"
#include "TextTable.h"
#include "TreeLines.h"
#include "TreeWalk.h"
#include "ValueText.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using Align = TextTable::Align;
/// Receives the lines of the content of a node.
using Sink = std::function<void(const std::string& line)>;

/// Returns the width above which a cell does not widen its column.
std::size_t WidthLimit(const TextStyle& style) {
  constexpr std::size_t kLimit = 40;
  return style.mTerminal ? std::clamp<std::size_t>(style.mWidth / 3, 12, kLimit) : kLimit;
}

/// Creates the lines of a node.
class NodeReport {
 public:
  NodeReport(const QovRyx::Tree& tree, const ModelStatistics* statistics, const TextStyle& style)
      : mTree(tree), mStyle(style), mpStatistics(statistics) {}

  std::string Label(const TreeWalk::Step& step) const;
  /// Writes the content of the node, each line after `before`.
  void Content(const QovRyx::Node& node, const std::string& before, Output& output);
  bool HasTrouble() const { return mTrouble; }

 private:
  void Results(const Geometry& geometry, const Sink& sink);
  void Sets(const QovRyx::NodeSets& sets, const Sink& sink);
  std::string LinkText(const Geometry::VarStruct& variable) const;
  std::string Trouble(const std::string& text);
  std::vector<std::string> ResultRow(const Geometry::VarStruct& variable);

  const QovRyx::Tree& mTree;
  TextStyle mStyle;
  const ModelStatistics* mpStatistics;
  bool mTrouble = false;
};

std::string NodeReport::Label(const TreeWalk::Step& step) const {
  if (step.mEntry == nullptr) return fmt::format("(node {} is missing)", step.mId);
  if (step.mAgain) return fmt::format("(node {} again)", step.mId);
  const QovRyx::Node* node = step.mEntry->mData.get();
  if (node == nullptr) return fmt::format("(node {} without content)", step.mId);
  const std::string mark = fmt::format("[{} {}]", node->GetType(), step.mId);
  return Bold(Escape(node->GetName(), mStyle), mStyle) + " " + Dim(mark, mStyle);
}

/// Writes a table of `numRows` rows. Creates each row twice instead of keeping all rows in memory.
template <class MakeRow>
void ShowTable(TextTable table, std::size_t numRows, const MakeRow& makeRow, const Sink& sink) {
  if (numRows == 0) return;
  for (std::size_t i = 0; i < numRows; ++i) table.Measure(makeRow(i));
  for (const std::string& line : table.GetHeadingLines()) sink(line);
  for (std::size_t i = 0; i < numRows; ++i) {
    for (const std::string& line : table.GetLinesOf(makeRow(i))) sink(line);
  }
}

void NodeReport::Content(const QovRyx::Node& node, const std::string& before, Output& output) {
  const Sink sink = [&](const std::string& line) { output.Line(before + line); };
  const auto* group = dynamic_cast<const QovRyx::Group*>(&node);
  if (group != nullptr && !group->mAttributes.empty()) {
    sink(AttributesText(group->mAttributes, mStyle));
  }
  if (const auto* geometry = dynamic_cast<const Geometry*>(&node)) Results(*geometry, sink);
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(&node)) Sets(*sets, sink);
}

std::string NodeReport::Trouble(const std::string& text) {
  mTrouble = true;
  return "(cannot be read: " + text + ")";
}

void NodeReport::Results(const Geometry& geometry, const Sink& sink) {
  if (mpStatistics == nullptr) return;
  TextTable table({{"NAME"},
                   {"KIND", Align::Right},
                   {"WIDTH", Align::Right},
                   {"COUNT", Align::Right},
                   {"MINIMUM", Align::Right},
                   {"MAXIMUM", Align::Right},
                   {"NAN", Align::Right},
                   {"LINK"},
                   {"ATTRIBUTES"},
                   {"TROUBLE"}},
                  WidthLimit(mStyle));
  const auto& variables = geometry.GetVariables();
  ShowTable(
      std::move(table), variables.size(), [&](std::size_t i) { return ResultRow(variables[i]); },
      sink);
}

std::vector<std::string> NodeReport::ResultRow(const Geometry::VarStruct& variable) {
  const QovRyx::NumericArray& array = variable.mValues;
  std::vector<std::string> row{Escape(variable.mName, mStyle),
                               KindText(variable),
                               fmt::format("{}", array.GetWidth()),
                               CountText(array),
                               "",
                               "",
                               "",
                               LinkText(variable),
                               AttributesText(variable.mAttributes, mStyle),
                               ""};
  const ModelStatistics::Entry* entry = mpStatistics->Find(array);
  if (entry == nullptr) return row;
  const ArrayStatistics& statistics = entry->mStatistics;
  if (statistics.HasRange()) {
    row[4] = NumberText(statistics.mMinimum, entry->mIntegers);
    row[5] = NumberText(statistics.mMaximum, entry->mIntegers);
  }
  if (statistics.mNumNaN != 0) row[6] = fmt::format("{}", statistics.mNumNaN);
  if (!entry->mError.empty()) row[9] = Trouble(entry->mError);
  return row;
}

/// Returns "node: result", and whether the link is dangling.
std::string NodeReport::LinkText(const Geometry::VarStruct& variable) const {
  if (!variable.mLink.IsLinked()) return "";
  const LinkTarget target(mTree.GetNodes(), variable);
  const auto [node, position] = variable.mLink.GetPlace();
  if (target.mVariable == nullptr) {
    return fmt::format("dangling (node {}, result {})", node, position);
  }
  return fmt::format("{} [{}]: {}{}", Escape(Shortened(target.mGeometry->GetName()), mStyle), node,
                     Escape(Shortened(target.mVariable->mName), mStyle),
                     target.mHasValues ? "" : ", dangling");
}

void NodeReport::Sets(const QovRyx::NodeSets& sets, const Sink& sink) {
  QovRyx::SetColumns columns;
  try {
    columns = sets.GetColumns();
  } catch (const std::exception& error) {
    return sink(Trouble(DescribeError(error, mStyle)));
  }
  const auto makeRow = [&](std::size_t i) -> TextTable::Row {
    return {Escape(columns[i].mName, mStyle), fmt::format("{}", columns[i].mValues.size())};
  };
  ShowTable(TextTable({{"SET"}, {"COUNT", Align::Right}}, WidthLimit(mStyle)), columns.size(),
            makeRow, sink);
}

std::string PathText(const QovRyx::ViewPointPath& path, const TextStyle& style) {
  std::string text = fmt::format("  path {} ({})", Escape(path.mName, style),
                                 Plural(path.mViewPoints.size(), "view"));
  const char* separator = ": ";
  for (const QovRyx::ViewPoint& view : path.mViewPoints) {
    text += separator + (view.mName.empty() ? "(no name)" : Escape(view.mName, style));
    separator = ", ";
  }
  return text;
}

std::string ModifierText(const QovRyx::ModifierInfo& modifier, const TextStyle& style) {
  std::string text = modifier.mApplication.empty() ? "(unnamed program)" : modifier.mApplication;
  if (!modifier.mApplicationVersion.empty()) text += " " + modifier.mApplicationVersion;
  text += ", file version " + modifier.mFileVersion + ", " + modifier.mDate;
  for (const std::string* further : {&modifier.mUser, &modifier.mHost, &modifier.mComment}) {
    if (!further->empty()) text += ", " + *further;
  }
  return "  " + Escape(text, style);
}

}  // namespace

bool ReportNodes(const QovRyx::Tree& tree, const NodeFilter& filter,
                 const ModelStatistics* statistics, Output& output) {
  NodeReport report(tree, statistics, output.GetStyle());
  const TreeLines lines(output.GetStyle());
  TreeWalk walk(tree.GetNodes(), filter.GetShown());
  bool isUnreached = false;
  while (const auto step = walk.Next()) {
    if (step->mIsUnreached && !isUnreached) output.Line("Not reached by any link:");
    isUnreached = isUnreached || step->mIsUnreached;
    output.Line(lines.BeforeEntry(walk, *step) + report.Label(*step));
    if (step->mEntry == nullptr || step->mAgain || !step->mEntry->mData) continue;
    if (!filter.IsChosen(step->mId)) continue;
    report.Content(*step->mEntry->mData, lines.BeforeContent(walk, *step), output);
  }
  return !report.HasTrouble();
}

void ReportViews(const QovRyx::Tree& tree, Output& output) {
  if (!tree.HasViewPoints()) return;
  const TextStyle& style = output.GetStyle();
  output.Line("Views");
  output.Line("  current view " + Escape(tree.GetViewPoint().mName, style));
  for (const auto& path : tree.GetViewPointPaths()) output.Line(PathText(path, style));
  const QovRyx::SequencerData& sequencer = tree.GetSequencerData();
  const std::string name = sequencer.mName.empty() ? "" : " " + Escape(sequencer.mName, style);
  output.Line(fmt::format("  sequencer{} ({}, {})", name,
                          Plural(sequencer.mActions.mSlots.size(), "action"),
                          Plural(sequencer.mSequences.size(), "sequence")));
}

void ReportHistory(const QovRyx::Tree& tree, Output& output) {
  if (tree.GetModifiers().empty()) return;
  output.Line("History");
  for (const auto& entry : tree.GetModifiers()) output.Line(ModifierText(entry, output.GetStyle()));
}

}  // namespace Qov::Tools
