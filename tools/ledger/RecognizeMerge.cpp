#include "RecognizeMerge.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <numeric>
#include <unordered_map>

#include "ExpectModel.h"
#include "InstanceMismatches.h"
#include "Plural.h"
#include "Qov/Ryx/FileArrangement.h"
#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using Order = std::vector<std::size_t>;

/// Differences between an output and the expected one that are accepted.
struct Tolerated {
  bool mMoreResults = false;  ///< Results after the expected ones.
  bool mMoreLinks = false;    ///< Links instead of values.
};

bool HasResults(const ExpectedNode& node, const QovRyx::Geometry& geometry, Tolerated tolerated) {
  const auto& results = geometry.GetVariables();
  if (results.size() < node.mResults.size()) return false;
  if (results.size() != node.mResults.size() && !tolerated.mMoreResults) return false;
  return std::equal(
      node.mResults.begin(), node.mResults.end(), results.begin(),
      [tolerated](const ExpectedResult& expected, const Result& result) {
        const bool isLinked = result.mLink.IsLinked();
        return expected.mName == result.mName &&
               (expected.mLink.IsLinked() == isLinked || (tolerated.mMoreLinks && isLinked));
      });
}

bool HasNode(const ExpectedNode& node, const QovRyx::NodeTree::Node& entry, Tolerated tolerated) {
  const Item wanted = node.mpSource == nullptr ? Item::Group : ItemOf(*node.mpSource);
  if (ItemOf(entry) != wanted) return false;
  const QovRyx::Node* content = node.GetContent();
  if (content != nullptr && content->GetName() != entry.mData->GetName()) return false;
  const QovRyx::Geometry* geometry = QovRyx::AsGeometry(entry);
  return geometry == nullptr || HasResults(node, *geometry, tolerated);
}

bool HasNodes(const ExpectedModel& model, const QovRyx::NodeTree& output, Tolerated tolerated) {
  if (model.mNodes.size() != output.GetSize()) return false;
  return std::all_of(model.mNodes.begin(), model.mNodes.end(), [&](const auto& node) {
    const QovRyx::NodeTree::Node* entry = output.FindNode(node.first);
    return entry != nullptr && HasNode(node.second, *entry, tolerated);
  });
}

/// Returns true if an output has as many nodes as a merge of that kind. Costs much less than an
/// expected model.
bool HasNodeCount(const MergeMode& mode, const std::vector<InputFile>& inputs,
                  const QovRyx::NodeTree& output) {
  std::size_t count = IsInstanceMode(mode) ? 0 : 1;
  for (const InputFile& input : inputs) {
    if (input.mIsViewFile || (IsInstanceMode(mode) && input.mNumber != 1)) continue;
    count += input.GetNodes().GetSize();
  }
  return count == output.GetSize();
}

/// Returns true if an output has the nodes and results of a merge.
bool Fits(const MergeMode& mode, const std::vector<InputFile>& inputs,
          const QovRyx::NodeTree& output, Tolerated tolerated = {}) {
  if (!HasNodeCount(mode, inputs, output)) return false;
  std::vector<Obstacle> obstacles;
  const ExpectedModel model = ExpectModel(mode, inputs, obstacles);
  return obstacles.empty() && HasNodes(model, output, tolerated);
}

/// Puts some of the inputs into another order for its lifetime.
class InputChoice {
 public:
  InputChoice(std::vector<InputFile>& inputs, const Order& order) : mInputs(inputs), mOrder(order) {
    std::size_t numModels = 0;
    for (const std::size_t i : order) {
      mNumbers.push_back(inputs[i].mNumber);
      mChosen.push_back(std::move(inputs[i]));
      if (!mChosen.back().mIsViewFile) mChosen.back().mNumber = ++numModels;
    }
  }
  ~InputChoice() {
    for (std::size_t i = 0; i < mOrder.size(); ++i) {
      mChosen[i].mNumber = mNumbers[i];
      mInputs[mOrder[i]] = std::move(mChosen[i]);
    }
  }
  InputChoice(const InputChoice&) = delete;
  InputChoice& operator=(const InputChoice&) = delete;

  const std::vector<InputFile>& Get() const { return mChosen; }

 private:
  std::vector<InputFile>& mInputs;
  const Order& mOrder;
  std::vector<InputFile> mChosen;
  std::vector<std::size_t> mNumbers;
};

/// Tries merges of the inputs until one fits the output.
class Recognizer {
 public:
  Recognizer(const MergeRequest& request, std::vector<InputFile>& inputs,
             const QovRyx::NodeTree& output)
      : mRequest(request), mInputs(inputs), mOutput(output), mGiven(inputs.size()) {
    std::iota(mGiven.begin(), mGiven.end(), std::size_t{0});
    mModes.push_back(request.mMode);
    for (const MergeOptions& options : ListMergeKinds()) {
      const auto naming = options.GetNaming();
      mModes.push_back({naming ? MergeKind::Instances : MergeKind::Datasets, naming, {}});
    }
  }

  std::string Run() {
    if (mRequest.CountModels() < 2 || Fits(mRequest.mMode, mInputs, mOutput)) return "";
    if (const MergeMode* mode = FindMode(mGiven)) return DescribeMode(*mode);
    if (const auto text = TryOrders(); !text.empty()) return text;
    if (const auto text = TryWithoutOneInput(); !text.empty()) return text;
    return TryMoreInputs();
  }

 private:
  /// Returns the first mode in which the inputs fit the output, or null.
  const MergeMode* FindMode(const Order& order) {
    const InputChoice choice(mInputs, order);
    const auto found = std::find_if(mModes.begin(), mModes.end(), [&](const MergeMode& mode) {
      return Fits(mode, choice.Get(), mOutput);
    });
    return found == mModes.end() ? nullptr : &*found;
  }

  bool IsRequested(const MergeMode& mode) const {
    return mode.mKind == mRequest.mMode.mKind && mode.mNaming == mRequest.mMode.mNaming;
  }

  std::string DescribeMode(const MergeMode& mode) const {
    const std::string text = fmt::format("merged as {}", NameOf(mode));
    return IsRequested(mode) ? text : fmt::format("{}, not as {}", text, NameOf(mRequest.mMode));
  }

  /// Tries the order of --arrange-files, the reverse order, and all orders of a few models.
  std::string TryOrders() {
    constexpr std::size_t kMostPermuted = 4;
    std::vector<Order> orders = {FindArrangedOrder(), {mGiven.rbegin(), mGiven.rend()}};
    Order order = mGiven;
    while (order.size() <= kMostPermuted && std::next_permutation(order.begin(), order.end())) {
      orders.push_back(order);
    }
    for (const Order& tried : orders) {
      const MergeMode* mode = FindMode(tried);
      if (mode == nullptr) continue;
      return DescribeMode(*mode) + " in another order: " + ListPaths(tried);
    }
    return "";
  }

  Order FindArrangedOrder() const {
    std::vector<std::string> paths;
    std::unordered_map<std::string, Order> positions;  // in descending order
    for (const InputFile& input : mInputs) paths.push_back(input.mPath);
    for (std::size_t i = paths.size(); i-- > 0;) positions[paths[i]].push_back(i);
    Order order;
    for (const std::string& path : QovRyx::arrange_files(paths)) {
      Order& left = positions[path];
      if (left.empty()) return mGiven;
      order.push_back(left.back());
      left.pop_back();
    }
    return order;
  }

  std::string ListPaths(const Order& order) const {
    constexpr std::size_t kMost = 5;
    std::string text;
    for (std::size_t i = 0; i < std::min(kMost, order.size()); ++i) {
      text += (i == 0 ? "" : ", ") + mInputs[order[i]].mPath;
    }
    return text + (order.size() > kMost ? ", ..." : "");
  }

  std::string TryWithoutOneInput() {
    constexpr std::size_t kMostTried = 32;
    if (mRequest.CountModels() < 3 || mGiven.size() > kMostTried) return "";
    for (std::size_t i = mGiven.size(); i-- > 0;) {  // a repeated input is the later one
      Order order = mGiven;
      order.erase(order.begin() + static_cast<std::ptrdiff_t>(i));
      const MergeMode* mode = FindMode(order);
      if (mode == nullptr) continue;
      return fmt::format("{} from one input less, probably without {}", DescribeMode(*mode),
                         mInputs[i].mPath);
    }
    return "";
  }

  std::string TryMoreInputs() {
    for (const MergeMode& mode : mModes) {
      if (!IsInstanceMode(mode) || !Fits(mode, mInputs, mOutput, {.mMoreResults = true})) continue;
      return DescribeMode(mode) + ", and has results of further inputs";
    }
    return CompareTops();
  }

  /// Compares the number of models below the group of a merge as datasets with that of the inputs.
  std::string CompareTops() const {
    const QovRyx::NodeTree::Node& root = mOutput.GetReqNode(QovRyx::NodeTree::kRootId);
    const auto* group = dynamic_cast<const QovRyx::Group*>(root.mData.get());
    if (group == nullptr || group->GetName() != "Merge") return CompareTrees();
    std::uint64_t found = 0;
    for (const auto& [id, entry] : mOutput) found += entry.mParent == root.mId ? 1 : 0;
    if (found == mRequest.CountModels()) return "";
    return fmt::format("merged from other inputs: it has {} below \"Merge\", {} given",
                       Plural(found, "model"), mRequest.CountModels());
  }

  /// Compares an output that is not a merge as datasets with the first model. A few nodes that
  /// differ are faults and not another input, unless the mesh differs, too.
  std::string CompareTrees() const {
    const auto first = std::find_if(mInputs.begin(), mInputs.end(),
                                    [](const InputFile& input) { return !input.mIsViewFile; });
    const QovRyx::NodeTree& nodes = first->GetNodes();
    const Mismatches found = FindNodeMismatches(nodes, mOutput);
    const bool mostDiffer = found.mCount > std::max(nodes.GetSize(), mOutput.GetSize()) / 2;
    if (found.mCount == 0 || (!mostDiffer && FindMeshMismatches(nodes, mOutput).mCount == 0)) {
      return "";
    }
    return fmt::format("merged from other inputs: {} from {}",
                       Plural(found.mCount, "node", "differ"), first->mPath);
  }

  const MergeRequest& mRequest;
  std::vector<InputFile>& mInputs;
  const QovRyx::NodeTree& mOutput;
  Order mGiven;
  std::vector<MergeMode> mModes;
};

/// Returns true if the values of a result of the output can be read.
bool IsReadable(const Result& result) {
  try {
    std::vector<std::uint32_t> values;
    result.mValues.GetValues(values);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

/// Counts the results of an input, mesh arrays left out, that have their own values.
struct ValueCount {
  std::uint64_t mSame = 0;
  const Result* mpDiffering = nullptr;  ///< One that differs, in the output.
};

std::vector<ValueCount> CountValues(const ExpectedModel& model, std::size_t numInputs) {
  std::vector<ValueCount> counts(numInputs);
  for (const auto& [id, node] : model.mNodes) {
    for (const ExpectedResult& result : node.mResults) {
      const bool isMesh = QovRyx::IsMeshBase(QovRyx::SplitName(result.mName).mBase);
      if (result.mpValues == nullptr || result.mpFound == nullptr || isMesh) continue;
      ValueCount& count = counts[result.mInput];
      if (result.mSound) ++count.mSame;
      if (!result.mSound) count.mpDiffering = result.mpFound;
    }
  }
  return counts;
}

}  // namespace

bool FitsMerge(const MergeRequest& request, const std::vector<InputFile>& inputs,
               const QovRyx::Tree& output) {
  if (request.mMode.mKind == MergeKind::Nothing) return false;
  std::vector<Obstacle> obstacles;
  const ExpectedModel model = ExpectModel(request, inputs, obstacles);
  return obstacles.empty() &&
         model.mHistory.size() + model.mNewHistory.size() == output.GetModifiers().size() &&
         HasNodes(model, output.GetNodes(), {.mMoreLinks = model.mMayStoreOnce});
}

std::string RecognizeOtherMerge(const MergeRequest& request, std::vector<InputFile>& inputs,
                                const QovRyx::Tree& output) {
  return Recognizer(request, inputs, output.GetNodes()).Run();
}

std::string RecognizeOtherInputs(const ExpectedModel& model, const std::vector<InputFile>& inputs) {
  const std::vector<ValueCount> counts = CountValues(model, inputs.size());
  std::string example;
  std::size_t numOther = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i].mSame != 0 || counts[i].mpDiffering == nullptr) continue;
    if (!IsReadable(*counts[i].mpDiffering)) continue;
    if (numOther++ == 0) example = inputs[i].mPath;
  }
  if (numOther == 0) return "";
  const std::string more = numOther == 1 ? "" : fmt::format(" and {} more", numOther - 1);
  return fmt::format(
      "merged from other inputs, or in another order: no result of {}{} has the "
      "values of the input",
      example, more);
}

}  // namespace Qov::Tools
