#include "StreamGroups.h"

#include "Qov/Util/FileContext.h"
#include "Qov/Util/Raise.h"
#include "StreamNames.h"
#include "container/LoadLimit.h"

namespace QovRyx {
namespace {

void CheckLoadLimit(const StreamGroup& group, std::uint64_t numBytes, std::uint64_t limit) {
  if (numBytes <= limit) return;
  Qov::Util::Raise("include/Qov/Ryx/Tree", Qov::Util::Exception::ErrorType::OutOfBounds,
                   QovJbf::DescribeLoadLimit(group.mContent, numBytes, limit));
}

}  // namespace

const StreamGroup kTreeStreams{"The descriptions of nodes and results",
                               {kRyxTree, kLightData, kAttributes, kResources}};
const StreamGroup kViewStreams{"The views", {kViewPoints}};
const StreamGroup kHistoryStreams{"The entries of the history", {kGlobalInformation}};

void CheckExpansion(QovJbf::JbFile& file, const StreamGroup& group) {
  std::uint64_t numBytes = 0;
  for (const std::string& name : group.mStreams) {
    numBytes += file.OpenStreamReader(name)->GetLength();
  }
  CheckLoadLimit(group, numBytes, QovJbf::GetLoadLimit());
}

void CheckLoadable(QovJbf::JbFile& file, const StreamGroup& group, std::uint64_t limit) {
  const QovJbf::Index& index = file.GetIndex();
  std::uint64_t numBytes = 0;
  for (const std::string& name : group.mStreams) {
    if (index.HasStream(name)) numBytes += index.GetStreamLength(name);
  }
  Qov::Util::WithFileContext(file.GetPath(), [&] { CheckLoadLimit(group, numBytes, limit); });
}

}  // namespace QovRyx
