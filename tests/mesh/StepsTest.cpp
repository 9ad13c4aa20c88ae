#include "mesh/Steps.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/ModelBuilder.h"

namespace QovMesh {
namespace {

using Qov::Test::AddNode;
using Qov::Test::MakeVariable;
using QovRyx::Geometry;

TEST(Steps, TimesAreReadFromNames) {
  const auto time = [](const char* name) { return ParseTime(name); };
  EXPECT_EQ(time("T=0.5"), 0.5);
  EXPECT_EQ(time("t = -1e-3"), -1e-3);
  EXPECT_EQ(time("12.5s"), 12.5);
  EXPECT_EQ(time("300 ms"), 0.3);
  EXPECT_EQ(time("step 7"), 7);
  EXPECT_EQ(time("Step_7"), 7);
  EXPECT_EQ(time("TIME:3 s"), 3);
  for (const char* name : {"", "LC1", "7", "t3", "step", "12.5 mm", "time nan", "T=1 of 2"}) {
    EXPECT_EQ(time(name), std::nullopt) << name;
  }
}

std::vector<std::string> TextsOf(const StepTable& table) {
  std::vector<std::string> texts;
  for (const Step& step : table.GetSteps()) {
    texts.push_back(step.mName + (step.mTime ? "@" + std::to_string(*step.mTime) : ""));
  }
  return texts;
}

TEST(Steps, InstancesAreStepsInTheOrderOfTime) {
  QovRyx::Tree tree(false);
  auto& geometry = AddNode<Geometry>(tree, QovRyx::NodeTree::kRootId, "g");
  for (const char* name : {"Stress|T=2", "Stress|T=1", "Load|T=9", "Static", "Connectivity|T=0"}) {
    geometry.AppendVariable(MakeVariable(name, 12, {}));
  }
  geometry.EditVariable(2).mAttributes["time"] = 0.5;
  const StepTable table(tree.GetNodes());
  EXPECT_THAT(TextsOf(table), testing::ElementsAre("T=9@0.500000", "T=1@1.000000", "T=2@2.000000"));
  EXPECT_EQ(table.FindStep(2, geometry.GetVariables()[0]), 2U);
  EXPECT_EQ(table.FindStep(2, geometry.GetVariables()[3]), std::nullopt);
}

TEST(Steps, GroupsGiveTheirTimeToResultsWithoutAnInstance) {
  QovRyx::Tree tree(false);
  for (const float time : {3.0F, 1.0F}) {
    auto& group = AddNode<QovRyx::Group>(tree, QovRyx::NodeTree::kRootId, "run");
    group.mAttributes["time"] = time;
    auto& geometry = AddNode<Geometry>(tree, tree.GetNodes().GetCurrentId(), "g");
    geometry.AppendVariable(MakeVariable("Stress", 12, {}));
  }
  const StepTable table(tree.GetNodes());
  EXPECT_THAT(TextsOf(table), testing::ElementsAre("time 1@1.000000", "time 3@3.000000"));
  const auto& stress = QovRyx::AsGeometry(tree.GetNodes().GetReqNode(3))->GetVariables()[0];
  EXPECT_EQ(table.FindStep(3, stress), 1U);
  EXPECT_EQ(table.FindStep(5, stress), 0U);
}

}  // namespace
}  // namespace QovMesh
