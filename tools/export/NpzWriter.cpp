#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Terminal.h"
#include "export/ExportSets.h"
#include "export/LeftOut.h"
#include "export/TableWriters.h"
#include "export/UniqueNames.h"
#include "export/ZipArchive.h"
#include "merge/ArrayNames.h"
#include "mesh/MeshArrays.h"

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
    const std::string unique = mNames.Make(name);
    if (unique != name) {
      mTask.mNotes.push_back("array " + Escape(unique, {}) + ": named so, because " +
                             Escape(name, {}) + " exists");
    }
    mArchive.Begin(unique + ".npy");
    const std::string start = NpyStart(type, values.size() / fitting, fitting);
    mArchive.Append(start.data(), start.size());
    mArchive.Append(values.data(), values.size_bytes());
    mArchive.End();
  }

  void WritePart(const ExportPart& part) {
    std::string folder;
    for (const std::string& group : part.mGroups) folder += EntryText(group) + "/";
    folder = mFolders.Make(folder + EntryText(part.mName)) + "/";
    for (const auto& variable : part.mpGeometry->GetVariables()) WriteMeshArray(folder, variable);
    WriteCells(folder, part);
    for (const ExportResult& result : part.mResults) WriteResult(folder, result);
    for (const ExportSet& set : mSets.Load(part)) {
      Add<std::uint32_t>(folder + "set " + EntryText(set.mName), "<u4", set.mNumbers, 1);
    }
  }

  void WriteResult(const std::string& folder, const ExportResult& result) {
    std::vector<std::uint32_t> bits;
    LoadValues(result, bits);
    Add<std::uint32_t>(folder + EntryText(result.mName), result.mIsUnsigned ? "<u4" : "<f4", bits,
                       result.mWidth);
  }

  /// Writes an array of the mesh as it is in the model, under its whole name.
  void WriteMeshArray(const std::string& folder, const QovRyx::Geometry::VarStruct& variable) {
    const QovRyx::ArrayName name = QovRyx::SplitName(variable.mName);
    if (!QovRyx::IsMeshBase(name.mBase) || !IsChosen(mTask.mContent, name.mInstance)) return;
    ExportResult array;
    array.mpVariable = &variable;
    array.mName = name.mInstance.empty() ? std::string(name.mBase)
                                         : fmt::format("{} ({})", name.mBase, name.mInstance);
    array.mWidth = std::max<std::size_t>(variable.mValues.GetWidth(), 1);
    array.mIsUnsigned = name.mBase != QovRyx::kCoordinates;
    WriteResult(folder, array);
  }

  /// Writes the kinds of the cells, and their nodes if the model has them in an order of its own.
  void WriteCells(const std::string& folder, const ExportPart& part) {
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    std::vector<std::uint8_t> types;
    for (const QovMesh::CellRun& run : mesh.mRuns) {
      types.insert(types.end(), run.mNumCells, QovMesh::GetShape(run.mKind).mVtkType);
    }
    if (types.empty()) return;
    Add<std::uint8_t>(folder + "VTK cell types", "|u1", types, 1);
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    std::vector<std::uint32_t> nodes;
    arrays.Find(QovRyx::kConnectivity, part.mMeshInstance)->mValues.GetValues(nodes);
    if (nodes != mesh.mNodes) {
      Add<std::uint32_t>(folder + "VTK connectivity", "<u4", mesh.mNodes, 1);
    }
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
