#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/OutputSettings.h"
#include "Qov/Ryx/Selection.h"

namespace QovRyx {

/// Old and new names. All names change at the same time, so two names can be exchanged.
using Renames = std::vector<std::pair<std::string, std::string>>;

struct ExtractRequest {
  std::string mInput;
  std::string mOutput;
  Selection mSelection;
  Renames mNodeNames;      ///< All nodes of that name; a number also names a node by its tree id.
  Renames mResultNames;    ///< Base names.
  Renames mInstanceNames;  ///< Instance parts of names.
  OutputSettings mSettings;
  bool mDryRun = false;  ///< Reports only: nothing is written, and values are not read.
};

/// The counts and notes of an extraction.
struct ExtractReport {
  std::uint64_t mNodes = 0;  ///< Nodes of the output.
  std::uint64_t mResults = 0;
  std::uint64_t mNodesLeftOut = 0;
  std::uint64_t mResultsLeftOut = 0;
  std::uint64_t mLinksReplaced = 0;  ///< Results whose links led to a result left out.
  std::uint64_t mNodesRenamed = 0;
  std::uint64_t mResultsRenamed = 0;
  std::vector<std::string> mNotes;  ///< Anything else that was left out, a line each.
};

/// Writes a part of a model, with other names. Nodes keep their ids, so that views still fit. The
/// output appears only when it is complete, as in Merge.
///
/// Links follow their results. A linked result whose target is left out takes the values of the
/// target; further results with these values are linked to it. The new names apply to what is kept.
///
/// ProgressListener (Progress.h) gets the progress and can cancel the extraction.
///
/// Raises ElementNotFound for a selection that fits nothing and for an old name that nothing has;
/// ElementExists if two results of a geometry would get the same name, or for an output that exists
/// and may not be replaced; InvalidObject for a new name that is not possible; MiscellaneousError
/// for an output that is the input; and the errors of Tree::Load and Tree::Save.
QOV_EXPORT ExtractReport Extract(const ExtractRequest& request);

}  // namespace QovRyx
