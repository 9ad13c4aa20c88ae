#include "Qov/Ryx/NodeSets.h"

#include <gtest/gtest.h>

#include "support/Errors.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace {

using namespace Qov::Test;
using QovRyx::NodeSets;

const std::string kLight = "Light Data";
const std::string kHeavy = "Heavy Data";

TEST(NodeSets, WritesFourPiecesAndTheirOffset) {
  NodeSets sets("Sets");
  sets.SetSets({{"ab", {5, 6}}, {"", {}}, {"c", {7}}});
  QovJbf::JbFile file;
  file.GetIndex().Put(kHeavy, std::uint16_t{0xFFFF});
  sets.SaveDataBlocks(file, kHeavy, false);
  sets.WriteLightData(file, kLight);
  EXPECT_EQ(StreamBytes(file, kHeavy),
            "ffff"
            "0400000000000000020000000200000003000000"  // ends of the names
            "03000000616263"                            // the names
            "0400000000000000020000000200000003000000"  // ends of the values
            "03000000050000000600000007000000");        // the values
  EXPECT_EQ(StreamBytes(file, kLight),
            "10000000"          // size of what follows
            "03000000"          // sets
            "0200000000000000"  // offset
            "03000000");        // values
}

/// The stored pieces of node sets.
struct Pieces {
  std::vector<std::uint32_t> mNameEnds;
  std::string mNames;
  std::vector<std::uint32_t> mValueEnds;
  std::vector<std::uint32_t> mValues;
  std::uint32_t mNumSets;
  std::uint64_t mOffset = 0;
};

std::vector<NodeSets::Set> ReadPieces(const Pieces& pieces) {
  const TempDir dir;
  QovJbf::JbFile written;
  QovJbf::Index& index = written.GetIndex();
  index.Put(kHeavy, pieces.mNameEnds);
  index.Put(kHeavy, pieces.mNames);
  index.Put(kHeavy, pieces.mValueEnds);
  index.Put(kHeavy, pieces.mValues);
  index.Put(kLight, std::uint32_t{16});
  index.Put(kLight, pieces.mNumSets);
  index.Put(kLight, pieces.mOffset);
  index.Put(kLight, static_cast<std::uint32_t>(pieces.mValues.size()));
  WriteTo(written, dir / "sets.jbf");

  QovJbf::JbFile read;
  read.OpenFile(dir / "sets.jbf", "rb");
  NodeSets sets("Sets");
  sets.ReadLightData(read, kLight);
  sets.LoadDataBlocks(read.OpenStreamReader(kHeavy));
  return sets.GetSets();
}

TEST(NodeSets, RefusesPiecesThatDisagree) {
  EXPECT_EQ(ReadPieces({{0, 2}, "ab", {0, 1}, {9}, 1}), (std::vector<NodeSets::Set>{{"ab", {9}}}));
  for (const Pieces& pieces :
       std::initializer_list<Pieces>{{{0, 2}, "ab", {0, 1}, {9}, 2},  // too few ends
                                     {{}, "", {}, {}, 0},             // the leading 0 is missing
                                     {{1, 2}, "ab", {0, 1}, {9}, 1},  // does not begin with 0
                                     {{0, 1}, "ab", {0, 1}, {9}, 1},  // bytes after the last name
                                     {{0, 2}, "ab", {0, 2}, {9}, 1},  // after the last value
                                     {{0, 3, 2}, "ab", {0, 0, 1}, {9}, 2},  // decreasing
                                     {{0, 2}, "ab", {0, 1}, {9}, 0xFFFFFFFF}}) {
    ExpectError(ErrorType::MismatchError, "node set disagree", [&] { ReadPieces(pieces); });
  }
}

}  // namespace
