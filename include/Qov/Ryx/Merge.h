#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/OutputSettings.h"
#include "Qov/Ryx/Selection.h"

/// Merges of model files for programs. A MergeRequest describes a merge, errors are exceptions, and
/// the output appears only when it is complete. The fixed merges of RyxMerge are in RyxMerge.h.
namespace QovRyx {

/// Ways to put models together.
enum class MergeMode {
  Automatic,  ///< Instances if all models have the same tree and the same meshes, else Datasets.
  Instances,  ///< The tree of the first model with the results of all models.
  Datasets    ///< The nodes of all models below one group.
};

/// The instance parts of the names of results in a merge as instances.
///
/// A result without an instance part is common to all instances of its model. In a merge of several
/// models it becomes a result of the first instance of its geometry, and the other instances get
/// links to it. If its geometry has no instance, the instances of the whole model are taken; if
/// there are none, the result gets the part of its model alone, or keeps its name (Keep). No name
/// is given to a result if another result of its geometry has it already.
enum class MergedNames {
  /// Keep, if that way every result gets an instance part and no two results of a geometry get the
  /// same name, else Stem.
  Automatic,
  Keep,  ///< Instance parts stay as they are.
  /// The name of the input file without folder and ending, and a blank, before the old part. Equal
  /// stems get the names of folders ("a/run", "b/run"), equal paths a number ("run(2)"). If a stem
  /// begins with another one and a blank, blanks become "_" in all of them.
  Stem,
  /// "F" and the number of the model before the old part, as in RyxMerge. An old part that begins
  /// with a digit or a blank gets a blank before it: "F1 2".
  Number
};

/// The view-point paths in the output.
enum class MergedViews {
  First,  ///< Those of the first model.
  All,    ///< Those of all models, in their order.
  None
};

struct MergeRequest {
  /// Model files and view-point files. The view points of the latter are added to the output.
  std::vector<std::string> mInputs;
  std::string mOutput;
  MergeMode mMode = MergeMode::Automatic;
  MergedNames mNames = MergedNames::Automatic;
  std::uint64_t mFirstNumber = 1;  ///< The number of the first model for MergedNames::Number.
  MergedViews mViews = MergedViews::First;
  /// Stores equal arrays once.
  bool mShare = true;
  /// Puts the contents of inputs that are dataset merges themselves below one root. Automatic then
  /// means Datasets, and Instances is an error.
  bool mJoin = false;
  /// With MergedNames::Stem, the parts of the names, one for each model, instead of the stems of
  /// the files. The caller makes them distinct.
  std::vector<std::string> mStems;
  /// If not empty, makes a part of a larger merge, of which this is the path of the first model.
  /// mInputs are models that follow each other in that merge. The request must say mMode and, for
  /// Instances, mNames.
  std::string mPartOf;
  /// Puts parts together, in the order of mInputs: the output equals the merge of all their models
  /// with the same mMode and mViews. View-point files and the selection belong here, not to the
  /// parts. The history has one entry for the whole merge.
  bool mJoinParts = false;
  Selection mSelection;
  OutputSettings mSettings;
};

/// Arrays that are stored once although several results have them.
struct SharedArrays {
  std::uint64_t mLinked = 0;       ///< Results that became links to an equal result.
  std::uint64_t mSharedBytes = 0;  ///< Results that have their own entry but share the bytes.
  std::uint64_t mSavedBytes = 0;   ///< Uncompressed bytes that are not stored again.
  /// Results that may be equal to others, but that were not compared because the order of their
  /// arrays would make that too slow.
  std::uint64_t mNotCompared = 0;
  /// Results that keep their own copy of an equal array, because OutputSettings::mKeepBlocks copies
  /// its block. A line of MergeReport::mNotes says so.
  std::uint64_t mKept = 0;
};

/// The choices, counts and notes of a merge.
struct MergeReport {
  MergeMode mMode = MergeMode::Datasets;    ///< Never Automatic.
  MergedNames mNames = MergedNames::Keep;   ///< Never Automatic.
  std::string mReason;                      ///< Why this mode and these names, one sentence.
  std::vector<std::string> mInstanceNames;  ///< For each model, the part that its names got.
  std::uint64_t mNodes = 0;                 ///< Nodes of the output.
  std::uint64_t mGeometries = 0;
  std::uint64_t mResults = 0;
  std::uint64_t mInputBytes = 0;  ///< Sizes of the input files.
  std::uint64_t mOutputBytes = 0;
  SharedArrays mShared;
  std::uint64_t mNodesLeftOut = 0;    ///< By the selection.
  std::uint64_t mResultsLeftOut = 0;  ///< By the selection.
  /// Current views, each with its sequencer, and view points in paths. Includes the current views
  /// that view-point files replaced.
  std::uint64_t mViewsLeftOut = 0;
  /// Results that took the values of a result that was left out, instead of their link to it.
  std::uint64_t mLinksReplaced = 0;
  /// Content that was left out or guessed and that has no count above, a line each.
  std::vector<std::string> mNotes;
};

/// Observes a merge and can end it. ProgressListener (Progress.h) gets the progress in bytes, and
/// can cancel the merge while arrays are compared and saved.
class QOV_EXPORT MergeListener {
 public:
  virtual ~MergeListener() = default;
  /// Called before each input is read, with its number from 0. Returns false to cancel the merge,
  /// which raises MiscellaneousError. Inputs are read twice if the mode or the names are Automatic:
  /// first those that are needed to choose them, then all.
  virtual bool BeforeInput(std::size_t number, const std::string& path) = 0;
  /// Called when the output is complete at `path` but does not have its name yet. An exception
  /// discards the output.
  virtual void CheckOutput(const std::string& path) = 0;
};

/// Merges models. The output is written beside its path under a temporary name, flushed to the
/// disk and renamed. After an error there is no output, and an older file at its path is as before.
///
/// A merge as instances takes only results from further models: the report counts their other
/// content that the first model does not have. Each result with an instance part that has no
/// attribute "time" gets that of the nearest group above its geometry that has one, because the
/// groups of further models are left out. Raises MismatchError if a geometry with results has
/// no counterpart of its id in the first model. The history is that of the first model and an entry
/// of RyxMerge.
///
/// Links follow their results. A linked result whose target is left out takes the values of the
/// target. Raises ElementExists if the output exists and may not be replaced, MiscellaneousError if
/// it is one of the inputs, and the errors of Tree::Load and Tree::Save.
QOV_EXPORT MergeReport Merge(const MergeRequest& request, MergeListener* listener = nullptr);

}  // namespace QovRyx
