#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace QovRyx {

/// A record whose body this program does not look into: it is kept as it was read, tag and bytes,
/// and written back so.
///
/// Each such record type is a class of its own that derives from this one and names itself by
/// kName and kTag; what it holds when default-constructed is its current tag and the default
/// records that belong into its body.
struct OpaqueRecord {
  std::string mTag;
  std::vector<std::uint8_t> mBody;

  friend bool operator==(const OpaqueRecord&, const OpaqueRecord&) = default;

 protected:
  explicit OpaqueRecord(const char* tag, std::vector<std::uint8_t> body = {})
      : mTag(tag), mBody(std::move(body)) {}
};

}  // namespace QovRyx
