#include "check/RecordCheck.h"

#include <fmt/format.h>

#include "Plural.h"

namespace Qov::Tools {
namespace {

constexpr std::uint32_t kLeastSize = 8;

/// Returns N for "0.N", 0 for anything else.
int RungNumber(std::string_view tag) {
  const bool isRung = tag.size() == 3 && tag.substr(0, 2) == "0." && tag[2] >= '1' && tag[2] <= '9';
  return isRung ? tag[2] - '0' : 0;
}

}  // namespace

Place RecordCheck::At(std::uint32_t position, const std::string& path) const {
  Place place = mPlace;
  place.mByte = place.mByte.value_or(0) + position;
  if (!path.empty()) place.mPart += place.mPart.empty() ? path : ": " + path;
  return place;
}

std::uint32_t RecordCheck::TakeCount() {
  std::uint32_t count = 0;
  CopyFromBlock(mBlock, count);
  return count;
}

std::string RecordCheck::TakeText(const std::string& path) {
  const std::uint32_t start = mBlock.GetPosition();
  std::string text;
  CopyFromBlock(mBlock, text);
  const std::uint64_t length = mBlock.GetPosition() - start - sizeof(std::uint32_t);
  if (text.size() < length) ReportZeroByte(At(start, path), text, length, mFindings);
  return text;
}

std::string RecordCheck::TakeKey(const std::string& path, std::set<std::string>& taken) {
  const std::uint32_t start = mBlock.GetPosition();
  std::string key = TakeText(path);
  if (!taken.insert(key).second) {
    mFindings.Error(
        "record-key", At(start, path),
        fmt::format("Two entries have the key {}; readers keep the first.", Quoted(key)));
  }
  return key;
}

RecordCheck::Frame RecordCheck::OpenFrame(const std::string& path) {
  Frame frame;
  frame.mStart = mBlock.GetPosition();
  const std::uint32_t outerEnd = mOuterEnd == 0 ? mBlock.GetSize() : mOuterEnd;
  const std::uint32_t room = outerEnd - std::min(outerEnd, frame.mStart);
  const std::uint32_t size = room < kLeastSize ? 0 : TakeCount();
  if (size < kLeastSize || size > room) {
    const std::string text =
        size < kLeastSize ? fmt::format("The record has {}, but needs at least {}.",
                                        Plural(room < kLeastSize ? room : size, "byte"), kLeastSize)
                          : fmt::format("The record has the size {}, but {}.", size,
                                        Plural(room, "byte", "remain"));
    mFindings.Error("record-size", At(frame.mStart, path), text);
    throw Abandoned{};
  }
  frame.mEnd = frame.mStart + size;
  const std::uint32_t length = TakeCount();
  if (length > size - kLeastSize) {
    mFindings.Error("record-tag", At(frame.mStart, path),
                    fmt::format("The tag of the record has {}, but the record has room for {}.",
                                Plural(length, "byte"), size - kLeastSize));
    mBlock.SetPosition(frame.mEnd);
    return frame;
  }
  frame.mTag.resize(length);
  mBlock.Get(frame.mTag.data(), length);
  return frame;
}

void RecordCheck::CheckTag(const Frame& frame, std::string_view current, const std::string& path) {
  const int rung = RungNumber(frame.mTag);
  if (rung != 0 && rung <= RungNumber(current)) return;
  mFindings.Warning("record-tag", At(frame.mStart, path),
                    fmt::format("Tag {} is unknown; the newest of this record is {}.",
                                Quoted(frame.mTag), current));
}

void RecordCheck::CheckEnd(const Frame& frame, std::string_view current, const std::string& path) {
  const std::uint32_t position = mBlock.GetPosition();
  if (position > frame.mEnd) {
    mFindings.Error(
        "record-size", At(frame.mStart, path),
        fmt::format("The record has the size {}, but its fields take {}.",
                    frame.mEnd - frame.mStart, Plural(position - frame.mStart, "byte")));
  }
  if (position >= frame.mEnd) return;
  const std::uint32_t numBytes = frame.mEnd - position;
  const int rung = RungNumber(frame.mTag);
  const bool isKnown = rung != 0 && rung <= RungNumber(current);
  const std::string field =
      isKnown ? fmt::format("the last field of version {}", frame.mTag) : "the last known field";
  mFindings.Warning("record-rest", At(position, path),
                    fmt::format("{} {} of the record.", Plural(numBytes, "byte", "follow"), field));
}

void RecordCheck::ReportLost(const Frame& frame, const std::string& path) {
  mFindings.Error("record-size", At(frame.mStart, path),
                  "The fields of the record extend beyond its end.");
}

void RecordCheck::TakeUnknownAction(std::uint16_t type, const std::string& path) {
  const Frame frame = OpenFrame(path);
  const std::uint32_t numBytes = frame.mEnd - mBlock.GetPosition();
  mBlock.SetPosition(frame.mEnd);
  // Programs write an empty slot as type -1 with an empty record.
  const bool isEmpty = frame.mTag == QovRyx::InvalidAction::kTag && numBytes == 0;
  if (isEmpty && type == static_cast<std::uint16_t>(QovRyx::InvalidAction::kType)) return;
  mFindings.Warning("action-type", At(frame.mStart, path),
                    fmt::format("The action has the unknown type {}; its tag {} and {} are kept "
                                "unchanged.",
                                type, Quoted(frame.mTag), Plural(numBytes, "byte")));
}

void RecordCheck::Walker::Read(const std::string& path, QovRyx::ActionList& /*actions*/) {
  std::vector<std::uint16_t> types;
  CopyFromBlock(mCheck.mBlock, types);
  for (std::size_t i = 0; i < types.size(); ++i) {
    const std::string element = path + "[" + std::to_string(i) + "]";
    switch (types[i]) {
      case QovRyx::RotateAction::kType:
        mCheck.Check<QovRyx::RotateAction>(element);
        break;
      case QovRyx::MoveAction::kType:
        mCheck.Check<QovRyx::MoveAction>(element);
        break;
      case QovRyx::TransformAction::kType:
        mCheck.Check<QovRyx::TransformAction>(element);
        break;
      case QovRyx::ApplyColorAction::kType:
        mCheck.Check<QovRyx::ApplyColorAction>(element);
        break;
      case QovRyx::ApplyViewPointAction::kType:
        mCheck.Check<QovRyx::ApplyViewPointAction>(element);
        break;
      case QovRyx::PlayAudioAction::kType:
        mCheck.Check<QovRyx::PlayAudioAction>(element);
        break;
      default:
        mCheck.TakeUnknownAction(types[i], element);
    }
  }
}

}  // namespace Qov::Tools
