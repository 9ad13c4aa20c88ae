#include "SizeEstimate.h"

#include <algorithm>
#include <filesystem>

#include "ContainerInfo.h"
#include "merge/ArrayNames.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

constexpr double kContainerSize = 2800;  // the header and the root index

/// Returns `part` divided by `whole`, or 1 if `whole` is 0.
double Share(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 1.0 : static_cast<double>(part) / static_cast<double>(whole);
}

/// The sizes of the parts of one input, in bytes.
struct InputSizes {
  explicit InputSizes(const InputFile& input);

  std::uint64_t mArrays = 0;  ///< Uncompressed.
  std::uint64_t mSets = 0;    ///< The rest of the heavy data.
  double mRatio = 1.0;        ///< Compressed size of the heavy data divided by their size.
  double mNodes = 0;          ///< Tree and materials. This and the next fields: compressed.
  double mDescriptors = 0;
  double mViews = 0;
  double mHistory = 0;
};

InputSizes::InputSizes(const InputFile& input) {
  QovRyx::ForEachGeometry(input.GetNodes(), [this](std::uint32_t, const auto& geometry) {
    for (const Result& result : geometry.GetVariables()) {
      if (!result.mLink.IsLinked()) mArrays += result.mValues.GetSize();
    }
  });
  for (const StreamInfo& stream : ReadContainer(input.mPath).mStreams) {
    const auto stored = static_cast<double>(stream.mStored);
    if (stream.mName == QovRyx::kHeavyData) {
      mSets = stream.mRaw - std::min(mArrays, stream.mRaw);
      mRatio = Share(stream.mStored, stream.mRaw);
    } else if (stream.mName == QovRyx::kRyxTree || stream.mName == QovRyx::kResources) {
      mNodes += stored;
    } else if (stream.mName == QovRyx::kLightData || stream.mName == QovRyx::kAttributes) {
      mDescriptors += stored;
    } else if (stream.mName == QovRyx::kViewPoints) {
      mViews = stored;
    } else if (stream.mName == QovRyx::kGlobalInformation) {
      mHistory = stored;
    }
  }
}

/// Returns the sizes of the arrays that the output takes from each input, in bytes. If equal arrays
/// are stored once, the meshes of further instances are expected to be equal to the first one.
std::vector<std::uint64_t> ArraysByInput(const MergeRequest& request, const ExpectedModel& model,
                                         const std::vector<InputFile>& inputs) {
  std::vector<std::uint64_t> sizes(inputs.size());
  const auto isStoredBefore = [&](const ExpectedResult& result) {
    return request.mShare && IsInstanceMode(request.mMode) && inputs[result.mInput].mNumber > 1 &&
           QovRyx::IsMeshBase(QovRyx::SplitName(result.mName).mBase);
  };
  for (const auto& [id, node] : model.mNodes) {
    for (const ExpectedResult& result : node.mResults) {
      if (result.mpValues == nullptr || isStoredBefore(result)) continue;
      sizes[result.mInput] += result.mpValues->mValues.GetSize();
    }
  }
  return sizes;
}

std::uint64_t Count(const InputLedger& ledger, Item item, bool copiedOnly) {
  const InputTally& tally = ledger.mTallies[static_cast<std::size_t>(item)];
  return copiedOnly ? tally.mCopied : tally.mFound;
}

std::optional<std::uint64_t> FreeSpace(const std::string& output) {
  std::error_code error;
  const fs::path folder = fs::path(output).parent_path();
  const fs::space_info space = fs::space(folder.empty() ? "." : folder, error);
  if (error) return std::nullopt;
  const std::uintmax_t old = fs::file_size(output, error);
  return space.available + (error ? 0 : old);
}

}  // namespace

SizeEstimate EstimateSize(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          const ExpectedModel& model, const Ledger& ledger) {
  SizeEstimate estimate;
  double file = kContainerSize;
  const std::vector<std::uint64_t> arrays = ArraysByInput(request, model, inputs);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const InputSizes sizes(inputs[i]);
    const InputLedger& inputLedger = ledger.mInputs[i];
    if (inputs[i].mNumber <= 1) file += sizes.mViews;
    if (inputs[i].mIsViewFile) continue;
    const bool hasNodes = inputs[i].mNumber == 1 || request.mMode.mKind == MergeKind::Datasets;
    const std::uint64_t heavy = arrays[i] + (hasNodes ? sizes.mSets : 0);
    estimate.mValues += heavy;
    file += static_cast<double>(heavy) * sizes.mRatio;
    file += hasNodes ? sizes.mNodes + sizes.mDescriptors
                     : sizes.mDescriptors * Share(Count(inputLedger, Item::Result, true),
                                                  Count(inputLedger, Item::Result, false));
    if (inputs[i].mNumber == 1) file += sizes.mHistory;
  }
  estimate.mFile = static_cast<std::uint64_t>(file);
  estimate.mNeeded = request.NeedsCopy() ? 2 * estimate.mFile : estimate.mFile;
  estimate.mFree = FreeSpace(request.mOutput);
  return estimate;
}

}  // namespace Qov::Tools
