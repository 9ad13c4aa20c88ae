#include "ModelComparison.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <tuple>

#include "ArrayNames.h"
#include "MergeSteps.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"
#include "model/LinkFollower.h"
#include "model/TimeAttribute.h"

namespace QovRyx {
namespace {

using Event = MergeNotes::Event;

std::string DescribeNode(const NodeTree::Node& entry) {
  if (!entry.mData) return "empty";
  return entry.mData->GetType() + " " + Qov::Util::Quote(entry.mData->GetName());
}

std::string DescribeId(std::uint32_t id) { return "node " + std::to_string(id); }

bool IsSameNode(const NodeTree::Node& a, const NodeTree::Node& b) {
  if (!a.mData || !b.mData) return !a.mData && !b.mData;
  return a.mData->GetName() == b.mData->GetName() && a.mData->GetType() == b.mData->GetType();
}

/// A mesh array: base name, kind, number of elements, width.
using MeshArray = std::tuple<std::string, std::uint32_t, std::uint64_t, std::uint8_t>;

class MeshFinder {
 public:
  explicit MeshFinder(const Tree& tree) : mFollower(FollowLinks(tree.GetNodes())) {}

  std::set<MeshArray> Find(const Geometry& geometry) {
    std::set<MeshArray> arrays;
    for (const Geometry::VarStruct& result : geometry.GetVariables()) {
      const std::string base(SplitName(result.mName).mBase);
      if (!IsMeshBase(base)) continue;
      const Geometry::VarStruct* owner = mFollower.FindOwner(result);
      const NumericArray values = owner == nullptr ? NumericArray() : owner->mValues;
      arrays.emplace(base, result.mKind, values.GetNumElements(), values.GetWidth());
    }
    return arrays;
  }

 private:
  LinkFollower<Geometry::VarStruct> mFollower;
};

std::string DescribeArray(const MeshArray& array) {
  const auto& [base, kind, size, width] = array;
  return Qov::Util::Quote(base) + " of kind " + std::to_string(kind) + " with " +
         std::to_string(size) + " elements and width " + std::to_string(width);
}

std::string FindNodeDifference(const NodeTree& first, const NodeTree& other) {
  for (const auto& [id, entry] : first) {
    const NodeTree::Node* node = other.FindNode(id);
    if (node == nullptr) return DescribeId(id) + " (" + DescribeNode(entry) + ") is missing";
    if (!IsSameNode(entry, *node)) {
      return DescribeId(id) + " is " + DescribeNode(*node) + " instead of " + DescribeNode(entry);
    }
    if (entry.mParent != node->mParent) return DescribeId(id) + " has another parent";
  }
  for (const auto& [id, entry] : other) {
    if (first.FindNode(id) == nullptr) {
      return DescribeId(id) + " (" + DescribeNode(entry) + ") is additional";
    }
  }
  return {};
}

std::string FindMeshDifference(const Tree& first, const Tree& other) {
  MeshFinder firstMeshes(first);
  MeshFinder otherMeshes(other);
  std::string difference;
  ForEachGeometry(first.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
    if (!difference.empty()) return;
    const std::set<MeshArray> wanted = firstMeshes.Find(geometry);
    const std::set<MeshArray> found =
        otherMeshes.Find(*AsGeometry(other.GetNodes().GetReqNode(id)));
    const auto report = [&](const std::set<MeshArray>& a, const std::set<MeshArray>& b,
                            const char* what) {
      for (const MeshArray& array : a) {
        if (difference.empty() && !b.contains(array)) {
          difference = DescribeId(id) + what + DescribeArray(array);
        }
      }
    };
    report(found, wanted, " has another mesh: ");
    report(wanted, found, " lacks the mesh array ");
  });
  return difference;
}

bool HasSamePlacement(const Group& a, const Group& b) {
  return a.mTranslation == b.mTranslation && a.mRotation == b.mRotation && a.mScale == b.mScale;
}

[[noreturn]] void RaiseNoPlace(const NodeTree::Node& entry) {
  Qov::Util::Raise(kMergeSource, Qov::Util::Exception::ErrorType::MismatchError,
                   "The results of " + DescribeId(entry.mId) + " (" + DescribeNode(entry) +
                       ") have no place, because the first input does not have this geometry; "
                       "merge the inputs as datasets");
}

void CountNode(const NodeTree::Node& first, const NodeTree::Node& other, MergeNotes& notes) {
  const auto countIf = [&notes](bool isTrue, Event event) {
    if (isTrue) notes.Count(event);
  };
  if (dynamic_cast<const Geometry*>(other.mData.get()) != nullptr) {
    countIf(!IsSameNode(first, other), Event::OtherGeometryName);
  } else if (!IsSameNode(first, other)) {
    countIf(bool{other.mData}, Event::NodeLeftOut);
  } else if (const auto* group = dynamic_cast<const Group*>(other.mData.get())) {
    const auto& firstGroup = dynamic_cast<const Group&>(*first.mData);
    // Results take the times of groups (InstanceTimes.h).
    countIf(!AreEqualButForTime(group->mAttributes, firstGroup.mAttributes) ||
                !HasSamePlacement(*group, firstGroup),
            Event::OtherAttributes);
  } else if (const auto* shape = dynamic_cast<const Shape*>(other.mData.get())) {
    countIf(shape->mMaterial.mValues != dynamic_cast<const Shape&>(*first.mData).mMaterial.mValues,
            Event::OtherMaterial);
  } else if (const auto* sets = dynamic_cast<const NodeSets*>(other.mData.get())) {
    countIf(sets->GetNumSets() != 0, Event::NodeSetsLeftOut);
  }
}

}  // namespace

std::string FindDifference(const Tree& first, const Tree& other) {
  const std::string difference = FindNodeDifference(first.GetNodes(), other.GetNodes());
  return difference.empty() ? FindMeshDifference(first, other) : difference;
}

void CountLeftOut(const Tree& first, const Tree& other, MergeNotes& notes) {
  for (const auto& [id, entry] : other.GetNodes()) {
    const Geometry* geometry = AsGeometry(entry);
    const NodeTree::Node* node = first.GetNodes().FindNode(id);
    const bool hasPlace = node != nullptr && (geometry == nullptr || AsGeometry(*node) != nullptr);
    if (hasPlace) {
      CountNode(*node, entry, notes);
    } else if (geometry != nullptr && !geometry->GetVariables().empty()) {
      RaiseNoPlace(entry);
    } else {
      notes.Count(Event::NodeLeftOut);
    }
  }
}

}  // namespace QovRyx
