#include "Qov/Ryx/RecordOrigin.h"

namespace QovRyx {

RecordOrigin::RecordOrigin(const RecordOrigin& other)
    : mpContent(other.mpContent ? std::make_unique<const Content>(*other.mpContent) : nullptr) {}

RecordOrigin& RecordOrigin::operator=(const RecordOrigin& other) {
  return *this = RecordOrigin(other);
}

std::string_view RecordOrigin::GetOriginTag() const {
  if (!mpContent) return {};
  return std::string_view(mpContent->mBytes).substr(0, mpContent->mTagLength);
}

std::string_view RecordOrigin::GetTail() const {
  if (!mpContent) return {};
  return std::string_view(mpContent->mBytes).substr(mpContent->mTagLength);
}

void RecordOrigin::SetOrigin(std::string_view tag, std::string_view tail) {
  std::string bytes;
  bytes.reserve(tag.size() + tail.size());
  bytes.append(tag).append(tail);
  mpContent = std::make_unique<const Content>(
      Content{std::move(bytes), static_cast<std::uint32_t>(tag.size())});
}

}  // namespace QovRyx
