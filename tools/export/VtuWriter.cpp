#include "export/VtuWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <map>
#include <span>
#include <tuple>
#include <utility>

#include "Terminal.h"
#include "export/CompressedBlocks.h"
#include "export/UniqueNames.h"
#include "export/XmlText.h"
#include "mesh/ArrayNames.h"
#include "mesh/SetMasks.h"

namespace Qov::Tools {
namespace {

using QovMesh::CellRun;
using QovMesh::Placement;

/// The numbers of a part, which stay when its mesh has gone.
struct PartShape {
  std::uint64_t mNumPoints = 0;
  std::uint64_t mNumNodes = 0;
  std::uint64_t mNumCells = 0;
  std::vector<CellRun> mRuns;
};

enum class Section { Field, Point, Cell, Points, Cells };

/// An array of the file: what its element says, and how its bytes are made.
struct VtkArray {
  Section mSection = Section::Field;
  std::string mName;
  const char* mType = "Float32";
  std::size_t mNumComponents = 1;
  std::uint64_t mNumTuples = 0;
  std::uint64_t mSize = 0;  ///< Bytes.
  std::function<void(CompressedBlocks&)> mWrite;
  std::uint64_t mOffsetPosition = 0;  ///< Where the file holds the offset of the data.
};

// Room for the greatest 64-bit number and the quote after it. The padding follows the quote because
// some readers compare the text of the attribute.
constexpr std::size_t kOffsetWidth = 21;

/// Results of several parts that make one array.
struct JointResult {
  std::string mName;
  std::size_t mWidth = 1;
  bool mIsUnsigned = false;
  std::map<const ExportPart*, const ExportResult*> mResults;
};

class VtuBuilder {
 public:
  VtuBuilder(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
             std::vector<std::string>& notes, SafeOutput& output)
      : mParts(parts), mSets(sets), mMeshes(meshes), mNotes(notes), mOutput(output) {}

  void Write() {
    MeasureParts();
    AddResults(Placement::Point, Section::Point, mNumPoints);
    AddResults(Placement::Cell, Section::Cell, mNumCells);
    AddFieldResults();
    AddIds(QovMesh::kNodeIds, Section::Point);
    AddIds(QovMesh::kElementIds, Section::Cell);
    if (mParts.size() > 1) AddPartNumbers();
    AddSets();
    AddMesh();
    WriteHeader();
    WriteData();
  }

 private:
  void MeasureParts() {
    for (const ExportPart* part : mParts) {
      const QovMesh::Mesh& mesh = mMeshes.Get(*part);
      mShapes.push_back({mesh.GetNumPoints(), mesh.mNodes.size(), mesh.GetNumCells(), mesh.mRuns});
      mNumPoints += mShapes.back().mNumPoints;
      mNumNodes += mShapes.back().mNumNodes;
      mNumCells += mShapes.back().mNumCells;
      mHasNodeIds = mHasNodeIds && !mesh.mNodeIds.empty();
      mHasElementIds = mHasElementIds && !mesh.mElementIds.empty();
    }
  }

  void Add(VtkArray array) { mArrays.push_back(std::move(array)); }

  std::vector<JointResult> JoinResults(Placement placement) {
    std::map<std::tuple<std::string, std::size_t, bool>, std::size_t> positions;
    std::vector<JointResult> joint;
    UniqueNames names;
    for (const ExportPart* part : mParts) {
      for (const ExportResult& result : part->mResults) {
        if (result.mPlacement != placement) continue;
        const auto [found, isNew] =
            positions.try_emplace({result.mName, result.mWidth, result.mIsUnsigned}, joint.size());
        if (isNew) {
          joint.push_back({names.Make(result.mName), result.mWidth, result.mIsUnsigned, {}});
        }
        joint[found->second].mResults[part] = &result;
      }
    }
    return joint;
  }

  void AddResults(Placement placement, Section section, std::uint64_t numTuples) {
    for (JointResult& joint : JoinResults(placement)) {
      if (joint.mResults.size() < mParts.size()) {
        mNotes.push_back(fmt::format("result {}: {} of {} parts do not have it; it is {} there",
                                     Escape(joint.mName, {}), mParts.size() - joint.mResults.size(),
                                     mParts.size(), joint.mIsUnsigned ? "0" : "NaN"));
      }
      VtkArray array;
      array.mSection = section;
      array.mName = joint.mName;
      array.mType = joint.mIsUnsigned ? "UInt32" : "Float32";
      array.mNumComponents = joint.mWidth;
      array.mSize = numTuples * joint.mWidth * sizeof(float);
      array.mWrite = [this, section, joint = std::move(joint)](CompressedBlocks& blocks) {
        WriteJoint(joint, section, blocks);
      };
      Add(std::move(array));
    }
  }

  void WriteJoint(const JointResult& joint, Section section, CompressedBlocks& blocks) {
    std::vector<std::uint32_t> bits;
    for (std::size_t i = 0; i < mParts.size(); ++i) {
      const auto found = joint.mResults.find(mParts[i]);
      if (found != joint.mResults.end()) {
        LoadValues(*found->second, bits);
      } else {
        const std::uint64_t numItems =
            section == Section::Point ? mShapes[i].mNumPoints : mShapes[i].mNumCells;
        bits.assign(numItems * joint.mWidth,
                    joint.mIsUnsigned
                        ? 0
                        : std::bit_cast<std::uint32_t>(std::numeric_limits<float>::quiet_NaN()));
      }
      Append<std::uint32_t>(bits, blocks);
    }
  }

  template <class T>
  static void Append(std::span<const T> values, CompressedBlocks& blocks) {
    blocks.Append(values.data(), values.size_bytes());
  }

  void AddFieldResults() {
    for (const ExportPart* part : mParts) {
      for (const ExportResult& result : part->mResults) {
        if (result.mPlacement != Placement::Field) continue;
        VtkArray array;
        array.mName = mParts.size() > 1 ? part->mName + ": " + result.mName : result.mName;
        array.mType = result.mIsUnsigned ? "UInt32" : "Float32";
        const std::uint64_t numElements = result.mpVariable->mValues.GetNumElements();
        array.mNumComponents = numElements % result.mWidth == 0 ? result.mWidth : 1;
        array.mNumTuples = numElements / array.mNumComponents;
        array.mSize = numElements * sizeof(float);
        array.mWrite = [&result](CompressedBlocks& blocks) {
          std::vector<std::uint32_t> bits;
          LoadValues(result, bits);
          Append<std::uint32_t>(bits, blocks);
        };
        Add(std::move(array));
      }
    }
  }

  void AddIds(std::string_view name, Section section) {
    const bool isPoint = section == Section::Point;
    if (!(isPoint ? mHasNodeIds : mHasElementIds)) return;
    VtkArray array;
    array.mSection = section;
    array.mName = name;
    array.mType = "UInt32";
    array.mSize = (isPoint ? mNumPoints : mNumCells) * sizeof(std::uint32_t);
    array.mWrite = [this, isPoint](CompressedBlocks& blocks) {
      for (const ExportPart* part : mParts) {
        const QovMesh::Mesh& mesh = mMeshes.Get(*part);
        Append<std::uint32_t>(isPoint ? mesh.mNodeIds : mesh.mElementIds, blocks);
      }
    };
    Add(std::move(array));
  }

  void AddPartNumbers() {
    VtkArray array;
    array.mSection = Section::Cell;
    array.mName = "Part";
    array.mType = "UInt32";
    array.mSize = mNumCells * sizeof(std::uint32_t);
    array.mWrite = [this](CompressedBlocks& blocks) {
      for (std::size_t i = 0; i < mShapes.size(); ++i) {
        const std::vector<std::uint32_t> numbers(mShapes[i].mNumCells,
                                                 static_cast<std::uint32_t>(i));
        Append<std::uint32_t>(numbers, blocks);
      }
    };
    Add(std::move(array));
  }

  /// Masks of the same name in several parts make one array.
  void AddSets() {
    std::vector<std::string> masks;  // in the order in which they come
    for (const ExportPart* part : mParts) {
      for (ExportSet& set : mSets.Load(*part)) {
        if (!set.mIsMask) {
          AddNumbers(std::move(set));
        } else if (std::find(masks.begin(), masks.end(), set.mName) == masks.end()) {
          masks.push_back(set.mName);
        }
      }
    }
    for (const std::string& name : masks) {
      VtkArray array;
      array.mSection = Section::Point;
      array.mName = "set " + name;
      array.mType = "UInt8";
      array.mSize = mNumPoints;
      array.mWrite = [this, name](CompressedBlocks& blocks) { WriteMask(name, blocks); };
      Add(std::move(array));
    }
  }

  void WriteMask(const std::string& name, CompressedBlocks& blocks) {
    for (std::size_t i = 0; i < mParts.size(); ++i) {
      std::vector<std::uint8_t> mask(mShapes[i].mNumPoints);
      for (const ExportSet& set : mSets.Load(*mParts[i])) {
        if (!set.mIsMask || set.mName != name) continue;
        const QovMesh::Mesh& mesh = mMeshes.Get(*mParts[i]);
        if (!mesh.mNodeIds.empty()) mask = QovMesh::SetMasks(mesh.mNodeIds).MakeMask(set.mNumbers);
      }
      Append<std::uint8_t>(mask, blocks);
    }
  }

  void AddNumbers(ExportSet set) {
    VtkArray array;
    array.mName = "set " + set.mName;
    array.mType = "UInt32";
    array.mNumTuples = set.mNumbers.size();
    array.mSize = set.mNumbers.size() * sizeof(std::uint32_t);
    array.mWrite = [numbers = std::move(set.mNumbers)](CompressedBlocks& blocks) {
      Append<std::uint32_t>(numbers, blocks);
    };
    Add(std::move(array));
  }

  void AddMesh() {
    VtkArray points;
    points.mSection = Section::Points;
    points.mName = "Points";
    points.mNumComponents = 3;
    points.mSize = mNumPoints * 3 * sizeof(float);
    points.mWrite = [this](CompressedBlocks& blocks) {
      for (const ExportPart* part : mParts) Append<float>(mMeshes.Get(*part).mPoints, blocks);
    };
    Add(std::move(points));
    const bool isWide = std::max(mNumPoints, mNumNodes) >
                        static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    if (isWide) {
      AddCells<std::int64_t>("Int64");
    } else {
      AddCells<std::int32_t>("Int32");
    }
  }

  template <class Index>
  void AddCells(const char* type) {
    VtkArray connectivity;
    connectivity.mSection = Section::Cells;
    connectivity.mName = "connectivity";
    connectivity.mType = type;
    connectivity.mSize = mNumNodes * sizeof(Index);
    connectivity.mWrite = [this](CompressedBlocks& blocks) { WriteConnectivity<Index>(blocks); };
    Add(std::move(connectivity));
    VtkArray offsets;
    offsets.mSection = Section::Cells;
    offsets.mName = "offsets";
    offsets.mType = type;
    offsets.mSize = mNumCells * sizeof(Index);
    offsets.mWrite = [this](CompressedBlocks& blocks) {
      Index end = 0;
      WriteCells<Index>(blocks, [&](const CellRun& run) {
        return end = static_cast<Index>(end + static_cast<Index>(run.mNumNodes));
      });
    };
    Add(std::move(offsets));
    VtkArray types;
    types.mSection = Section::Cells;
    types.mName = "types";
    types.mType = "UInt8";
    types.mSize = mNumCells;
    types.mWrite = [this](CompressedBlocks& blocks) {
      WriteCells<std::uint8_t>(
          blocks, [](const CellRun& run) { return QovMesh::GetShape(run.mKind).mVtkType; });
    };
    Add(std::move(types));
  }

  template <class Index>
  void WriteConnectivity(CompressedBlocks& blocks) {
    std::uint64_t firstPoint = 0;
    std::vector<Index> piece;
    for (std::size_t i = 0; i < mParts.size(); ++i) {
      std::span<const std::uint32_t> nodes = mMeshes.Get(*mParts[i]).mNodes;
      while (!nodes.empty()) {
        const auto taken = nodes.first(std::min(nodes.size(), kPiece));
        nodes = nodes.subspan(taken.size());
        piece.clear();
        for (const std::uint32_t node : taken)
          piece.push_back(static_cast<Index>(firstPoint + node));
        Append<Index>(piece, blocks);
      }
      firstPoint += mShapes[i].mNumPoints;
    }
  }

  /// Writes `value(run)` for every cell.
  template <class T, class Value>
  void WriteCells(CompressedBlocks& blocks, Value value) {
    std::vector<T> piece;
    for (const PartShape& shape : mShapes) {
      for (const CellRun& run : shape.mRuns) {
        for (std::uint64_t i = 0; i < run.mNumCells; ++i) {
          piece.push_back(value(run));
          if (piece.size() < kPiece) continue;
          Append<T>(piece, blocks);
          piece.clear();
        }
      }
    }
    Append<T>(piece, blocks);
  }

  void WriteHeader() {
    mOutput.Write(
        "<?xml version=\"1.0\"?>\n"
        "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" "
        "header_type=\"UInt64\" compressor=\"vtkZLibDataCompressor\">\n"
        "<UnstructuredGrid>\n");
    WriteSection(Section::Field, "FieldData");
    mOutput.Write(
        fmt::format("<Piece NumberOfPoints=\"{}\" NumberOfCells=\"{}\">\n", mNumPoints, mNumCells));
    WriteSection(Section::Point, "PointData");
    WriteSection(Section::Cell, "CellData");
    WriteSection(Section::Points, "Points");
    WriteSection(Section::Cells, "Cells");
    mOutput.Write("</Piece>\n</UnstructuredGrid>\n<AppendedData encoding=\"raw\">\n_");
  }

  void WriteSection(Section section, const char* element) {
    mOutput.Write(fmt::format("<{}>\n", element));
    for (VtkArray& array : mArrays) {
      if (array.mSection != section) continue;
      mOutput.Write(fmt::format("<DataArray type=\"{}\" Name=\"{}\" NumberOfComponents=\"{}\" ",
                                array.mType, XmlText(array.mName), array.mNumComponents));
      if (section == Section::Field) {
        mOutput.Write(fmt::format("NumberOfTuples=\"{}\" ", array.mNumTuples));
      }
      mOutput.Write("format=\"appended\" offset=\"");
      array.mOffsetPosition = mOutput.GetPosition();
      mOutput.Write(std::string(kOffsetWidth, ' ') + "/>\n");
    }
    mOutput.Write(fmt::format("</{}>\n", element));
  }

  void WriteData() {
    const std::uint64_t begin = mOutput.GetPosition();
    CompressedBlocks blocks(mOutput);
    for (const VtkArray& array : mArrays) {
      mOutput.Patch(
          array.mOffsetPosition,
          fmt::format("{:<{}}", fmt::format("{}\"", mOutput.GetPosition() - begin), kOffsetWidth));
      blocks.Begin(array.mSize);
      array.mWrite(blocks);
      blocks.End();
    }
    mOutput.Write("\n</AppendedData>\n</VTKFile>\n");
  }

  static constexpr std::size_t kPiece = std::size_t{1} << 16U;  // elements

  const std::vector<const ExportPart*>& mParts;
  ExportSets& mSets;
  MeshCache& mMeshes;
  std::vector<std::string>& mNotes;
  SafeOutput& mOutput;
  std::vector<PartShape> mShapes;
  std::uint64_t mNumPoints = 0;
  std::uint64_t mNumNodes = 0;
  std::uint64_t mNumCells = 0;
  bool mHasNodeIds = true;
  bool mHasElementIds = true;
  std::vector<VtkArray> mArrays;
};

}  // namespace

void WriteVtu(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
              std::vector<std::string>& notes, SafeOutput& output) {
  VtuBuilder(parts, sets, meshes, notes, output).Write();
}

}  // namespace Qov::Tools
