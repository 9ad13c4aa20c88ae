#include "check/RecordStage.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/ViewPoint.h"
#include "check/RecordCheck.h"
#include "check/StreamEnd.h"
#include "container/ContainerFormat.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

/// Reads a record from a stream, checks it and returns its bytes. Throws EndReached or Abandoned if
/// the next record cannot be found.
template <class T>
QovJbf::Block TakeRecord(StreamCursor& cursor, Place place, Findings& findings) {
  place.mStream = cursor.GetName();
  place.mByte = cursor.GetPosition();
  const auto size = cursor.Take<std::uint32_t>();
  cursor.MoveTo(*place.mByte);
  // The check of the record reports a size beyond the end of the stream.
  std::string bytes(std::min<std::uint64_t>(size, cursor.GetRemaining()), '\0');
  if (bytes.size() < size && cursor.IsCutShort()) throw StreamCursor::EndReached{*place.mByte};
  if (bytes.size() < sizeof size) bytes.resize(sizeof size);
  cursor.TakeBytes(bytes.data(), bytes.size());
  QovJbf::Block block;
  block.Put(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  block.SetPosition(0);
  RecordCheck(block, std::move(place), findings).Check<T>("");
  block.SetPosition(0);
  return block;
}

/// Decodes an entry of the history. Returns an entry without a name if it is damaged, because its
/// check has already reported that.
QovRyx::ModifierInfo DecodeEntry(QovJbf::Block block) {
  QovRyx::ModifierInfo entry;
  try {
    CopyFromBlock(block, entry);
  } catch (const Util::Exception&) {
    return {};
  }
  return entry;
}

/// Reports probe records in the layout of a legacy build, because other readers do not recognise it
/// after a merge.
void ReportLegacyWriter(const std::vector<QovRyx::ModifierInfo>& history, Findings& findings) {
  const QovRyx::ModifierInfo* writer = QovRyx::FindLegacyWriter(history);
  if (writer == nullptr) return;
  Place place = Place::InStream(QovRyx::kGlobalInformation);
  place.mPart = fmt::format("entry {}", writer - history.data());
  const char* consequence =
      writer == &history.back()
          ? "A merge keeps them and adds its own entry to the history, after which other readers "
            "no longer recognise them."
          : "The last entry of the history is that of a merge, so that other readers do not "
            "recognise them.";
  findings.Warning("legacy-probes", std::move(place),
                   fmt::format("The views were written by the build {}, whose probe records have "
                               "another layout. {}",
                               Quoted(writer->mApplicationVersion), consequence));
}

Place Part(std::string part) {
  Place place;
  place.mPart = std::move(part);
  return place;
}

/// Runs a check that reads records. Returns false if it had to stop.
template <class Stage>
bool RunStage(StreamCursor& cursor, const char* what, Findings& findings, Stage stage) {
  try {
    stage();
    return true;
  } catch (const StreamCursor::EndReached&) {
    ReportEnd(cursor, {}, what, findings);
  } catch (const RecordCheck::Abandoned&) {
    // Already reported. The next record cannot be found.
  }
  return false;
}

/// Reads a signed count in the view-point stream. Readers treat a negative one as 0.
std::int32_t TakeSignedCount(StreamCursor& cursor, const std::string& part, Findings& findings) {
  Place place = Place::InStream(cursor.GetName(), cursor.GetPosition());
  place.mPart = part;
  const auto count = cursor.Take<std::int32_t>();
  if (count < 0) findings.Error("view-count", place, fmt::format("The count is {}.", count));
  return count;
}

void TakePath(StreamCursor& cursor, Findings& findings) {
  const std::string part = "path " + Quoted(cursor.TakeText(findings));
  const std::int32_t count = TakeSignedCount(cursor, part, findings);
  for (std::int32_t i = 0; i < count; ++i) {
    TakeRecord<QovRyx::ViewPoint>(cursor, Part(fmt::format("{}, view {}", part, i)), findings);
  }
}

void TakeViews(StreamCursor& cursor, Findings& findings) {
  TakeRecord<QovRyx::ViewPoint>(cursor, Part("current view"), findings);
  const std::int32_t count = TakeSignedCount(cursor, "paths", findings);
  for (std::int32_t i = 0; i < count; ++i) TakePath(cursor, findings);
  TakeRecord<QovRyx::SequencerData>(cursor, Part("sequencer"), findings);
  ReportRest(cursor, "record", findings);
}

/// Returns true if views of files of that version can be read; otherwise reports that.
bool CheckViewVersion(const std::string& version, Findings& findings) {
  const Place place = Place::InStream(QovRyx::kViewPoints);
  if (!QovJbf::HasViews(version)) {
    findings.Warning("views-unread", place, "Views of files of version 0.1 are not read.");
    return false;
  }
  if (QovJbf::HasRecordSizes(version)) return true;
  findings.Error("views-unread", place,
                 fmt::format("Views of files of version {} cannot be read: their records have no "
                             "sizes.",
                             version));
  return false;
}

}  // namespace

void CheckMaterials(Container& container, const ModelContent& model, Findings& findings) {
  StreamCursor cursor = container.OpenStream(QovRyx::kResources);
  const bool isThrough = RunStage(cursor, "the materials", findings, [&] {
    for (const StoredNode& node : model.mNodes) {
      if (node.GetType() != NodeType::Shape || !QovRyx::HasMaterial(node.mVersion)) continue;
      TakeRecord<QovRyx::MaterialValues>(cursor, node.At(Part("material")), findings);
    }
  });
  if (isThrough && model.mIsComplete) ReportRest(cursor, model, "record", findings);
}

void CheckHistory(Container& container, Findings& findings) {
  if (!container.HasStream(QovRyx::kGlobalInformation)) return;
  if (container.ReportExpansion({QovRyx::kGlobalInformation})) return;
  StreamCursor cursor = container.OpenStream(QovRyx::kGlobalInformation);
  std::vector<QovRyx::ModifierInfo> history;
  RunStage(cursor, "the history", findings, [&] {
    const auto count = cursor.Take<std::uint32_t>();
    for (std::uint32_t i = 0; i < count; ++i) {
      const Place place = Part(fmt::format("entry {}", i));
      history.push_back(DecodeEntry(TakeRecord<QovRyx::ModifierInfo>(cursor, place, findings)));
    }
    ReportRest(cursor, "record", findings);
  });
  if (container.HasStream(QovRyx::kViewPoints)) ReportLegacyWriter(history, findings);
}

void CheckViews(Container& container, Findings& findings) {
  if (!container.HasStream(QovRyx::kViewPoints)) return;
  if (!CheckViewVersion(container.GetVersion(), findings)) return;
  if (container.ReportExpansion({QovRyx::kViewPoints})) return;
  StreamCursor cursor = container.OpenStream(QovRyx::kViewPoints);
  RunStage(cursor, "the views", findings, [&] { TakeViews(cursor, findings); });
}

}  // namespace Qov::Tools
