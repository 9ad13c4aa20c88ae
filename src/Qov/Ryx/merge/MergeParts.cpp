#include "MergeParts.h"

#include <vector>

#include "MergeSteps.h"
#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

using ErrorType = Qov::Util::Exception::ErrorType;

constexpr const char* kPartComment = "Part of a merge";

void RaiseIf(bool isWrong, const char* text) {
  if (isWrong) Qov::Util::Raise(kMergeSource, ErrorType::MiscellaneousError, text);
}

}  // namespace

void CheckPartRequest(const MergeRequest& request, std::size_t numModels) {
  const bool isPart = !request.mPartOf.empty();
  const bool isInstances = request.mMode == MergeMode::Instances;
  RaiseIf(!request.mStems.empty() && request.mNames != MergedNames::Stem,
          "The stems of the models are given, but the names are not made of stems");
  RaiseIf(!request.mStems.empty() && request.mStems.size() != numModels,
          "The number of stems differs from the number of models");
  if (!isPart && !request.mJoinParts) return;
  RaiseIf(isPart && request.mJoinParts, "A merge either makes a part or joins parts");
  RaiseIf(request.mMode == MergeMode::Automatic,
          "A merge in parts needs a mode: instances or datasets");
  RaiseIf(isPart && isInstances && request.mNames == MergedNames::Automatic,
          "A part of a merge as instances needs names: keep, stem or number");
  RaiseIf(isPart && !request.mSelection.ChoosesAll(),
          "A part of a merge holds all results: select when the parts are joined");
  RaiseIf(isInstances && request.mJoin,
          "Only a merge as datasets can join the contents of its inputs");
}

std::string HistoryCommentOf(const MergeRequest& request) {
  return request.mPartOf.empty() ? "" : kPartComment;
}

void CheckIsPart(const Tree& tree) {
  const std::vector<ModifierInfo>& history = tree.GetModifiers();
  if (!history.empty() && history.back().mComment == kPartComment) return;
  Qov::Util::Raise(kMergeSource, ErrorType::FormatNotSupported,
                   "The model is not a part of a merge: its history does not end with one");
}

void RemoveAllResults(NodeTree& nodes) {
  ForEachGeometry(nodes, [](std::uint32_t, Geometry& geometry) {
    geometry.RemoveVariables(std::vector<bool>(geometry.GetVariables().size(), true));
  });
}

}  // namespace QovRyx
