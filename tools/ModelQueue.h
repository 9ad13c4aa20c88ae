#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "container/ReadAhead.h"

namespace Qov::Tools {

/// Loads models in the order of their paths, some before they are needed, and decompresses the
/// arrays of the next models while the first one is used:
///
///   Take()    | run1 used | run2 used | run3 used
///   loaded      run1 run2 run3 | run4 | run5        as many as there are threads, and one
///   workers     run1 run2 | run3 | run4 ...         blocks, within the memory of ReadAhead
///
/// With one thread nothing is loaded before it is needed. The memory does not depend on the number
/// of paths.
class ModelQueue {
 public:
  struct Model {
    QovRyx::Tree mTree{false};
    std::string mTrouble;  ///< As LoadWhatCanBeRead returns it.
  };
  /// Returns the arrays that are going to be read, in the order of reading.
  using Plan = std::function<QovJbf::ReadAhead::Parts(const QovRyx::NodeTree& nodes)>;

  ModelQueue(const std::vector<std::string>& paths, Plan plan);

  /// Returns the next model. Call it once for each path, after the model before is destroyed.
  std::unique_ptr<Model> Take();

 private:
  struct Loaded {
    std::unique_ptr<Model> mpModel;
    std::string mErrors;  ///< Text that loading wrote to std::cerr.
  };
  /// More models do not make it faster, because the memory for blocks is limited.
  static constexpr std::size_t kMostLoaded = 8;

  void LoadNext();

  const std::vector<std::string>& mPaths;
  Plan mPlan;
  std::size_t mNumAtOnce;
  std::size_t mNumLoaded = 0;  ///< Of mPaths.
  QovJbf::ReadAhead mAhead;
  std::deque<Loaded> mLoaded;
};

}  // namespace Qov::Tools
