#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/OutputSettings.h"
#include "Qov/Ryx/Selection.h"

namespace QovRyx {

/// Old and new names.
using Renames = std::vector<std::pair<std::string, std::string>>;

struct ExtractRequest {
  std::string mInput;
  std::string mOutput;
  Selection mSelection;
  Renames mNodeNames;
  Renames mResultNames;    ///< Base names.
  Renames mInstanceNames;  ///< Instance parts of names.
  OutputSettings mSettings;
};

/// What an extraction did.
struct ExtractReport {
  std::uint64_t mNodes = 0;  ///< Nodes of the output.
  std::uint64_t mResults = 0;
  std::uint64_t mNodesLeftOut = 0;
  std::uint64_t mResultsLeftOut = 0;
  std::uint64_t mLinksReplaced = 0;  ///< Results that took the values of a result left out.
  std::uint64_t mNodesRenamed = 0;
  std::uint64_t mResultsRenamed = 0;
  std::vector<std::string> mNotes;  ///< Anything else that was left out, a line each.
};

/// Writes a part of a model. Nodes keep their ids, so that views still fit. The output appears only
/// when it is complete, as in Merge. Raises ElementNotFound for a name to change that the model
/// does not have, and the errors of Merge.
QOV_EXPORT ExtractReport Extract(const ExtractRequest& request);

}  // namespace QovRyx
