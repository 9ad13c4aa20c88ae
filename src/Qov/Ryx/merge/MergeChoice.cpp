#include "MergeChoice.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_set>

#include "MergeSteps.h"
#include "ModelComparison.h"
#include "ModelNaming.h"
#include "Qov/Ryx/InstanceNames.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace QovRyx {
namespace {

/// Finds results whose names would not tell the models apart if names were kept.
class KeptNames {
 public:
  /// Adds the names of a model. Returns the reason why they cannot be kept, or nothing: a name is
  /// also in an earlier model, or it has no instance part and would apply to all models.
  std::string Add(Tree& tree, const std::string& path) {
    NameInstances(tree, ModelNaming{});
    std::string reason;
    std::vector<std::size_t> added;
    ForEachGeometry(tree.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
      for (const Geometry::VarStruct& result : geometry.GetVariables()) {
        const std::size_t hash = Hash(id, result.mName);
        const auto explain = [&](const char* fault) {
          if (!reason.empty()) return;
          reason = Qov::Util::Quote(result.mName) + " of " + Qov::Util::Quote(path) + fault;
        };
        if (mHashes.contains(hash)) explain(" is also in an earlier model");
        if (!HasInstancePart(result.mName)) explain(" belongs to no instance");
        added.push_back(hash);
      }
    });
    mHashes.insert(added.begin(), added.end());
    return reason;
  }

 private:
  static std::size_t Hash(std::uint32_t id, const std::string& name) {
    constexpr std::size_t kOdd = 0x9E3779B97F4A7C15;
    return std::hash<std::string>()(name) ^ (id * kOdd);
  }

  /// Hashes are enough, because two names with one hash only lead to names that are longer.
  std::unordered_set<std::size_t> mHashes;
};

/// Reads models until mode and names are decided.
class Chooser {
 public:
  Chooser(const MergeRequest& request, const std::vector<std::string>& models)
      : mModels(models),
        mIsModeOpen(request.mMode == MergeMode::Automatic),
        mAreNamesOpen(request.mNames == MergedNames::Automatic) {
    mChoice.mMode = mIsModeOpen ? MergeMode::Instances : request.mMode;
    mChoice.mNames = mAreNamesOpen ? MergedNames::Keep : request.mNames;
    mModeReason =
        mIsModeOpen ? "all models have the same tree and the same meshes" : "as requested";
    if (mAreNamesOpen) mNamesReason = "their instances have different names";
  }

  MergeChoice Choose(const BeforeModel& before) {
    for (std::size_t i = 0; i != mModels.size() && IsOpen(); ++i) {
      before(i);
      Qov::Util::WithFileContext(mModels[i], [&] { Read(i); });
    }
    mChoice.mReason = mModeReason;
    if (mChoice.mMode == MergeMode::Instances && !mNamesReason.empty()) {
      mChoice.mReason += "; " + mNamesReason;
    }
    return mChoice;
  }

 private:
  bool IsOpen() const { return mIsModeOpen || mAreNamesOpen; }

  void Read(std::size_t i) {
    Tree tree(false);
    LoadModel(i == 0 ? mFirst : tree, mModels[i], Tree::ReadMode::WithoutViews, [](const auto&) {});
    if (i != 0 && mIsModeOpen) CompareWithFirst(tree, mModels[i]);
    if (mAreNamesOpen) CompareNames(i == 0 ? mFirst : tree, mModels[i]);
  }

  void CompareWithFirst(const Tree& tree, const std::string& path) {
    const std::string difference = FindDifference(mFirst, tree);
    if (difference.empty()) return;
    mChoice.mMode = MergeMode::Datasets;
    mChoice.mNames = MergedNames::Keep;
    mModeReason = Qov::Util::Quote(path) + " differs from the first model: " + difference;
    mIsModeOpen = false;
    mAreNamesOpen = false;
  }

  void CompareNames(Tree& tree, const std::string& path) {
    const std::string reason = mNames.Add(tree, path);
    if (reason.empty()) return;
    mChoice.mNames = MergedNames::Stem;
    mNamesReason = "names get the file names, because " + reason;
    mAreNamesOpen = false;
  }

  const std::vector<std::string>& mModels;
  bool mIsModeOpen;
  bool mAreNamesOpen;
  MergeChoice mChoice;
  std::string mModeReason;
  std::string mNamesReason;
  Tree mFirst{false};
  KeptNames mNames;
};

}  // namespace

MergeChoice ChooseMerge(const MergeRequest& request, const std::vector<std::string>& models,
                        const BeforeModel& before) {
  using enum MergeMode;
  if (request.mJoinParts) return {request.mMode, MergedNames::Keep, "the inputs are parts"};
  if (!request.mPartOf.empty()) {
    return {request.mMode, request.mMode == Instances ? request.mNames : MergedNames::Keep,
            "the output is a part of a merge"};
  }
  if (models.size() == 1 && request.mMode != Datasets) {
    const bool isOpen = request.mNames == MergedNames::Automatic;
    return {Instances, isOpen ? MergedNames::Keep : request.mNames, "there is one model"};
  }
  if (request.mJoin && request.mMode == Instances) {
    Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::MiscellaneousError,
                     "Only a merge as datasets can join the contents of its inputs");
  }
  if (request.mMode == Datasets) return {Datasets, MergedNames::Keep, "as requested"};
  if (request.mJoin) return {Datasets, MergedNames::Keep, "the contents of the inputs are joined"};
  return Chooser(request, models).Choose(before);
}

}  // namespace QovRyx
