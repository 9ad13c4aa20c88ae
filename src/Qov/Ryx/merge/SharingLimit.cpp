#include "SharingLimit.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "Qov/Util/Raise.h"

namespace QovRyx {
namespace {

std::string ByteText(double numBytes) {
  return std::to_string(static_cast<std::uint64_t>(numBytes));
}

}  // namespace

double SharingLimit::SizeOf(const Geometry::VarStruct& result) {
  const std::size_t size =
      sizeof(result) + result.mName.size() + result.mAttributes.GetStoredSize();
  return static_cast<double>(size);
}

void SharingLimit::Check(double needed, double allowed) {
  if (needed <= allowed) return;
  Qov::Util::Raise("include/Qov/Ryx/InstanceNames", Qov::Util::Exception::ErrorType::OutOfBounds,
                   "Too many instances would share too many results: they would take " +
                       ByteText(needed) + " bytes (limit " + ByteText(allowed) + " bytes)");
}

}  // namespace QovRyx
