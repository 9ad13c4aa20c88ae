#include "export/GlbWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <vector>

#include "Json.h"
#include "Palette.h"
#include "Qov/Util/Raise.h"
#include "export/LeftOut.h"
#include "export/PartSurface.h"
#include "export/SpilledBytes.h"
#include "picture/PngFile.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/export/GlbWriter";
constexpr std::uint32_t kNumColours = 256;  // the texture has one more texel, for no value
constexpr int kFloat = 5126;
constexpr int kUnsignedInt = 5125;
constexpr int kArrayBuffer = 34962;
constexpr int kElementBuffer = 34963;
constexpr int kTriangles = 4;
constexpr int kLines = 1;

class GlbBuilder {
 public:
  GlbBuilder(const ExportTask& task, const SurfaceColour& colour, SafeOutput& output)
      : mTask(task), mColour(colour), mMeshes(task.mKinds), mOutput(output), mBytes(output) {}

  void Write() {
    if (!mColour.mResult.empty()) FindRange();
    mDocument["asset"] = {{"version", "2.0"}, {"generator", "ryx export"}};
    mDocument["scene"] = 0;
    mDocument["scenes"] = Json::array({{{"nodes", Json::array()}}});
    mDocument["nodes"] = Json::array();
    for (const ExportPart& part : mTask.mContent.mParts) AddPart(part);
    AddMaterial();
    WriteFile();
    if (!mColour.mResult.empty()) NoteUncoloured(mTask.mContent, mColour.mResult, mTask.mNotes);
    NoteResultsLeftOut(mTask,
                       [&](const ExportResult& result) { return result.mName == mColour.mResult; });
    NoteSetsLeftOut(mTask);
  }

 private:
  /// Returns the result that colours the part; null if there is none.
  const ExportResult* FindResult(const ExportPart& part) const {
    return mColour.mResult.empty() ? nullptr : FindPlacedResult(part, mColour.mResult);
  }

  void FindRange() {
    bool isKnown = false;
    for (const ExportPart& part : mTask.mContent.mParts) {
      const ExportResult* result = FindResult(part);
      isKnown = isKnown || result != nullptr;
      mRange.Include(LoadScalars(part, result, mColour.mComponent).mValues);
    }
    if (!isKnown) RaiseUnknownResult(mTask.mContent, mColour.mResult, "ryx export --dry-run");
  }

  /// Returns the place of a value in the texture, 0 to 1.
  float TexturePlace(float value) const {
    const double numTexels = kNumColours + 1;
    if (!std::isfinite(value)) return static_cast<float>((kNumColours + 0.5) / numTexels);
    return static_cast<float>((0.5 + mRange.FindShare(value) * (kNumColours - 1)) / numTexels);
  }

  // ---- buffers

  template <class T>
  std::size_t AddView(const std::vector<T>& values, int target) {
    const std::uint64_t offset = mBytes.GetSize();
    CheckFileSize(offset + values.size() * sizeof(T));
    mBytes.Append(values.data(), values.size() * sizeof(T));
    Json view = {{"buffer", 0}, {"byteOffset", offset}, {"byteLength", values.size() * sizeof(T)}};
    if (target != 0) view["target"] = target;
    mDocument["bufferViews"].push_back(view);
    Pad();
    return mDocument["bufferViews"].size() - 1;
  }

  static void CheckFileSize(std::uint64_t size) {
    if (size <= std::numeric_limits<std::uint32_t>::max()) return;
    Util::Raise(kSource, ErrorType::OutOfBounds,
                "the file would be larger than the 4 GiB that glTF allows: choose fewer parts");
  }

  void Pad() {
    constexpr std::array<char, 4> kZeros{};
    mBytes.Append(kZeros.data(), (4 - mBytes.GetSize() % 4) % 4);
  }

  std::size_t AddAccessor(std::size_t view, int componentType, std::size_t count,
                          const char* type) {
    mDocument["accessors"].push_back(
        {{"bufferView", view}, {"componentType", componentType}, {"count", count}, {"type", type}});
    return mDocument["accessors"].size() - 1;
  }

  std::size_t AddPositions(const std::vector<float>& positions) {
    const std::size_t accessor =
        AddAccessor(AddView(positions, kArrayBuffer), kFloat, positions.size() / 3, "VEC3");
    std::array<float, 3> least{positions[0], positions[1], positions[2]};
    std::array<float, 3> greatest = least;
    for (std::size_t i = 0; i < positions.size(); ++i) {
      least[i % 3] = std::min(least[i % 3], positions[i]);
      greatest[i % 3] = std::max(greatest[i % 3], positions[i]);
    }
    Json& document = mDocument["accessors"][accessor];
    for (std::size_t k = 0; k < 3; ++k) {
      document["min"].push_back(least[k]);
      document["max"].push_back(greatest[k]);
    }
    return accessor;
  }

  // ---- parts

  /// The vertices of one primitive.
  struct Vertices {
    std::vector<float> mPositions;
    std::vector<float> mPlaces;  ///< In the texture: u, v.
    std::vector<std::uint32_t> mIndices;
  };

  /// Makes a vertex of each point that is used. Shapes with a value of their own, or without one at
  /// a corner, get vertices of their own, because places between those of two vertices are colours
  /// between them.
  Vertices MakeVertices(const QovMesh::Mesh& mesh, const std::vector<std::uint32_t>& points,
                        const std::vector<std::uint32_t>& cells, std::size_t numCorners,
                        const ResultScalars& scalars) const {
    constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> numbers(mesh.GetNumPoints(), kUnused);
    Vertices vertices;
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < points.size(); i += numCorners) {
      const std::span corners(&points[i], numCorners);
      const std::optional<float> value = scalars.FindShapeValue(corners, cells[i / numCorners]);
      for (const std::uint32_t point : corners) {
        std::uint32_t number = value ? kUnused : numbers[point];
        if (number == kUnused) {
          number = next++;
          if (!value) numbers[point] = number;
          const float* p = mesh.mPoints.data() + std::size_t{3} * point;
          vertices.mPositions.insert(vertices.mPositions.end(), p, p + 3);
          if (!scalars.mValues.empty()) {
            const float place = TexturePlace(value ? *value : scalars.mValues[point]);
            vertices.mPlaces.insert(vertices.mPlaces.end(), {place, 0.5F});
          }
        }
        vertices.mIndices.push_back(number);
      }
    }
    return vertices;
  }

  Json MakePrimitive(const Vertices& vertices, int mode) {
    Json primitive;
    primitive["attributes"]["POSITION"] = AddPositions(vertices.mPositions);
    if (!vertices.mPlaces.empty()) {
      primitive["attributes"]["TEXCOORD_0"] = AddAccessor(
          AddView(vertices.mPlaces, kArrayBuffer), kFloat, vertices.mPlaces.size() / 2, "VEC2");
    }
    primitive["indices"] = AddAccessor(AddView(vertices.mIndices, kElementBuffer), kUnsignedInt,
                                       vertices.mIndices.size(), "SCALAR");
    primitive["mode"] = mode;
    primitive["material"] = vertices.mPlaces.empty() ? kPlainMaterial : kPaletteMaterial;
    return primitive;
  }

  void AddPart(const ExportPart& part) {
    const QovMesh::Mesh& mesh = mMeshes.Get(part);
    const QovMesh::Surface surface = FindPartSurface(mesh, part.mName, mTask.mNotes);
    const ResultScalars scalars = LoadScalars(part, FindResult(part), mColour.mComponent);
    Json primitives = Json::array();
    const Vertices triangles =
        MakeVertices(mesh, surface.mTriangles, surface.mTriangleCells, 3, scalars);
    if (!triangles.mIndices.empty()) primitives.push_back(MakePrimitive(triangles, kTriangles));
    const Vertices lines = MakeVertices(mesh, surface.mLines, surface.mLineCells, 2, scalars);
    if (!lines.mIndices.empty()) primitives.push_back(MakePrimitive(lines, kLines));
    Json node = {{"name", JsonText(part.mName)}};
    if (!primitives.empty()) {
      mDocument["meshes"].push_back({{"name", JsonText(part.mName)}, {"primitives", primitives}});
      node["mesh"] = mDocument["meshes"].size() - 1;
    }
    AddNode(node, part.mGroups);
  }

  /// Adds a node below those of its groups; consecutive parts share them.
  void AddNode(const Json& node, const std::vector<std::string>& groups) {
    std::size_t same = 0;
    while (same < std::min(mOpenGroups.size(), groups.size()) &&
           mOpenGroups[same].mName == groups[same]) {
      ++same;
    }
    mOpenGroups.resize(same);
    for (std::size_t i = same; i < groups.size(); ++i) {
      mOpenGroups.push_back({groups[i], AppendNode({{"name", JsonText(groups[i])}})});
    }
    AppendNode(node);
  }

  struct OpenGroup {
    std::string mName;
    std::size_t mNode = 0;
  };

  std::size_t AppendNode(const Json& node) {
    const std::size_t position = mDocument["nodes"].size();
    mDocument["nodes"].push_back(node);
    Json& siblings = mOpenGroups.empty() ? mDocument["scenes"][0]["nodes"]
                                         : mDocument["nodes"][mOpenGroups.back().mNode]["children"];
    siblings.push_back(position);
    return position;
  }

  // ---- material and file

  void AddMaterial() {
    const auto material = [](const char* name) {
      return Json{{"name", name},
                  {"doubleSided", true},
                  {"pbrMetallicRoughness",
                   {{"baseColorFactor", {0.75, 0.75, 0.75, 1.0}}, {"metallicFactor", 0.0}}}};
    };
    mDocument["materials"].push_back(material("plain"));
    if (mColour.mResult.empty()) return;
    Json palette = material("result");
    palette["name"] = JsonText(mColour.mResult);
    if (!mRange.IsEmpty()) {
      palette["extras"] = {{"least", JsonFloat(mRange.mLeast)},
                           {"greatest", JsonFloat(mRange.mGreatest)}};
    }
    palette["pbrMetallicRoughness"] = {{"baseColorTexture", {{"index", 0}}},
                                       {"metallicFactor", 0.0}};
    palette["extensions"]["KHR_materials_unlit"] = Json::object();
    mDocument["materials"].push_back(palette);
    mDocument["extensionsUsed"] = {"KHR_materials_unlit"};
    Image texels(kNumColours + 1, 1, kNoValueColour);
    const std::vector<Colour> colours = MakePalette(kNumColours);
    std::copy(colours.begin(), colours.end(), &texels.At(0, 0));
    const std::string png = EncodePng(texels);
    const std::size_t view = AddView(std::vector<char>(png.begin(), png.end()), 0);
    mDocument["images"].push_back({{"bufferView", view}, {"mimeType", "image/png"}});
    constexpr int kNearest = 9728;
    constexpr int kClampToEdge = 33071;
    mDocument["samplers"].push_back({{"magFilter", kNearest},
                                     {"minFilter", kNearest},
                                     {"wrapS", kClampToEdge},
                                     {"wrapT", kClampToEdge}});
    mDocument["textures"].push_back({{"sampler", 0}, {"source", 0}});
  }

  void WriteFile() {
    if (mBytes.GetSize() != 0) {
      mDocument["buffers"].push_back({{"byteLength", mBytes.GetSize()}});
    }
    std::string json = mDocument.dump(-1, ' ', true);
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const std::uint64_t kHeaders = 12 + 8 + (mBytes.GetSize() == 0 ? 0 : 8);
    const std::uint64_t total = kHeaders + json.size() + mBytes.GetSize();
    CheckFileSize(total);
    const auto word = [&](std::uint64_t value) {
      const auto bits = static_cast<std::uint32_t>(value);
      mOutput.Write(&bits, sizeof bits);
    };
    mOutput.Write("glTF");
    word(2);
    word(total);
    word(json.size());
    mOutput.Write("JSON");
    mOutput.Write(json);
    if (mBytes.GetSize() == 0) return;
    word(mBytes.GetSize());
    mOutput.Write(std::string_view("BIN\0", 4));
    mBytes.CopyTo(mOutput);
  }

  static constexpr int kPlainMaterial = 0;
  static constexpr int kPaletteMaterial = 1;

  const ExportTask& mTask;
  const SurfaceColour& mColour;
  MeshCache mMeshes;
  SafeOutput& mOutput;
  SpilledBytes mBytes;
  ScalarRange mRange;
  Json mDocument;
  std::vector<OpenGroup> mOpenGroups;
};

}  // namespace

void WriteGlb(const ExportTask& task, const SurfaceColour& colour, const std::string& path,
              OutputSet& outputs) {
  GlbBuilder(task, colour, outputs.Open(path)).Write();
}

}  // namespace Qov::Tools
