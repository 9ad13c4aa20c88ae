#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Json.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Shows the parts of a model that are no arrays. Words name them as dump/Choice.h says; what is
/// not there raises ElementNotFound.
class StateDump {
 public:
  /// Text, or, if `document` is given, that document with one more member (docs/json/dump.md).
  StateDump(const QovRyx::Tree& tree, std::optional<Json> document, Output& output)
      : mTree(tree), mDocument(std::move(document)), mOutput(output) {}

  /// A view; number 0 is the current one, the others follow in the order of the paths.
  void ShowView(const std::string& word);
  void ShowSequencer();
  void ShowHistory();
  void ShowMaterial(const std::string& node);
  /// Those of a group, or those of all results of a geometry.
  void ShowAttributes(const std::string& word);
  /// NODE or NODE:SET. A single set is shown as its numbers alone, one a line.
  void ShowSets(const std::string& word);

 private:
  void ShowRecord(const char* member, const Json& record);
  void Finish(const char* member, Json json);
  void RequireViews() const;
  void ShowSets(const std::vector<QovRyx::NodeSets::Set>& sets, bool headings);

  const QovRyx::Tree& mTree;
  std::optional<Json> mDocument;
  Output& mOutput;
};

}  // namespace Qov::Tools
