// Prints the nodes of a model and the smallest and largest value of every result.

#include <Qov/Ryx/Tree.h>
#include <Qov/Ryx/ValueOwners.h>
#include <Qov/Util/Exception.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

namespace {

using QovRyx::Geometry;
using QovRyx::Tree;

/// Returns the name with a visible separator before the load case or time step, because terminals
/// do not show the separator. Replaces other control characters, which could control the terminal.
std::string Readable(std::string name) {
  std::replace(name.begin(), name.end(), '\x1E', '|');
  std::replace_if(
      name.begin(), name.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; },
      '?');
  return name;
}

/// Reads and verifies one array, because loading a model does not read arrays. Frees it on return.
template <class T>
void PrintRange(const QovRyx::NumericArray& array) {
  std::vector<T> values;
  array.GetValues(values);
  if (values.empty()) {
    std::cout << "no values\n";
    return;
  }
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  std::cout << *least << " to " << *greatest << "\n";
}

void PrintResults(const Geometry& geometry, const QovRyx::ValueOwners& owners) {
  for (const Geometry::VarStruct& result : geometry.GetVariables()) {
    std::cout << "  " << Readable(result.mName) << ": ";
    if (owners.HoldUnsigned(result)) {
      PrintRange<std::uint32_t>(result.mValues);
    } else {
      PrintRange<float>(result.mValues);
    }
  }
}

void PrintModel(const std::string& path) {
  Tree tree(false);
  Tree::IdMap ids;
  tree.Load(path, ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
  const QovRyx::ValueOwners owners(tree.GetNodes());
  // Iterates by id to visit every entry once, even if the links of a damaged file form a cycle.
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (!entry.mData) continue;
    std::cout << entry.mData->GetType() << " " << Readable(entry.mData->GetName()) << "\n";
    if (const Geometry* geometry = QovRyx::AsGeometry(entry)) {
      PrintResults(*geometry, owners);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "Usage: ranges MODEL\n";
    return 1;
  }
  try {
    PrintModel(argv[1]);
  } catch (const Qov::Util::Exception& error) {
    std::cerr << "ranges: " << error.GetLogMessage() << "\n";  // what() is the complete report
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "ranges: " << error.what() << "\n";
    return 2;
  }
}
