#include "Qov/Ryx/MergeEntryPoints.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "MergeSteps.h"
#include "Qov/Util/Raise.h"
#include "model/GeometryEntries.h"
#include "model/LinkCuts.h"
#include "model/MoveShape.h"

namespace QovRyx {
namespace {

using ErrorType = Qov::Util::Exception::ErrorType;

constexpr const char* kCutSections = "Cut-Sections";
constexpr const char* kNodeIds = "Node Ids";
constexpr std::uint32_t kFirstResultKind = 12;
constexpr std::uint32_t kLastResultKind = 28;
constexpr int kDecimal = 10;

/// The inputs and the output of one call.
struct Arguments {
  std::vector<std::string> mInputs;
  std::string mOutput;
};

/// Returns an argument. Raises MiscellaneousError if it is missing, because it often comes from
/// the caller's own input.
std::string RequireArgument(int argc, const char* const* argv, int i) {
  if (argv == nullptr || i >= argc || argv[i] == nullptr) {
    Qov::Util::Raise(kMergeSource, ErrorType::MiscellaneousError,
                     "Argument " + std::to_string(i) + " is missing");
  }
  return argv[i];
}

Arguments TakeArguments(int argc, const char* const* argv) {
  Arguments arguments;
  arguments.mInputs.push_back(RequireArgument(argc, argv, 1));
  for (int i = 2; i < argc - 1; ++i) arguments.mInputs.push_back(RequireArgument(argc, argv, i));
  arguments.mOutput = RequireArgument(argc, argv, argc - 1);
  RefuseOutputAmongInputs(arguments.mInputs, arguments.mOutput);
  return arguments;
}

int MergeIntoGroup(int argc, const char* const* argv) {
  return RunMergeStep([&] {
    const Arguments arguments = TakeArguments(argc, argv);
    const std::unique_ptr<Tree> tree = MakeDatasetTree();
    LoadModel(*tree, arguments.mInputs.front());
    for (std::size_t i = 1; i < arguments.mInputs.size(); ++i) {
      MergeModel(*tree, arguments.mInputs[i]);
    }
    SaveModel(*tree, arguments.mOutput);
  });
}

/// Merges further inputs into the first one. `take(tree, master)` moves parts of a further model to
/// the first model; the rest of it is discarded.
template <class Take>
int MergeIntoFirst(int argc, const char* const* argv, Take take) {
  return RunMergeStep([&] {
    const Arguments arguments = TakeArguments(argc, argv);
    const std::unique_ptr<Tree> master = MakeModelTree();
    LoadModel(*master, arguments.mInputs.front());
    for (std::size_t i = 1; i < arguments.mInputs.size(); ++i) {
      Tree tree(false);
      LoadModel(tree, arguments.mInputs[i], Tree::ReadMode::WithoutViews);
      Qov::Util::WithFileContext(arguments.mInputs[i], [&] { take(tree, *master); });
    }
    SaveModel(*master, arguments.mOutput);
  });
}

/// Raises MismatchError, because files that do not match are a mistake of the user.
[[noreturn]] void RaiseMismatch(std::uint32_t id, const char* what) {
  Qov::Util::Raise(kMergeSource, ErrorType::MismatchError,
                   "Node " + std::to_string(id) + " of the first input " + what);
}

bool IsWantedResult(const Geometry::VarStruct& result) {
  return result.mKind >= kFirstResultKind && result.mKind <= kLastResultKind &&
         !result.mName.starts_with(kNodeIds);
}

void AppendWantedResults(Tree& tree, Tree& master) {
  ForEachGeometryEntry(tree, [&](std::uint32_t id, const Geometry& source) {
    Geometry* target = AsGeometry(master.GetNodes().GetReqNode(id));
    if (target == nullptr) RaiseMismatch(id, "is not a geometry");
    for (const Geometry::VarStruct& result : source.GetVariables()) {
      if (IsWantedResult(result)) target->AppendVariable(result);
    }
  });
}

void AddCutSections(Tree& tree, Tree& master) {
  CutLinksBetweenGeometries(tree.GetNodes());
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (!entry.mData || entry.mData->GetType() != Shape::kType) continue;
    const NodeTree::Node& parent = master.GetNodes().GetReqNode(entry.mParent);
    if (!parent.mData) RaiseMismatch(parent.mId, "carries nothing");
    if (parent.mData->GetName() != kCutSections) continue;
    MoveShape(master.GetNodes(), tree.GetNodes(), id, kCutSections, false);
  }
}

}  // namespace

int cae_merge_in_tree(int argc, const char* const* argv) { return MergeIntoGroup(argc, argv); }

int cad_merge(int argc, const char* const* argv) { return MergeIntoGroup(argc, argv); }

int merge_n(int argc, const char* const* argv) {
  return RunMergeStep([&] {
    const std::string input = RequireArgument(argc, argv, 1);
    const std::string number = RequireArgument(argc, argv, 2);
    const std::string output = RequireArgument(argc, argv, 3);
    RefuseOutputAmongInputs({input}, output);
    const std::unique_ptr<Tree> tree = MakeDatasetTree();
    LoadModel(*tree, input);
    const auto times = static_cast<std::uint64_t>(std::strtol(number.c_str(), nullptr, kDecimal));
    for (std::uint64_t i = 1; i < times; ++i) MergeModel(*tree, input);
    SaveModel(*tree, output);
  });
}

int cae_merge(int argc, const char* const* argv) {
  return MergeIntoFirst(argc, argv, AppendWantedResults);
}

int cae_merge_cs(int argc, const char* const* argv) {
  return MergeIntoFirst(argc, argv, AddCutSections);
}

}  // namespace QovRyx
