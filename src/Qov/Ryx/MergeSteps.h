#pragma once

#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

/// What the merges have in common.
namespace QovRyx {

/// What the log and the errors of the merges give as their source.
inline constexpr const char* kMergeSource = "src/Qov/Ryx/RyxMerge";

inline constexpr int kMergeDone = 0;
inline constexpr int kMergeFailed = 2;

/// Says on standard error which file an error is about, if that is known.
void ReportConcernedFile(const std::exception& error);

/// Runs one merge under the handler that all of them have.
template <class Step>
int RunMergeStep(Step step) {
  try {
    step();
    return kMergeDone;
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    ReportConcernedFile(error);
    return kMergeFailed;
  }
}

/// Raises MiscellaneousError if `output` is the same file as one of `inputs`.
void RefuseOutputAmongInputs(const std::vector<std::string>& inputs, const std::string& output);

/// Reads a model file into a tree that holds no other yet.
void LoadModel(Tree& tree, const std::string& path);

/// Reads a further model file into the tree.
void MergeModel(Tree& tree, const std::string& path);

/// Writes a new file, or one in place of another.
void SaveModel(Tree& tree, const std::string& output);

/// An empty tree whose root is the group "Merge", which takes models in beneath it.
std::unique_ptr<Tree> MakeDatasetTree();

}  // namespace QovRyx
