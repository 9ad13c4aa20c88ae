// Merges model files in this process and prints the number of nodes of the result.

#include <Qov/Ryx/RyxMerge.h>
#include <Qov/Ryx/Tree.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

void Report(const std::string& path) {
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap ids;
  tree.Load(path, ids, QovRyx::Tree::ReadMode::Everything, QovRyx::Tree::SupportedFileFormats::Ryx);
  std::cout << tree.GetNodes().GetSize() << " nodes in all\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "Usage: merge INPUT INPUT... OUTPUT\n";
    return 1;
  }
  const std::vector<std::string> inputs(argv + 1, argv + argc - 1);
  const std::string output = argv[argc - 1];
  // The merges do not throw: they print their errors and return 2.
  const int status = QovRyx::merge_as_datasets(inputs, output);
  if (status != 0) return status;
  std::cout << "Merged " << inputs.size() << " files: ";
  try {
    Report(output);
  } catch (const std::exception& error) {
    std::cerr << error.what();
    return 2;
  }
}
