#include "ModelMerge.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <unordered_set>

#include "AppendResults.h"
#include "InstanceTimes.h"
#include "JoinDatasets.h"
#include "MergeParts.h"
#include "ModelComparison.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
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

/// Raises MismatchError if a geometry of `part` is not one of `first`.
void CheckHasSameGeometries(const Tree& first, const Tree& part) {
  ForEachGeometry(part.GetNodes(), [&first](std::uint32_t id, const Geometry&) {
    const NodeTree::Node* node = first.GetNodes().FindNode(id);
    if (node != nullptr && AsGeometry(*node) != nullptr) return;
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::MismatchError,
                     "The part belongs to another merge: the first part does not have geometry " +
                         std::to_string(id));
  });
}

bool HoldsDatasetMerge(const std::string& path) {
  Tree tree(false);
  LoadModel(tree, path, Tree::ReadMode::WithoutViews, [](const std::string&) {});
  return IsDatasetMerge(tree);
}

}  // namespace

std::unique_ptr<Tree> ModelMerge::MergeInstances(MergedNames names) {
  if (mRequest.mJoinParts) return JoinInstances();
  const std::vector<ModelNaming> namings = NameAll(names);
  for (const ModelNaming& naming : namings) mReport.mInstanceNames.push_back(naming.mPart);
  const bool isPart = !mRequest.mPartOf.empty();
  std::unique_ptr<Tree> master = isPart ? StartPart(namings) : Start(namings);
  for (std::size_t i = 1; i != mModels.size(); ++i) {
    mBefore(i);
    Qov::Util::WithFileContext(mModels[i], [&] {
      AddInstance(*master, mModels[i], namings[i]);
      TakeViews(*master, mModels[i]);
    });
  }
  const bool isAlone = mModels.size() == 1 && !isPart;
  if (isAlone && names == MergedNames::Keep) return master;
  mNotes.Count(MergeNotes::Event::EqualName, CountEqualNames(master->GetNodes()));
  if (!isAlone) {
    mNotes.Count(MergeNotes::Event::NoInstance, CountWithoutInstance(master->GetNodes()));
  }
  return master;
}

std::vector<ModelNaming> ModelMerge::NameAll(MergedNames names) const {
  if (mRequest.mStems.empty()) return NameModels(mModels, names, mRequest.mFirstNumber);
  std::vector<ModelNaming> namings;
  for (const std::string& stem : mRequest.mStems) namings.push_back({names, stem});
  return namings;
}

/// Returns the first model with its new names.
std::unique_ptr<Tree> ModelMerge::Start(const std::vector<ModelNaming>& namings) {
  std::unique_ptr<Tree> master = MakeModelTree();
  mBefore(0);
  LoadFirst(*master);
  const bool isAlone = mModels.size() == 1 && mRequest.mPartOf.empty();
  if (isAlone && namings[0].mNames == MergedNames::Keep) return master;
  Qov::Util::WithFileContext(mModels[0], [&] { NameInstances(*master, namings[0]); });
  if (!isAlone) TakeGroupTimes(*master);
  return master;
}

/// Returns the nodes of the first model of the whole merge with the results of the first model of
/// the part. So each result of a part has the place that it has in the whole merge.
std::unique_ptr<Tree> ModelMerge::StartPart(const std::vector<ModelNaming>& namings) {
  if (mModels[0] == mRequest.mPartOf) return Start(namings);
  std::unique_ptr<Tree> master = MakeModelTree();
  LoadModel(*master, mRequest.mPartOf, Tree::ReadMode::WithoutViews, [](const std::string&) {});
  RemoveAllResults(master->GetNodes());
  mBefore(0);
  Qov::Util::WithFileContext(mModels[0], [&] {
    AddInstance(*master, mModels[0], namings[0]);
    TakeViews(*master, mModels[0]);
  });
  return master;
}

/// Appends the results of all parts as they are: a part has the final names and times.
std::unique_ptr<Tree> ModelMerge::JoinInstances() {
  std::unique_ptr<Tree> master = MakeModelTree();
  mBefore(0);
  LoadFirst(*master);
  for (std::size_t i = 1; i != mModels.size(); ++i) {
    mBefore(i);
    Qov::Util::WithFileContext(mModels[i], [&] {
      Tree part(false);
      LoadModel(part, mModels[i], Tree::ReadMode::WithoutViews, MakeReporter());
      CheckIsPart(part);
      CheckHasSameGeometries(*master, part);
      mNotes.CountLosses(part.GetLosses());
      DroppedResults none;  // stays empty, because the geometries are the same
      AppendResults(part, *master, none);
      TakeViews(*master, mModels[i]);
    });
  }
  return master;
}

std::unique_ptr<Tree> ModelMerge::MergeDatasets() {
  mBefore(0);
  const bool isJoined = mRequest.mJoinParts || (mRequest.mJoin && HoldsDatasetMerge(mModels[0]));
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
  if (!mRequest.mJoinParts) return;
  Qov::Util::WithFileContext(mModels[0], [&] { CheckIsPart(tree); });
  tree.RemoveLastModifier();
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
  if (!mRequest.mJoin && !mRequest.mJoinParts) return MergeModel(tree, path, MakeReporter());
  std::vector<std::string> lines;
  Tree part(false);
  LoadModel(part, path, Tree::ReadMode::WithoutViews,
            [&lines](const std::string& line) { lines.push_back(line); });
  if (mRequest.mJoinParts) CheckIsPart(part);
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
