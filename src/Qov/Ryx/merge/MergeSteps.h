#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

/// Functions that all merges use.
namespace QovRyx {

/// The source of log lines and errors of the merges.
inline constexpr const char* kMergeSource = "src/Qov/Ryx/RyxMerge";

/// The name of the group at the root of a merge as datasets.
inline constexpr const char* kMergeGroup = "Merge";

inline constexpr int kMergeDone = 0;
inline constexpr int kMergeFailed = 2;

/// Writes the system's cause of an error and the file that it concerns to standard error, one line
/// each, if they are known.
void ReportCircumstances(const std::exception& error);

/// Runs one merge. Writes errors to standard error. Returns the status.
template <class Step>
int RunMergeStep(Step step) {
  try {
    step();
    return kMergeDone;
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    ReportCircumstances(error);
    return kMergeFailed;
  }
}

/// Raises MiscellaneousError if `output` is the same file as one of `inputs`.
void RefuseOutputAmongInputs(const std::vector<std::string>& inputs, const std::string& output);

/// Receives a line about content that is left out.
using Reporter = std::function<void(const std::string&)>;

/// Writes a line about content that is left out to standard error and to the log.
void ReportLeftOut(const std::string& line);

/// Reports the streams of unknown names in a file, which are left out, in one line.
void ReportUnknownStreams(const std::string& path, const std::vector<std::string>& streams,
                          const Reporter& report);

/// Reads a model file into an empty tree. Reports its unknown streams and unread content.
void LoadModel(Tree& tree, const std::string& path,
               Tree::ReadMode mode = Tree::ReadMode::Everything,
               const Reporter& report = ReportLeftOut);

/// Reads a further model file into the tree. Reports its unknown streams and unread content.
void MergeModel(Tree& tree, const std::string& path, const Reporter& report = ReportLeftOut);

/// The numbers of nodes and results of a model.
struct ContentCounts {
  std::uint64_t mNodes = 0;  ///< Including the root and nodes without content.
  std::uint64_t mGeometries = 0;
  std::uint64_t mResults = 0;
};
ContentCounts CountContent(const NodeTree& nodes);

/// Writes a model file. Replaces an existing file.
void SaveModel(Tree& tree, const std::string& output);

/// Returns an empty tree. When it is saved, its history names RyxMerge as the program of the merge.
std::unique_ptr<Tree> MakeModelTree();

/// Returns such a tree with the group "Merge" at its root. Models are loaded below that group.
std::unique_ptr<Tree> MakeDatasetTree();

}  // namespace QovRyx
