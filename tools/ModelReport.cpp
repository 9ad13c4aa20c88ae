#include "ModelReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <utility>

#include "ErrorText.h"
#include "FitText.h"
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

/// The width above which a cell does not widen its column in a pipe.
constexpr std::size_t kWidestInPipe = 40;

/// Creates the lines of a node.
class NodeReport {
 public:
  NodeReport(const QovRyx::Tree& tree, const NodeFilter& filter, const ModelStatistics* statistics,
             const TextStyle& style)
      : mTree(tree), mFilter(filter), mStyle(style), mpStatistics(statistics) {}

  /// Returns the label of a node, for a line that begins with `before`.
  std::string Label(const TreeWalk::Step& step, const std::string& before) const;
  /// Writes the content of the node, each line after `before`.
  void Content(const QovRyx::Node& node, const std::string& before, Output& output);
  bool HasTrouble() const { return mTrouble; }

 private:
  std::size_t GetRoom(const std::string& before) const;
  template <class MakeRow>
  void ShowTable(std::vector<TextTable::Column> columns, std::size_t numRows,
                 const std::string& before, const MakeRow& makeRow, const Sink& sink) const;
  void Results(const Geometry& geometry, const std::string& before, const Sink& sink);
  void Sets(const QovRyx::NodeSets& sets, const std::string& before, const Sink& sink);
  std::string LinkText(const Geometry::VarStruct& variable) const;
  std::string Trouble(const std::string& text);
  std::vector<std::string> ResultRow(const Geometry::VarStruct& variable);

  const QovRyx::Tree& mTree;
  const NodeFilter& mFilter;
  TextStyle mStyle;
  const ModelStatistics* mpStatistics;
  bool mTrouble = false;
};

std::string NodeReport::Label(const TreeWalk::Step& step, const std::string& before) const {
  if (step.mEntry == nullptr) return fmt::format("(node {} is missing)", step.mId);
  if (step.mAgain) return fmt::format("(node {} again)", step.mId);
  const std::uint64_t numDeeper = mFilter.CountDeeper(step.mId);
  const std::string deeper =
      numDeeper == 0 ? "" : fmt::format(" ({} deeper)", Plural(numDeeper, "node"));
  const QovRyx::Node* node = step.mEntry->mData.get();
  if (node == nullptr) return fmt::format("(node {} without content){}", step.mId, deeper);
  const std::string mark = fmt::format("[{} {}]{}", node->GetType(), step.mId, deeper);
  std::string name = Escape(node->GetName(), mStyle);
  if (mStyle.mTerminal) {
    const std::size_t room = GetRoom(before);
    name = FitMiddle(name, room - std::min(room, DisplayWidth(mark) + 1), mStyle);
  }
  return Bold(name, mStyle) + " " + Dim(mark, mStyle);
}

/// Returns the width that a terminal has for a line after `before`.
std::size_t NodeReport::GetRoom(const std::string& before) const {
  return mStyle.mWidth - std::min<std::size_t>(mStyle.mWidth, DisplayWidth(before));
}

/// Writes a table of `numRows` rows. Creates each row twice instead of keeping all rows in memory.
template <class MakeRow>
void NodeReport::ShowTable(std::vector<TextTable::Column> columns, std::size_t numRows,
                           const std::string& before, const MakeRow& makeRow,
                           const Sink& sink) const {
  if (numRows == 0) return;
  TextTable table(std::move(columns), mStyle.mTerminal ? std::string::npos : kWidestInPipe);
  for (std::size_t i = 0; i < numRows; ++i) table.Measure(makeRow(i));
  if (mStyle.mTerminal) table.Fit(GetRoom(before), mStyle);
  for (const std::string& line : table.GetHeadingLines()) sink(line);
  for (std::size_t i = 0; i < numRows; ++i) {
    for (const std::string& line : table.GetLinesOf(makeRow(i))) sink(line);
  }
}

void NodeReport::Content(const QovRyx::Node& node, const std::string& before, Output& output) {
  const Sink sink = [&](const std::string& line) { output.Line(FitLine(before + line, mStyle)); };
  const auto* group = dynamic_cast<const QovRyx::Group*>(&node);
  if (group != nullptr && !group->mAttributes.empty()) {
    sink(AttributesText(group->mAttributes, mStyle));
  }
  if (const auto* geometry = dynamic_cast<const Geometry*>(&node)) {
    Results(*geometry, before, sink);
  }
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(&node)) Sets(*sets, before, sink);
}

std::string NodeReport::Trouble(const std::string& text) {
  mTrouble = true;
  return "(cannot be read: " + text + ")";
}

void NodeReport::Results(const Geometry& geometry, const std::string& before, const Sink& sink) {
  using Cut = TextTable::Cut;
  if (mpStatistics == nullptr) return;
  std::vector<const Geometry::VarStruct*> shown;
  for (const Geometry::VarStruct& variable : geometry.GetVariables()) {
    if (mFilter.ShowsResult(variable.mName)) shown.push_back(&variable);
  }
  ShowTable(
      {{"NAME", Align::Left, Cut::Middle, false, 16},
       {"KIND", Align::Right, Cut::Never, true},
       {"WIDTH", Align::Right, Cut::Never, true},
       {"COUNT", Align::Right},
       {"MINIMUM", Align::Right},
       {"MAXIMUM", Align::Right},
       {"NAN", Align::Right},
       {"LINK", Align::Left, Cut::Middle, false, 12},
       {"ATTRIBUTES", Align::Left, Cut::End, true},
       {"TROUBLE", Align::Left, Cut::End}},
      shown.size(), before, [&](std::size_t i) { return ResultRow(*shown[i]); }, sink);
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

void NodeReport::Sets(const QovRyx::NodeSets& sets, const std::string& before, const Sink& sink) {
  QovRyx::SetColumns columns;
  try {
    columns = sets.GetColumns();
  } catch (const std::exception& error) {
    return sink(Trouble(DescribeError(error, mStyle)));
  }
  const auto makeRow = [&](std::size_t i) -> TextTable::Row {
    return {Escape(columns[i].mName, mStyle), fmt::format("{}", columns[i].mValues.size())};
  };
  ShowTable({{"SET", Align::Left, TextTable::Cut::Middle}, {"COUNT", Align::Right}}, columns.size(),
            before, makeRow, sink);
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
  NodeReport report(tree, filter, statistics, output.GetStyle());
  const TreeLines lines(output.GetStyle());
  TreeWalk walk(tree.GetNodes(), filter.GetShown());
  bool isUnreached = false;
  while (const auto step = walk.Next()) {
    if (step->mIsUnreached && !isUnreached) output.Line("Not reached by any link:");
    isUnreached = isUnreached || step->mIsUnreached;
    const std::string before = lines.BeforeEntry(walk, *step);
    output.Line(before + report.Label(*step, before));
    if (step->mEntry == nullptr || step->mAgain || !step->mEntry->mData) continue;
    if (!filter.IsChosen(step->mId)) continue;
    report.Content(*step->mEntry->mData, lines.BeforeContent(walk, *step), output);
  }
  return !report.HasTrouble();
}

void ReportViews(const QovRyx::Tree& tree, LongLines longLines, Output& output) {
  if (!tree.HasViewPoints()) return;
  const TextStyle& style = output.GetStyle();
  const auto show = [&](const std::string& line) {
    output.Line(longLines == LongLines::Cut ? FitLine(line, style) : line);
  };
  show("Views");
  show("  current view " + Escape(tree.GetViewPoint().mName, style));
  for (const auto& path : tree.GetViewPointPaths()) show(PathText(path, style));
  const QovRyx::SequencerData& sequencer = tree.GetSequencerData();
  const std::string name = sequencer.mName.empty() ? "" : " " + Escape(sequencer.mName, style);
  show(fmt::format("  sequencer{} ({}, {})", name,
                   Plural(sequencer.mActions.mSlots.size(), "action"),
                   Plural(sequencer.mSequences.size(), "sequence")));
}

void ReportHistory(const QovRyx::Tree& tree, LongLines longLines, Output& output) {
  if (tree.GetModifiers().empty()) return;
  output.Line("History");
  for (const auto& entry : tree.GetModifiers()) {
    const std::string line = ModifierText(entry, output.GetStyle());
    output.Line(longLines == LongLines::Cut ? FitLine(line, output.GetStyle()) : line);
  }
}

}  // namespace Qov::Tools
