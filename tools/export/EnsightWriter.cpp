#include "export/EnsightWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <vector>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "export/LeftOut.h"

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

constexpr std::uint64_t kMostNumber = std::numeric_limits<std::int32_t>::max();

bool IsIn(const std::string& allowed, char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         allowed.find(c) != allowed.npos;
}

/// Returns a text with an underscore for each byte that is not a letter, a digit or one of
/// `allowed`.
std::string Plain(std::string text, const std::string& allowed) {
  for (char& c : text) {
    if (!IsIn(allowed, c)) c = '_';
  }
  return text;
}

/// Returns a name of a variable: letters, digits and underscores. Readers limit its length to 49.
std::string VariableText(const std::string& name) {
  constexpr std::size_t kMost = 40;
  std::string text = Plain(name.substr(0, kMost), "_");
  if (text.empty() || (text[0] >= '0' && text[0] <= '9')) text.insert(0, "v");
  return text;
}

/// Writes a record of 80 bytes. The last one is 0, because readers take the record for a string.
void WriteText(SafeOutput& output, std::string text) {
  constexpr std::size_t kLineSize = 80;
  text.resize(kLineSize - 1);
  text.resize(kLineSize);
  output.Write(text);
}

void WriteNumber(SafeOutput& output, std::uint64_t number) {
  if (number > kMostNumber) {
    Util::Raise(
        "tools/export/EnsightWriter", Util::Exception::ErrorType::OutOfBounds,
        fmt::format("{} points or cells of a geometry are more than the {} of EnSight files",
                    number, kMostNumber));
  }
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

/// The properties that the results of one variable have in common.
struct ResultKey {
  std::string mName;
  std::size_t mWidth = 1;
  Placement mPlacement = Placement::Point;
  bool mHasStep = false;
  std::size_t mRepetition = 0;  ///< Results of one part and step that are equal in all the rest.
  friend auto operator<=>(const ResultKey&, const ResultKey&) = default;
};

/// Identifies the values of a variable in a part and a step.
struct SourceKey {
  ResultKey mResult;
  std::optional<std::size_t> mStep;
  std::size_t mPart = 0;
  friend auto operator<=>(const SourceKey&, const SourceKey&) = default;
};

class EnsightBuilder {
 public:
  EnsightBuilder(const ExportTask& task, const std::string& path, OutputSet& outputs)
      : mTask(task),
        mMeshes(task.mKinds),
        mOutputs(outputs),
        mFileStem(Plain(fs::path(path).stem().string(), "_-")),
        mStem((fs::path(path).parent_path() / mFileStem).string()),
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
  static constexpr std::size_t kMostKeptRuns = 1000;

  void Note(std::string text) { mTask.mNotes.push_back(std::move(text)); }

  void CollectVariables() {
    for (std::size_t i = 0; i < mTask.mContent.mParts.size(); ++i) {
      for (const ExportResult& result : mTask.mContent.mParts[i].mResults) AddSource(i, result);
    }
    NoteResultsLeftOut(
        mTask, [](const ExportResult& result) { return result.mPlacement != Placement::Field; });
    NoteSetsLeftOut(mTask);
  }

  void AddSource(std::size_t part, const ExportResult& result) {
    if (result.mPlacement == Placement::Field) return;
    SourceKey key{{result.mName, result.mWidth, result.mPlacement, result.mStep.has_value(), 0},
                  result.mStep,
                  part};
    while (!mSources.try_emplace(key, &result).second) ++key.mResult.mRepetition;
    if (mVariables.try_emplace(key.mResult).second) AddVariables(key.mResult);
    if (result.mIsUnsigned && mUnsignedNames.insert(result.mName).second) {
      Note("result " + Escape(result.mName, {}) + ": integers are written as floats");
    }
  }

  void AddVariables(const ResultKey& key) {
    const bool isVector = key.mWidth == 3;
    for (std::size_t k = 0; k < (isVector ? 1 : key.mWidth); ++k) {
      const std::string component = isVector || key.mWidth == 1 ? "" : "_" + std::to_string(k + 1);
      const std::string name = MakeName(VariableText(key.mName) + component);
      mVariables[key].push_back({name, isVector, k, key.mPlacement, key.mHasStep});
      if (name != key.mName + component) {
        Note("result " + Escape(key.mName + component, {}) + ": the variable is named " + name);
      }
    }
  }

  /// Makes a name that differs from those before: "Stress", "Stress_2".
  std::string MakeName(const std::string& text) {
    std::string name = text;
    for (std::size_t n = 2; !mNames.insert(name).second; ++n) name = fmt::format("{}_{}", text, n);
    return name;
  }

  // ---- mesh

  void WriteGeometry() {
    SafeOutput& output = mOutputs.Open(mStem + ".geo");
    WriteText(output, "C Binary");
    WriteText(output, "written by ryx export");
    WriteText(output, "");
    const bool haveIds =
        std::all_of(mTask.mContent.mParts.begin(), mTask.mContent.mParts.end(),
                    [&](const ExportPart& part) { return HasIds(mMeshes.Get(part)); });
    if (!haveIds) Note("ids are not written: a geometry has none, or some above 2147483647");
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

  static bool HasIds(const QovMesh::Mesh& mesh) {
    const auto fit = [](const std::vector<std::uint32_t>& ids, std::uint64_t count) {
      return ids.size() == count && std::all_of(ids.begin(), ids.end(),
                                                [](std::uint32_t id) { return id <= kMostNumber; });
    };
    return fit(mesh.mNodeIds, mesh.GetNumPoints()) && fit(mesh.mElementIds, mesh.GetNumCells());
  }

  void WritePart(const ExportPart& part, bool haveIds, SafeOutput& output) {
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    WriteText(output, "coordinates");
    WriteNumber(output, mesh.GetNumPoints());
    if (haveIds) output.Write<std::uint32_t>(mesh.mNodeIds);
    WriteComponents(mesh.mPoints, 3, output);
    for (const NamedKind& kind : kKinds) WriteElements(mesh, kind, haveIds, output);
    for (const CellKind kind : {CellKind::Empty, CellKind::Points}) {
      const std::uint64_t count = ForEachRun(mesh.mRuns, kind, [](const CellRun&) {});
      if (count == 0) continue;
      Note(fmt::format("geometry {}: not written: {} of the kind {}", Escape(part.mName, {}),
                       Plural(count, "cell"), QovMesh::GetShape(kind).mName));
    }
    if (mesh.mRuns.size() <= kMostKeptRuns) mRuns[&part] = mesh.mRuns;
  }

  /// Returns the runs of cells. Those of most meshes are few and kept, so that the mesh need not be
  /// read again for every variable.
  const std::vector<CellRun>& GetRuns(const ExportPart& part) {
    const auto found = mRuns.find(&part);
    return found == mRuns.end() ? mMeshes.Get(part).mRuns : found->second;
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
  static std::uint64_t ForEachRun(const std::vector<CellRun>& runs, CellKind kind, Visitor visit) {
    std::uint64_t count = 0;
    for (const CellRun& run : runs) {
      if (run.mKind != kind) continue;
      count += run.mNumCells;
      visit(run);
    }
    return count;
  }

  void WriteElements(const QovMesh::Mesh& mesh, const NamedKind& kind, bool haveIds,
                     SafeOutput& output) {
    const std::uint64_t count = ForEachRun(mesh.mRuns, kind.mKind, [](const CellRun&) {});
    if (count == 0) return;
    WriteText(output, kind.mName);
    WriteNumber(output, count);
    if (haveIds) {
      ForEachRun(mesh.mRuns, kind.mKind, [&](const CellRun& run) {
        output.Write<std::uint32_t>(
            std::span(mesh.mElementIds).subspan(run.mFirstCell, run.mNumCells));
      });
    }
    if (kind.mKind == CellKind::Polygon) {
      ForEachRun(mesh.mRuns, kind.mKind, [&](const CellRun& run) {
        for (std::uint64_t i = 0; i < run.mNumCells; ++i) WriteNumber(output, run.mNumNodes);
      });
    }
    std::vector<std::uint32_t> numbers;
    ForEachRun(mesh.mRuns, kind.mKind, [&](const CellRun& run) {
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
        mCase.Write(
            fmt::format("{} per {}: {}{} {}.{}{}\n", variable.mIsVector ? "vector" : "scalar",
                        variable.mPlacement == Placement::Point ? "node" : "element",
                        variable.mHasSteps ? "1 " : "", variable.mName, mFileStem, variable.mName,
                        variable.mHasSteps ? "." + std::string(CountDigits(), '*') : ""));
      }
    }
    const auto& steps = mTask.mContent.mSteps;
    if (!steps.empty()) {
      mCase.Write(
          fmt::format("\nTIME\ntime set: 1\nnumber of steps: {}\nfilename start number: 0\n"
                      "filename increment: 1\ntime values:\n",
                      steps.size()));
      const bool haveTimes = HaveAscendingTimes();
      if (!haveTimes) Note("the steps do not all have times of their own: 0, 1, ... are written");
      for (std::size_t i = 0; i < steps.size(); ++i) {
        mCase.Write(fmt::format("{}\n", haveTimes ? *steps[i].mTime : static_cast<double>(i)));
      }
    }
    mCase.Finish();
  }

  /// Returns true if readers can choose each step by its time.
  bool HaveAscendingTimes() const {
    const auto& steps = mTask.mContent.mSteps;
    const auto isBefore = [](const QovMesh::Step& a, const QovMesh::Step& b) {
      return a.mTime && b.mTime && *a.mTime < *b.mTime;
    };
    return steps.front().mTime &&
           std::adjacent_find(steps.begin(), steps.end(), std::not_fn(isBefore)) == steps.end();
  }

  /// Returns the number of digits in the names of the files of steps.
  std::size_t CountDigits() const {
    return std::max<std::size_t>(4, std::to_string(mTask.mContent.mSteps.size()).size());
  }

  void WriteVariable(const ResultKey& key, const Variable& variable) {
    const std::string path = mStem + "." + variable.mName;
    if (!variable.mHasSteps) return WriteFile(key, variable, std::nullopt, path);
    for (std::size_t step = 0; step < mTask.mContent.mSteps.size(); ++step) {
      WriteFile(key, variable, step, fmt::format("{}.{:0{}}", path, step, CountDigits()));
    }
  }

  void WriteFile(const ResultKey& key, const Variable& variable, std::optional<std::size_t> step,
                 const std::string& path) {
    SafeOutput& output = mOutputs.Open(path);
    WriteText(output, Escape(key.mName, {}));
    for (std::size_t i = 0; i < mTask.mContent.mParts.size(); ++i) {
      const auto source = mSources.find({key, step, i});
      if (source == mSources.end()) continue;
      WriteText(output, "part");
      WriteNumber(output, i + 1);
      WriteValues(mTask.mContent.mParts[i], *source->second, variable, output);
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
    const std::vector<CellRun>& runs = GetRuns(part);
    for (const NamedKind& kind : kKinds) {
      std::vector<float> chosen;
      ForEachRun(runs, kind.mKind, [&](const CellRun& run) {
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
    bits.resize(bits.size() / result.mWidth * result.mWidth);
    for (std::size_t i = variable.mComponent; i < bits.size(); i += step) {
      values.push_back(result.mIsUnsigned ? static_cast<float>(bits[i])
                                          : std::bit_cast<float>(bits[i]));
    }
    return values;
  }

  const ExportTask& mTask;
  MeshCache mMeshes;
  OutputSet& mOutputs;
  std::string mFileStem;  ///< What the names of the other files begin with.
  std::string mStem;      ///< The same with the folder.
  SafeOutput& mCase;
  std::set<std::string> mNames = {"case",
                                  "geo"};  ///< Used names of variables, or endings of files.
  std::set<std::string> mUnsignedNames;
  std::map<ResultKey, std::vector<Variable>> mVariables;
  std::map<SourceKey, const ExportResult*> mSources;
  std::map<const ExportPart*, std::vector<CellRun>> mRuns;
};

}  // namespace

void WriteEnsight(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  EnsightBuilder(task, path, outputs).Write();
}

}  // namespace Qov::Tools
