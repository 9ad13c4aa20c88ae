#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Qov/Export.h"

namespace QovRyx {

/// The tag and the bytes after the known fields that a record was read with. Base class of every
/// record with a field list.
///
/// A record keeps them if writing it with its type's current tag would lose data: its tag is
/// unknown, bytes follow its known fields, or it is older and lacks an opaque record (see
/// OpaqueRecord), which cannot be invented. Such a record is written again with its tag and these
/// bytes. Any other record keeps neither and takes only the size of a pointer for this.
class QOV_EXPORT RecordOrigin {
 public:
  RecordOrigin() = default;
  RecordOrigin(const RecordOrigin& other);
  RecordOrigin(RecordOrigin&&) noexcept = default;
  RecordOrigin& operator=(const RecordOrigin& other);
  RecordOrigin& operator=(RecordOrigin&&) noexcept = default;
  ~RecordOrigin() = default;

  bool HasOrigin() const { return mpContent != nullptr; }
  /// Returns the tag, byte for byte; empty without an origin.
  std::string_view GetOriginTag() const;
  /// Returns the bytes after the known fields; empty without an origin.
  std::string_view GetTail() const;

  /// Makes `tag` and `tail` the origin.
  void SetOrigin(std::string_view tag, std::string_view tail);
  /// Removes the origin, so that the record is written with its type's current tag and only its
  /// known fields.
  void ForgetOrigin() { mpContent.reset(); }

  friend bool operator==(const RecordOrigin& left, const RecordOrigin& right) {
    return left.HasOrigin() == right.HasOrigin() && left.GetOriginTag() == right.GetOriginTag() &&
           left.GetTail() == right.GetTail();
  }

 private:
  struct Content {
    std::string mBytes;  ///< The tag, then the tail.
    std::uint32_t mTagLength;
  };

  std::unique_ptr<const Content> mpContent;
};

}  // namespace QovRyx
