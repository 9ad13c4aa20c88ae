#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Ledger.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// An input of a merge as it is in its file: descriptors and views, no arrays.
struct InputFile {
  std::string mPath;
  bool mIsViewFile = false;
  std::size_t mNumber = 0;  ///< Of a model: its place among the models, from 1.
  std::unique_ptr<QovRyx::Tree> mpTree;
  std::string mError;  ///< Why it cannot be read, not escaped; empty if it can.
  std::string mNote;   ///< What does not hinder a merge, but ought to be known.

  const QovRyx::NodeTree& GetNodes() const { return mpTree->GetNodes(); }
};

/// Reads what the merge will read of each input, in its order.
std::vector<InputFile> LoadInputs(const MergeRequest& request);

/// What a tree holds of each kind, its views and history included.
PerItem<std::uint64_t> CountItems(const QovRyx::Tree& tree);

/// What the merge counts an entry as.
Item ItemOf(const QovRyx::NodeTree::Node& entry);

}  // namespace Qov::Tools
