#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "Target.h"

/// Runs a target on every file of the given folders, in the order of their names.
namespace {

void Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t numFiles = 0;
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::directory_iterator folder(argv[i]);
    const std::set<std::filesystem::path> paths(begin(folder), end(folder));
    for (const std::filesystem::path& path : paths) Replay(path);
    numFiles += paths.size();
  }
  std::printf("%zu files\n", numFiles);
  return numFiles > 0 ? 0 : 1;
}
