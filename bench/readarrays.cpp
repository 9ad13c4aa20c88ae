// Reads every array of a model in stored order: readarrays MODEL

#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

#include "Qov/Ryx/Tree.h"

namespace {

/// Returns the arrays in stored order: the integer kinds of all geometries, then all others.
std::vector<const QovRyx::NumericArray*> FindArrays(const QovRyx::Tree& tree) {
  std::vector<const QovRyx::NumericArray*> arrays;
  for (const bool integerKinds : {true, false}) {
    QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
      for (const auto& variable : geometry.GetVariables()) {
        if (variable.mLink.IsLinked() || variable.IsIntegerKind() != integerKinds) continue;
        arrays.push_back(&variable.mValues);
      }
    });
  }
  return arrays;
}

void ReadAll(const char* path) {
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap idMap;
  tree.Load(path, idMap, QovRyx::Tree::ReadMode::Everything,
            QovRyx::Tree::SupportedFileFormats::Ryx);
  std::uint64_t numValues = 0;
  const auto arrays = FindArrays(tree);
  std::vector<std::uint32_t> values;
  for (const QovRyx::NumericArray* array : arrays) {
    array->GetValues(values);
    numValues += values.size();
  }
  std::printf("arrays=%zu bytes=%ju\n", arrays.size(), std::uintmax_t{4 * numValues});
}

}  // namespace

int main(int argc, char** argv) {
  try {
    for (int i = 1; i < argc; ++i) ReadAll(argv[i]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "readarrays: %s\n", error.what());
    return 1;
  }
}
