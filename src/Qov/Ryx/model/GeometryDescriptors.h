#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "ModelFormat.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Geometry.h"

namespace QovRyx {

/// The streams of a file that hold the descriptors of geometries.
struct DescriptorStreams {
  QovJbf::JbFile& mrFile;
  const std::string& mrLightKey;
  const std::string& mrAttributeKey;
};

/// Appends the descriptor of a result, and its values to the stream `heavyKey` if the layout has
/// them inline. Raises ElementNotFound for a result that is not linked and has no offset.
void WriteDescriptor(const DescriptorStreams& streams, const std::string& heavyKey,
                     GeometryLayout layout, const Geometry::VarStruct& result);

/// Reads a descriptor into `result`, which is new, and the attributes of the result into
/// `attributes`. Sets the offset of inline values to `inlineOffset`, which it moves to their end.
void ReadDescriptor(const DescriptorStreams& streams, GeometryLayout layout,
                    std::uint64_t& inlineOffset, Geometry::VarStruct& result,
                    QovUtil::Attributes& attributes);

/// Returns an upper bound for the number of descriptors in the rest of the block that the next
/// descriptor is read from.
std::size_t CountDescriptorRoom(const DescriptorStreams& streams);

}  // namespace QovRyx
