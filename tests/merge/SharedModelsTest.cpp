#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "Qov/Ryx/FileArrangement.h"
#include "Qov/Ryx/RyxMerge.h"
#include "support/ModelCompare.h"
#include "support/ScopedEnvironment.h"
#include "support/SharedModels.h"
#include "support/TempDir.h"

// Models that other programs wrote, merged in every mode. What must come out is worked out here
// from the inputs, by other means than the merge's own.

namespace Qov::Test {
namespace {

using namespace QovRyx;
using Files = std::vector<std::string>;

/// What is left of a path when ".ryx" and the digits before it are cut off.
std::string SeriesOf(const std::string& path) {
  std::string stem = path.substr(0, path.size() - 4);
  if (stem.find("_run") == std::string::npos && stem.find("/run") == std::string::npos) return path;
  while (std::isdigit(static_cast<unsigned char>(stem.back())) != 0) stem.pop_back();
  return stem;
}

/// Files of one run together, every other file by itself.
std::vector<Files> FindSeries() {
  std::map<std::string, Files> series;
  std::error_code ignored;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(SharedModelsDir(), ignored)) {
    if (entry.path().extension() == ".ryx") {
      series[SeriesOf(entry.path().string())].push_back(entry.path().string());
    }
  }
  std::vector<Files> found;
  for (auto& [stem, files] : series) {
    std::sort(files.begin(), files.end());
    if (files.size() == 1) files.push_back(files.front());  // a model fits onto itself
    found.push_back(files);
  }
  return found;
}

std::unique_ptr<Tree> Load(const std::string& path) {
  auto tree = std::make_unique<Tree>(false);
  LoadTree(*tree, path);
  return tree;
}

std::string DescribeContent(const Node* node) {
  std::ostringstream out;
  if (node == nullptr) return "nothing";
  out << node->GetType() << " " << node->GetName();
  DescribePayload(out, *node);
  return out.str();
}

/// Takes back the shift of a merged model's ids.
NodeTree::Node Unshifted(const NodeTree::Node& entry, std::uint32_t base) {
  NodeTree::Node links;
  const auto unshift = [base](std::uint32_t id) { return id > base ? id - base : 0; };
  links.mId = unshift(entry.mId);
  links.mParent = unshift(entry.mParent);
  links.mPreviousSibling = unshift(entry.mPreviousSibling);
  links.mNextSibling = unshift(entry.mNextSibling);
  links.mFirstChild = unshift(entry.mFirstChild);
  links.mLastChild = unshift(entry.mLastChild);
  if (Geometry* geometry = AsGeometry(entry)) {
    for (std::size_t i = 0; i < geometry->GetVariables().size(); ++i) {
      if (geometry->GetVariables()[i].mLinked) geometry->EditVariable(i).mLink.mNode -= base;
    }
  }
  return links;
}

void ExpectDatasets(const Files& files, const std::string& output) {
  const auto merged = Load(output);
  const auto& root = merged->GetNodes().GetReqNode(1);
  EXPECT_EQ(DescribeContent(root.mData.get()), "Group Merge 0 0 0 0 0 1 0 1 1 1 takes models 1\n");
  std::uint32_t base = 1;
  for (const std::string& file : files) {
    const auto input = Load(file);
    for (const auto& [id, entry] : input->GetNodes()) {
      const auto& found = merged->GetNodes().GetReqNode(id + base);
      const NodeTree::Node links = Unshifted(found, base);
      EXPECT_EQ(links.mFirstChild, entry.mFirstChild);
      EXPECT_EQ(links.mLastChild, entry.mLastChild);
      EXPECT_EQ(id == 1 ? 0 : links.mParent, entry.mParent);
      EXPECT_EQ(id == 1 ? 0 : links.mPreviousSibling, entry.mPreviousSibling);
      EXPECT_EQ(id == 1 ? 0 : links.mNextSibling, entry.mNextSibling);
      ASSERT_EQ(DescribeContent(found.mData.get()), DescribeContent(entry.mData.get())) << file;
    }
    base += input->GetNodes().GetNextId() - 1;
  }
  EXPECT_EQ(merged->GetNodes().GetNextId(), base + 1);
}

/// The text behind the last separator; empty if there is none.
std::string Instance(const std::string& name) {
  const auto at = name.rfind('\x1E');
  return at == std::string::npos ? "" : name.substr(at + 1);
}
std::string Base(const std::string& name) { return name.substr(0, name.rfind('\x1E')); }

enum class Mode { Plain, Suffix, Auto };

/// The names that a geometry's results bear in the merged model; "" for one that is dropped.
std::vector<std::string> MergedNames(const Geometry& geometry, std::size_t k, Mode mode) {
  const std::string suffix = mode == Mode::Plain ? "" : "F" + std::to_string(k);
  std::set<std::string> instances;
  for (const auto& variable : geometry.GetVariables()) {
    if (!Instance(variable.mName).empty()) instances.insert(Instance(variable.mName));
  }
  std::vector<std::string> names;
  for (const auto& variable : geometry.GetVariables()) {
    const std::string instance = Instance(variable.mName);
    std::string name = Base(variable.mName) + '\x1E' + suffix + instance;
    if (mode == Mode::Plain && instance.empty() && !instances.empty()) name += *instances.begin();
    if (mode == Mode::Auto && instance.empty()) name = k == 1 ? variable.mName : "";
    names.push_back(name);
  }
  return names;
}

std::string DescribeAs(const std::string& name, Geometry::VarStruct variable) {
  variable.mName = name;
  variable.mLinked = false;  // its values are compared, wherever they are kept
  std::ostringstream out;
  Describe(out, variable);
  return out.str();
}

void ExpectInstances(const Files& files, const std::string& output, Mode mode) {
  const auto merged = Load(output);
  std::map<std::uint32_t, std::multiset<std::string>> found;
  ForEachGeometry(merged->GetNodes(), [&](std::uint32_t id, Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      found[id].insert(DescribeAs(variable.mName, variable));
    }
  });
  for (std::size_t k = 1; k <= files.size(); ++k) {
    const auto input = Load(files[k - 1]);
    ForEachGeometry(input->GetNodes(), [&](std::uint32_t id, Geometry& geometry) {
      const auto names = MergedNames(geometry, k, mode);
      for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty()) continue;
        const auto wanted = DescribeAs(names[i], geometry.GetVariables()[i]);
        const auto at = found[id].find(wanted);
        ASSERT_NE(at, found[id].end()) << files[k - 1] << wanted;
        found[id].erase(at);
      }
    });
  }
  // What is left shares its values with others.
  ForEachGeometry(merged->GetNodes(), [&](std::uint32_t id, Geometry& geometry) {
    for (const auto& variable : geometry.GetVariables()) {
      const auto at = found[id].find(DescribeAs(variable.mName, variable));
      if (variable.mLinked && at != found[id].end()) found[id].erase(at);
    }
    EXPECT_EQ(found[id].size(), 0U) << (found[id].empty() ? "" : *found[id].begin());
  });
}

class SharedModelsTest : public testing::Test {
 protected:
  void SetUp() override {
    if (FindSharedModel("plate.ryx").empty()) GTEST_SKIP() << "no sample models";
  }
  TempDir mDir;
};

TEST_F(SharedModelsTest, AsDatasets) {
  for (const Files& files : FindSeries()) {
    SCOPED_TRACE(files.front());
    ASSERT_EQ(merge_as_datasets(files, mDir / "out.ryx"), 0);
    ExpectDatasets(files, mDir / "out.ryx");
  }
}

TEST_F(SharedModelsTest, AsInstances) {
  for (const Files& files : FindSeries()) {
    SCOPED_TRACE(files.front());
    ASSERT_EQ(merge_as_instances(files, mDir / "plain.ryx", true, false, false), 0);
    ExpectInstances(files, mDir / "plain.ryx", Mode::Plain);
    ASSERT_EQ(merge_as_instances(files, mDir / "suffix.ryx", false, true, false), 0);
    ExpectInstances(files, mDir / "suffix.ryx", Mode::Suffix);
    ASSERT_EQ(merge_as_instances(files, mDir / "auto.ryx", true, true, true), 0);
    ExpectInstances(files, mDir / "auto.ryx", Mode::Auto);
  }
}

TEST_F(SharedModelsTest, OldAndNewVersionsOfOneModelHoldTheSame) {
  const auto arraysOf = [](const std::string& name) {
    std::string text;
    ForEachGeometry(Load(FindSharedModel(name))->GetNodes(),
                    [&](std::uint32_t, Geometry& geometry) {
                      for (const auto& variable : geometry.GetVariables())
                        text += DescribeAs("", variable);
                    });
    return text;
  };
  for (const char* name : {"plate_small_blocks.ryx", "plate_version_0.5.ryx",
                           "plate_version_0.6.ryx", "plate_version_1.0.ryx"}) {
    EXPECT_EQ(arraysOf(name), arraysOf("plate.ryx")) << name;
  }
}

TEST_F(SharedModelsTest, ComeOutTheSameWhateverTheBlockSize) {
  const Files files = {FindSharedModel("assembly.ryx"), FindSharedModel("plate_small_blocks.ryx"),
                       FindSharedModel("plate_version_0.5.ryx")};
  ASSERT_EQ(merge_as_datasets(files, mDir / "usual.ryx"), 0);
  for (const char* size : {"100", "5000", "1000000"}) {
    const ScopedEnvironment limit("TELMORAX_MAX_RYX_BLOCK_SIZE", size);
    ASSERT_EQ(merge_as_datasets(files, mDir / size), 0);
    EXPECT_EQ(DescribeModel(mDir / size), DescribeModel(mDir / "usual.ryx")) << size;
  }
}

TEST_F(SharedModelsTest, AMergedModelCanBeMergedAgain) {
  const Files plates = {FindSharedModel("plate.ryx"), FindSharedModel("plate_more_load.ryx")};
  ASSERT_EQ(merge_as_datasets(plates, mDir / "two.ryx"), 0);
  const Files datasets = {mDir / "two.ryx", FindSharedModel("assembly.ryx")};
  ASSERT_EQ(merge_as_datasets(datasets, mDir / "three.ryx"), 0);
  ExpectDatasets(datasets, mDir / "three.ryx");

  ASSERT_EQ(merge_as_instances(plates, mDir / "both.ryx", false, true, false), 0);
  const Files instances = {mDir / "both.ryx", FindSharedModel("plate_no_cases.ryx")};
  for (const Mode mode : {Mode::Plain, Mode::Suffix, Mode::Auto}) {
    ASSERT_EQ(merge_as_instances(instances, mDir / "more.ryx", true, mode != Mode::Plain,
                                 mode == Mode::Auto),
              0);
    ExpectInstances(instances, mDir / "more.ryx", mode);
  }
}

TEST_F(SharedModelsTest, ViewPointsGoThroughBitForBit) {
  const Files views = {FindSharedModel("plate.vpt"), FindSharedModel("oldest.vpt"),
                       FindSharedModel("more.vpt")};
  ASSERT_EQ(merge_viewpoints_with_ryx(FindSharedModel("plate.ryx"), views, mDir / "with_views.ryx"),
            0);
  const auto merged = Load(mDir / "with_views.ryx");
  Tree expected(false);
  for (const std::size_t i : {0U, 2U}) {
    QovJbf::JbFile file;
    file.OpenFile(views[i], "rb");
    expected.LoadViewPathVec(file);
  }
  const auto model = Load(FindSharedModel("plate.ryx"));
  EXPECT_EQ(DescribeModel(*merged), DescribeModel(*model) + DescribeModel(expected).substr(
                                                                DescribeModel(Tree(false)).size()));
}

}  // namespace
}  // namespace Qov::Test
