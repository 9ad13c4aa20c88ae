#pragma once

#include <string>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Writes a tree to a file, for Tree::Save.
class TreeSaver {
 public:
  explicit TreeSaver(Tree& tree) : mTree(tree) {}

  void Save(const std::string& path, bool create, const std::string& comment);

 private:
  void RefuseToOverwriteSources(const std::string& path) const;
  void CheckSources() const;
  void ClearDanglingLinks();
  bool WriteWithAllThreads(const std::string& path, bool create, const std::string& comment);
  void Write(QovJbf::JbFile& file, const std::string& path, bool create,
             const std::string& comment);
  void SaveHeavyBlocks(QovJbf::JbFile& file, bool shuffle);
  void FlushAndClose(QovJbf::JbFile& file, const std::string& comment);
  void SaveTree(QovJbf::JbFile& file);
  void SaveGlobalInfo(QovJbf::JbFile& file, const std::string& comment);

  Tree& mTree;
};

}  // namespace QovRyx
