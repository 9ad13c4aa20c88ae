#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace Qov::Test {

/// Fills a model with random nodes, arrays, links and attributes. Equal seeds give equal models.
class RandomModel {
 public:
  explicit RandomModel(std::uint32_t seed) : mRandom(seed) {}

  void Fill(QovRyx::Tree& tree) {
    QovRyx::NodeTree& nodes = tree.GetNodes();
    for (std::uint32_t left = Below(20); left > 0; --left) {
      nodes.SetCurrentId(1 + Below(nodes.GetNextId() - 1));
      nodes.AddChild(MakeNode(nodes.GetNextId()));
    }
    if (Below(2) == 0) return;
    tree.SetHasViewPoints(true);
    tree.GetViewPoint().mName = MakeText();
    tree.GetViewPoint().mMatrix[Below(16)] = 0x7FA00001;  // a signalling NaN
    tree.GetViewPointPaths().resize(Below(3));
    for (QovRyx::ViewPointPath& path : tree.GetViewPointPaths()) {
      path.mName = MakeText();
      path.mViewPoints.resize(Below(3));
    }
    tree.GetSequencerData().mName = MakeText();
  }

  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(mRandom() % limit); }

  /// Returns random bytes without 0, because a zero byte ends a text.
  std::string MakeText() {
    std::string text(Below(12), '\0');
    for (char& c : text) c = static_cast<char>(1 + Below(255));
    return text;
  }

 private:
  std::unique_ptr<QovRyx::Node> MakeNode(std::uint32_t numIds) {
    switch (Below(6)) {
      case 0: {
        auto group = std::make_unique<QovRyx::Group>(MakeText());
        group->mTranslation[1] = static_cast<float>(Below(100));
        group->mAttributes = MakeAttributes();
        group->mTakesModels = static_cast<std::uint8_t>(Below(256));
        return group;
      }
      case 1: {
        auto shape = std::make_unique<QovRyx::Shape>(MakeText());
        shape->mMaterial.mValues.mColour1.mG = static_cast<float>(Below(100));
        return shape;
      }
      case 2:
        return MakeNodeSets();
      case 3:
        return std::make_unique<QovRyx::FutureNode>(MakeText());
      default:
        return MakeGeometry(numIds);
    }
  }

  std::unique_ptr<QovRyx::Node> MakeNodeSets() {
    auto sets = std::make_unique<QovRyx::NodeSets>(MakeText());
    std::vector<QovRyx::NodeSets::Set> list(Below(4));
    for (auto& set : list) set = {MakeText(), MakeNumbers(Below(10))};
    sets->SetSets(std::move(list));
    return sets;
  }

  std::unique_ptr<QovRyx::Node> MakeGeometry(std::uint32_t numIds) {
    auto geometry = std::make_unique<QovRyx::Geometry>(MakeText());
    for (std::uint32_t left = Below(12); left > 0; --left) {
      geometry->AppendVariable(MakeVariable(numIds));
    }
    return geometry;
  }

  QovRyx::Geometry::VarStruct MakeVariable(std::uint32_t numIds) {
    QovRyx::Geometry::VarStruct variable;
    variable.mName = MakeText();
    variable.mKind = Below(5) == 0 ? QovRyx::Geometry::kNoKind : Below(30);
    if (variable.mKind != QovRyx::Geometry::kNoKind) variable.mKindHighByte = Below(7);
    variable.mFlag = static_cast<std::uint8_t>(Below(256));
    variable.mAttributes = MakeAttributes();
    if (Below(4) == 0) {  // may be a link to itself or a dangling link
      variable.mLink = QovRyx::ResultLink({Below(numIds + 2), Below(12)});
      return variable;
    }
    variable.mFlag1 = static_cast<std::uint8_t>(Below(256));
    variable.mValue2 = Below(1000);
    variable.mValues = QovRyx::NumericArray::Of(MakeNumbers(Below(3) == 0 ? 0 : Below(200)),
                                                static_cast<std::uint8_t>(Below(8)));
    return variable;
  }

  std::vector<std::uint32_t> MakeNumbers(std::uint32_t count) {
    std::vector<std::uint32_t> numbers(count);
    for (std::uint32_t& number : numbers) number = static_cast<std::uint32_t>(mRandom());
    return numbers;
  }

  QovUtil::AttributeMap MakeAttributes() {
    QovUtil::AttributeMap attributes;
    for (std::uint32_t left = Below(4); left > 0; --left) {
      const std::array<QovUtil::AttributeValue, 4> values = {Below(100), 0.5F, MakeText(), 0.1};
      attributes[MakeText()] = values[Below(4)];
    }
    return attributes;
  }

  std::mt19937 mRandom;
};

}  // namespace Qov::Test
