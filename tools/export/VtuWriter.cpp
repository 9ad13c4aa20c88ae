#include "export/VtuWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <tuple>
#include <utility>

#include "Plural.h"
#include "Terminal.h"
#include "export/CompressedBlocks.h"
#include "export/UniqueNames.h"
#include "export/XmlText.h"
#include "merge/ArrayNames.h"
#include "mesh/MeshArrays.h"
#include "mesh/SetMasks.h"

namespace Qov::Tools {
namespace {

using QovMesh::CellRun;
using QovMesh::Mesh;
using QovMesh::Placement;

std::size_t SizeOf(std::string_view type) {
  if (type == "UInt8") return 1;
  return type == "Int64" ? 8 : 4;
}

const char* TypeOf(bool isUnsigned) { return isUnsigned ? "UInt32" : "Float32"; }

/// Bytes of an array of the file.
class ArraySink {
 public:
  ArraySink(CompressedBlocks& blocks, CompressedBlocks::ArrayPtr array)
      : mBlocks(blocks), mpArray(std::move(array)) {}

  template <class T>
  void Append(std::span<const T> values) const {
    mBlocks.Append(mpArray, values.data(), values.size_bytes());
  }
  /// Appends `count` times the same value.
  template <class T>
  void Fill(T value, std::uint64_t count) const {
    const std::vector<T> buffer(std::min<std::uint64_t>(count, kBufferLength), value);
    while (count > 0) {
      const std::size_t length = std::min<std::uint64_t>(count, buffer.size());
      Append(std::span(buffer).first(length));
      count -= length;
    }
  }
  void End() const { mBlocks.End(mpArray); }

  static constexpr std::size_t kBufferLength = std::size_t{1} << 14U;

 private:
  CompressedBlocks& mBlocks;
  CompressedBlocks::ArrayPtr mpArray;
};

/// A part that is being written.
struct Piece {
  std::size_t mNumber = 0;
  const ExportPart* mpPart = nullptr;
  const Mesh* mpMesh = nullptr;
  bool mOwnsPoints = true;                  ///< False if the points of an earlier part are used.
  std::uint64_t mFirstPoint = 0;            ///< In the grid.
  std::uint64_t mFirstNode = 0;             ///< In the connectivity of the grid.
  std::map<std::string, ExportSet> mSets;   ///< The masks, by name.
  std::optional<QovMesh::SetMasks> mMasks;  ///< If there are sets that are masks.
};

enum class Section { Field, Point, Cell, Points, Cells };

/// An array of the file.
struct Column {
  Section mSection = Section::Field;
  std::string mName;
  const char* mType = "Float32";
  std::size_t mNumComponents = 1;
  std::uint64_t mNumTuples = 0;
  /// Appends the values of a part. Field data are written once, for the first part.
  std::function<void(const Piece&, const ArraySink&)> mWrite;
  std::uint64_t mOffsetPosition = 0;

  std::uint64_t GetNumBytes() const { return mNumTuples * mNumComponents * SizeOf(mType); }
};

/// Results of several parts that make one array.
struct JointResult {
  std::string mName;
  std::size_t mWidth = 1;
  bool mIsUnsigned = false;
  std::map<const ExportPart*, const ExportResult*> mResults;
};

template <class Index>
void AppendConnectivity(const Piece& piece, const ArraySink& sink) {
  std::vector<Index> buffer;
  std::span<const std::uint32_t> nodes = piece.mpMesh->mNodes;
  while (!nodes.empty()) {
    const auto taken = nodes.first(std::min(nodes.size(), ArraySink::kBufferLength));
    nodes = nodes.subspan(taken.size());
    buffer.resize(taken.size());
    std::transform(taken.begin(), taken.end(), buffer.begin(), [&](std::uint32_t node) {
      return static_cast<Index>(piece.mFirstPoint + node);
    });
    sink.Append<Index>(buffer);
  }
}

/// Appends the end of each cell in the connectivity.
template <class Index>
void AppendOffsets(const Piece& piece, const ArraySink& sink) {
  std::vector<Index> buffer;
  for (const CellRun& run : piece.mpMesh->mRuns) {
    std::uint64_t end = piece.mFirstNode + run.mFirstNode;
    for (std::uint64_t left = run.mNumCells; left > 0; left -= buffer.size()) {
      buffer.resize(std::min<std::uint64_t>(left, ArraySink::kBufferLength));
      for (Index& offset : buffer) offset = static_cast<Index>(end += run.mNumNodes);
      sink.Append<Index>(buffer);
    }
  }
}

void AppendTypes(const Piece& piece, const ArraySink& sink) {
  for (const CellRun& run : piece.mpMesh->mRuns) {
    sink.Fill(QovMesh::GetShape(run.mKind).mVtkType, run.mNumCells);
  }
}

bool HasPointResults(const ExportPart& part) {
  return std::any_of(part.mResults.begin(), part.mResults.end(), [](const ExportResult& result) {
    return result.mPlacement == Placement::Point;
  });
}

/// The numbers of points, cells and nodes of the parts, and where they begin in the grid.
class GridLayout {
 public:
  explicit GridLayout(const std::vector<const ExportPart*>& parts) {
    for (const ExportPart* part : parts) AddPart(*part);
  }

  std::uint64_t GetNumPoints() const { return mNumPoints; }
  std::uint64_t GetNumCells() const { return mNumCells; }
  std::uint64_t GetNumNodes() const { return mNumNodes; }
  /// Fills what depends on the other parts.
  void Place(Piece& piece) const {
    piece.mOwnsPoints = mPlaces[piece.mNumber].mOwnsPoints;
    piece.mFirstPoint = mPlaces[piece.mNumber].mFirstPoint;
    piece.mFirstNode = mPlaces[piece.mNumber].mFirstNode;
  }

 private:
  struct PartPlace {
    bool mOwnsPoints = true;
    std::uint64_t mFirstPoint = 0;
    std::uint64_t mFirstNode = 0;
  };
  /// Values of coordinates and ids, and the node sets.
  using PointSource = std::tuple<const void*, const void*, std::vector<std::uint32_t>>;

  void AddPart(const ExportPart& part) {
    const QovMesh::MeshArrays arrays(*part.mpGeometry);
    const QovMesh::MeshCounts counts = arrays.Count(part.mMeshInstance);
    const auto loader = [&](std::string_view base) -> const void* {
      const auto* variable = arrays.Find(base, part.mMeshInstance);
      return variable == nullptr ? nullptr : variable->mValues.GetLoader().get();
    };
    PartPlace place{true, mNumPoints, mNumNodes};
    const void* coordinates = loader(QovRyx::kCoordinates);
    if (coordinates != nullptr && !HasPointResults(part)) {
      const auto [found, isNew] =
          mShared.try_emplace({coordinates, loader(QovRyx::kNodeIds), part.mSetNodes}, mNumPoints);
      place.mOwnsPoints = isNew;
      place.mFirstPoint = found->second;
    }
    if (place.mOwnsPoints) mNumPoints += counts.mNumPoints;
    mNumCells += counts.mNumCells;
    if (const auto* nodes = arrays.Find(QovRyx::kConnectivity, part.mMeshInstance)) {
      mNumNodes += nodes->mValues.GetNumElements();
    }
    mPlaces.push_back(place);
  }

  std::vector<PartPlace> mPlaces;
  std::map<PointSource, std::uint64_t> mShared;  ///< First points.
  std::uint64_t mNumPoints = 0;
  std::uint64_t mNumCells = 0;
  std::uint64_t mNumNodes = 0;
};

class VtuBuilder {
 public:
  VtuBuilder(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
             std::vector<std::string>& notes, SafeOutput& output)
      : mParts(parts),
        mSets(sets),
        mMeshes(meshes),
        mNotes(notes),
        mOutput(output),
        mLayout(parts) {}

  void Write() {
    AddMesh();
    AddResults(Placement::Point);
    AddResults(Placement::Cell);
    AddFieldResults();
    AddIds(QovRyx::kNodeIds, Section::Point);
    AddIds(QovRyx::kElementIds, Section::Cell);
    if (mParts.size() > 1) AddPartNumbers();
    AddSets();
    WriteHeader();
    if (mParts.size() == 1) {
      WriteOneByOne();
    } else {
      WriteInterleaved();
    }
    mOutput.Write("\n</AppendedData>\n</VTKFile>\n");
  }

 private:
  /// Adds an array of point or cell data, or of field data, whose number of tuples is set later.
  Column& Add(Section section, const std::string& name, const char* type,
              std::size_t numComponents) {
    Column column;
    column.mSection = section;
    column.mName = mNames[static_cast<std::size_t>(section)].Make(name);
    column.mType = type;
    column.mNumComponents = numComponents;
    if (section == Section::Point || section == Section::Points) {
      column.mNumTuples = mLayout.GetNumPoints();
    } else if (section == Section::Cell || section == Section::Cells) {
      column.mNumTuples = mLayout.GetNumCells();
    }
    mColumns.push_back(std::move(column));
    return mColumns.back();
  }

  void AddMesh() {
    Add(Section::Points, "Points", "Float32", 3).mWrite = [](const Piece& piece,
                                                             const ArraySink& sink) {
      sink.Append<float>(piece.mpMesh->mPoints);
    };
    const bool isWide = std::max(mLayout.GetNumPoints(), mLayout.GetNumNodes()) >
                        static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    const char* index = isWide ? "Int64" : "Int32";
    Column& connectivity = Add(Section::Cells, "connectivity", index, 1);
    connectivity.mNumTuples = mLayout.GetNumNodes();
    connectivity.mWrite =
        isWide ? AppendConnectivity<std::int64_t> : AppendConnectivity<std::int32_t>;
    Add(Section::Cells, "offsets", index, 1).mWrite =
        isWide ? AppendOffsets<std::int64_t> : AppendOffsets<std::int32_t>;
    Add(Section::Cells, "types", "UInt8", 1).mWrite = AppendTypes;
  }

  void NoteMissing(std::string_view noun, const std::string& name, std::size_t numMissing,
                   const char* value) {
    if (numMissing == 0) return;
    mNotes.push_back(fmt::format("{} {}: {} of {} do not have it; it is {} there", noun,
                                 Escape(name, {}), numMissing, Plural(mParts.size(), "part"),
                                 value));
  }

  std::vector<JointResult> JoinResults(Placement placement) const {
    std::map<std::tuple<std::string, std::size_t, bool>, std::size_t> positions;
    std::vector<JointResult> joint;
    for (const ExportPart* part : mParts) {
      for (const ExportResult& result : part->mResults) {
        if (result.mPlacement != placement) continue;
        const auto [found, isNew] =
            positions.try_emplace({result.mName, result.mWidth, result.mIsUnsigned}, joint.size());
        if (isNew) joint.push_back({result.mName, result.mWidth, result.mIsUnsigned, {}});
        joint[found->second].mResults[part] = &result;
      }
    }
    return joint;
  }

  void AddResults(Placement placement) {
    const Section section = placement == Placement::Point ? Section::Point : Section::Cell;
    for (JointResult& joint : JoinResults(placement)) {
      Column& column = Add(section, joint.mName, TypeOf(joint.mIsUnsigned), joint.mWidth);
      NoteMissing("result", column.mName, mParts.size() - joint.mResults.size(),
                  joint.mIsUnsigned ? "0" : "NaN");
      column.mWrite = [placement, joint = std::move(joint)](const Piece& piece,
                                                            const ArraySink& sink) {
        WriteJoint(joint, placement, piece, sink);
      };
    }
  }

  static void WriteJoint(const JointResult& joint, Placement placement, const Piece& piece,
                         const ArraySink& sink) {
    const auto found = joint.mResults.find(piece.mpPart);
    if (found != joint.mResults.end()) return WriteResult(*found->second, sink);
    const Mesh& mesh = *piece.mpMesh;
    const std::uint64_t numItems =
        placement == Placement::Point ? mesh.GetNumPoints() : mesh.GetNumCells();
    constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();
    sink.Fill(joint.mIsUnsigned ? 0 : std::bit_cast<std::uint32_t>(kMissing),
              numItems * joint.mWidth);
  }

  static void WriteResult(const ExportResult& result, const ArraySink& sink) {
    std::vector<std::uint32_t> bits;
    LoadValues(result, bits);
    sink.Append<std::uint32_t>(bits);
  }

  void AddFieldResults() {
    for (const ExportPart* part : mParts) {
      for (const ExportResult& result : part->mResults) {
        if (result.mPlacement != Placement::Field) continue;
        const std::uint64_t numElements = result.mpVariable->mValues.GetNumElements();
        const std::size_t width = numElements % result.mWidth == 0 ? result.mWidth : 1;
        Column& column = Add(Section::Field,
                             mParts.size() > 1 ? part->mName + ": " + result.mName : result.mName,
                             TypeOf(result.mIsUnsigned), width);
        column.mNumTuples = numElements / width;
        column.mWrite = [&result](const Piece&, const ArraySink& sink) {
          WriteResult(result, sink);
        };
      }
    }
  }

  /// Adds ids of points or cells; a part without ids has 0 there.
  void AddIds(std::string_view base, Section section) {
    const bool isPoint = section == Section::Point;
    const auto hasIds = [&](const ExportPart* part) {
      const QovMesh::MeshArrays arrays(*part->mpGeometry);
      const auto counts = arrays.Count(part->mMeshInstance);
      const auto* ids = arrays.Find(base, part->mMeshInstance);
      return ids != nullptr &&
             ids->mValues.GetNumElements() == (isPoint ? counts.mNumPoints : counts.mNumCells);
    };
    const auto numWith =
        static_cast<std::size_t>(std::count_if(mParts.begin(), mParts.end(), hasIds));
    if (numWith == 0) return;
    Column& column = Add(section, std::string(base), "UInt32", 1);
    NoteMissing("array", column.mName, mParts.size() - numWith, "0");
    column.mWrite = [isPoint](const Piece& piece, const ArraySink& sink) {
      const Mesh& mesh = *piece.mpMesh;
      const auto& ids = isPoint ? mesh.mNodeIds : mesh.mElementIds;
      if (!ids.empty()) return sink.Append<std::uint32_t>(ids);
      sink.Fill(std::uint32_t{0}, isPoint ? mesh.GetNumPoints() : mesh.GetNumCells());
    };
  }

  /// Adds the number of each cell's part, and for each part its number under its name. (Some
  /// readers refuse arrays of strings.)
  void AddPartNumbers() {
    Add(Section::Cell, "Part", "UInt32", 1).mWrite = [](const Piece& piece, const ArraySink& sink) {
      sink.Fill(static_cast<std::uint32_t>(piece.mNumber), piece.mpMesh->GetNumCells());
    };
    for (std::size_t i = 0; i < mParts.size(); ++i) {
      AddNumbers("part " + mParts[i]->mName, {static_cast<std::uint32_t>(i)});
    }
  }

  void AddNumbers(const std::string& name, std::vector<std::uint32_t> numbers) {
    Column& column = Add(Section::Field, name, "UInt32", 1);
    column.mNumTuples = numbers.size();
    column.mWrite = [numbers = std::move(numbers)](const Piece&, const ArraySink& sink) {
      sink.Append<std::uint32_t>(numbers);
    };
  }

  /// Masks of the same name in several parts make one array.
  void AddSets() {
    std::set<std::string> masks;
    for (const ExportPart* part : mParts) {
      for (ExportSet& set : mSets.Load(*part)) {
        if (!set.mIsMask) {
          AddNumbers("set " + set.mName, std::move(set.mNumbers));
        } else if (masks.insert(set.mName).second) {
          Add(Section::Point, "set " + set.mName, "UInt8", 1).mWrite =
              [name = set.mName](const Piece& piece, const ArraySink& sink) {
                WriteMask(name, piece, sink);
              };
        }
      }
    }
    mHasMasks = !masks.empty();
  }

  static void WriteMask(const std::string& name, const Piece& piece, const ArraySink& sink) {
    const auto set = piece.mSets.find(name);
    if (set == piece.mSets.end() || !piece.mMasks) {
      return sink.Fill(std::uint8_t{0}, piece.mpMesh->GetNumPoints());
    }
    sink.Append<std::uint8_t>(piece.mMasks->MakeMask(set->second.mNumbers));
  }

  void WriteHeader() {
    mOutput.Write(
        "<?xml version=\"1.0\"?>\n"
        "<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"LittleEndian\" "
        "header_type=\"UInt64\" compressor=\"vtkZLibDataCompressor\">\n"
        "<UnstructuredGrid>\n");
    WriteSection(Section::Field, "FieldData");
    mOutput.Write(fmt::format("<Piece NumberOfPoints=\"{}\" NumberOfCells=\"{}\">\n",
                              mLayout.GetNumPoints(), mLayout.GetNumCells()));
    WriteSection(Section::Point, "PointData");
    WriteSection(Section::Cell, "CellData");
    WriteSection(Section::Points, "Points");
    WriteSection(Section::Cells, "Cells");
    mOutput.Write("</Piece>\n</UnstructuredGrid>\n<AppendedData encoding=\"raw\">\n_");
  }

  void WriteSection(Section section, const char* element) {
    mOutput.Write(fmt::format("<{}>\n", element));
    for (Column& column : mColumns) {
      if (column.mSection != section) continue;
      mOutput.Write(fmt::format("<DataArray type=\"{}\" Name=\"{}\" NumberOfComponents=\"{}\" ",
                                column.mType, XmlText(column.mName), column.mNumComponents));
      if (section == Section::Field) {
        mOutput.Write(fmt::format("NumberOfTuples=\"{}\" ", column.mNumTuples));
      }
      mOutput.Write("format=\"appended\" ");
      column.mOffsetPosition = CompressedBlocks::WriteOffset(mOutput);
      mOutput.Write("/>\n");
    }
    mOutput.Write(fmt::format("</{}>\n", element));
  }

  Piece LoadPiece(std::size_t number) {
    Piece piece;
    piece.mNumber = number;
    piece.mpPart = mParts[number];
    piece.mpMesh = &mMeshes.Get(*piece.mpPart);
    mLayout.Place(piece);
    if (!mHasMasks || !piece.mOwnsPoints) return piece;
    for (ExportSet& set : mSets.Load(*piece.mpPart)) {
      if (set.mIsMask) piece.mSets.try_emplace(set.mName, std::move(set));
    }
    if (!piece.mpMesh->mNodeIds.empty()) piece.mMasks.emplace(piece.mpMesh->mNodeIds);
    return piece;
  }

  void WriteOneByOne() {
    CompressedBlocks blocks(mOutput, CompressedBlocks::Order::OneByOne);
    const Piece piece = LoadPiece(0);
    for (const Column& column : mColumns) {
      const ArraySink sink(blocks, blocks.Begin(column.GetNumBytes(), column.mOffsetPosition));
      column.mWrite(piece, sink);
      sink.End();
    }
    blocks.Finish();
  }

  /// Reads the parts one after another, because reading them once for each array would take long.
  void WriteInterleaved() {
    CompressedBlocks blocks(mOutput, CompressedBlocks::Order::Interleaved);
    std::vector<ArraySink> sinks;
    for (const Column& column : mColumns) {
      sinks.emplace_back(blocks, blocks.Begin(column.GetNumBytes(), column.mOffsetPosition));
    }
    for (std::size_t i = 0; i < mParts.size(); ++i) WritePiece(LoadPiece(i), sinks);
    for (const ArraySink& sink : sinks) sink.End();
    blocks.Finish();
  }

  void WritePiece(const Piece& piece, const std::vector<ArraySink>& sinks) const {
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
      const Section section = mColumns[i].mSection;
      const bool isOfPoints = section == Section::Point || section == Section::Points;
      if (isOfPoints && !piece.mOwnsPoints) continue;
      if (section == Section::Field && piece.mNumber != 0) continue;
      mColumns[i].mWrite(piece, sinks[i]);
    }
  }

  const std::vector<const ExportPart*>& mParts;
  ExportSets& mSets;
  MeshCache& mMeshes;
  std::vector<std::string>& mNotes;
  SafeOutput& mOutput;
  GridLayout mLayout;
  std::array<UniqueNames, 5> mNames;  ///< By section.
  std::vector<Column> mColumns;
  bool mHasMasks = false;
};

}  // namespace

void WriteVtu(const std::vector<const ExportPart*>& parts, ExportSets& sets, MeshCache& meshes,
              std::vector<std::string>& notes, SafeOutput& output) {
  VtuBuilder(parts, sets, meshes, notes, output).Write();
}

}  // namespace Qov::Tools
