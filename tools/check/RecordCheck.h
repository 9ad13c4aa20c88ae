#pragma once

#include <array>
#include <concepts>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Util/Exception.h"
#include "check/Finding.h"

namespace Qov::Tools {

/// Checks a record and its nested records: sizes, tags, and the ends of the bodies. After damage it
/// continues after the record that contains it.
class RecordCheck {
 public:
  /// `place` is the place of the first byte of the block in its stream.
  RecordCheck(QovJbf::Block& block, Place place, Findings& findings)
      : mBlock(block), mPlace(std::move(place)), mFindings(findings) {}

  /// Throws Abandoned if the record's size is impossible.
  template <QovJbf::VersionedRecord T>
  void Check(const std::string& path);

  /// Thrown if the end of a record is unknown, so that the next one cannot be found.
  struct Abandoned {};

 private:
  struct Frame {
    std::uint32_t mStart = 0;
    std::uint32_t mEnd = 0;
    std::string mTag;
  };
  class Walker;

  Frame OpenFrame(const std::string& path);
  void CheckTag(const Frame& frame, std::string_view current, const std::string& path);
  void CheckEnd(const Frame& frame, std::string_view current, const std::string& path);
  Place At(std::uint32_t position, const std::string& path) const;
  void ReportLost(const Frame& frame, const std::string& path);
  /// Skips the record of an action without a class.
  void TakeUnknownAction(std::uint16_t type, const std::string& path);
  std::uint32_t TakeCount();
  /// Reads a text like readers do: drops the bytes from the first zero byte on, and reports that.
  std::string TakeText(const std::string& path);
  /// Reads a key. Reports it if it is already in `taken`.
  std::string TakeKey(const std::string& path, std::set<std::string>& taken);

  QovJbf::Block& mBlock;
  Place mPlace;
  Findings& mFindings;
  std::uint32_t mOuterEnd = 0;  ///< End of the enclosing record; 0 for none.
};

/// Walks over the fields: checks nested records and reads the other fields.
class RecordCheck::Walker {
 public:
  Walker(RecordCheck& check, std::string_view tag, const std::string& path)
      : mCheck(check), mLadder(tag), mPath(path) {}

  Walker& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  Walker& Field(const char* name, T& value) {
    if (mOpen) Read(mPath.empty() ? name : mPath + "." + name, value);
    return *this;
  }

 private:
  template <class T>
  void Read(const std::string& /*path*/, T& value) {
    CopyFromBlock(mCheck.mBlock, value);
  }
  void Read(const std::string& path, std::string& value) { value = mCheck.TakeText(path); }
  template <QovJbf::VersionedRecord T>
  void Read(const std::string& path, T& /*value*/) {
    mCheck.Check<T>(path);
  }
  template <class T>
  requires QovJbf::VersionedRecord<T> || std::same_as<T, std::string>
  void Read(const std::string& path, std::vector<T>& /*values*/) {
    const std::uint32_t count = mCheck.TakeCount();
    for (std::uint32_t i = 0; i < count; ++i) {
      T unused{};
      Read(path + "[" + std::to_string(i) + "]", unused);
    }
  }
  template <class T>
  void Read(const std::string& path, std::map<std::string, T>& /*values*/) {
    const std::uint32_t count = mCheck.TakeCount();
    std::set<std::string> keys;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string key = mCheck.TakeKey(path, keys);
      T unused{};
      Read(path + "[" + Quoted(key) + "]", unused);
    }
  }
  void Read(const std::string& path, QovRyx::ActionList& actions);

  RecordCheck& mCheck;
  QovJbf::RungLadder mLadder;
  const std::string& mPath;
  bool mOpen = false;
};

template <QovJbf::VersionedRecord T>
void RecordCheck::Check(const std::string& path) {
  const Frame frame = OpenFrame(path);
  const std::uint32_t outerEnd = mOuterEnd;
  mOuterEnd = frame.mEnd;
  CheckTag(frame, T::kTag, path);
  if constexpr (!QovJbf::OpaqueRecordType<T>) {
    T record;
    Walker walker(*this, frame.mTag, path);
    try {
      T::Walk(record, walker);
      CheckEnd(frame, T::kTag, path);
    } catch (const Util::Exception&) {
      ReportLost(frame, path);
    } catch (const Abandoned&) {
      // The nested record was reported.
    }
  }
  mOuterEnd = outerEnd;
  mBlock.SetPosition(frame.mEnd);
}

}  // namespace Qov::Tools
