#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "Json.h"
#include "RunProgram.h"
#include "support/ModelBuilder.h"
#include "support/TempDir.h"

namespace Qov::Test {

/// Runs ryx, and shell commands, on files in a folder of its own.
class RyxProgram : public testing::Test {
 protected:
  Outcome Run(std::vector<std::string> arguments) const;

  /// Of a model that begins with a plate: any node, the mesh, a result of it.
  template <class T>
  static T& Content(QovRyx::Tree& tree, std::uint32_t id) {
    return dynamic_cast<T&>(*tree.GetNodes().GetReqNode(id).mData);
  }
  static QovRyx::Geometry& Mesh(QovRyx::Tree& tree) {
    return Content<QovRyx::Geometry>(tree, PlateIds::kGeometry);
  }
  static QovRyx::Geometry::VarStruct& Result(QovRyx::Tree& tree, std::size_t i) {
    return Mesh(tree).EditVariable(i);
  }

  /// Saves what `build` makes of an empty model.
  std::string SaveModel(const std::string& name,
                        const std::function<void(QovRyx::Tree&)>& build) const;

  /// The document on standard output, checked against the page that describes it.
  static Tools::Json ParseJson(const Outcome& outcome, const std::string& command);

  /// The text without what differs from run to run.
  std::string Normalized(std::string text) const;

  /// With the environment variable RYX_UPDATE_GOLDEN set, the file is written instead.
  void ExpectGolden(const std::string& name, const std::string& text) const;

  using LineRun = std::function<std::string(const std::string& line)>;

  /// Expects a golden file to hold, below each of its lines "$ ...", what `run` makes of the rest
  /// of the line. Lines "# ..." are comments.
  void ExpectAfterEachLine(const std::string& name, const LineRun& run) const;

  /// The same for commands of the shell: both streams, with "! " before errors, and the status if
  /// it is not 0. Documents are checked, too. "poke FILE PLACE BYTES" damages a file.
  void ExpectTranscript(const std::string& name) const;

  Outcome RunShell(const std::string& command) const;

  Surroundings mSurroundings;
  TempDir mDir;
};

}  // namespace Qov::Test
