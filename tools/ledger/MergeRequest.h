#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Qov::Tools {

/// The options of RyxMerge, with their meanings there.
struct MergeOptions {
  bool mAsInstances = false;
  bool mSuffix = false;
  bool mAutoRename = false;
  bool mArrange = false;
};

/// Declares them under the names that RyxMerge knows.
void DeclareMergeOptions(CLI::App& app, MergeOptions& options);

/// What a run of RyxMerge does with its models.
enum class MergeMode {
  Nothing,             ///< No model, or one without view-point files.
  ViewsOnly,           ///< One model gets view points.
  Datasets,            ///< All beneath one group.
  Instances,           ///< Results of all beside each other, named by instance parts.
  SuffixedInstances,   ///< The same with the file's number in every name.
  AutomaticInstances,  ///< The number in names with an instance part, and only those are taken.
};

inline bool IsInstanceMode(MergeMode mode) { return mode >= MergeMode::Instances; }
const char* NameOf(MergeMode mode);

/// One run of RyxMerge, as its command line says it.
struct MergeRequest {
  MergeMode mMode = MergeMode::Nothing;
  std::vector<std::string> mInputs;  ///< In the order in which they are taken.
  std::string mOutput;

  std::size_t CountModels() const;
  /// Whether the merged model is copied and read again, so that view points can be added.
  bool NeedsCopy() const { return CountModels() > 1 && CountModels() < mInputs.size(); }
  std::string GetCopyPath() const { return mOutput + ".temp"; }
};

bool IsViewPointFile(const std::string& path);

MergeRequest MakeMergeRequest(const MergeOptions& options, const std::vector<std::string>& inputs,
                              const std::string& output);

}  // namespace Qov::Tools
