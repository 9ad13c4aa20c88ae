#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "diff/DiffReport.h"
#include "diff/PathTree.h"

namespace Qov::Tools {

/// A node that is in both models: with the same path, which consists of names, types and positions
/// among equal ones.
struct NodePair {
  std::size_t mItemA = 0;
  std::size_t mItemB = 0;
};

/// Matches the nodes of two models, in time proportional to their number.
class NodeMatching {
 public:
  /// Adds nodes that are in one model only, and changes of order, to `report`, with the counts.
  NodeMatching(const QovRyx::NodeTree& a, const QovRyx::NodeTree& b, const DiffOptions& options,
               DiffReport& report);

  /// Returns the matched nodes, parents before children, in the order of A.
  const std::vector<NodePair>& GetPairs() const { return mPairs; }
  const PathTree::Item& GetA(const NodePair& pair) const { return mTreeA.GetItems()[pair.mItemA]; }
  const PathTree::Item& GetB(const NodePair& pair) const { return mTreeB.GetItems()[pair.mItemB]; }
  /// Returns a difference with the place of both nodes.
  ModelDifference MakeDifference(const NodePair& pair, const char* code, std::string text) const;

 private:
  void MatchChildren(const NodePair& parent, std::vector<NodePair>& open);
  void ReportOnly(const PathTree& tree, std::size_t item, bool inA);
  void ReportOrder(const NodePair& parent);
  void CompareLinks();
  void CompareLinks(const NodePair& pair);
  void CompareLink(const NodePair& pair, const char* name, std::optional<std::uint32_t> a,
                   std::optional<std::uint32_t> b);

  PathTree mTreeA;
  PathTree mTreeB;
  const DiffOptions& mOptions;
  DiffReport& mReport;
  std::vector<NodePair> mPairs;
  std::unordered_map<std::uint32_t, std::uint32_t> mIdsInB;  ///< Ids of matched nodes, by A's id.
};

}  // namespace Qov::Tools
