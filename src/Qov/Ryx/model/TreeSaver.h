#pragma once

#include <string>

#include "BlockCopies.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Writes a tree to a file, for Tree::Save.
class TreeSaver {
 public:
  TreeSaver(Tree& tree, const QovJbf::WriteSettings& settings, const CopySettings& copies)
      : mTree(tree), mSettings(settings), mCopies(copies) {}

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
  QovJbf::WriteSettings mSettings;
  CopySettings mCopies;
};

}  // namespace QovRyx
