#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "CsvText.h"
#include "Plural.h"
#include "Terminal.h"
#include "export/LeftOut.h"
#include "export/SpilledBytes.h"
#include "export/TableWriters.h"
#include "export/UniqueNames.h"

namespace Qov::Tools {
namespace {

using QovMesh::Placement;

/// Returns true for a name that spreadsheets take for a formula.
bool IsLikeFormula(const std::string& name) {
  return !name.empty() && std::string_view("=+-@").find(name[0]) != std::string_view::npos;
}

/// Returns a name as a field of a table. Escape leaves no line breaks.
std::string CsvName(const std::string& name) {
  constexpr TextStyle kUtf8{false, true, false, 80};
  return CsvText((IsLikeFormula(name) ? "'" : "") + Escape(name, kUtf8));
}

/// A column of the table: a result of that name and width.
struct Column {
  std::string mName;
  std::size_t mWidth = 1;
  friend auto operator<=>(const Column&, const Column&) = default;
};

/// The values of a column in a part. They are in a temporary file, because a table needs all
/// columns of a row at once.
struct StoredColumn {
  bool mIsStored = false;  ///< The part has the result.
  bool mIsUnsigned = false;
  std::uint64_t mPosition = 0;
  std::vector<std::uint32_t> mPiece;  ///< Values of the rows that are being written.
};

class CsvBuilder {
 public:
  CsvBuilder(const ExportTask& task, SafeOutput& output)
      : mTask(task), mMeshes(task.mKinds), mOutput(output) {}

  void Write() {
    ChooseRows();
    CollectColumns();
    WriteHeading();
    for (const ExportPart& part : mTask.mContent.mParts) WritePart(part);
    WriteNotes();
  }

 private:
  template <class Visitor>
  void ForEachResult(Visitor visit) {
    for (const ExportPart& part : mTask.mContent.mParts) {
      for (const ExportResult& result : part.mResults) visit(part, result);
    }
  }

  void ChooseRows() {
    bool hasPoint = false;
    bool hasCell = false;
    ForEachResult([&](const ExportPart&, const ExportResult& result) {
      hasPoint = hasPoint || result.mPlacement == Placement::Point;
      hasCell = hasCell || result.mPlacement == Placement::Cell;
    });
    mRows = hasCell && !hasPoint ? Placement::Cell : Placement::Point;
  }

  void CollectColumns() {
    ForEachResult([&](const ExportPart& part, const ExportResult& result) {
      if (result.mPlacement != mRows) {
        ++mTask.mResultsLeftOut[static_cast<std::size_t>(result.mPlacement)];
        mTask.mNotes.push_back(fmt::format("result {} of {}: not in the table, whose rows are {}",
                                           Escape(result.mName, {}), Escape(part.mName, {}),
                                           mRows == Placement::Point ? "points" : "cells"));
        return;
      }
      const Column column{result.mName, result.mWidth};
      if (mPositions.try_emplace(column, mColumns.size()).second) mColumns.push_back(column);
    });
  }

  void WriteHeading() {
    UniqueNames names;
    std::string line;
    for (const char* name : {"part", "id", "x", "y", "z"}) {
      line += (line.empty() ? "" : ",") + names.Make(name);
    }
    for (const Column& column : mColumns) {
      for (std::size_t k = 0; k < column.mWidth; ++k) {
        const std::string name =
            column.mWidth == 1 ? column.mName : fmt::format("{} {}", column.mName, k + 1);
        const std::string unique = names.Make(name);
        if (unique != name) {
          mTask.mNotes.push_back(fmt::format("result {}: its column is named {}, because {} exists",
                                             Escape(column.mName, {}), Escape(unique, {}),
                                             Escape(name, {})));
        }
        mNumLikeFormula += IsLikeFormula(unique) ? 1 : 0;
        line += ',' + CsvName(unique);
      }
    }
    mOutput.Write(line + '\n');
  }

  void WriteNotes() const {
    if (mNumLikeFormula != 0) {
      mTask.mNotes.push_back(Plural(mNumLikeFormula, "name") +
                             " with =, +, - or @ as first character: a ' is written before it, so "
                             "that it is not a formula");
    }
    if (mNumWithoutIds != 0) {
      mTask.mNotes.push_back(fmt::format(
          "{} without {} ids: positions are written, from 1",
          mNumWithoutIds == 1 ? "1 geometry" : fmt::format("{} geometries", mNumWithoutIds),
          mRows == Placement::Point ? "node" : "element"));
    }
    NoteSetsLeftOut(mTask);
  }

  /// Puts the columns of a part into a temporary file.
  std::vector<StoredColumn> StoreColumns(const ExportPart& part, SpilledBytes& bytes) const {
    std::vector<StoredColumn> stored(mColumns.size());
    std::vector<std::uint32_t> bits;
    for (const ExportResult& result : part.mResults) {
      if (result.mPlacement != mRows) continue;
      StoredColumn& column = stored[mPositions.at({result.mName, result.mWidth})];
      column = {true, result.mIsUnsigned, bytes.GetSize(), {}};
      LoadValues(result, bits);
      bytes.Append<std::uint32_t>(bits);
    }
    return stored;
  }

  void WritePart(const ExportPart& part) {
    SpilledBytes bytes(mOutput);
    std::vector<StoredColumn> columns = StoreColumns(part, bytes);
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    const bool isPoint = mRows == Placement::Point;
    const std::uint64_t numRows = isPoint ? mesh.GetNumPoints() : mesh.GetNumCells();
    const auto& ids = isPoint ? mesh.mNodeIds : mesh.mElementIds;
    const std::string name = CsvName(part.mName);
    mNumLikeFormula += IsLikeFormula(part.mName) ? 1 : 0;
    mNumWithoutIds += ids.empty() && numRows != 0 ? 1 : 0;
    Centres centres(mesh);
    for (std::uint64_t begin = 0; begin < numRows; begin += kPiece) {
      const auto count = static_cast<std::size_t>(std::min(kPiece, numRows - begin));
      ReadPieces(bytes, begin, count, columns);
      fmt::memory_buffer text;
      for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t row = begin + i;
        const auto place = isPoint ? PointOf(mesh, row) : centres.Next();
        fmt::format_to(std::back_inserter(text), "{},{}", name, ids.empty() ? row + 1 : ids[row]);
        for (const float coordinate : place) AppendFloat(coordinate, text);
        AppendValues(columns, i, text);
        text.push_back('\n');
      }
      mOutput.Write(text.data(), text.size());
    }
  }

  void ReadPieces(SpilledBytes& bytes, std::uint64_t begin, std::size_t count,
                  std::vector<StoredColumn>& columns) const {
    for (std::size_t c = 0; c < columns.size(); ++c) {
      StoredColumn& column = columns[c];
      if (!column.mIsStored) continue;
      const std::size_t width = mColumns[c].mWidth;
      column.mPiece.resize(count * width);
      bytes.Read(column.mPosition + begin * width * sizeof(std::uint32_t), column.mPiece.data(),
                 column.mPiece.size() * sizeof(std::uint32_t));
    }
  }

  void AppendValues(const std::vector<StoredColumn>& columns, std::size_t row,
                    fmt::memory_buffer& text) const {
    for (std::size_t c = 0; c < columns.size(); ++c) {
      for (std::size_t k = 0; k < mColumns[c].mWidth; ++k) {
        if (!columns[c].mIsStored) {
          text.push_back(',');
          continue;
        }
        const std::uint32_t bits = columns[c].mPiece[row * mColumns[c].mWidth + k];
        if (columns[c].mIsUnsigned) {
          fmt::format_to(std::back_inserter(text), ",{}", bits);
        } else {
          AppendFloat(std::bit_cast<float>(bits), text);
        }
      }
    }
  }

  static void AppendFloat(float value, fmt::memory_buffer& text) {
    if (std::isnan(value)) value = std::numeric_limits<float>::quiet_NaN();  // without a sign
    fmt::format_to(std::back_inserter(text), ",{}", value);
  }

  static std::array<float, 3> PointOf(const QovMesh::Mesh& mesh, std::uint64_t point) {
    return {mesh.mPoints[3 * point], mesh.mPoints[3 * point + 1], mesh.mPoints[3 * point + 2]};
  }

  /// The centres of the cells, one after another: means of their nodes.
  class Centres {
   public:
    explicit Centres(const QovMesh::Mesh& mesh) : mMesh(mesh) {}
    std::array<float, 3> Next() {
      while (mCell == mMesh.mRuns[mRun].mNumCells) {
        ++mRun;
        mCell = 0;
      }
      const QovMesh::CellRun& run = mMesh.mRuns[mRun];
      std::array<double, 3> sum{};
      for (std::uint32_t j = 0; j < run.mNumNodes; ++j) {
        const std::uint32_t node = mMesh.mNodes[run.mFirstNode + mCell * run.mNumNodes + j];
        for (std::size_t k = 0; k < 3; ++k) sum[k] += mMesh.mPoints[std::size_t{3} * node + k];
      }
      ++mCell;
      std::array<float, 3> centre{};
      for (std::size_t k = 0; k < 3; ++k) centre[k] = static_cast<float>(sum[k] / run.mNumNodes);
      return centre;
    }

   private:
    const QovMesh::Mesh& mMesh;
    std::size_t mRun = 0;
    std::uint64_t mCell = 0;
  };

  static constexpr std::uint64_t kPiece = 4096;  // rows

  const ExportTask& mTask;
  MeshCache mMeshes;
  SafeOutput& mOutput;
  Placement mRows = Placement::Point;
  std::uint64_t mNumLikeFormula = 0;  ///< Names of parts and columns.
  std::uint64_t mNumWithoutIds = 0;   ///< Parts.
  std::vector<Column> mColumns;
  std::map<Column, std::size_t> mPositions;  ///< Of the columns in mColumns.
};

}  // namespace

void WriteCsv(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  CsvBuilder(task, outputs.Open(path)).Write();
}

}  // namespace Qov::Tools
