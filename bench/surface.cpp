// Finds the outer surface of the first geometry of a model several times: surface MODEL RUNS
//
// Prints the time of each run without reading, in seconds.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "Qov/Ryx/Tree.h"
#include "mesh/Mesh.h"
#include "mesh/OuterSurface.h"

namespace {

QovMesh::Mesh LoadFirstMesh(const char* path) {
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap idMap;
  tree.Load(path, idMap, QovRyx::Tree::ReadMode::WithoutViews,
            QovRyx::Tree::SupportedFileFormats::Ryx);
  const QovRyx::Geometry* first = nullptr;
  QovRyx::ForEachGeometry(tree.GetNodes(), [&](std::uint32_t, const QovRyx::Geometry& geometry) {
    if (first == nullptr) first = &geometry;
  });
  if (first == nullptr) throw std::runtime_error("the model has no geometry");
  return QovMesh::LoadMesh(*first, {}, {});
}

void Measure(const QovMesh::Mesh& mesh) {
  const auto begin = std::chrono::steady_clock::now();
  const QovMesh::Surface surface = QovMesh::FindOuterSurface(mesh);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  if (surface.mTriangles.empty()) throw std::runtime_error("the mesh has no surface");
  std::printf("%.4f\n", time.count());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const QovMesh::Mesh mesh = LoadFirstMesh(argv[1]);
    for (int i = 0; i < std::atoi(argv[2]); ++i) Measure(mesh);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "surface: %s\n", error.what());
    return 1;
  }
}
