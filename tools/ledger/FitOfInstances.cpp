#include "FitOfInstances.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "InputFile.h"
#include "check/Finding.h"
#include "check/MeshNames.h"
#include "model/LinkFollower.h"

namespace Qov::Tools {
namespace {

using Entry = QovRyx::NodeTree::Node;
using QovRyx::LinkFollower;
using Result = QovRyx::Geometry::VarStruct;

std::string NameOf(const Entry& entry) { return entry.mData ? entry.mData->GetName() : ""; }

std::string TypeOf(const Entry& entry) { return entry.mData ? entry.mData->GetType() : "empty"; }

void Add(Misfits& misfits, std::uint32_t id, const std::string& text) {
  if (misfits.mCount++ == 0) misfits.mFirst = fmt::format("node {} {}", id, text);
}

std::string DescribeMisfit(const Entry& first, const Entry& other) {
  if (ItemOf(first) != ItemOf(other)) {
    return fmt::format("is of type {}, there of type {}", TypeOf(other), TypeOf(first));
  }
  if (NameOf(first) == NameOf(other)) return "";
  return fmt::format("is named {}, there {}", Quoted(NameOf(other)), Quoted(NameOf(first)));
}

/// Counts the items of the first array with that base name. Returns nothing if there is none.
std::optional<std::uint64_t> CountItemsOf(const QovRyx::Geometry& geometry, std::string_view base,
                                          LinkFollower<Result>& follower) {
  for (const Result& result : geometry.GetVariables()) {
    if (SplitName(result.mName).first != base) continue;
    const Result* values = follower.FindOwner(result);
    if (values == nullptr) return std::nullopt;
    const std::uint64_t width = std::max<std::uint64_t>(values->mValues.GetWidth(), 1);
    return values->mValues.GetNumElements() / width;
  }
  return std::nullopt;
}

}  // namespace

Misfits FindOtherNodes(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other) {
  Misfits misfits;
  for (const auto& [id, entry] : other) {
    const Entry* twin = first.FindNode(id);
    const std::string text =
        twin == nullptr ? Quoted(NameOf(entry)) + " is not there" : DescribeMisfit(*twin, entry);
    if (!text.empty()) Add(misfits, id, text);
  }
  for (const auto& [id, entry] : first) {
    if (other.FindNode(id) == nullptr) Add(misfits, id, Quoted(NameOf(entry)) + " is missing");
  }
  return misfits;
}

Misfits FindOtherMeshes(const QovRyx::NodeTree& first, const QovRyx::NodeTree& other) {
  Misfits misfits;
  LinkFollower firstLinks = QovRyx::FollowLinks(first);
  LinkFollower otherLinks = QovRyx::FollowLinks(other);
  QovRyx::ForEachGeometry(other, [&](std::uint32_t id, const QovRyx::Geometry& geometry) {
    const Entry* entry = first.FindNode(id);
    const QovRyx::Geometry* twin = entry == nullptr ? nullptr : QovRyx::AsGeometry(*entry);
    if (twin == nullptr) return;
    for (const std::string_view base : {kCoordinates, kConnectivity}) {
      const auto count = CountItemsOf(geometry, base, otherLinks);
      const auto wanted = CountItemsOf(*twin, base, firstLinks);
      if (!count || !wanted || *count == *wanted) continue;
      const char* unit = base == kCoordinates ? "points" : "element corners";
      Add(misfits, id,
          fmt::format("{} has {} {}, there {}", Quoted(geometry.GetName()), *count, unit, *wanted));
      return;
    }
  });
  return misfits;
}

}  // namespace Qov::Tools
