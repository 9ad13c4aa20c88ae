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
/// A record keeps them if it cannot be written with its type's current tag without a loss: its tag
/// is not a known one, bytes follow its known fields, or it is older and lacks an opaque record
/// (see OpaqueRecord), which cannot be invented. Such a record is written with its tag and these
/// bytes again. Any other record keeps nothing, which costs the size of a pointer.
class QOV_EXPORT RecordOrigin {
 public:
  RecordOrigin() = default;
  RecordOrigin(const RecordOrigin& other);
  RecordOrigin(RecordOrigin&&) noexcept = default;
  RecordOrigin& operator=(const RecordOrigin& other);
  RecordOrigin& operator=(RecordOrigin&&) noexcept = default;
  ~RecordOrigin() = default;

  bool HasOrigin() const { return mpContent != nullptr; }
  /// The tag, byte for byte; empty without an origin.
  std::string_view GetOriginTag() const;
  /// The bytes after the known fields; empty without an origin.
  std::string_view GetTail() const;

  void SetOrigin(std::string_view tag, std::string_view tail);
  /// Lets the record be written with its type's current tag and known fields alone.
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
