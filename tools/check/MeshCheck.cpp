#include "check/MeshCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "Plural.h"
#include "Qov/Ryx/Geometry.h"
#include "merge/ArrayNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::ArrayName;
using QovRyx::kConnectivity;
using QovRyx::kCoordinates;
using QovRyx::kPolylength;
using QovRyx::SplitName;

bool HoldsIntegers(const StoredVariable& variable) {
  using QovRyx::Geometry;
  return Geometry::IsIntegerKind(QovRyx::GetKind(variable.mKindWord)) ||
         QovRyx::GetKindHighByte(variable.mKindWord) == Geometry::kUnsignedKindHighByte;
}

/// The mesh arrays of a geometry, by name. After a merge several can have the same name. Then the
/// first connectivity belongs to the first coordinates, the second to the second.
class MeshArrays {
 public:
  MeshArrays(const StoredNode& node, ResultLinks& links) : mNode(node), mLinks(links) {
    constexpr std::array kBases = {kCoordinates, kConnectivity, kPolylength};
    for (std::size_t i = 0; i < node.mVariables.size(); ++i) {
      const ArrayName name = SplitName(node.mVariables[i].mName);
      if (std::find(kBases.begin(), kBases.end(), name.mBase) == kBases.end()) continue;
      mPositions[name].push_back(i);
    }
  }

  /// Returns the array with that base name that belongs to the connectivity at a position; null if
  /// it is missing or ambiguous.
  const StoredVariable* FindPartner(std::string_view base, std::size_t connectivity) {
    const ArrayName name = SplitName(mNode.mVariables[connectivity].mName);
    const Positions& peers = mPositions.at(name);
    const Positions* partners = Find(base, name.mInstance);
    if (partners == nullptr) return nullptr;
    std::size_t turn = 0;
    if (partners->size() > 1) {
      if (partners->size() != peers.size()) return nullptr;
      turn = static_cast<std::size_t>(std::lower_bound(peers.begin(), peers.end(), connectivity) -
                                      peers.begin());
    }
    return mLinks.FindOwner(mNode.mVariables[(*partners)[turn]]);
  }

 private:
  using Positions = std::vector<std::size_t>;

  /// Returns the arrays of the instance, or else those that all instances share.
  const Positions* Find(std::string_view base, std::string_view instance) const {
    auto found = mPositions.find({base, instance});
    if (found == mPositions.end()) found = mPositions.find({base, {}});
    return found == mPositions.end() ? nullptr : &found->second;
  }

  const StoredNode& mNode;
  ResultLinks& mLinks;
  std::map<ArrayName, Positions> mPositions;
};

}  // namespace

MeshCheck::MeshCheck(const ModelContent& model, ResultLinks& links) {
  for (const StoredNode& node : model.mNodes) Add(node, links);
}

void MeshCheck::Add(const StoredNode& node, ResultLinks& links) {
  MeshArrays arrays(node, links);
  for (std::size_t i = 0; i < node.mVariables.size(); ++i) {
    if (SplitName(node.mVariables[i].mName).mBase != kConnectivity) continue;
    const StoredVariable* connectivity = links.FindOwner(node.mVariables[i]);
    if (connectivity == nullptr || !HoldsIntegers(*connectivity)) continue;
    const StoredVariable* lengths = arrays.FindPartner(kPolylength, i);
    if (lengths != nullptr && !HoldsIntegers(*lengths)) lengths = nullptr;
    mElements.push_back({&node, i, connectivity, arrays.FindPartner(kCoordinates, i), lengths});
    mSummaries.try_emplace(connectivity);
    if (lengths != nullptr) mSummaries.try_emplace(lengths);
  }
}

void MeshCheck::Summarize(const StoredVariable& variable,
                          const std::vector<std::uint32_t>& values) {
  Summary& summary = mSummaries[&variable];
  summary.mIsKnown = true;
  if (values.empty()) return;
  const auto largest = std::max_element(values.begin(), values.end());
  summary.mLargest = *largest;
  summary.mLargestAt = static_cast<std::uint64_t>(largest - values.begin());
  for (const std::uint32_t value : values) summary.mSum += value;
}

void MeshCheck::CopySummary(const StoredVariable& source, const StoredVariable& target) {
  const Summary* known = FindSummary(&source);
  if (known != nullptr) mSummaries[&target] = *known;
}

const MeshCheck::Summary* MeshCheck::FindSummary(const StoredVariable* variable) const {
  const auto found = mSummaries.find(variable);
  return found == mSummaries.end() || !found->second.mIsKnown ? nullptr : &found->second;
}

void MeshCheck::ReportElements(const Elements& elements, Findings& findings) const {
  const Place place = elements.mNode->At({}, elements.mPosition);
  const std::uint64_t numCorners = elements.mConnectivity->GetNumElements();
  const Summary* corners = FindSummary(elements.mConnectivity);
  if (corners != nullptr && elements.mCoordinates != nullptr && numCorners > 0) {
    const std::uint64_t width = std::max<std::uint64_t>(elements.mCoordinates->mWidth, 1);
    const std::uint64_t numPoints = elements.mCoordinates->GetNumElements() / width;
    if (corners->mLargest >= numPoints) {
      findings.Error(
          "connectivity", place,
          fmt::format("Value {} at position {} is not a point: there are {} points, from 0.",
                      corners->mLargest, corners->mLargestAt, numPoints));
    }
  }
  const Summary* lengths = FindSummary(elements.mLengths);
  if (lengths == nullptr || lengths->mSum == numCorners) return;
  findings.Error("polylength", place,
                 fmt::format("It has {}, but the sum of the element lengths is {}.",
                             Plural(numCorners, "value"), lengths->mSum));
}

void MeshCheck::Report(Findings& findings) const {
  for (const Elements& elements : mElements) ReportElements(elements, findings);
}

}  // namespace Qov::Tools
