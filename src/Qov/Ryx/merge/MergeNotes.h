#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Collects the notes of a merge: lines about single inputs, of which the first ones are kept, and
/// counts of equal events in all inputs.
class MergeNotes {
 public:
  /// The events that are counted.
  enum class Event {
    NodeLeftOut,
    OtherAttributes,
    OtherMaterial,
    NodeSetsLeftOut,
    OtherGeometryName,
    EqualName,
    NoInstance,
    EqualKey,
    CutText,
    ViewsNotCounted
  };

  void AddLine(const std::string& line);
  void Count(Event event, std::uint64_t number = 1);
  /// Counts the data that was left out when files were read into the tree.
  void CountLosses(const Tree::Losses& losses);

  std::vector<std::string> GetLines() const;

 private:
  static constexpr std::size_t kMostLines = 100;

  std::vector<std::string> mLines;
  std::uint64_t mNumMoreLines = 0;
  std::map<Event, std::uint64_t> mCounts;
};

}  // namespace QovRyx
