#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "Json.h"
#include "RunProgram.h"
#include "support/ModelBuilder.h"
#include "support/TempDir.h"

namespace Qov::Test {

inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Runs ryx, and shell commands, on files in a folder of its own.
class RyxProgram : public testing::Test {
 protected:
  Outcome Run(std::vector<std::string> arguments) const;

  /// Parts of a model that begins with a plate: any node, the mesh, a result of it.
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

  /// Saves a model that `build` fills.
  std::string SaveModel(const std::string& name,
                        const std::function<void(QovRyx::Tree&)>& build) const;

  /// Returns the document on standard output, after a check with the page that describes it.
  static Tools::Json ParseJson(const Outcome& outcome, const std::string& command);

  /// Returns the text without the parts that differ from run to run.
  std::string Normalized(std::string text) const;

  /// Expects a text to equal a golden file. If RYX_UPDATE_GOLDEN is set, writes the file instead.
  void ExpectGolden(const std::string& name, const std::string& text) const;

  using LineRun = std::function<std::string(const std::string& line)>;

  /// Expects a golden file to contain, below each of its lines "$ ...", the result of `run` for the
  /// rest of that line. Lines "# ..." are comments.
  void ExpectAfterEachLine(const std::string& name, const LineRun& run) const;

  /// Does the same for shell commands: both streams, with "! " before errors, and the status if
  /// it is not 0. Documents are checked, too. "poke FILE PLACE BYTES" damages a file.
  void ExpectTranscript(const std::string& name) const;

  Outcome RunShell(const std::string& command) const;

  Surroundings mSurroundings;
  TempDir mDir;
};

}  // namespace Qov::Test
