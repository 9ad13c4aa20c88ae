#include "check/ResultLinks.h"

#include <fmt/format.h>

#include "Qov/Ryx/StreamNames.h"

namespace Qov::Tools {
namespace {

void Report(const StoredNode& node, std::size_t i, const char* code, const char* end,
            Findings& findings) {
  const StoredVariable& variable = node.mVariables[i];
  findings.Error(code, node.At({}, i),
                 fmt::format("Its link to node {}, result {} leads {}: it has no values.",
                             variable.mLinkNode, variable.mLinkVariable, end));
}

}  // namespace

/// The variable that a link names, linked itself or not.
ResultLinks::Target ResultLinks::Step(const StoredVariable& variable) const {
  const StoredNode* node = mModel.Find(variable.mLinkNode);
  if (node == nullptr) return {mModel.mIsComplete ? End::Nowhere : End::Unknown, nullptr, nullptr};
  if (node->GetType() == NodeType::Geometry && !node->mHasLightData) return {};
  if (variable.mLinkVariable >= node->mVariables.size()) return {End::Nowhere, nullptr, nullptr};
  return {End::Found, node, &node->mVariables[variable.mLinkVariable]};
}

ResultLinks::Target ResultLinks::Resolve(const StoredNode& node, const StoredVariable& variable) {
  std::vector<const StoredVariable*> path;
  Target at{End::Found, &node, &variable};
  while (at.mEnd == End::Found && at.mVariable->mLinked) {
    // Taken for a circle until the end of this path is known.
    const auto [known, isNew] =
        mKnown.try_emplace(at.mVariable, Target{End::Circle, nullptr, nullptr});
    if (isNew) path.push_back(at.mVariable);
    at = isNew ? Step(*at.mVariable) : known->second;
  }
  for (const StoredVariable* passed : path) mKnown[passed] = at;
  return at;
}

void ResultLinks::Check(Findings& findings) {
  for (const StoredNode& node : mModel.mNodes) {
    for (std::size_t i = 0; i < node.mVariables.size(); ++i) {
      const StoredVariable& variable = node.mVariables[i];
      if (!variable.mLinked) continue;
      const End end = Resolve(node, variable).mEnd;
      if (end == End::Nowhere) Report(node, i, "link-nowhere", "nowhere", findings);
      if (end == End::Circle) Report(node, i, "link-circle", "round in a circle", findings);
    }
  }
}

}  // namespace Qov::Tools
