#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Qov::Tools {

/// Something of an output that is not as it ought to be.
struct Difference {
  std::uint32_t mNode = 0;  ///< The id in the output; 0 if it is about no node.
  std::string mNodeName;    ///< As it is in the file; nothing here is escaped.
  std::string mSubject;     ///< A result, a set, a path of views.
  std::string mInput;       ///< Where it comes from; empty if it comes from no input.
  std::string mText;        ///< What is wrong.
};

/// Keeps the first ones and counts all.
class Differences {
 public:
  explicit Differences(std::size_t limit) : mLimit(limit) {}

  void Add(Difference difference) {
    ++mCount;
    if (mFirst.size() < mLimit) mFirst.push_back(std::move(difference));
  }
  std::uint64_t GetCount() const { return mCount; }
  const std::vector<Difference>& GetFirst() const { return mFirst; }

 private:
  std::size_t mLimit;
  std::uint64_t mCount = 0;
  std::vector<Difference> mFirst;
};

}  // namespace Qov::Tools
