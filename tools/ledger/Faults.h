#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Qov::Tools {

/// A part of an output that differs from what the merge should have written. Texts are not escaped.
struct Fault {
  std::uint32_t mNode = 0;  ///< The node's id in the output; 0 if the fault concerns no node.
  std::string mNodeName;
  std::string mSubject;  ///< The name of a result, a set, a view or a path; can be empty.
  std::string mInput;    ///< Path of the input that the part comes from; empty if there is none.
  std::string mText;     ///< Description of the fault.
};

/// Counts faults and keeps the first ones.
class Faults {
 public:
  /// Keeps at most `limit` faults.
  explicit Faults(std::size_t limit) : mLimit(limit) {}

  void Add(Fault fault) {
    ++mCount;
    if (mFirst.size() < mLimit) mFirst.push_back(std::move(fault));
  }
  std::uint64_t GetCount() const { return mCount; }
  const std::vector<Fault>& GetFirst() const { return mFirst; }

 private:
  std::size_t mLimit;
  std::uint64_t mCount = 0;
  std::vector<Fault> mFirst;
};

}  // namespace Qov::Tools
