#include "Obstacles.h"

#include <unistd.h>

#include <exception>
#include <filesystem>

#include "Qov/Jbf/OutputLocks.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

std::string FolderOf(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  return folder.empty() ? "." : folder.string();
}

bool Exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}

/// Returns the reason why a file cannot be written or created; empty if it can.
std::string WhyNotWritable(const std::string& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return "is a folder";
  if (fs::exists(path, ignored)) {
    return ::access(path.c_str(), W_OK) == 0 ? "" : "cannot be written";
  }
  const std::string folder = FolderOf(path);
  if (!fs::is_directory(folder, ignored)) return "is in a folder that does not exist";
  return ::access(folder.c_str(), W_OK) == 0 ? "" : "is in a folder that cannot be written";
}

bool IsFree(const std::string& path) {
  try {
    QovJbf::CheckOutputIsFree(path);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool IsSameFile(const std::string& left, const std::string& right) {
  std::error_code error;
  return fs::equivalent(left, right, error) && !error;
}

}  // namespace

std::vector<Obstacle> FindFileObstacles(const MergeRequest& request,
                                        const std::vector<InputFile>& inputs) {
  std::vector<Obstacle> obstacles;
  if (request.CountModels() == 0)
    obstacles.push_back({"", "there is no model among the inputs", ""});
  for (const InputFile& input : inputs) {
    if (!input.mError.empty()) obstacles.push_back({input.mPath, input.mError, ""});
    if (IsSameFile(input.mPath, request.mOutput)) {
      obstacles.push_back({input.mPath, "is also the output", ""});
    }
  }
  const std::string trouble = WhyNotWritable(request.mOutput);
  if (!trouble.empty()) obstacles.push_back({request.mOutput, trouble, ""});
  if (!IsFree(request.mOutput)) {
    obstacles.push_back({request.mOutput, "is being written by another run", ""});
  }
  if (request.NeedsCopy() && Exists(request.GetCopyPath())) {
    const char* text = "exists; the merge needs this path for a temporary copy of the model";
    obstacles.push_back({request.GetCopyPath(), text, ""});
  }
  return obstacles;
}

}  // namespace Qov::Tools
