#include "check/ResultLinks.h"

#include <fmt/format.h>

namespace Qov::Tools {
namespace {

/// Returns false for a geometry whose descriptors could not be read.
bool HasReadableVariables(const StoredNode& node) {
  return node.GetType() != NodeType::Geometry || node.mHasLightData;
}

void Report(const StoredNode& node, std::size_t i, const char* code, const char* fault,
            Findings& findings) {
  const auto [linkedNode, position] = node.mVariables[i].mLink.GetPlace();
  findings.Error(code, node.At({}, i),
                 fmt::format("Its link to node {}, result {} {}: it has no values.", linkedNode,
                             position, fault));
}

}  // namespace

ResultLinks::ResultLinks(const ModelContent& model)
    : mModel(model),
      mFollower([this](const StoredVariable& variable) { return FindTarget(variable); }) {}

/// Returns the variable that a link names, which can be linked itself, or null.
const StoredVariable* ResultLinks::FindTarget(const StoredVariable& variable) const {
  const auto [linkedNode, position] = variable.mLink.GetPlace();
  const StoredNode* node = mModel.Find(linkedNode);
  if (node == nullptr || !HasReadableVariables(*node)) return nullptr;
  return position < node->mVariables.size() ? &node->mVariables[position] : nullptr;
}

/// Returns true if the node that a link names was read, so that FindTarget finds what is there.
bool ResultLinks::IsTargetReadable(const StoredVariable& variable) const {
  const StoredNode* node = mModel.Find(variable.mLink.GetPlace().mNode);
  return node == nullptr ? mModel.mIsComplete : HasReadableVariables(*node);
}

void ResultLinks::Check(Findings& findings) {
  for (const StoredNode& node : mModel.mNodes) {
    for (std::size_t i = 0; i < node.mVariables.size(); ++i) {
      const StoredVariable* end = mFollower.FindEnd(node.mVariables[i]);
      if (end == nullptr) {
        Report(node, i, "link-circle", "leads into a cycle of links", findings);
      } else if (end->mLink.IsLinked() && IsTargetReadable(*end)) {
        const bool isDangling = end == &node.mVariables[i];
        Report(node, i, "link-nowhere", isDangling ? "is dangling" : "leads to a dangling link",
               findings);
      }
    }
  }
}

}  // namespace Qov::Tools
