#include "Models.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

#include "Target.h"
#include "support/ModelCompare.h"

namespace Qov::Fuzz {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{16} << 20;

std::uint64_t CountBytes(const QovRyx::Tree& tree, bool withLinked) {
  std::uint64_t numBytes = 0;
  ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      if (withLinked || !variable.mLink.IsLinked()) numBytes += variable.mValues.GetSize();
    }
  });
  return numBytes;
}

using Readers = std::set<QovJbf::StreamReader*>;

void ReadAll(const QovRyx::Geometry& geometry, Readers& readers) {
  std::vector<std::uint32_t> values;
  for (const auto& variable : geometry.GetVariables()) {
    if (variable.mLink.IsLinked()) continue;
    variable.mValues.GetValues(values);
    if (const auto& loader = variable.mValues.GetLoader()) {
      loader->VerifyPlace();  // a merge verifies the lengths of the blocks before it, too
      readers.insert(&loader->GetReader());
    }
  }
}

}  // namespace

FilePair SplitPair(Bytes bytes) {
  std::uint32_t length = 0;
  if (bytes.size() < sizeof length) return {};
  std::memcpy(&length, bytes.data(), sizeof length);
  bytes = bytes.subspan(sizeof length);
  const std::size_t first = std::min<std::size_t>(length, bytes.size());
  return {bytes.first(first), bytes.subspan(first)};
}

void Load(QovRyx::Tree& tree, const std::string& path) {
  QovRyx::Tree::IdMap idMap;
  tree.Load(path, idMap, QovRyx::Tree::ReadMode::Everything,
            QovRyx::Tree::SupportedFileFormats::Ryx);
}

bool ReadArrays(const QovRyx::Tree& tree) {
  if (CountBytes(tree, false) > kMostBytes) return false;
  Readers readers;
  ForEachGeometry(tree.GetNodes(),
                  [&](std::uint32_t, const auto& geometry) { ReadAll(geometry, readers); });
  for (const auto& [id, entry] : tree.GetNodes()) {
    const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get());
    if (sets == nullptr) continue;
    static_cast<void>(sets->GetSets());
    if (sets->GetReader() == nullptr) continue;
    sets->GetReader()->VerifyBefore(sets->GetSourceOffset());
    readers.insert(sets->GetReader());
  }
  for (QovJbf::StreamReader* reader : readers) reader->Verify();
  return true;
}

bool LoadWithArrays(QovRyx::Tree& tree, const std::string& path) {
  bool isSmall = false;
  const bool isSound = Accepts([&] {
    Load(tree, path);
    isSmall = ReadArrays(tree);
  });
  return isSound && isSmall;
}

std::optional<std::string> Describe(const QovRyx::Tree& tree) {
  if (CountBytes(tree, true) > kMostBytes) return std::nullopt;
  return Test::DescribeModel(tree);
}

}  // namespace Qov::Fuzz
