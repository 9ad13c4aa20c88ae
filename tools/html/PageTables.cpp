#include "html/PageTables.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>
#include <variant>

#include "ItemNames.h"
#include "Plural.h"
#include "Terminal.h"
#include "TreeWalk.h"
#include "ValueText.h"
#include "html/PageTable.h"
#include "html/PageText.h"
#include "stats/ResultStatistics.h"
#include "stats/StatisticsReport.h"

namespace Qov::Tools {
namespace {

std::string AttributeText(const QovUtil::AttributeValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text != nullptr) return PageText(*text);
  return std::visit(
      [](const auto& number) {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(number)>>) {
          return fmt::format("{}", number);
        } else {
          return std::string();
        }
      },
      value);
}

void AddAttributes(const QovRyx::Tree& tree, Json& tables, std::vector<std::string>& notes) {
  PageTable groups("Attributes of groups", {"Group", "Attribute", "Value"});
  PageTable results("Attributes of results", {"Geometry", "Result", "Attribute", "Value"});
  TreeWalk walk(tree.GetNodes());
  while (const auto step = walk.Next()) {
    if (step->mEntry == nullptr || step->mAgain || step->mEntry->mData == nullptr) continue;
    const QovRyx::Node& node = *step->mEntry->mData;
    if (const auto* group = dynamic_cast<const QovRyx::Group*>(&node)) {
      for (const auto& [name, value] : group->mAttributes) {
        groups.Add({PageText(node.GetName()), PageText(name), AttributeText(value)});
      }
    }
    const auto* geometry = dynamic_cast<const QovRyx::Geometry*>(&node);
    if (geometry == nullptr) continue;
    for (const auto& variable : geometry->GetVariables()) {
      for (const auto& [name, value] : variable.mAttributes) {
        results.Add({PageText(node.GetName()), PageText(variable.mName), PageText(name),
                     AttributeText(value)});
      }
    }
  }
  groups.AppendTo(tables, notes);
  results.AppendTo(tables, notes);
}

void AddHistory(const QovRyx::Tree& tree, Json& tables, std::vector<std::string>& notes) {
  PageTable table("History",
                  {"Program", "Version", "Version of the file", "Date", "Host", "User", "Comment"});
  for (const QovRyx::ModifierInfo& entry : tree.GetModifiers()) {
    table.Add({PageText(entry.mApplication), PageText(entry.mApplicationVersion),
               PageText(entry.mFileVersion), PageText(entry.mDate), PageText(entry.mHost),
               PageText(entry.mUser), PageText(entry.mComment)});
  }
  table.AppendTo(tables, notes);
}

std::string PlaceText(const ValuePlace& place) {
  return fmt::format("{}, {}", ItemText(place.mItem), PageText(place.mNodeName));
}

void AddStatistics(const QovRyx::Tree& tree, const std::vector<std::string>& patterns, Json& tables,
                   std::vector<std::string>& notes) {
  ResultStatistics statistics(patterns);
  const QovJbf::ReadAhead ahead(statistics.PlanReads(tree.GetNodes()));
  statistics.Add(0, tree.GetNodes());
  PageTable table("Statistics of results",
                  {"Result", "Component", "Values", "NaN", "Least", "Least at", "Greatest",
                   "Greatest at", "Mean", "Root mean square"});
  for (const StatisticsRow& row : statistics.GetRows()) {
    const ArrayStatistics& range = row.mValues.GetRange();
    std::vector<std::string> cells{PageText(row.mResult), ComponentText(row),
                                   fmt::format("{}", range.mNumValues),
                                   fmt::format("{}", range.mNumNaN)};
    cells.resize(10);
    if (range.HasRange()) {
      cells[4] = NumberText(range.mMinimum, row.mIntegers);
      cells[5] = PlaceText(row.mLeast);
      cells[6] = NumberText(range.mMaximum, row.mIntegers);
      cells[7] = PlaceText(row.mGreatest);
      cells[8] = NumberText(row.mValues.GetMean(), false);
      cells[9] = NumberText(row.mValues.GetRootMeanSquare(), false);
    }
    table.Add(std::move(cells));
  }
  table.AppendTo(tables, notes);
  for (const StatisticsTrouble& trouble : statistics.GetTrouble()) {
    notes.push_back("statistics: " + Escape(trouble.mText, {}));
  }
}

const char* KindOf(const QovRyx::Node& node) {
  if (dynamic_cast<const QovRyx::Geometry*>(&node) != nullptr) return "geometry";
  return dynamic_cast<const QovRyx::Shape*>(&node) != nullptr ? "shape" : "group";
}

/// Returns the ids of the parts and of all entries above them.
TreeWalk::Ids FindShown(const QovRyx::NodeTree& nodes,
                        const std::unordered_map<std::uint32_t, Json>& parts) {
  TreeWalk::Ids shown;
  for (const auto& [id, part] : parts) {
    const auto* entry = nodes.FindNode(id);
    for (; entry != nullptr && shown.insert(entry->mId).second;) {
      entry = nodes.FindNode(entry->mParent);
    }
  }
  return shown;
}

}  // namespace

Json MakeNodes(const QovRyx::Tree& tree, const std::unordered_map<std::uint32_t, Json>& parts) {
  const TreeWalk::Ids shown = FindShown(tree.GetNodes(), parts);
  Json nodes = Json::array();
  std::vector<std::uint32_t> path;  // ids by depth; 0 for entries without a node
  TreeWalk walk(tree.GetNodes(), &shown);
  while (const auto step = walk.Next()) {
    path.resize(step->mDepth);
    const bool hasNode = step->mEntry != nullptr && !step->mAgain && step->mEntry->mData;
    path.push_back(hasNode ? step->mId : 0);
    if (!hasNode) continue;
    const auto parent =
        std::find_if(path.rbegin() + 1, path.rend(), [](auto id) { return id != 0; });
    const auto part = parts.find(step->mId);
    nodes.push_back({{"id", step->mId},
                     {"parent", parent == path.rend() ? Json() : Json(*parent)},
                     {"kind", KindOf(*step->mEntry->mData)},
                     {"name", PageText(step->mEntry->mData->GetName())},
                     {"part", part == parts.end() ? Json() : part->second}});
  }
  return nodes;
}

Json MakeTables(const QovRyx::Tree& tree, const std::vector<std::string>& patterns,
                std::vector<std::string>& notes) {
  Json tables = Json::array();
  AddAttributes(tree, tables, notes);
  AddHistory(tree, tables, notes);
  AddStatistics(tree, patterns, tables, notes);
  return tables;
}

}  // namespace Qov::Tools
