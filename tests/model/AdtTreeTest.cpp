#include "Qov/Adt/AdtTree.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

#include "Qov/Ryx/Group.h"
#include "Qov/Ryx/Node.h"
#include "support/Errors.h"

namespace {

using NodeTree = QovAdt::Tree<QovRyx::NodePointer>;
using Links = std::array<std::uint32_t, 6>;

Links LinksOf(const NodeTree& tree, std::uint32_t id) {
  const auto& node = tree.GetReqNode(id);
  return {node.mId,          node.mParent,     node.mPreviousSibling,
          node.mNextSibling, node.mFirstChild, node.mLastChild};
}

template <class Call>
void ExpectNotFound(Call call) {
  Qov::Test::ExpectError(Qov::Test::ErrorType::ElementNotFound, "Element Not Found", call);
}

TEST(AdtTree, LinksChildrenInTheOrderOfAdding) {
  NodeTree tree;
  EXPECT_EQ(tree.GetSize(), 1U);
  EXPECT_EQ(tree.GetCurrentNode().mData, nullptr);
  EXPECT_EQ(LinksOf(tree, 1), (Links{1, 0, 0, 0, 0, 0}));
  for (int i = 0; i < 3; ++i) {
    tree.SetCurrentId(1);
    tree.AddChild(nullptr);
  }
  EXPECT_EQ(tree.GetCurrentId(), 4U);
  EXPECT_EQ(LinksOf(tree, 1), (Links{1, 0, 0, 0, 2, 4}));
  EXPECT_EQ(LinksOf(tree, 2), (Links{2, 1, 0, 3, 0, 0}));
  EXPECT_EQ(LinksOf(tree, 3), (Links{3, 1, 2, 4, 0, 0}));
  EXPECT_EQ(LinksOf(tree, 4), (Links{4, 1, 3, 0, 0, 0}));
}

TEST(AdtTree, RefusesUnknownIds) {
  NodeTree tree;
  tree.PutNode({.mId = 7, .mParent = 1, .mData = nullptr});
  EXPECT_EQ(tree.GetNextId(), 8U);
  ExpectNotFound([&] { tree.SetCurrentId(8); });
  ExpectNotFound([&] { tree.GetReqNode(5); });
  tree.SetCurrentId(5);  // less than the next id, but without an entry
  ExpectNotFound([&] { tree.GetCurrentNode(); });
  ExpectNotFound([&] { tree.AddChild(nullptr); });
  tree.SetCurrentId(7);
  tree.GetCurrentNode().mLastChild = 77;
  ExpectNotFound([&] { tree.AddChild(nullptr); });
  EXPECT_EQ(tree.GetSize(), 2U);
}

TEST(AdtTree, RemovesSubtrees) {
  // 1 has the children 2, 3, 4, 5; 3 has the children 6 and 7.
  const auto make = [] {
    NodeTree tree;
    for (const std::uint32_t parent : {1U, 1U, 1U, 1U, 3U, 3U}) {
      tree.SetCurrentId(parent);
      tree.AddChild(nullptr);
    }
    return tree;
  };
  NodeTree tree = make();
  EXPECT_EQ(tree.GetSubtrees({3, 5, 6}), (std::set<std::uint32_t>{3, 5, 6, 7}));
  tree.RemoveNode(3);  // between others; contains the current entry
  EXPECT_EQ(tree.GetSize(), 4U);
  EXPECT_EQ(tree.GetCurrentId(), 1U);
  EXPECT_EQ(LinksOf(tree, 2), (Links{2, 1, 0, 4, 0, 0}));
  EXPECT_EQ(LinksOf(tree, 4), (Links{4, 1, 2, 5, 0, 0}));
  tree.RemoveNode(2);
  tree.RemoveNode(5);
  EXPECT_EQ(LinksOf(tree, 1), (Links{1, 0, 0, 0, 4, 4}));
  tree.RemoveNode(4);
  EXPECT_EQ(LinksOf(tree, 1), (Links{1, 0, 0, 0, 0, 0}));
  ExpectNotFound([&] { tree.RemoveNode(4); });
  Qov::Test::ExpectError(Qov::Test::ErrorType::InvalidMethod, "root", [&] { tree.RemoveNode(1); });
  EXPECT_EQ(tree.AddChild(nullptr).mId, 8U);  // ids are not reused

  NodeTree damaged = make();  // a cycle through the root and an entry of another parent
  damaged.GetReqNode(7).mNextSibling = 6;
  damaged.GetReqNode(6).mFirstChild = 1;
  damaged.GetReqNode(1).mParent = 6;
  damaged.GetReqNode(7).mFirstChild = 5;
  damaged.RemoveNode(3);
  EXPECT_EQ(damaged.GetSize(), 4U);
  EXPECT_NE(damaged.FindNode(5), nullptr);
}

TEST(AdtTree, FindsTheFirstNodeOfNameTypeAndVersion) {
  NodeTree tree;
  tree.AddChild(std::make_unique<QovRyx::FutureNode>("Cut-Sections"));
  tree.AddChild(std::make_unique<QovRyx::Group>("Cut-Sections"));
  tree.AddChild(std::make_unique<QovRyx::Group>("Cut-Sections"));
  const auto moveTo = [&tree](const char* group) {
    tree.MoveToNode(std::make_unique<QovRyx::Group>(group), QovRyx::NodesWithSameName());
  };
  moveTo("Cut-Sections");
  EXPECT_EQ(tree.GetCurrentId(), 3U);
  ExpectNotFound([&] { moveTo("cut-sections"); });
  EXPECT_EQ(tree.GetCurrentId(), 3U);
}

}  // namespace
