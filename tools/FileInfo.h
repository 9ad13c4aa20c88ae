#pragma once

#include <string>

#include "ContainerInfo.h"
#include "Json.h"
#include "ModelCounts.h"
#include "Output.h"
#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// All that can be known of a file without reading its arrays.
class FileInfo {
 public:
  /// Reads what can be read and notes the trouble; does not throw for a bad file.
  explicit FileInfo(const std::string& path);

  /// What could not be read and why, not escaped; empty if all could.
  const std::string& GetTrouble() const { return mTrouble; }
  /// Whether there is anything to show.
  bool HasContent() const;

  /// One screen of lines.
  void Report(Output& output) const;
  /// The same for a document (docs/json/info.md).
  Json MakeJson() const;

 private:
  std::string mPath;
  ContainerInfo mContainer;
  QovRyx::Tree mTree{false};
  std::string mTrouble;
  ModelCounts mCounts;
};

}  // namespace Qov::Tools
