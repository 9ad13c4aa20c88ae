#include "diff/StreamDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include "ErrorText.h"
#include "Qov/Jbf/JbFile.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

/// The unknown streams of one file.
class UnknownStreams {
 public:
  explicit UnknownStreams(const std::string& path) {
    mFile.OpenFile(path, "rb");
    mFile.ReadIndex();
    mNames = QovRyx::FindUnknownStreams(mFile.GetIndex().GetItems());
  }
  const std::vector<std::string>& GetNames() const { return mNames; }
  bool Has(const std::string& name) const {
    return std::find(mNames.begin(), mNames.end(), name) != mNames.end();
  }
  std::shared_ptr<QovJbf::StreamReader> Open(const std::string& name) {
    return mFile.OpenStreamReader(name);
  }

 private:
  QovJbf::JbFile mFile;
  std::vector<std::string> mNames;
};

bool AreSame(QovJbf::StreamReader& a, QovJbf::StreamReader& b) {
  constexpr std::uint64_t kPiece = 1U << 16U;
  if (a.GetLength() != b.GetLength()) return false;
  for (std::uint64_t offset = 0; offset < a.GetLength(); offset += kPiece) {
    const auto size = static_cast<std::size_t>(std::min(kPiece, a.GetLength() - offset));
    std::string bytesOfA(size, '\0');
    std::string bytesOfB(size, '\0');
    a.ReadVerified(offset, bytesOfA.data(), size);
    b.ReadVerified(offset, bytesOfB.data(), size);
    if (bytesOfA != bytesOfB) return false;
  }
  return true;
}

void Add(const char* code, const std::string& name, const std::string& text, DiffReport& report) {
  ModelDifference difference;
  difference.mCode = code;
  difference.mText = fmt::format("stream {}, which no reader uses: {}", name, text);
  report.mDifferences.push_back(std::move(difference));
}

}  // namespace

void CompareUnknownStreams(const std::string& pathA, const std::string& pathB, DiffReport& report) {
  UnknownStreams a(pathA);
  UnknownStreams b(pathB);
  for (const std::string& name : a.GetNames()) {
    if (!b.Has(name)) {
      Add("stream", name, "only in A", report);
      continue;
    }
    try {
      if (!AreSame(*a.Open(name), *b.Open(name))) Add("stream", name, "its bytes differ", report);
    } catch (const std::exception& error) {
      ++report.mNumUnreadable;
      Add("unreadable", name, "it cannot be compared: " + ErrorText(error), report);
    }
  }
  for (const std::string& name : b.GetNames()) {
    if (!a.Has(name)) Add("stream", name, "only in B", report);
  }
}

}  // namespace Qov::Tools
