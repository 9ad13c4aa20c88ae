#include "InstanceMismatches.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>

#include "ErrorText.h"
#include "InputFile.h"
#include "check/Finding.h"
#include "merge/ArrayNames.h"
#include "model/LinkFollower.h"
#include "model/TimeAttribute.h"

namespace Qov::Tools {
namespace {

using Entry = QovRyx::NodeTree::Node;
using QovRyx::LinkFollower;
using Result = QovRyx::Geometry::VarStruct;

std::string NameOf(const Entry& entry) { return entry.mData ? entry.mData->GetName() : ""; }

std::string TypeOf(const Entry& entry) { return entry.mData ? entry.mData->GetType() : "empty"; }

void Add(Mismatches& mismatches, std::uint32_t id, const std::string& text) {
  if (mismatches.mCount++ == 0) mismatches.mFirst = fmt::format("node {} {}", id, text);
}

std::string DescribeMismatch(const Entry& first, const Entry& other) {
  if (ItemOf(first) != ItemOf(other)) {
    return fmt::format("has type {}, in the first model {}", TypeOf(other), TypeOf(first));
  }
  if (NameOf(first) == NameOf(other)) return "";
  return fmt::format("is named {}, in the first model {}", Quoted(NameOf(other)),
                     Quoted(NameOf(first)));
}

/// Counts the items of the first array with that base name. Returns nothing if there is none.
std::optional<std::uint64_t> CountItemsOf(const QovRyx::Geometry& geometry, std::string_view base,
                                          LinkFollower<Result>& follower) {
  for (const Result& result : geometry.GetVariables()) {
    if (QovRyx::SplitName(result.mName).mBase != base) continue;
    const Result* values = follower.FindOwner(result);
    if (values == nullptr) return std::nullopt;
    const std::uint64_t width = std::max<std::uint64_t>(values->mValues.GetWidth(), 1);
    return values->mValues.GetNumElements() / width;
  }
  return std::nullopt;
}

bool HasSamePlacement(const QovRyx::Group& left, const QovRyx::Group& right) {
  return left.mTranslation == right.mTranslation && left.mRotation == right.mRotation &&
         left.mScale == right.mScale;
}

bool HasSameSets(const QovRyx::NodeSets& left, const QovRyx::NodeSets& right) {
  if (left.GetNumSets() != right.GetNumSets()) return false;
  if (left.GetNumSets() == 0) return true;
  const QovRyx::SetColumns leftSets = left.GetColumns();
  const QovRyx::SetColumns rightSets = right.GetColumns();
  for (std::size_t i = 0; i < leftSets.size(); ++i) {
    const auto a = leftSets[i];
    const auto b = rightSets[i];
    if (a.mName != b.mName || !std::ranges::equal(a.mValues, b.mValues)) return false;
  }
  return true;
}

/// Returns a description of the difference between two nodes with sets, or an empty text.
std::string CompareSets(const QovRyx::NodeSets& first, const QovRyx::NodeSets& other) {
  try {
    return HasSameSets(first, other) ? "" : "has other sets";
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return "has sets that cannot be compared: " + ErrorText(error);
  }
}

}  // namespace

ContentMismatches FindContentMismatches(const QovRyx::NodeTree& first,
                                        const QovRyx::NodeTree& other, bool ignoreTimes) {
  ContentMismatches mismatches;
  for (const auto& [id, entry] : other) {
    const Entry* twin = first.FindNode(id);
    if (twin == nullptr || ItemOf(*twin) != ItemOf(entry)) continue;
    const std::string node = Quoted(NameOf(entry)) + " ";
    if (const auto* group = dynamic_cast<const QovRyx::Group*>(entry.mData.get())) {
      const auto& firstGroup = dynamic_cast<const QovRyx::Group&>(*twin->mData);
      const bool hasSameAttributes =
          ignoreTimes ? QovRyx::AreEqualButForTime(group->mAttributes, firstGroup.mAttributes)
                      : group->mAttributes == firstGroup.mAttributes;
      if (hasSameAttributes && HasSamePlacement(*group, firstGroup)) continue;
      Add(mismatches.mGroups, id,
          node + (hasSameAttributes ? "has another placement" : "has other attributes"));
    } else if (const auto* shape = dynamic_cast<const QovRyx::Shape*>(entry.mData.get())) {
      const auto& firstShape = dynamic_cast<const QovRyx::Shape&>(*twin->mData);
      if (shape->mMaterial.mValues == firstShape.mMaterial.mValues) continue;
      Add(mismatches.mShapes, id, node + "has another material");
    } else if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get())) {
      const std::string text =
          CompareSets(dynamic_cast<const QovRyx::NodeSets&>(*twin->mData), *sets);
      if (!text.empty()) Add(mismatches.mSets, id, node + text);
    }
  }
  return mismatches;
}

Mismatches FindNodeMismatches(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other) {
  Mismatches mismatches;
  for (const auto& [id, entry] : other) {
    const Entry* twin = first.FindNode(id);
    const std::string text = twin == nullptr ? Quoted(NameOf(entry)) + " is not in the first model"
                                             : DescribeMismatch(*twin, entry);
    if (!text.empty()) Add(mismatches, id, text);
  }
  for (const auto& [id, entry] : first) {
    if (other.FindNode(id) == nullptr) Add(mismatches, id, Quoted(NameOf(entry)) + " is missing");
  }
  return mismatches;
}

Mismatches FindMeshMismatches(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other) {
  Mismatches mismatches;
  LinkFollower firstLinks = QovRyx::FollowLinks(first);
  LinkFollower otherLinks = QovRyx::FollowLinks(other);
  QovRyx::ForEachGeometry(other, [&](std::uint32_t id, const QovRyx::Geometry& geometry) {
    const Entry* entry = first.FindNode(id);
    const QovRyx::Geometry* twin = entry == nullptr ? nullptr : QovRyx::AsGeometry(*entry);
    if (twin == nullptr) return;
    for (const std::string_view base : {QovRyx::kCoordinates, QovRyx::kConnectivity}) {
      const auto count = CountItemsOf(geometry, base, otherLinks);
      const auto wanted = CountItemsOf(*twin, base, firstLinks);
      if (!count || !wanted || *count == *wanted) continue;
      const char* unit = base == QovRyx::kCoordinates ? "points" : "element corners";
      Add(mismatches, id,
          fmt::format("{} has {} {}, in the first model {}", Quoted(geometry.GetName()), *count,
                      unit, *wanted));
      return;
    }
  });
  return mismatches;
}

}  // namespace Qov::Tools
