#include "ViewCount.h"

#include <exception>
#include <memory>

#include "Qov/Jbf/JbFile.h"
#include "model/StreamNames.h"

namespace QovRyx {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;
/// The size of a record and the length of its tag, which every record has.
constexpr std::uint32_t kLeastRecord = 8;

/// Walks the view stream of a file:
///   current view: record | number of paths: i32 | paths | sequencer: record
/// where each path is
///   name: u32 length, bytes | number of view points: i32 | view points: records
class ViewCounter {
 public:
  explicit ViewCounter(QovJbf::StreamReader& reader) : mReader(reader) {}

  std::optional<ViewCount> Count() {
    ViewCount count{1, 0, 0};
    SkipRecord();
    for (std::int32_t paths = ReadCount(); mIsSound && paths > 0; --paths) {
      ++count.mPaths;
      Skip(Read());
      for (std::int32_t views = ReadCount(); mIsSound && views > 0; --views) {
        ++count.mViewPoints;
        SkipRecord();
      }
    }
    SkipRecord();
    return mIsSound ? std::optional(count) : std::nullopt;
  }

 private:
  std::uint32_t Read() {
    std::uint32_t value = 0;
    if (!Skip(sizeof(value))) return 0;
    mReader.Read(mOffset - sizeof(value), &value, sizeof(value));
    return value;
  }
  std::int32_t ReadCount() { return static_cast<std::int32_t>(Read()); }

  bool Skip(std::uint64_t n) {
    mIsSound = mIsSound && n <= mReader.GetLength() - mOffset;
    if (mIsSound) mOffset += n;
    return mIsSound;
  }

  void SkipRecord() {
    const std::uint32_t size = Read();
    mIsSound = mIsSound && size >= kLeastRecord;
    if (mIsSound) Skip(size - sizeof(size));
  }

  QovJbf::StreamReader& mReader;
  std::uint64_t mOffset = 0;
  bool mIsSound = true;
};

}  // namespace

std::optional<ViewCount> CountViews(const std::string& path) noexcept {
  try {
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    if (!file.HasStream(kViewPoints)) return ViewCount{};
    const std::shared_ptr<QovJbf::StreamReader> reader = file.OpenStreamReader(kViewPoints);
    if (reader->GetLength() > kMostBytes) return std::nullopt;
    return ViewCounter(*reader).Count();
  } catch (const std::exception&) {
    return std::nullopt;  // the views are not needed
  }
}

}  // namespace QovRyx
