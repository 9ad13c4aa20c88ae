#include "Qov/Ryx/Tree.h"

#include <cstdlib>

namespace QovRyx {

bool g_b217Ryx = false;

Tree::Tree(bool recordMachine) {
  mCurrentModifier.mRecordMachine = recordMachine;
  // Whatever draws random numbers later draws the same ones in every run.
  std::srand(0);  // NOLINT(cert-msc51-cpp): that is what it is for
  mViewPoint.mName = "no name";
}

Tree::Tree(const std::string& application, const std::string& applicationVersion,
           bool recordMachine)
    : Tree(recordMachine) {
  mCurrentModifier.mApplication = application;
  mCurrentModifier.mApplicationVersion = applicationVersion;
}

Tree::~Tree() = default;

const Geometry::VarStruct* FindVariable(const NodeTree& nodes, const Geometry::Link& link) {
  const NodeTree::Node* entry = nodes.FindNode(link.mNode);
  const Geometry* geometry = entry == nullptr ? nullptr : AsGeometry(*entry);
  if (geometry == nullptr || link.mVariable >= geometry->GetVariables().size()) return nullptr;
  return &geometry->GetVariables()[link.mVariable];
}

void UnreadContent::Add(const std::string& description) {
  constexpr std::size_t kMostExamples = 8;
  if (++mCount <= kMostExamples) mExamples.push_back(description);
}

}  // namespace QovRyx
