#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace QovRyx {

/// A record whose body is not decoded (docs/format.md, "Opaque records"). Its tag and the bytes of
/// its body are carried and written as they were read.
///
/// Each type of opaque records is a class that derives from this one and has the constants kName
/// and kTag. A default-constructed record has the current tag and, as its body, the default records
/// that it nests.
struct OpaqueRecord {
  std::string mTag;
  std::vector<std::uint8_t> mBody;

  friend bool operator==(const OpaqueRecord&, const OpaqueRecord&) = default;

 protected:
  explicit OpaqueRecord(const char* tag, std::vector<std::uint8_t> body = {})
      : mTag(tag), mBody(std::move(body)) {}
};

}  // namespace QovRyx
