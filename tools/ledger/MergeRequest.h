#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/Merge.h"
#include "app/MergeOptions.h"

namespace CLI {
class App;
}

namespace Qov::Tools {

/// Declares the options of a merge under their names in RyxMerge.
void DeclareMergeOptions(CLI::App& app, MergeOptions& options);

enum class MergeKind {
  Nothing,    ///< There is no model, or one model and no view-point file.
  ViewsOnly,  ///< Adds view points to one model.
  Datasets,   ///< Puts all models below one group.
  Instances,  ///< Appends the results of all models.
};

/// The operation of a run of RyxMerge or `ryx merge`.
struct MergeMode {
  MergeKind mKind = MergeKind::Nothing;
  std::optional<QovRyx::InstanceNaming> mNaming;  ///< For MergeKind::Instances of RyxMerge.
  std::optional<QovRyx::MergedNames> mNames;      ///< For any kind of `ryx merge`.

  bool IsOfRyxMerge() const { return !mNames; }
};

inline bool IsInstanceMode(const MergeMode& mode) { return mode.mKind == MergeKind::Instances; }
const char* NameOf(const MergeMode& mode);

/// Returns true if further models contribute only results whose names have an instance part.
inline bool TakesOnlyInstances(const MergeMode& mode) {
  return mode.mNaming == QovRyx::InstanceNaming::AutomaticSuffix ||
         mode.mNaming == QovRyx::InstanceNaming::AutomaticWithoutSuffix;
}

/// One run of RyxMerge or `ryx merge`, from its command line.
struct MergeRequest {
  MergeMode mMode;
  std::vector<std::string> mInputs;  ///< In the order in which they are taken.
  std::string mOutput;
  // The next members are those of `ryx merge`; the defaults are the rules of RyxMerge.
  bool mJoin = false;
  QovRyx::MergedViews mViews = QovRyx::MergedViews::First;
  QovRyx::Selection mSelection;
  bool mShare = false;
  std::vector<std::string> mParts;  ///< The part that the names of each model get.

  std::size_t CountModels() const;
  /// Returns true if the merge copies the merged model and reads it again to add view points.
  bool NeedsCopy() const {
    return mMode.IsOfRyxMerge() && CountModels() > 1 && CountModels() < mInputs.size();
  }
  std::string GetCopyPath() const { return mOutput + ".temp"; }
};

bool IsViewPointFile(const std::string& path);

MergeRequest MakeMergeRequest(const MergeOptions& options, const std::vector<std::string>& inputs,
                              const std::string& output);

}  // namespace Qov::Tools
