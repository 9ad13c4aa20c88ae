#include "diff/ModelDiff.h"

#include <fmt/format.h>

#include <exception>
#include <vector>

#include "ErrorText.h"
#include "compare/Attributes.h"
#include "compare/NameMatching.h"
#include "compare/Records.h"
#include "compare/Sets.h"
#include "diff/ResultDiff.h"
#include "diff/StateDiff.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using QovRyx::Group;
using QovRyx::NodeSets;
using QovRyx::SetColumns;
using QovRyx::Shape;

const QovRyx::Node* NodeOf(const PathTree::Item& item) {
  return item.mEntry == nullptr ? nullptr : item.mEntry->mData.get();
}

/// Compares the content of nodes with the same path.
class NodeDiff {
 public:
  NodeDiff(const QovRyx::Tree& a, const QovRyx::Tree& b, const NodeMatching& matching,
           const DiffOptions& options, DiffReport& report)
      : mMatching(matching),
        mOptions(options),
        mReport(report),
        mResults(a.GetNodes(), b.GetNodes(), matching, options, report) {}

  void Run();

 private:
  void Compare(const NodePair& pair);
  void CompareGroups(const NodePair& pair, const Group& a, const Group& b);
  void CompareMaterials(const NodePair& pair, const Shape& a, const Shape& b);
  void CompareSets(const NodePair& pair, const NodeSets& a, const NodeSets& b);
  void CompareSetLists(const NodePair& pair, const SetColumns& a, const SetColumns& b);
  void CompareAttributes(const NodePair& pair, const QovUtil::Attributes& a,
                         const QovUtil::Attributes& b);
  void Add(const NodePair& pair, const char* code, std::string text) {
    mReport.mDifferences.push_back(mMatching.MakeDifference(pair, code, std::move(text)));
  }
  template <class T, class Function>
  void IfBoth(const NodePair& pair, Function function) {
    const auto* a = dynamic_cast<const T*>(NodeOf(mMatching.GetA(pair)));
    const auto* b = dynamic_cast<const T*>(NodeOf(mMatching.GetB(pair)));
    if (a != nullptr && b != nullptr) function(*a, *b);
  }

  const NodeMatching& mMatching;
  const DiffOptions& mOptions;
  DiffReport& mReport;
  ResultDiff mResults;
};

void NodeDiff::Run() {
  for (const NodePair& pair : mMatching.GetPairs()) {
    IfBoth<Geometry>(pair, [&](const auto& a, const auto& b) { mResults.Match(pair, a, b); });
  }
  for (const NodePair& pair : mMatching.GetPairs()) Compare(pair);
  mResults.CompareAllValues();
}

void NodeDiff::Compare(const NodePair& pair) {
  IfBoth<Group>(pair, [&](const auto& a, const auto& b) { CompareGroups(pair, a, b); });
  IfBoth<Shape>(pair, [&](const auto& a, const auto& b) { CompareMaterials(pair, a, b); });
  IfBoth<Geometry>(pair,
                   [&](const auto& a, const auto& b) { mResults.CompareDescriptors(pair, a, b); });
  IfBoth<NodeSets>(pair, [&](const auto& a, const auto& b) { CompareSets(pair, a, b); });
}

void NodeDiff::CompareGroups(const NodePair& pair, const Group& a, const Group& b) {
  CompareAttributes(pair, a.mAttributes, b.mAttributes);
  if (!mOptions.Compares("groups")) return;
  const std::string fields = NameDifferingFields(a, b);
  if (!fields.empty()) Add(pair, "group", "the group differs: " + fields);
}

void NodeDiff::CompareMaterials(const NodePair& pair, const Shape& a, const Shape& b) {
  if (!mOptions.Compares("materials")) return;
  const std::string fields = NameDifferingFields(a.mMaterial.mValues, b.mMaterial.mValues);
  if (!fields.empty()) Add(pair, "material", "the material differs: " + fields);
}

void NodeDiff::CompareAttributes(const NodePair& pair, const QovUtil::Attributes& a,
                                 const QovUtil::Attributes& b) {
  if (!mOptions.Compares("attributes")) return;
  const std::string text = DescribeDifference(a, b, "A", "B");
  if (!text.empty()) Add(pair, "attributes", text);
}

void NodeDiff::CompareSets(const NodePair& pair, const NodeSets& a, const NodeSets& b) {
  if (!mOptions.Compares("node-sets")) return;
  try {
    CompareSetLists(pair, a.GetColumns(), b.GetColumns());
  } catch (const std::exception& error) {
    ++mReport.mNumUnreadable;
    Add(pair, "unreadable", "the sets cannot be compared: " + ErrorText(error));
  }
}

void NodeDiff::CompareSetLists(const NodePair& pair, const SetColumns& a, const SetColumns& b) {
  NameMatching names;
  for (std::size_t i = 0; i < b.size(); ++i) names.Add(b[i].mName);
  for (std::size_t i = 0; i < a.size(); ++i) {
    const std::string name(a[i].mName);
    const auto position = names.Take(name);
    const std::string text = position ? DescribeDifference(a[i], b[*position]) : "only in A";
    if (!text.empty()) Add(pair, "node-set", fmt::format("set {}: {}", name, text));
  }
  for (const auto& [name, position] : names.GetLeft()) {
    Add(pair, "node-set", "set " + std::string(name) + ": only in B");
  }
  if (names.IsInOrder() || !mOptions.Compares("order")) return;
  Add(pair, "order", "the order of the sets differs");
}

}  // namespace

DiffReport DiffModels(const QovRyx::Tree& a, const QovRyx::Tree& b, const DiffOptions& options) {
  DiffReport report;
  if (!options.ComparesSubtrees()) CompareStates(a, b, options, report);
  const NodeMatching matching(a.GetNodes(), b.GetNodes(), options, report);
  NodeDiff(a, b, matching, options, report).Run();
  return report;
}

}  // namespace Qov::Tools
