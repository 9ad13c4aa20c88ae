#pragma once

#include <string>

#include "ContainerInfo.h"
#include "Json.h"
#include "ModelCounts.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"
#include "TextTable.h"

namespace Qov::Tools {

/// Properties of a file that are known without reading its arrays.
class FileInfo {
 public:
  /// Reads as much as possible and keeps the error. Does not throw for a damaged file.
  explicit FileInfo(const std::string& path);

  /// Returns the error, not escaped; empty if the whole file was read.
  const std::string& GetTrouble() const { return mTrouble; }
  /// Returns true if there is anything to show.
  bool HasContent() const;

  /// Writes one screen of lines.
  void Report(Output& output) const;
  /// Returns a table for rows of files.
  static TextTable MakeTable(const TextStyle& style);
  /// Returns the most important properties as a row of that table.
  TextTable::Row MakeRow(const TextStyle& style) const;
  /// Returns the lines of Report for a document (docs/json/info.md).
  Json MakeJson() const;

 private:
  std::string mPath;
  ContainerInfo mContainer;
  QovRyx::Tree mTree{false};
  std::string mTrouble;
  ModelCounts mCounts;
};

}  // namespace Qov::Tools
