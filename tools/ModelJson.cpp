#include "ModelJson.h"

#include <algorithm>
#include <array>
#include <exception>
#include <nlohmann/json.hpp>
#include <variant>

#include "ErrorText.h"
#include "LinkTarget.h"
#include "RecordPrinter.h"
#include "TreeWalk.h"
#include "ValueText.h"
#include "diagnostics/Utf8.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

/// Limit of the sets of a node, because a document is completely in memory.
constexpr std::size_t kMostSetsInJson = 200000;

/// Creates the parts that belong to nodes.
class NodeWriter {
 public:
  NodeWriter(const QovRyx::Tree& tree, const NodeFilter& filter, const ModelStatistics* statistics,
             bool& complete)
      : mTree(tree), mFilter(filter), mpStatistics(statistics), mComplete(complete) {}

  Json Entry(const TreeWalk::Step& step) const;
  void AddContent(const QovRyx::Node& node, Json& entry) const;

 private:
  Json Results(const Geometry& geometry) const;
  Json Result(const Geometry::VarStruct& variable) const;
  Json Link(const Geometry::VarStruct& variable) const;
  void AddStatistics(const Geometry::VarStruct& variable, Json& result) const;
  void AddSets(const QovRyx::NodeSets& sets, Json& entry) const;

  const QovRyx::Tree& mTree;
  const NodeFilter& mFilter;
  const ModelStatistics* mpStatistics;
  bool& mComplete;
};

Json NodeWriter::Entry(const TreeWalk::Step& step) const {
  Json entry{{"id", step.mId}, {"depth", step.mDepth}};
  if (step.mIsUnreached) entry["astray"] = true;
  if (step.mEntry == nullptr || step.mAgain) {
    entry[step.mAgain ? "again" : "missing"] = true;
    return entry;
  }
  entry["parent"] = step.mEntry->mParent;
  const QovRyx::Node* node = step.mEntry->mData.get();
  entry["type"] = node == nullptr ? Json() : Json(node->GetType());
  if (node != nullptr) entry["name"] = JsonText(node->GetName());
  const std::uint64_t numDeeper = mFilter.CountDeeper(step.mId);
  if (numDeeper != 0) entry["deeper"] = numDeeper;
  return entry;
}

void NodeWriter::AddContent(const QovRyx::Node& node, Json& entry) const {
  if (const auto* group = dynamic_cast<const QovRyx::Group*>(&node)) {
    entry["attributes"] = AttributesJson(group->mAttributes);
  }
  const auto* geometry = dynamic_cast<const Geometry*>(&node);
  if (geometry != nullptr && mpStatistics != nullptr) entry["results"] = Results(*geometry);
  if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(&node)) AddSets(*sets, entry);
}

Json NodeWriter::Results(const Geometry& geometry) const {
  Json list = Json::array();
  for (std::size_t i = 0; i < geometry.GetVariables().size(); ++i) {
    const Geometry::VarStruct& variable = geometry.GetVariables()[i];
    if (!mFilter.ShowsResult(variable.mName)) continue;
    list.push_back(Result(variable));
    if (mFilter.ChoosesResults()) list.back()["position"] = i;
  }
  return list;
}

Json NodeWriter::Result(const Geometry::VarStruct& variable) const {
  const bool hasKind = variable.mKind != Geometry::kNoKind;
  const ItemCount count(variable.mValues);
  Json result{{"name", JsonText(variable.mName)},
              {"kind", hasKind ? Json(variable.mKind) : Json()},
              {"kindHighByte", variable.mKindHighByte},
              {"width", variable.mValues.GetWidth()},
              {"count", count.mItems}};
  if (count.mRest != 0) result["rest"] = count.mRest;
  if (variable.mLink.IsLinked()) result["link"] = Link(variable);
  AddStatistics(variable, result);
  result["attributes"] = AttributesJson(variable.mAttributes);
  return result;
}

Json NodeWriter::Link(const Geometry::VarStruct& variable) const {
  const LinkTarget target(mTree.GetNodes(), variable);
  const auto [node, position] = variable.mLink.GetPlace();
  Json json{{"node", node}, {"result", position}, {"found", target.mHasValues}};
  if (target.mVariable != nullptr) {
    json["nodeName"] = JsonText(Shortened(target.mGeometry->GetName()));
    json["resultName"] = JsonText(Shortened(target.mVariable->mName));
  }
  return json;
}

Json Element(double value, bool integer) {
  return integer ? Json(static_cast<std::uint32_t>(value)) : JsonFloat(static_cast<float>(value));
}

void NodeWriter::AddStatistics(const Geometry::VarStruct& variable, Json& result) const {
  const ModelStatistics::Entry* entry = mpStatistics->Find(variable.mValues);
  if (entry == nullptr) return;
  result["type"] = entry->mIntegers ? "u32" : "f32";
  if (!entry->mError.empty()) {
    result["trouble"] = entry->mError;
    mComplete = false;
    return;
  }
  const ArrayStatistics& statistics = entry->mStatistics;
  if (statistics.HasRange()) {
    result["minimum"] = Element(statistics.mMinimum, entry->mIntegers);
    result["maximum"] = Element(statistics.mMaximum, entry->mIntegers);
  }
  result["nan"] = statistics.mNumNaN;
}

void NodeWriter::AddSets(const QovRyx::NodeSets& sets, Json& entry) const {
  try {
    Json list = Json::array();
    const QovRyx::SetColumns columns = sets.GetColumns();
    const std::size_t numShown = std::min(columns.size(), kMostSetsInJson);
    for (std::size_t i = 0; i < numShown; ++i) {
      list.push_back({{"name", JsonText(columns[i].mName)}, {"count", columns[i].mValues.size()}});
    }
    entry["sets"] = std::move(list);
    if (numShown < columns.size()) entry["setsLeftOut"] = columns.size() - numShown;
  } catch (const std::exception& error) {
    entry["trouble"] = DescribeError(error, {});
    mComplete = false;
  }
}

Json AttributeJson(const QovUtil::AttributeValue& value) {
  static constexpr std::array<const char*, 4> kTypes = {"u32", "f32", "string", "f64"};
  static_assert(kTypes.size() == std::variant_size_v<QovUtil::AttributeValue>);
  Json json{{"type", kTypes[value.index()]}};
  if (const auto* number = std::get_if<std::uint32_t>(&value)) json["value"] = *number;
  if (const auto* number = std::get_if<float>(&value)) json["value"] = JsonFloat(*number);
  if (const auto* text = std::get_if<std::string>(&value)) json["value"] = JsonText(*text);
  if (const auto* number = std::get_if<double>(&value)) json["value"] = JsonNumber(*number);
  return json;
}

}  // namespace

Json NodesJson(const QovRyx::Tree& tree, const NodeFilter& filter,
               const ModelStatistics* statistics, bool& complete) {
  const NodeWriter writer(tree, filter, statistics, complete);
  Json list = Json::array();
  TreeWalk walk(tree.GetNodes(), filter.GetShown());
  while (const auto step = walk.Next()) {
    Json entry = writer.Entry(*step);
    const bool hasContent = step->mEntry != nullptr && !step->mAgain && step->mEntry->mData;
    if (hasContent && filter.IsChosen(step->mId)) writer.AddContent(*step->mEntry->mData, entry);
    list.push_back(std::move(entry));
  }
  return list;
}

Json AttributesJson(const QovUtil::Attributes& attributes) {
  Json::object_t object;
  object.reserve(attributes.size());
  for (const auto& [name, value] : attributes) {
    object.emplace_back(JsonText(name), AttributeJson(value));
  }
  return object;
}

Json ViewsJson(const QovRyx::Tree& tree) {
  if (!tree.HasViewPoints()) return nullptr;
  Json paths = Json::array();
  for (const QovRyx::ViewPointPath& path : tree.GetViewPointPaths()) {
    Json views = Json::array();
    for (const auto& view : path.mViewPoints) views.push_back(JsonText(view.mName));
    paths.push_back({{"name", JsonText(path.mName)}, {"views", std::move(views)}});
  }
  const QovRyx::SequencerData& sequencer = tree.GetSequencerData();
  return {{"current", JsonText(tree.GetViewPoint().mName)},
          {"paths", std::move(paths)},
          {"sequencer",
           {{"name", JsonText(sequencer.mName)},
            {"actions", sequencer.mActions.mSlots.size()},
            {"sequences", sequencer.mSequences.size()}}}};
}

Json HistoryJson(const QovRyx::Tree& tree) {
  Json list = Json::array();
  for (const auto& modifier : tree.GetModifiers()) list.push_back(MakeJson(PrintRecord(modifier)));
  return list;
}

}  // namespace Qov::Tools
