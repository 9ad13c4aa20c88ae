#include <cmath>
#include <filesystem>

#include "PageReader.h"
#include "ryxFixture.h"
#include "support/Files.h"

namespace Qov::Test {
namespace {

using namespace QovRyx;
using Tools::Json;
using Integers = std::vector<std::uint32_t>;

/// Ends an element, a comment and a string, if it is not escaped.
constexpr const char* kHostile =
    "</script><script>alert(1)</script>--><!--\"'&lt;\xFF\x01\xE2\x80\xA8";

Geometry& AddMesh(Tree& tree, const std::string& name, const std::vector<float>& points,
                  const Integers& connectivity, const Integers& lengths) {
  auto& geometry = AddNode<Geometry>(tree, NodeTree::kRootId, name);
  geometry.AppendVariable(MakeVariable("Coordinates", 0, NumericArray::Of(points, 3)));
  if (lengths.empty()) return geometry;
  geometry.AppendVariable(MakeVariable("Connectivity", 4, NumericArray::Of(connectivity)));
  geometry.AppendVariable(MakeVariable("Polylength", 5, NumericArray::Of(lengths)));
  return geometry;
}

void AddResult(Geometry& geometry, const std::string& name, const std::vector<float>& values,
               std::uint8_t width = 1) {
  geometry.AppendVariable(MakeVariable(name, 12, NumericArray::Of(values, width)));
}

/// Two triangles and a rope, between points that no cell uses.
const std::vector<float> kPoints = {9,    9, 9, 0, 0, 0, 1, 0, 0, 1, 1,
                                    0.5F, 0, 1, 0, 9, 9, 9, 0, 0, 1};
const Integers kConnectivity = {3, 2, 1, 1, 3, 4, 1, 6};
const Integers kLengths = {3, 3, 2};

void BuildSheet(Tree& tree) {
  auto& sheet = AddMesh(tree, "Sheet", kPoints, kConnectivity, kLengths);
  sheet.AppendVariable(MakeVariable("Node Ids", 6, NumericArray::Of(Count(7, 101))));
  AddResult(sheet, "Heat|T=1", {0, 1, 2, 3, 4, 5, kNaN});
  AddResult(sheet, "Heat|T=2", {0, 0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F});
  AddResult(sheet, "Shift|T=2", Ramp(21, -3), 3);
  AddResult(sheet, "Mass", {7, 8, 9});
  AddResult(sheet, "Odd", {1, 2});
}

class RyxHtml : public RyxProgram {
 protected:
  RyxHtml() {
    SaveModel("sheet.ryx", BuildSheet);
    SaveModel("hotter.ryx", [](Tree& tree) {
      BuildSheet(tree);
      tree.GetNodes();
      auto& sheet = Content<Geometry>(tree, tree.GetNodes().GetCurrentId());
      sheet.EditVariable(5).mValues =
          NumericArray::Of(std::vector<float>{0, 0.1F, 2.2F, 0.3F, 0.4F, 0.5F, -0.4F});
    });
    SaveModel("other.ryx", [](Tree& tree) {
      AddResult(AddMesh(tree, "Sheet", kPoints, {3, 2, 1}, {3}), "Heat|T=1", Ramp(7, 0));
    });
    SaveModel("empty.ryx", [](Tree&) {});
    SaveModel("odd.ryx", [](Tree& tree) {
      AddMesh(tree, "NaN", {0, 0, 0, 1, 0, 0, 1, kNaN, 0}, {0, 1, 2}, {3});
      AddMesh(tree, "Flat", std::vector<float>(9), {0, 1, 2}, {3});
      AddMesh(tree, "Huge", {-1e30F, 0, 0, 1e30F, 0, 0, 0, 3e38F, -3e38F}, {0, 1, 2}, {3});
      AddMesh(tree, "Point", {1, 2, 3}, {}, {});
    });
  }

  Json RunHtml(std::vector<std::string> arguments, int status = 0) {
    arguments.insert(arguments.begin(), "html");
    arguments.insert(arguments.end(), {"-o", mDir / "page.html", "--overwrite", "--json"});
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.mStatus, status) << outcome.mErr;
    return ParseJson(outcome, "html");
  }
  PageReader ReadPage() const { return PageReader(mDir / "page.html"); }
};

TEST_F(RyxHtml, SaysWhatItWritesAndRefusesBadInput) { ExpectTranscript("html.txt"); }

TEST_F(RyxHtml, PageHoldsTheSurfaceAndAllValues) {
  RunHtml({mDir / "sheet.ryx"});
  const PageReader page = ReadPage();
  const Json& manifest = page.GetManifest();
  ASSERT_EQ(manifest["parts"].size(), 1U);
  const Json& mesh = manifest["parts"][0]["meshes"][0];
  EXPECT_TRUE(mesh["steps"].is_null());
  const std::vector<double> positions = page.Decode(mesh["pointPositions"]);
  EXPECT_THAT(positions, testing::ElementsAre(3, 2, 1, 4, 6));
  EXPECT_THAT(page.Decode(mesh["pointIds"]), testing::ElementsAre(104, 103, 102, 105, 107));
  EXPECT_THAT(page.Decode(mesh["triangles"]), testing::ElementsAre(0, 1, 2, 2, 0, 3));
  EXPECT_THAT(page.Decode(mesh["lines"]), testing::ElementsAre(2, 4));
  EXPECT_THAT(page.Decode(mesh["triangleCells"]), testing::ElementsAre(0, 1));
  EXPECT_THAT(page.Decode(mesh["lineCells"]), testing::ElementsAre(2));
  const auto points = page.Points(mesh);
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_NEAR(points[i][k], kPoints[static_cast<std::size_t>(positions[i]) * 3 + k],
                  1.0 / 65535);
    }
  }
  ASSERT_EQ(manifest["results"].size(), 3U);
  const Json& heat = manifest["results"][0]["fields"];
  ASSERT_EQ(heat.size(), 2U);
  EXPECT_THAT(heat[0]["ranges"][0], testing::ElementsAre(1, 4));
  EXPECT_EQ(heat[1]["step"], 1);
  const auto exact = page.Decode(heat[0]["exact"]);
  EXPECT_THAT(std::vector(exact.begin(), exact.end() - 1), testing::ElementsAre(3, 2, 1, 4));
  EXPECT_TRUE(std::isnan(exact.back()));
  const auto rough = page.Values(heat[0])[0];
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(rough[i], exact[i], 3.0 / 65534);
  EXPECT_TRUE(std::isnan(rough.back()));
  const Json& shift = manifest["results"][1]["fields"][0];
  EXPECT_NEAR(shift["magnitudeRange"][1], std::sqrt(6.0 * 6 + 6.5 * 6.5 + 7 * 7), 1e-5);
  EXPECT_THAT(page.Decode(shift["exact"], 3),
              testing::ElementsAre(1.5, 0, -1.5, 3, 6, 2, 0.5, -1, 3.5, 6.5, 2.5, 1, -0.5, 4, 7));
  EXPECT_THAT(page.Decode(manifest["results"][2]["fields"][0]["exact"]),
              testing::ElementsAre(7, 8, 9));
}

TEST_F(RyxHtml, DifferenceIsThatOfTheFile) {
  const Json document = RunHtml({"--diff", mDir / "sheet.ryx", mDir / "hotter.ryx"});
  const PageReader page = ReadPage();
  const Json& heat = page.GetManifest()["results"][0]["fields"][1];
  EXPECT_THAT(page.Decode(heat["exact"]), testing::ElementsAre(0, 2, 0, 0, -1));
  const Json& greatest = page.GetManifest()["diff"]["greatest"];
  ASSERT_EQ(greatest.size(), 2U);
  EXPECT_EQ(greatest[0]["index"], 1);
  EXPECT_EQ(greatest[1]["value"], -1);
  EXPECT_EQ(document["differences"][0]["number"], 103);
}

TEST_F(RyxHtml, MeshesOfStepsAreShared) {
  SaveModel("steps.ryx", [](Tree& tree) {
    auto& body = AddMesh(tree, "Body", kPoints, kConnectivity, kLengths);
    AddResult(body, "Heat|a", Ramp(7, 0));
    AddResult(body, "Heat|b", Ramp(6, 0));
    AddResult(body, "Heat|c", Ramp(7, 0));
    body.AppendVariable(MakeVariable("Coordinates|b", 0, NumericArray::Of(Ramp(18, 0), 3)));
    body.AppendVariable(MakeVariable("Connectivity|b", 4, NumericArray::Of(Integers{5, 4, 0})));
    body.AppendVariable(MakeVariable("Polylength|b", 5, NumericArray::Of(Integers{3})));
  });
  RunHtml({mDir / "steps.ryx", "--step", "c"});
  const Json manifest = ReadPage().GetManifest();
  const Json& meshes = manifest["parts"][0]["meshes"];
  ASSERT_EQ(meshes.size(), 2U);
  EXPECT_EQ(meshes[0]["steps"], Json({0, 2}));
  EXPECT_EQ(meshes[1]["steps"], Json({1}));
  const Json& fields = manifest["results"][0]["fields"];
  EXPECT_EQ(fields[1]["mesh"], 1);
  EXPECT_EQ(fields[0]["values"], fields[2]["values"]);  // equal arrays are stored once
  EXPECT_EQ(manifest["show"]["step"], 2);
}

TEST_F(RyxHtml, HostileNamesStayTexts) {
  SaveModel("hostile.ryx", [](Tree& tree) {
    AddNode<Group>(tree, NodeTree::kRootId, kHostile).mAttributes[kHostile] = std::string(kHostile);
    auto& geometry = AddMesh(tree, kHostile, kPoints, kConnectivity, kLengths);
    AddResult(geometry, kHostile, Ramp(7, 0));
    geometry.EditVariable(3).mAttributes["unit"] = std::string(kHostile);
  });
  std::filesystem::rename(mDir / "hostile.ryx", mDir / "<script>&.ryx");
  RunHtml({mDir / "<script>&.ryx"});
  const std::string page = ReadFile(mDir / "page.html");
  EXPECT_EQ(page.find("alert(1)</script>"), page.npos);
  EXPECT_EQ(page.find("<script>&"), page.npos);
  EXPECT_THAT(page, testing::HasSubstr("&lt;script>&amp;.ryx"));
  const Json manifest = ReadPage().GetManifest();
  EXPECT_THAT(manifest["results"][0]["name"].get<std::string>(), testing::HasSubstr("</script>"));
  EXPECT_THAT(manifest["results"][0]["unit"].get<std::string>(), testing::HasSubstr("\\xFF\\x01"));
}

TEST_F(RyxHtml, LimitHoldsAndTheRestIsTold) {
  SaveModel("large.ryx", [](Tree& tree) {
    for (const char* name : {"A", "B"}) {
      std::vector<float> points;
      Integers connectivity;
      for (std::uint32_t i = 0; i < 6000; ++i) {
        points.push_back(std::sin(static_cast<float>(i * i)));
        connectivity.push_back(i * 7919 % 2000);
      }
      auto& geometry = AddMesh(tree, name, points, connectivity, Integers(2000, 3));
      for (const char* result : {"R1", "R2", "R3"}) {
        AddResult(geometry, result, std::vector(points.begin(), points.begin() + 2000));
      }
    }
  });
  const std::string model = mDir / "large.ryx";
  const std::uint64_t whole = RunHtml({model})["bytes"];
  std::size_t numParts = 2;
  for (std::uint64_t limit = whole; limit > whole / 40; limit -= whole / 40) {
    const Outcome outcome = Run({"html", model, "-o", mDir / "page.html", "--overwrite", "--json",
                                 "--limit", std::to_string(limit), "--result", "R2"});
    if (outcome.mStatus == 2) break;
    const Json document = ParseJson(outcome, "html");
    EXPECT_LE(std::filesystem::file_size(mDir / "page.html"), limit);
    EXPECT_EQ(document["complete"], outcome.mStatus == 0);
    const Json manifest = ReadPage().GetManifest();
    EXPECT_EQ(manifest["notes"].empty(), limit == whole && outcome.mStatus == 0);
    const Json& results = manifest["results"];  // the one that is shown first goes last
    EXPECT_TRUE(results[0]["fields"].empty() || results[1]["fields"].size() == 2);
    EXPECT_TRUE(results[2]["fields"].empty() || results[0]["fields"].size() == 2);
    numParts = manifest["parts"].size();
  }
  EXPECT_LT(numParts, 2U);  // geometries are left out last
}

TEST_F(RyxHtml, ReportOfAMergeHasItsLedgerAndFindings) {
  ASSERT_EQ(RunShell("ryx merge --as datasets -o out.ryx sheet.ryx odd.ryx").mStatus, 0);
  EXPECT_EQ(RunShell("ryx verify out.ryx sheet.ryx odd.ryx --html page.html >text").mStatus, 0);
  Json report = ReadPage().GetManifest()["report"];
  EXPECT_EQ(report["isOk"], true);
  EXPECT_EQ(report["pictures"].size(), 5U);
  EXPECT_THAT(report["pictures"][0]["png"].get<std::string>(), testing::StartsWith("iVBORw0KGgo"));
  EXPECT_THAT(report["counts"], testing::Contains(Json({"geometries", 5})));
  EXPECT_EQ(ReadPage().GetManifest()["tables"][0]["title"], "Output");
  EXPECT_EQ(RunShell("ryx verify out.ryx hotter.ryx odd.ryx --html page.html").mStatus, 2);
  EXPECT_EQ(RunShell("ryx verify out.ryx hotter.ryx odd.ryx --html page.html --overwrite").mStatus,
            1);
  report = ReadPage().GetManifest()["report"];
  EXPECT_EQ(report["isOk"], false);
  EXPECT_EQ(report["lines"][0][0], "error");
}

}  // namespace
}  // namespace Qov::Test
