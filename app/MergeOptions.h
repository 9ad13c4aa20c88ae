#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Ryx/InstanceNaming.h"

namespace Qov {

/// The options of RyxMerge that are set in one command line.
struct MergeOptions {
  bool mAsInstances = false;
  bool mSuffix = false;
  bool mAutoRename = false;
  bool mArrange = false;

  /// Returns how a merge as instances names the results, or nothing for a merge as datasets.
  std::optional<QovRyx::InstanceNaming> GetNaming() const;
  /// Returns the names of the options that are set, in the order of kMergeOptions.
  std::vector<std::string> GetNames() const;
};

struct MergeOption {
  const char* mName = nullptr;
  const char* mText = nullptr;  ///< For the help of `ryx`.
  bool MergeOptions::*mpFlag = nullptr;
  /// The naming that the option chooses together with --merge-as-instances. Nothing for an option
  /// that does not choose one.
  std::optional<QovRyx::InstanceNaming> mNaming;
  const char* mKind = nullptr;  ///< The name of a merge with that naming.
};

/// All options of RyxMerge. The first option that is set and chooses a naming counts.
inline constexpr std::array<MergeOption, 4> kMergeOptions = {{
    {"--merge-as-instances", "Append the results of all models to the first one",
     &MergeOptions::mAsInstances, std::nullopt},
    {"--suffix-file-instance", "Put the number of the file into the names of all results",
     &MergeOptions::mSuffix, QovRyx::InstanceNaming::FileSuffix, "instances with file suffixes"},
    {"--auto-rename-instances",
     "Put it into the names that have an instance part, and take only those",
     &MergeOptions::mAutoRename, QovRyx::InstanceNaming::AutomaticSuffix,
     "instances renamed automatically"},
    {"--arrange-files", "Order the inputs by their trailing numbers", &MergeOptions::mArrange,
     std::nullopt},
}};

/// Returns the name of a merge as instances with that naming.
const char* NameOf(QovRyx::InstanceNaming naming);

/// Returns options for each kind of merge: as datasets, and as instances with each naming.
std::vector<MergeOptions> ListMergeKinds();

}  // namespace Qov
