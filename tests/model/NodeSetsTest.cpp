#include "Qov/Ryx/NodeSets.h"

#include <gtest/gtest.h>

#include "support/Errors.h"
#include "support/Streams.h"
#include "support/TempDir.h"

namespace {

using QovRyx::NodeSets;

const std::string kLight = "Light Data";
const std::string kHeavy = "Heavy Data";

TEST(NodeSets, WritesFourPiecesAndTheirPlace) {
  NodeSets sets("Sets");
  sets.SetSets({{"ab", {5, 6}}, {"", {}}, {"c", {7}}});
  QovJbf::JbFile file;
  file.GetIndex().Put(kHeavy, std::uint16_t{0xFFFF});
  sets.SaveDataBlocks(file, kHeavy);
  sets.WriteLightData(file, kLight);
  EXPECT_EQ(Qov::Test::StreamBytes(file, kHeavy),
            "ffff"
            "0400000000000000020000000200000003000000"  // ends of the names
            "03000000616263"                            // the names
            "0400000000000000020000000200000003000000"  // ends of the values
            "03000000050000000600000007000000");        // the values
  EXPECT_EQ(Qov::Test::StreamBytes(file, kLight),
            "10000000"          // size of what follows
            "03000000"          // sets
            "0200000000000000"  // offset
            "03000000");        // values
}

/// Writes light data and pieces, and reads the sets back.
std::vector<NodeSets::Set> ReadPieces(const std::vector<std::uint32_t>& nameEnds,
                                      const std::string& names,
                                      const std::vector<std::uint32_t>& valueEnds,
                                      const std::vector<std::uint32_t>& values,
                                      std::uint32_t numSets, std::uint64_t offset = 0) {
  const Qov::Test::TempDir dir;
  QovJbf::JbFile written;
  written.GetIndex().Put(kHeavy, nameEnds);
  written.GetIndex().Put(kHeavy, names);
  written.GetIndex().Put(kHeavy, valueEnds);
  written.GetIndex().Put(kHeavy, values);
  written.GetIndex().Put(kLight, std::uint32_t{16});
  written.GetIndex().Put(kLight, numSets);
  written.GetIndex().Put(kLight, offset);
  written.GetIndex().Put(kLight, static_cast<std::uint32_t>(values.size()));
  Qov::Test::WriteTo(written, dir / "sets.jbf");

  QovJbf::JbFile read;
  read.OpenFile(dir / "sets.jbf", "rb");
  NodeSets sets("Sets");
  sets.ReadLightData(read, kLight);
  sets.LoadDataBlocks(read.OpenStreamReader(kHeavy));
  return sets.GetSets();
}

TEST(NodeSets, ReadsSetsBack) {
  const auto sets = ReadPieces({0, 2, 2, 3}, "abc", {0, 2, 2, 3}, {5, 6, 7}, 3);
  EXPECT_EQ(sets, (std::vector<NodeSets::Set>{{"ab", {5, 6}}, {"", {}}, {"c", {7}}}));
  EXPECT_TRUE(ReadPieces({0}, "", {0}, {}, 0).empty());
}

TEST(NodeSets, RefusesPiecesThatDisagree) {
  const auto expectMismatch = [](auto... pieces) {
    Qov::Test::ExpectError(Qov::Test::ErrorType::MismatchError, "node set disagree",
                           [&] { ReadPieces(pieces...); });
  };
  using Numbers = std::vector<std::uint32_t>;
  expectMismatch(Numbers{0, 2}, "ab", Numbers{0, 1}, Numbers{9}, 2U);        // too few ends
  expectMismatch(Numbers{}, "", Numbers{}, Numbers{}, 0U);                   // not even the 0
  expectMismatch(Numbers{1, 2}, "ab", Numbers{0, 1}, Numbers{9}, 1U);        // not from 0
  expectMismatch(Numbers{0, 1}, "ab", Numbers{0, 1}, Numbers{9}, 1U);        // a name's rest
  expectMismatch(Numbers{0, 2}, "ab", Numbers{0, 2}, Numbers{9}, 1U);        // past the values
  expectMismatch(Numbers{0, 3, 2}, "ab", Numbers{0, 0, 1}, Numbers{9}, 2U);  // falling
  expectMismatch(Numbers{0, 2}, "ab", Numbers{0, 1}, Numbers{9}, 0xFFFFFFFFU);
}

TEST(NodeSets, RefusesPiecesThatAreNotThere) {
  const auto expectTooShort = [](std::uint64_t offset) {
    Qov::Test::ExpectError(Qov::Test::ErrorType::OutOfBounds, "Not enough bytes in the block", [&] {
      ReadPieces({0, 0x7FFFFFFF}, "", {0}, {}, 1, offset);
    });
  };
  expectTooShort(8);   // an end of a name is taken for a count
  expectTooShort(23);  // within the last count
  expectTooShort(0xFFFFFFFFFFFFFFFF);
}

}  // namespace
