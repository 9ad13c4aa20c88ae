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

/// Shows the parts of a model that are not arrays, chosen by words (dump/Choice.h). Raises
/// ElementNotFound for a part that does not exist.
class StateDump {
 public:
  /// Writes text, or, if `document` is given, that document with one more member
  /// (docs/json/dump.md).
  StateDump(const QovRyx::Tree& tree, std::optional<Json> document, Output& output)
      : mTree(tree), mDocument(std::move(document)), mOutput(output) {}

  /// Shows a view. Number 0 is the current one; the others follow in the order of the paths.
  void ShowView(const std::string& word);
  void ShowSequencer();
  void ShowHistory();
  void ShowMaterial(const std::string& node);
  /// Shows the attributes of a group, or of all results of a geometry.
  void ShowAttributes(const std::string& word);
  /// Shows all sets of NODE, or, for NODE:SET, the numbers of one set, one per line.
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
