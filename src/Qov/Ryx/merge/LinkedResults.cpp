#include "LinkedResults.h"

#include <cstddef>
#include <cstdint>

#include "LinkChains.h"
#include "SharingLimit.h"

namespace QovRyx {
namespace {

using Chains = LinkChains<Geometry::VarStruct>;

/// Links the result named `name` to the primary result, unless the primary result takes its values
/// from it. Returns the result.
const Geometry::VarStruct& LinkResult(Chains& chains, Geometry& geometry, std::uint32_t id,
                                      const std::string& name, const std::string& primaryName,
                                      DroppedResults& dropped) {
  const std::size_t numBefore = geometry.GetVariables().size();
  const auto position = static_cast<std::uint32_t>(geometry.GetOrAddVariableIndex(name));
  const auto primaryPosition =
      static_cast<std::uint32_t>(geometry.GetOrAddVariableIndex(primaryName));
  const Geometry::VarStruct& primary = geometry.GetVariables()[primaryPosition];
  Geometry::VarStruct& result = geometry.EditVariable(position);
  // Chains never lead to a new result, and never start at a result that is not linked.
  const bool isChained = primary.mLink.IsLinked() && position < numBefore;
  if (position == primaryPosition ||
      (isChained && chains.LeadsTo({id, primaryPosition}, {id, position}))) {
    return result;
  }
  if (position < numBefore && !result.mLink.IsLinked()) ++dropped.mReplaced;
  result.mKind = primary.mKind;
  result.mFlag = primary.mFlag;
  result.mAttributes = primary.mAttributes;
  result.TakeValueFieldsOf(primary);
  result.mLink = primary.mLink.IsLinked() ? primary.mLink : ResultLink({id, primaryPosition});
  chains.Update({id, position});
  return result;
}

}  // namespace

void GenerateLinkedResults(Tree& tree, const PartLinksMap& links, DroppedResults& dropped) {
  double allowed = SharingLimit::kFreeBytes;
  const NodeTree& nodes = tree.GetNodes();
  Chains chains([&nodes](const ResultPlace& place) { return FindVariable(nodes, place); });
  double needed = 0;
  for (const auto& [id, linksOfNode] : links) {
    Geometry* geometry = AsGeometry(tree.GetNodes().GetReqNode(id));
    if (geometry == nullptr) continue;
    for (const auto& [primary, names] : linksOfNode) {
      for (const std::string& name : names) {
        // The primary result can have any size, because it can come from an earlier file.
        const Geometry::VarStruct& result =
            LinkResult(chains, *geometry, id, name, primary, dropped);
        allowed += SharingLimit::kMostCopies * static_cast<double>(sizeof(result) + name.size());
        needed += SharingLimit::SizeOf(result);
        SharingLimit::Check(needed, allowed);
      }
    }
  }
}

}  // namespace QovRyx
