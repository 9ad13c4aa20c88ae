#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "Qov/Ryx/Attributes.h"
#include "Qov/Ryx/Group.h"
#include "Qov/Ryx/Tree.h"

/// The attribute of groups and results that holds their time.
namespace QovRyx {

inline constexpr const char* kTimeAttribute = "time";

/// Returns the value of the attribute "time", whatever its type, if it is a number. Texts of more
/// than 64 bytes are not numbers.
std::optional<double> GetTime(const QovUtil::Attributes& attributes);

/// Returns the attribute "time" in its stored form. Nothing if there is none.
std::optional<QovUtil::AttributeValue> GetTimeValue(const QovUtil::Attributes& attributes);

/// Returns true if the attributes are equal, whatever their times are. An attribute "time" that is
/// not a number is not a time.
bool AreEqualButForTime(const QovUtil::Attributes& a, const QovUtil::Attributes& b);

/// Finds the times of groups.
class GroupTimes {
 public:
  explicit GroupTimes(const NodeTree& nodes) : mNodes(nodes) {}

  /// Returns the nearest group that is a node or above it and that has a time, or null.
  const Group* Find(std::uint32_t id);

 private:
  const NodeTree& mNodes;
  std::map<std::uint32_t, const Group*> mFound;  ///< By id of the node.
};

}  // namespace QovRyx
