#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "Qov/Ryx/Tree.h"

namespace {

using namespace QovRyx;

const std::string kPath = "micro_tree.ryx";

/// Returns a tree of groups with ten parts each. A part is a shape with an empty geometry.
void BuildTree(Tree& tree, std::int64_t numNodes) {
  NodeTree& nodes = tree.GetNodes();
  const auto add = [&nodes](std::uint32_t parent, std::unique_ptr<Node> node) {
    nodes.SetCurrentId(parent);
    return nodes.AddChild(std::move(node)).mId;
  };
  std::uint32_t group = NodeTree::kRootId;
  for (std::int64_t i = 0; i < numNodes; i += 2) {
    if (i % 20 == 0) group = add(NodeTree::kRootId, std::make_unique<Group>("Group"));
    add(add(group, std::make_unique<Shape>("Part")), std::make_unique<Geometry>("Part"));
  }
}

void Save(Tree& tree) { tree.Save(kPath, true, "", Tree::SupportedFileFormats::Ryx); }

void SaveTree(benchmark::State& state) {
  Tree tree(false);
  BuildTree(tree, state.range(0));
  for (auto _ : state) Save(tree);
  std::remove(kPath.c_str());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void LoadTree(benchmark::State& state) {
  Tree saved(false);
  BuildTree(saved, state.range(0));
  Save(saved);
  for (auto _ : state) {
    Tree tree(false);
    Tree::IdMap idMap;
    tree.Load(kPath, idMap, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
    benchmark::DoNotOptimize(tree);
  }
  std::remove(kPath.c_str());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(SaveTree)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadTree)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
