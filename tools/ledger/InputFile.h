#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Ledger.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// An input of a merge: descriptors and views, without the values of arrays.
struct InputFile {
  std::string mPath;
  bool mIsViewFile = false;
  std::size_t mNumber = 0;  ///< Position of a model among the models, from 1.
  std::unique_ptr<QovRyx::Tree> mpTree;
  std::string mError;  ///< Why it cannot be read; empty if it can. Not escaped.
  std::string mNote;   ///< A remark that does not prevent the merge; can be empty.

  const QovRyx::NodeTree& GetNodes() const { return mpTree->GetNodes(); }
};

/// Reads the parts of each input that the merge will read, in the order of the merge.
std::vector<InputFile> LoadInputs(const MergeRequest& request);

bool AllAreReadable(const std::vector<InputFile>& inputs);

/// Counts the items of each kind in a model, with its views and history.
PerItem<std::uint64_t> CountItems(const QovRyx::Tree& tree);

/// Returns the kind of item that an entry of a tree counts as.
Item ItemOf(const QovRyx::NodeTree::Node& entry);

}  // namespace Qov::Tools
