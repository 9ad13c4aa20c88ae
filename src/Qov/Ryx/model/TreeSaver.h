#pragma once

#include <string>

#include "BlockCopies.h"
#include "HeavySaver.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/OutputSettings.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Writes a tree to a file, for Tree::Save.
class TreeSaver {
 public:
  /// With `saver`, which must outlive this object, the heavy items are saved in the order of
  /// ListForSave, and blocks are decompressed ahead on workers. Without it, they are
  /// saved in the order of the tree.
  TreeSaver(Tree& tree, const QovJbf::WriteSettings& settings, const CopySettings& copies,
            HeavySaver* saver = nullptr)
      : mTree(tree), mSettings(settings), mCopies(copies), mpSaver(saver) {}

  void Save(const std::string& path, bool create, const std::string& comment);

 private:
  void RefuseToOverwriteSources(const std::string& path) const;
  void CheckSources() const;
  void ClearDanglingLinks();
  bool WriteWithAllThreads(const std::string& path, bool create, const std::string& comment);
  void Write(QovJbf::JbFile& file, const std::string& path, bool create,
             const std::string& comment);
  void SaveHeavyBlocks(QovJbf::JbFile& file, bool shuffle);
  void SaveByTree(HeavyPass& pass);
  void SaveListed(HeavyPass& pass);
  void FlushAndClose(QovJbf::JbFile& file, const std::string& comment);
  void SaveTree(QovJbf::JbFile& file);
  void SaveGlobalInfo(QovJbf::JbFile& file, const std::string& comment);

  Tree& mTree;
  QovJbf::WriteSettings mSettings;
  CopySettings mCopies;
  HeavySaver* mpSaver;
};

/// Writes a tree as the settings ask, like Tree::Save, with another saver.
void SaveWith(HeavySaver& saver, Tree& tree, const std::string& path, const std::string& comment,
              const OutputSettings& settings);

}  // namespace QovRyx
