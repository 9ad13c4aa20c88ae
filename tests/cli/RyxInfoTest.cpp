#include "ryxFixture.h"
#include "support/Streams.h"

namespace Qov::Test {
namespace {

using QovRyx::Geometry;

class RyxInfo : public RyxProgram {
 protected:
  /// Writes a file with constant bytes: its blocks are not compressed, and its history is fixed.
  void SaveFixed() const {
    const std::string path = SaveModel("fixed.ryx", [](QovRyx::Tree& tree) {
      BuildPlate(tree, {"Stress|LC1", "Stress|Long name \033[31m of a load case"}, 1);
      Geometry& links = AddNode<Geometry>(tree, PlateIds::kShape, "Links");
      links.AppendVariable(MakeLinked("Again", {PlateIds::kGeometry, 0}));
      links.AppendVariable(MakeLinked("Lost", {PlateIds::kGroup, 0}));
      AddViewPointPath(tree, "walk", 2);
    });
    Streams streams = ReadStreams(path);
    QovJbf::JbFile file;
    std::vector<QovRyx::ModifierInfo> history(2);
    history[0] = {{},     false, "First", "1.0", "1.2", "Tue Jan 02 10:20:30 2018 UTC",
                  "host", "me",  "x"};
    history[1] = {{}, false, "Second", "2.0", "1.3", "Tue Jan 02 10:20:31 2018 UTC", "", "", ""};
    file.GetIndex().Put("Global Information", history);
    streams.erase("Global Information");
    streams["Extra\033"] = "12345";
    for (const auto& [name, bytes] : streams) {
      file.GetIndex().Put(name, bytes.data(), bytes.size());
    }
    WriteTo(file, path);
  }
};

TEST_F(RyxInfo, ShowsAFileOnOneScreen) {
  SaveFixed();
  ExpectTranscript("info.txt");
}

TEST_F(RyxInfo, ShowsReadablePartsOfDamagedFiles) { ExpectTranscript("info_damaged.txt"); }

}  // namespace
}  // namespace Qov::Test
