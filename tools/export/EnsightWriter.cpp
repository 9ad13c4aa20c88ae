#include "export/EnsightWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <vector>

#include "Terminal.h"
#include "export/UniqueNames.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;
using QovMesh::CellKind;
using QovMesh::CellRun;
using QovMesh::Placement;

struct NamedKind {
  CellKind mKind;
  const char* mName;
};
/// The order in which a part holds its blocks of elements.
constexpr NamedKind kKinds[] = {{CellKind::Vertex, "point"},
                                {CellKind::Line, "bar2"},
                                {CellKind::QuadraticLine, "bar3"},
                                {CellKind::Triangle, "tria3"},
                                {CellKind::QuadraticTriangle, "tria6"},
                                {CellKind::Quad, "quad4"},
                                {CellKind::QuadraticQuad, "quad8"},
                                {CellKind::Tetrahedron, "tetra4"},
                                {CellKind::QuadraticTetrahedron, "tetra10"},
                                {CellKind::Pyramid, "pyramid5"},
                                {CellKind::QuadraticPyramid, "pyramid13"},
                                {CellKind::Wedge, "penta6"},
                                {CellKind::QuadraticWedge, "penta15"},
                                {CellKind::Hexahedron, "hexa8"},
                                {CellKind::QuadraticHexahedron, "hexa20"},
                                {CellKind::Polygon, "nsided"}};

/// Returns a name of a variable: letters, digits and underscores.
std::string VariableText(const std::string& name) {
  constexpr std::size_t kMost = 40;
  std::string text;
  for (const char c : name.substr(0, kMost)) {
    text += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  }
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0) text.insert(0, "v");
  return text;
}

void WriteText(SafeOutput& output, std::string text) {
  constexpr std::size_t kLineSize = 80;
  text.resize(kLineSize);
  output.Write(text);
}

void WriteNumber(SafeOutput& output, std::uint64_t number) {
  const auto value = static_cast<std::int32_t>(number);
  output.Write(&value, sizeof value);
}

/// A variable of the case: one component of a result, or a vector.
struct Variable {
  std::string mName;
  bool mIsVector = false;
  std::size_t mComponent = 0;
  Placement mPlacement = Placement::Point;
  bool mHasSteps = false;
};

/// What tells the results that make one variable from others.
struct ResultKey {
  std::string mName;
  std::size_t mWidth = 1;
  Placement mPlacement = Placement::Point;
  bool mHasStep = false;
  friend auto operator<=>(const ResultKey&, const ResultKey&) = default;
};

ResultKey KeyOf(const ExportResult& result) {
  return {result.mName, result.mWidth, result.mPlacement, result.mStep.has_value()};
}

class EnsightBuilder {
 public:
  EnsightBuilder(const ExportTask& task, const std::string& path, OutputSet& outputs)
      : mTask(task),
        mMeshes(task.mKinds),
        mOutputs(outputs),
        mStem(fs::path(path).replace_extension("").string()),
        mFileStem(fs::path(mStem).filename().string()),
        mCase(outputs.Open(path)) {}

  void Write() {
    CollectVariables();
    WriteGeometry();
    WriteCase();
    for (const auto& [key, variables] : mVariables) {
      for (const Variable& variable : variables) WriteVariable(key, variable);
    }
  }

 private:
  void Note(std::string text) { mTask.mNotes.push_back(std::move(text)); }

  void CollectVariables() {
    for (const ExportPart& part : mTask.mContent.mParts) {
      if (!part.mSetNodes.empty()) mHasSets = true;
      for (const ExportResult& result : part.mResults) {
        if (result.mPlacement == Placement::Field) {
          Note("result " + Escape(result.mName, {}) + " of " + Escape(part.mName, {}) +
               ": field data are not written");
        } else if (mVariables.try_emplace(KeyOf(result)).second) {
          AddVariables(result);
        }
      }
    }
    if (mHasSets) Note("node sets are not written");
  }

  void AddVariables(const ExportResult& result) {
    const bool isVector = result.mWidth == 3;
    for (std::size_t k = 0; k < (isVector ? 1 : result.mWidth); ++k) {
      const std::string name =
          isVector || result.mWidth == 1 ? result.mName : fmt::format("{} {}", result.mName, k + 1);
      mVariables[KeyOf(result)].push_back({mNames.Make(VariableText(name)), isVector, k,
                                           result.mPlacement, result.mStep.has_value()});
    }
    if (result.mIsUnsigned) {
      Note("result " + Escape(result.mName, {}) + ": integers are written as floats");
    }
  }

  // ---- mesh

  void WriteGeometry() {
    SafeOutput& output = mOutputs.Open(mStem + ".geo");
    WriteText(output, "C Binary");
    WriteText(output, "written by ryx export");
    WriteText(output, "");
    const bool haveIds = std::all_of(mTask.mContent.mParts.begin(), mTask.mContent.mParts.end(),
                                     [&](const ExportPart& part) {
                                       const QovMesh::Mesh& mesh = mMeshes.Get(part);
                                       return !mesh.mNodeIds.empty() && !mesh.mElementIds.empty();
                                     });
    WriteText(output, haveIds ? "node id given" : "node id assign");
    WriteText(output, haveIds ? "element id given" : "element id assign");
    std::uint64_t number = 0;
    for (const ExportPart& part : mTask.mContent.mParts) {
      WriteText(output, "part");
      WriteNumber(output, ++number);
      WriteText(output, Escape(part.mName, {}));
      WritePart(part, haveIds, output);
    }
    output.Finish();
  }

  void WritePart(const ExportPart& part, bool haveIds, SafeOutput& output) {
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    WriteText(output, "coordinates");
    WriteNumber(output, mesh.GetNumPoints());
    if (haveIds) output.Write<std::uint32_t>(mesh.mNodeIds);
    WriteComponents(mesh.mPoints, 3, output);
    for (const NamedKind& kind : kKinds) WriteElements(mesh, kind, haveIds, output);
    for (const CellRun& run : mesh.mRuns) {
      if (FindName(run.mKind) != nullptr) continue;
      Note(fmt::format("geometry {}: {} cells of the kind {} are not written",
                       Escape(part.mName, {}), run.mNumCells, QovMesh::GetShape(run.mKind).mName));
    }
  }

  static const char* FindName(CellKind kind) {
    for (const NamedKind& named : kKinds) {
      if (named.mKind == kind) return named.mName;
    }
    return nullptr;
  }

  /// Writes interleaved values as one array for each component.
  static void WriteComponents(const std::vector<float>& values, std::size_t width,
                              SafeOutput& output) {
    std::vector<float> component(values.size() / width);
    for (std::size_t k = 0; k < width; ++k) {
      for (std::size_t i = 0; i < component.size(); ++i) component[i] = values[i * width + k];
      output.Write<float>(component);
    }
  }

  /// Calls `visit(run)` for the runs of a kind; returns the number of their cells.
  template <class Visitor>
  static std::uint64_t ForEachRun(const QovMesh::Mesh& mesh, CellKind kind, Visitor visit) {
    std::uint64_t count = 0;
    for (const CellRun& run : mesh.mRuns) {
      if (run.mKind != kind) continue;
      count += run.mNumCells;
      visit(run);
    }
    return count;
  }

  void WriteElements(const QovMesh::Mesh& mesh, const NamedKind& kind, bool haveIds,
                     SafeOutput& output) {
    const std::uint64_t count = ForEachRun(mesh, kind.mKind, [](const CellRun&) {});
    if (count == 0) return;
    WriteText(output, kind.mName);
    WriteNumber(output, count);
    if (haveIds) {
      ForEachRun(mesh, kind.mKind, [&](const CellRun& run) {
        output.Write<std::uint32_t>(
            std::span(mesh.mElementIds).subspan(run.mFirstCell, run.mNumCells));
      });
    }
    if (kind.mKind == CellKind::Polygon) {
      ForEachRun(mesh, kind.mKind, [&](const CellRun& run) {
        for (std::uint64_t i = 0; i < run.mNumCells; ++i) WriteNumber(output, run.mNumNodes);
      });
    }
    std::vector<std::uint32_t> numbers;
    ForEachRun(mesh, kind.mKind, [&](const CellRun& run) {
      const auto nodes =
          std::span(mesh.mNodes).subspan(run.mFirstNode, run.mNumCells * run.mNumNodes);
      numbers.assign(nodes.begin(), nodes.end());
      for (std::uint32_t& node : numbers) ++node;
      output.Write<std::uint32_t>(numbers);
    });
  }

  // ---- case and variables

  void WriteCase() {
    mCase.Write(fmt::format("FORMAT\ntype: ensight gold\n\nGEOMETRY\nmodel: {}.geo\n", mFileStem));
    mCase.Write("\nVARIABLE\n");
    for (const auto& [key, variables] : mVariables) {
      for (const Variable& variable : variables) {
        mCase.Write(fmt::format("{} per {}: {}{} {}.{}{}\n",
                                variable.mIsVector ? "vector" : "scalar",
                                variable.mPlacement == Placement::Point ? "node" : "element",
                                variable.mHasSteps ? "1 " : "", variable.mName, mFileStem,
                                variable.mName, variable.mHasSteps ? ".****" : ""));
      }
    }
    const auto& steps = mTask.mContent.mSteps;
    if (!steps.empty()) {
      mCase.Write(
          fmt::format("\nTIME\ntime set: 1\nnumber of steps: {}\nfilename start number: 0\n"
                      "filename increment: 1\ntime values:\n",
                      steps.size()));
      for (std::size_t i = 0; i < steps.size(); ++i) {
        if (!steps[i].mTime) {
          Note(fmt::format("step {}: no time is known, {} is written", Escape(steps[i].mName, {}),
                           i));
        }
        mCase.Write(fmt::format("{}\n", steps[i].mTime.value_or(static_cast<double>(i))));
      }
    }
    mCase.Finish();
  }

  void WriteVariable(const ResultKey& key, const Variable& variable) {
    const std::string path = mStem + "." + variable.mName;
    if (!variable.mHasSteps) return WriteFile(key, variable, std::nullopt, path);
    for (std::size_t step = 0; step < mTask.mContent.mSteps.size(); ++step) {
      WriteFile(key, variable, step, fmt::format("{}.{:04}", path, step));
    }
  }

  void WriteFile(const ResultKey& key, const Variable& variable, std::optional<std::size_t> step,
                 const std::string& path) {
    SafeOutput& output = mOutputs.Open(path);
    WriteText(output, variable.mName);
    std::uint64_t number = 0;
    for (const ExportPart& part : mTask.mContent.mParts) {
      ++number;
      const auto found = std::find_if(
          part.mResults.begin(), part.mResults.end(),
          [&](const ExportResult& result) { return result.mStep == step && KeyOf(result) == key; });
      if (found == part.mResults.end()) continue;
      WriteText(output, "part");
      WriteNumber(output, number);
      WriteValues(part, *found, variable, output);
    }
    output.Finish();
  }

  void WriteValues(const ExportPart& part, const ExportResult& result, const Variable& variable,
                   SafeOutput& output) {
    const std::vector<float> values = LoadFloats(result, variable);
    const std::size_t width = variable.mIsVector ? 3 : 1;
    if (variable.mPlacement == Placement::Point) {
      WriteText(output, "coordinates");
      return WriteComponents(values, width, output);
    }
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    for (const NamedKind& kind : kKinds) {
      std::vector<float> chosen;
      ForEachRun(mesh, kind.mKind, [&](const CellRun& run) {
        const auto begin = values.begin() + static_cast<std::ptrdiff_t>(run.mFirstCell * width);
        chosen.insert(chosen.end(), begin,
                      begin + static_cast<std::ptrdiff_t>(run.mNumCells * width));
      });
      if (chosen.empty()) continue;
      WriteText(output, kind.mName);
      WriteComponents(chosen, width, output);
    }
  }

  /// Returns the vectors, or the values of the variable's component.
  static std::vector<float> LoadFloats(const ExportResult& result, const Variable& variable) {
    std::vector<std::uint32_t> bits;
    LoadValues(result, bits);
    std::vector<float> values;
    const std::size_t step = variable.mIsVector ? 1 : result.mWidth;
    for (std::size_t i = variable.mComponent; i < bits.size(); i += step) {
      values.push_back(result.mIsUnsigned ? static_cast<float>(bits[i])
                                          : std::bit_cast<float>(bits[i]));
    }
    return values;
  }

  const ExportTask& mTask;
  MeshCache mMeshes;
  OutputSet& mOutputs;
  std::string mStem;
  std::string mFileStem;
  SafeOutput& mCase;
  bool mHasSets = false;
  UniqueNames mNames;
  std::map<ResultKey, std::vector<Variable>> mVariables;
};

}  // namespace

void WriteEnsight(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  EnsightBuilder(task, path, outputs).Write();
}

}  // namespace Qov::Tools
