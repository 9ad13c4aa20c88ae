#include "check/StreamEnd.h"

#include <fmt/format.h>

#include <algorithm>

#include "Plural.h"

namespace Qov::Tools {
namespace {

Place PlaceOf(const StreamCursor& cursor) {
  return Place::InStream(cursor.GetName(), cursor.GetPosition());
}

std::string RestText(const StreamCursor& cursor, const char* item) {
  const std::uint64_t rest = cursor.GetLength() - cursor.GetPosition();
  return fmt::format("{} the last {}.", Plural(rest, "byte", "follow"), item);
}

bool IsUnknown(const StoredNode& node) {
  return node.GetType() == NodeType::Unknown && node.mType != QovRyx::FutureNode::kType;
}

}  // namespace

void ReportRest(const StreamCursor& cursor, const char* item, Findings& findings) {
  if (cursor.IsAtEnd() || cursor.IsCutShort()) return;
  findings.Warning("stream-rest", PlaceOf(cursor), RestText(cursor, item));
}

void ReportRest(const StreamCursor& cursor, const ModelContent& model, const char* item,
                Findings& findings) {
  if (cursor.IsAtEnd() || cursor.IsCutShort()) return;
  if (std::none_of(model.mNodes.begin(), model.mNodes.end(), IsUnknown)) {
    return ReportRest(cursor, item, findings);
  }
  findings.Error("stream-rest", PlaceOf(cursor),
                 RestText(cursor, item) +
                     " The model cannot be read, because nodes of unknown types may own some of "
                     "them.");
}

void ReportEnd(const StreamCursor& cursor, Place place, const char* item, Findings& findings) {
  place.mStream = cursor.GetName();
  place.mByte = cursor.GetPosition();
  if (cursor.IsCutShort()) {
    findings.Warning(
        "unchecked", std::move(place),
        fmt::format("The stream is damaged here, so that {} cannot be checked completely.", item));
  } else if (cursor.GetLength() == 0) {
    findings.Error("stream-missing", std::move(place),
                   fmt::format("The stream is missing or empty; it should contain {}.", item));
  } else {
    findings.Error("stream-end", std::move(place),
                   fmt::format("The stream ends at byte {}, within {}.", cursor.GetLength(), item));
  }
}

}  // namespace Qov::Tools
