#include "ModelMerge.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <unordered_set>

#include "AppendResults.h"
#include "InstanceTimes.h"
#include "JoinDatasets.h"
#include "ModelComparison.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/FileContext.h"
#include "ViewCount.h"
#include "ViewPointFiles.h"

namespace QovRyx {
namespace {

/// Counts the results that have the name of an earlier result of their geometry.
std::uint64_t CountEqualNames(const NodeTree& nodes) {
  std::uint64_t number = 0;
  ForEachGeometry(nodes, [&number](std::uint32_t, const Geometry& geometry) {
    std::unordered_set<std::string_view> names;
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      if (!names.insert(result.mName).second) ++number;
    }
  });
  return number;
}

std::uint64_t CountWithoutInstance(const NodeTree& nodes) {
  std::uint64_t number = 0;
  ForEachGeometry(nodes, [&number](std::uint32_t, const Geometry& geometry) {
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      if (!HasInstancePart(result.mName)) ++number;
    }
  });
  return number;
}

/// Removes the geometries that `master` does not have and that have no results.
void RemoveEmptyGeometries(NodeTree& nodes, const NodeTree& master) {
  for (auto& [id, entry] : nodes) {
    const Geometry* geometry = AsGeometry(entry);
    const bool isEmpty = geometry != nullptr && geometry->GetVariables().empty();
    if (isEmpty && master.FindNode(id) == nullptr) entry.mData = nullptr;
  }
}

bool HoldsDatasetMerge(const std::string& path) {
  Tree tree(false);
  LoadModel(tree, path, Tree::ReadMode::WithoutViews, [](const std::string&) {});
  return IsDatasetMerge(tree);
}

}  // namespace

std::unique_ptr<Tree> ModelMerge::MergeInstances(MergedNames names) {
  const std::vector<ModelNaming> namings = NameModels(mModels, names, mRequest.mFirstNumber);
  for (const ModelNaming& naming : namings) mReport.mInstanceNames.push_back(naming.mPart);
  std::unique_ptr<Tree> master = MakeModelTree();
  mBefore(0);
  LoadFirst(*master);
  if (mModels.size() == 1 && names == MergedNames::Keep) return master;
  Qov::Util::WithFileContext(mModels[0], [&] { NameInstances(*master, namings[0]); });
  if (mModels.size() > 1) TakeGroupTimes(*master);
  for (std::size_t i = 1; i != mModels.size(); ++i) {
    mBefore(i);
    Qov::Util::WithFileContext(mModels[i], [&] {
      AddInstance(*master, mModels[i], namings[i]);
      TakeViews(*master, mModels[i]);
    });
  }
  mNotes.Count(MergeNotes::Event::EqualName, CountEqualNames(master->GetNodes()));
  if (mModels.size() > 1) {
    mNotes.Count(MergeNotes::Event::NoInstance, CountWithoutInstance(master->GetNodes()));
  }
  return master;
}

std::unique_ptr<Tree> ModelMerge::MergeDatasets() {
  mBefore(0);
  const bool isJoined = mRequest.mJoin && HoldsDatasetMerge(mModels[0]);
  std::unique_ptr<Tree> tree = isJoined ? MakeModelTree() : MakeDatasetTree();
  LoadFirst(*tree);
  for (std::size_t i = 1; i != mModels.size(); ++i) {
    mBefore(i);
    Qov::Util::WithFileContext(mModels[i], [&] {
      AddDataset(*tree, mModels[i]);
      TakeViews(*tree, mModels[i]);
    });
  }
  return tree;
}

void ModelMerge::LoadFirst(Tree& tree) {
  const bool takesViews = mRequest.mViews != MergedViews::None;
  if (!takesViews) CountViewsLeftOut(mModels[0]);
  LoadModel(tree, mModels[0],
            takesViews ? Tree::ReadMode::Everything : Tree::ReadMode::WithoutViews, MakeReporter());
}

void ModelMerge::AddInstance(Tree& master, const std::string& path, const ModelNaming& naming) {
  Tree tree(false);
  LoadModel(tree, path, Tree::ReadMode::WithoutViews, MakeReporter());
  mNotes.CountLosses(tree.GetLosses());
  CountLeftOut(master, tree, mNotes);
  NameInstances(tree, naming);
  TakeGroupTimes(tree);
  RemoveEmptyGeometries(tree.GetNodes(), master.GetNodes());
  DroppedResults none;  // stays empty, because CountLeftOut has found a place for each result
  AppendResults(tree, master, none);
}

void ModelMerge::AddDataset(Tree& tree, const std::string& path) {
  if (!mRequest.mJoin) return MergeModel(tree, path, MakeReporter());
  std::vector<std::string> lines;
  Tree part(false);
  LoadModel(part, path, Tree::ReadMode::WithoutViews,
            [&lines](const std::string& line) { lines.push_back(line); });
  if (!IsDatasetMerge(part)) return MergeModel(tree, path, MakeReporter());
  for (const std::string& line : lines) mNotes.AddLine(line);
  mNotes.CountLosses(part.GetLosses());
  JoinDatasets(part, tree);
}

void ModelMerge::TakeViews(Tree& tree, const std::string& path) {
  if (mRequest.mViews == MergedViews::All) {
    if (!AppendViewPaths(tree, path)) ++mReport.mViewsLeftOut;
  } else {
    CountViewsLeftOut(path);
  }
}

void ModelMerge::CountViewsLeftOut(const std::string& path) {
  if (const std::optional<ViewCount> views = CountViews(path)) {
    mReport.mViewsLeftOut += views->mCurrentViews + views->mViewPoints;
  } else {
    mNotes.Count(MergeNotes::Event::ViewsNotCounted);
  }
}

}  // namespace QovRyx
