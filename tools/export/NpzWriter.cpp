#include <fmt/format.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Terminal.h"
#include "export/ExportSets.h"
#include "export/TableWriters.h"
#include "export/UniqueNames.h"
#include "export/ZipArchive.h"

namespace Qov::Tools {
namespace {

/// Returns a name as a part of a path in the archive.
std::string EntryText(const std::string& name) {
  constexpr TextStyle kUtf8{false, true, false, 80};
  std::string text = Escape(name, kUtf8);
  for (char& c : text) {
    if (c == '/' || c == ':') c = '_';
  }
  return text == "." || text == ".." || text.empty() ? "_" : text;
}

/// Returns the start of a NumPy file of format 1.0.
std::string NpyStart(const char* type, std::uint64_t numItems, std::size_t width) {
  constexpr std::size_t kAlignment = 64;
  constexpr std::size_t kPrefix = 10;  // magic: 6 bytes, version: 2, u16 length of what follows
  std::string header = fmt::format("{{'descr': '{}', 'fortran_order': False, 'shape': ({},{}), }}",
                                   type, numItems, width == 1 ? "" : fmt::format(" {}", width));
  header.resize((kPrefix + header.size()) / kAlignment * kAlignment + kAlignment - kPrefix - 1,
                ' ');
  header += '\n';
  const std::string prefix("\x93NUMPY\x01\x00", 8);
  return prefix + static_cast<char>(header.size() & 0xFFU) +
         static_cast<char>(header.size() >> 8U) + header;
}

class NpzBuilder {
 public:
  NpzBuilder(const ExportTask& task, SafeOutput& output)
      : mTask(task), mMeshes(task.mKinds), mSets(task.mTree, task.mContent), mArchive(output) {}

  void Write() {
    for (const ExportPart& part : mTask.mContent.mParts) WritePart(part);
    mArchive.Close();
  }

 private:
  template <class T>
  void Add(const std::string& name, const char* type, std::span<const T> values,
           std::size_t width) {
    const std::size_t fitting = values.size() % width == 0 ? width : 1;
    mArchive.Begin(mNames.Make(name) + ".npy");
    const std::string start = NpyStart(type, values.size() / fitting, fitting);
    mArchive.Append(start.data(), start.size());
    mArchive.Append(values.data(), values.size_bytes());
    mArchive.End();
  }
  void AddIntegers(const std::string& name, const std::vector<std::uint32_t>& values) {
    if (!values.empty()) Add<std::uint32_t>(name, "<u4", values, 1);
  }

  void WritePart(const ExportPart& part) {
    std::string folder;
    for (const std::string& group : part.mGroups) folder += EntryText(group) + "/";
    folder = mFolders.Make(folder + EntryText(part.mName)) + "/";
    WriteMesh(folder, mMeshes.Get(part));
    std::vector<std::uint32_t> bits;
    for (const ExportResult& result : part.mResults) {
      LoadValues(result, bits);
      Add<std::uint32_t>(folder + EntryText(result.mName), result.mIsUnsigned ? "<u4" : "<f4", bits,
                         result.mWidth);
    }
    for (const ExportSet& set : mSets.Load(part)) {
      Add<std::uint32_t>(folder + "set " + EntryText(set.mName), "<u4", set.mNumbers, 1);
    }
  }

  void WriteMesh(const std::string& folder, const QovMesh::Mesh& mesh) {
    Add<float>(folder + "Coordinates", "<f4", mesh.mPoints, 3);
    AddIntegers(folder + "Connectivity", mesh.mNodes);
    std::vector<std::uint32_t> lengths;
    std::vector<std::uint8_t> types;
    for (const QovMesh::CellRun& run : mesh.mRuns) {
      lengths.insert(lengths.end(), run.mNumCells, run.mNumNodes);
      types.insert(types.end(), run.mNumCells, QovMesh::GetShape(run.mKind).mVtkType);
    }
    AddIntegers(folder + "Polylength", lengths);
    if (!types.empty()) Add<std::uint8_t>(folder + "VTK cell types", "|u1", types, 1);
    AddIntegers(folder + "Node Ids", mesh.mNodeIds);
    AddIntegers(folder + "Element IDs", mesh.mElementIds);
  }

  const ExportTask& mTask;
  MeshCache mMeshes;
  ExportSets mSets;
  ZipArchive mArchive;
  UniqueNames mFolders;
  UniqueNames mNames;
};

}  // namespace

void WriteNpz(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  NpzBuilder(task, outputs.Open(path)).Write();
}

}  // namespace Qov::Tools
