#include "Qov/Ryx/Merge.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "MergeChoice.h"
#include "MergeNotes.h"
#include "MergeParts.h"
#include "MergeSteps.h"
#include "ModelMerge.h"
#include "Qov/Log/Record.h"
#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "Select.h"
#include "ShareArrays.h"
#include "ViewPointFiles.h"
#include "container/FileAccess.h"
#include "container/TemporaryOutput.h"
#include "diagnostics/Printable.h"
#include "model/HeavyPass.h"
#include "model/HistoryDate.h"
#include "model/TreeSaver.h"

namespace QovRyx {
namespace {

using ErrorType = Qov::Util::Exception::ErrorType;

/// One call of Merge.
class MergeRun {
 public:
  MergeRun(const MergeRequest& request, MergeListener* listener)
      : mRequest(request), mpListener(listener) {
    for (std::size_t i = 0; i != request.mInputs.size(); ++i) {
      const bool isModel = !IsViewPointFile(request.mInputs[i]);
      if (isModel) mPositions.push_back(i);
      (isModel ? mModels : mViewPointFiles).push_back(request.mInputs[i]);
    }
  }

  MergeReport Run() {
    CheckRequest();
    QovJbf::TemporaryOutput output(mRequest.mOutput, mRequest.mSettings.mOverwrite);
    const BeforeModel before = [this](std::size_t model) { Announce(mPositions[model]); };
    const MergeChoice choice = ChooseMerge(mRequest, mModels, before);
    mReport.mMode = choice.mMode;
    mReport.mNames = choice.mNames;
    mReport.mReason = choice.mReason;
    Qov::Log::Trace(kMergeSource) << "Merging " << mModels.size() << " models: " << choice.mReason;
    if (choice.mMode == MergeMode::Datasets && mRequest.mNames != MergedNames::Automatic &&
        mRequest.mNames != MergedNames::Keep) {
      mNotes.AddLine("The results keep their names, because the models are merged as datasets");
    }
    ModelMerge merge(mRequest, mModels, before, mReport, mNotes);
    const std::unique_ptr<Tree> tree = choice.mMode == MergeMode::Instances
                                           ? merge.MergeInstances(choice.mNames)
                                           : merge.MergeDatasets();
    const std::uint64_t numHeavyBytes = CountHeavyBytes(tree->GetNodes());
    AddViewPointFiles(*tree);
    mNotes.CountLosses(tree->GetLosses());
    Select(*tree);
    if (mRequest.mShare && CopiesBlocks()) ShareBeforeCopying(*tree);
    CheckRoom(*tree, numHeavyBytes);
    Save(*tree, output);
    mReport.mNotes = mNotes.GetLines();
    return std::move(mReport);
  }

 private:
  /// Refuses a merge that would fail after a long time.
  void CheckRequest() {
    if (mModels.empty()) {
      Qov::Util::Raise(kMergeSource, ErrorType::ElementNotFound, "There is no model to merge");
    }
    CheckSettings(mRequest.mSettings);
    CheckPartRequest(mRequest, mModels.size());
    QovJbf::CheckIsNotAnInput(mRequest.mOutput, mRequest.mInputs);
    FormatHistoryDate();  // raises for an unusable SOURCE_DATE_EPOCH
    for (const std::string& path : mViewPointFiles) {
      Qov::Util::WithFileContext(path, [&] { CheckViewPointFile(path); });
    }
    for (const std::string& path : mRequest.mInputs) {
      mReport.mInputBytes += QovJbf::GetFileSize(path);
    }
  }

  void Announce(std::size_t input) {
    if (mpListener == nullptr || mpListener->BeforeInput(input, mRequest.mInputs[input])) return;
    Qov::Util::Raise(kMergeSource, ErrorType::MiscellaneousError,
                     "The merge was cancelled before " + Qov::Util::Quote(mRequest.mInputs[input]) +
                         " was read");
  }

  void AddViewPointFiles(Tree& tree) {
    for (const std::string& path : mViewPointFiles) {
      Qov::Util::WithFileContext(path, [&] {
        const auto report = [this](const std::string& line) { mNotes.AddLine(line); };
        if (AddViewPoints(tree, path, report)) ++mReport.mViewsLeftOut;
      });
    }
  }

  void Select(Tree& tree) {
    if (mRequest.mSelection.ChoosesAll()) return;
    const SelectionCounts counts = ApplySelection(tree, mRequest.mSelection);
    mReport.mNodesLeftOut = counts.mNodesLeftOut;
    mReport.mResultsLeftOut = counts.mResultsLeftOut;
    mReport.mLinksReplaced = counts.mLinksReplaced;
    for (const std::string& note : counts.mNotes) mNotes.AddLine(note);
  }

  bool CopiesBlocks() const { return mRequest.mSettings.mKeepBlocks != BlockKeeping::Never; }

  void ShareBeforeCopying(Tree& tree) {
    mReport.mShared = QovRyx::ShareBeforeCopying(tree);
    if (mReport.mShared.mKept == 0) return;
    const std::string numKept = std::to_string(mReport.mShared.mKept);
    mNotes.AddLine(
        "Results that are stored again although their arrays are equal to others, "
        "because their blocks are kept: " +
        numKept);
  }

  /// Raises WriteError if the output, which stores as many bytes for each byte of arrays as the
  /// inputs, does not fit onto the disk. `numHeavyBytes` is the size of the arrays of the inputs.
  /// If equal arrays are found only while the model is saved, all that can be equal counts as
  /// equal.
  void CheckRoom(const Tree& tree, std::uint64_t numHeavyBytes) {
    const bool sharesLater = mRequest.mShare && !CopiesBlocks();
    const std::uint64_t numStored =
        sharesLater ? CountLeastStored(tree.GetNodes()) : CountHeavyBytes(tree.GetNodes());
    const std::uint64_t numKept = std::min(numStored, numHeavyBytes);
    const double share =
        numHeavyBytes == 0 ? 1 : static_cast<double>(numKept) / static_cast<double>(numHeavyBytes);
    QovJbf::CheckRoom(mRequest.mOutput,
                      static_cast<std::uint64_t>(share * static_cast<double>(mReport.mInputBytes)));
  }

  void Save(Tree& tree, QovJbf::TemporaryOutput& output) {
    const ContentCounts counts = CountContent(tree.GetNodes());
    mReport.mNodes = counts.mNodes;
    mReport.mGeometries = counts.mGeometries;
    mReport.mResults = counts.mResults;
    const std::string& path = output.GetTemporaryPath();
    Qov::Util::WithFileContext(mRequest.mOutput, [&] {
      SaveTo(path, tree);
      if (mpListener != nullptr) mpListener->CheckOutput(path);
      mReport.mOutputBytes = QovJbf::GetFileSize(path);
      output.Commit();
    });
  }

  void SaveTo(const std::string& path, Tree& tree) {
    const std::string comment = HistoryCommentOf(mRequest);
    if (!mRequest.mShare || CopiesBlocks()) return tree.Save(path, comment, mRequest.mSettings);
    SharingSaver saver;
    SaveWith(saver, tree, path, comment, mRequest.mSettings);
    mReport.mShared = saver.GetShared();
  }

  const MergeRequest& mRequest;
  MergeListener* mpListener;
  std::vector<std::string> mModels;
  std::vector<std::size_t> mPositions;  ///< The positions of the models among the inputs.
  std::vector<std::string> mViewPointFiles;
  MergeReport mReport;
  MergeNotes mNotes;
};

}  // namespace

MergeReport Merge(const MergeRequest& request, MergeListener* listener) {
  return MergeRun(request, listener).Run();
}

}  // namespace QovRyx
