#pragma once

#include <cstdint>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// Reads files into a tree, for Tree::Load, Tree::Merge and Tree::LoadViewPathVec.
class TreeLoader {
 public:
  explicit TreeLoader(Tree& tree) : mTree(tree) {}

  void Load(const std::string& path, Tree::IdMap& idMap, Tree::ReadMode mode);
  void Merge(const std::string& path);
  void LoadViewPathVec(QovJbf::JbFile& file);

 private:
  void OpenForReading(QovJbf::JbFile& file, const std::string& path, bool& wideOffsets);
  std::uint32_t SelectAttachParent();
  void LoadGlobalInfo(QovJbf::JbFile& file);
  void LoadTree(QovJbf::JbFile& file, Tree::IdMap& idMap, std::uint32_t attachParent,
                bool wideOffsets);
  void UpdateBufferLinks();
  void LoadViews(QovJbf::JbFile& file);

  Tree& mTree;
};

}  // namespace QovRyx
