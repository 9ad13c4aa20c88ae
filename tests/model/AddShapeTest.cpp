#include <gmock/gmock.h>

#include "Qov/Ryx/Tree.h"
#include "support/Errors.h"
#include "support/ModelBuilder.h"
#include "support/ModelCompare.h"
#include "support/TempDir.h"

namespace QovRyx {
namespace {

using namespace Qov::Test;
using testing::ElementsAre;

/// A model with a shape and two groups of the same name, and a plate whose shapes are added.
class AddShape : public testing::Test {
 protected:
  AddShape() {
    AddNode<Shape>(mTree, NodeTree::kRootId, "Cuts");
    AddNode<Group>(mTree, NodeTree::kRootId, "Cuts");
    AddNode<Group>(mTree, NodeTree::kRootId, "Cuts");
    BuildPlate(mSource, {"Stress"}, 1);
  }
  Geometry& SourceMesh() { return *AsGeometry(mSource.GetNodes().GetReqNode(PlateIds::kGeometry)); }
  void ExpectRefusal(ErrorType type, const std::string& text, std::uint32_t id,
                     const std::string& group = "Cuts") {
    const std::string tree = DescribeModel(mTree);
    const std::string source = DescribeModel(mSource);
    ExpectError(type, text, [&] { mTree.AddShape(mSource, id, group); });
    EXPECT_EQ(DescribeModel(mTree), tree);
    EXPECT_EQ(DescribeModel(mSource), source);
  }

  static constexpr std::uint32_t kFirstGroup = 3;
  static constexpr std::uint32_t kNewShape = 5;
  static constexpr std::uint32_t kNewGeometry = 6;
  Tree mTree{false};
  Tree mSource{false};
};

TEST_F(AddShape, MovesTheShapeBelowTheFirstGroupOfThatName) {
  const Node* shape = mSource.GetNodes().GetReqNode(PlateIds::kShape).mData.get();
  const Node* geometry = &SourceMesh();
  mTree.AddShape(mSource, PlateIds::kShape, "Cuts");
  const NodeTree& nodes = mTree.GetNodes();
  EXPECT_EQ(nodes.GetReqNode(kFirstGroup).mFirstChild, kNewShape);
  EXPECT_EQ(nodes.GetReqNode(kNewShape).mData.get(), shape);
  EXPECT_EQ(nodes.GetReqNode(kNewShape).mFirstChild, kNewGeometry);
  EXPECT_EQ(nodes.GetReqNode(kNewGeometry).mData.get(), geometry);
  EXPECT_EQ(nodes.GetCurrentId(), kNewGeometry);
  EXPECT_EQ(mSource.GetNodes().GetReqNode(PlateIds::kShape).mData, nullptr);
  EXPECT_EQ(mSource.GetNodes().GetReqNode(PlateIds::kGeometry).mData, nullptr);
  ExpectRefusal(ErrorType::MismatchError, "Node 3 is not a shape", PlateIds::kShape);
}

TEST_F(AddShape, KeepsReadingTheFileOfADestroyedTree) {
  const TempDir dir;
  SavePlate(dir / "plate.ryx", {"Stress"}, 1);
  {
    Tree loaded(false);
    LoadTree(loaded, dir / "plate.ryx");
    mTree.AddShape(loaded, PlateIds::kShape, "Cuts");
  }
  SaveTree(mTree, dir / "out.ryx");
  mTree.AddShape(mSource, PlateIds::kShape, "Cuts");
  std::ostringstream moved;
  std::ostringstream built;
  Tree saved(false);
  LoadTree(saved, dir / "out.ryx");
  DescribePayload(moved, *saved.GetNodes().GetReqNode(kNewGeometry).mData);
  DescribePayload(built, *mTree.GetNodes().GetReqNode(kNewGeometry + 2).mData);
  EXPECT_EQ(moved.str(), built.str());
}

TEST_F(AddShape, KeepsValuesSharedThroughChains) {
  constexpr std::uint32_t kMesh = PlateIds::kGeometry;
  constexpr std::uint32_t kOther = PlateIds::kSets + 2;
  AddNode<Shape>(mSource, NodeTree::kRootId, "Second");
  auto& other = AddNode<Geometry>(mSource, PlateIds::kSets + 1, "Other");
  SourceMesh().AppendVariable(MakeCarrier("own", 50));          // 3
  SourceMesh().AppendVariable(MakeLinked("near", {kMesh, 3}));  // 4
  SourceMesh().AppendVariable(MakeLinked("back", {kOther, 0}));
  SourceMesh().AppendVariable(MakeLinked("over", {kMesh, 7}));
  SourceMesh().AppendVariable(MakeLinked("far", {kOther, 1}));
  SourceMesh().AppendVariable(MakeLinked("lost", {kMesh, 99}));
  SourceMesh().AppendVariable(MakeLinked("lost", {kOther, 99}));
  other.AppendVariable(MakeLinked("to mesh", {kMesh, 4}));
  other.AppendVariable(MakeCarrier("far", 60));
  other.AppendVariable(MakeLinked("to far", {kMesh, 6}));
  // The link targets of the source tree are other results in this tree.
  auto& stranger = AddNode<Geometry>(mTree, NodeTree::kRootId, "Stranger");
  for (std::uint32_t i = 0; i != 100; ++i) stranger.AppendVariable(MakeCarrier("stranger", i));
  mTree.AddShape(mSource, PlateIds::kShape, "Cuts");
  mTree.AddShape(mSource, PlateIds::kSets + 1, "Cuts");
  const auto& mesh = AsGeometry(mTree.GetNodes().GetReqNode(kNewGeometry + 1))->GetVariables();
  const auto& second = AsGeometry(mTree.GetNodes().GetReqNode(kNewGeometry + 3))->GetVariables();
  EXPECT_THAT(VariableTexts(*AsGeometry(mTree.GetNodes().GetReqNode(kNewGeometry + 1))),
              ElementsAre("Coordinates", "Connectivity", "Stress", "own", "near -> 7,3", "back",
                          "over -> 7,7", "far", "lost -> 4,99", "lost -> 7,99"));
  EXPECT_EQ(DescribeValues(mesh[5]), DescribeValues(MakeCarrier("", 50)));
  EXPECT_EQ(DescribeValues(mesh[7]), DescribeValues(MakeCarrier("", 60)));
  EXPECT_EQ(DescribeValues(second[0]), DescribeValues(MakeCarrier("", 50)));
  EXPECT_EQ(DescribeValues(second[2]), DescribeValues(MakeCarrier("", 60)));
  EXPECT_FALSE(mesh[8].mLink.HasTarget() || mesh[9].mLink.HasTarget());
}

TEST_F(AddShape, ChangesNothingIfItFails) {
  AddNode<Shape>(mSource, NodeTree::kRootId, "Childless");
  AddNode<Group>(mSource, PlateIds::kSets + 1, "Group");
  ExpectRefusal(ErrorType::ElementNotFound, "", PlateIds::kShape, "cuts");
  ExpectRefusal(ErrorType::ElementNotFound, "", 99);
  ExpectRefusal(ErrorType::MismatchError, "Node 2 is not a shape", PlateIds::kGroup);
  ExpectRefusal(ErrorType::MismatchError, "Node 7 is not a geometry", PlateIds::kSets + 1);
  NodeTree::Node last;
  last.mId = 0xFFFFFFFD;
  mTree.GetNodes().PutNode(std::move(last));
  ExpectRefusal(ErrorType::ModelError, "no ids left", PlateIds::kShape);
}

}  // namespace
}  // namespace QovRyx
