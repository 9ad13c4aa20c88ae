#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/MergeOptions.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// Declares the options of a merge under their names in RyxMerge.
void DeclareMergeOptions(CLI::App& app, MergeOptions& options);

/// The operation of a run of RyxMerge.
enum class MergeMode {
  Nothing,             ///< There is no model, or one model and no view-point file.
  ViewsOnly,           ///< Adds view points to one model.
  Datasets,            ///< Puts all models below one group.
  Instances,           ///< Appends the results of all models, named by instance parts.
  SuffixedInstances,   ///< The same, with the number of the file in each name.
  AutomaticInstances,  ///< The same, with the number only in names with an instance part;
                       ///< further models contribute only such results.
};

inline bool IsInstanceMode(MergeMode mode) { return mode >= MergeMode::Instances; }
const char* NameOf(MergeMode mode);

/// One run of RyxMerge, from its command line.
struct MergeRequest {
  MergeMode mMode = MergeMode::Nothing;
  std::vector<std::string> mInputs;  ///< In the order of the merge.
  std::string mOutput;

  std::size_t CountModels() const;
  /// Returns true if the merge copies the merged model and reads it again to add view points.
  bool NeedsCopy() const { return CountModels() > 1 && CountModels() < mInputs.size(); }
  std::string GetCopyPath() const { return mOutput + ".temp"; }
};

bool IsViewPointFile(const std::string& path);

MergeRequest MakeMergeRequest(const MergeOptions& options, const std::vector<std::string>& inputs,
                              const std::string& output);

}  // namespace Qov::Tools
