#include "sample/Assembly.h"

#include <fmt/format.h>

#include <utility>

#include "sample/Part.h"
#include "sample/Views.h"

namespace Qov::Tools {
namespace {

using QovRyx::ColourValue;
using QovRyx::Vector3;

constexpr float kWidth = 900.0F;
constexpr float kDepth = 400.0F;
constexpr float kHeight = 1800.0F;
constexpr float kPost = 40.0F;

constexpr ColourValue kBlue{0.2F, 0.35F, 0.65F, 1.0F};
constexpr ColourValue kGrey{0.7F, 0.7F, 0.72F, 1.0F};
constexpr ColourValue kWood{0.76F, 0.6F, 0.42F, 1.0F};
constexpr ColourValue kBrass{0.8F, 0.65F, 0.25F, 1.0F};
constexpr ColourValue kRed{0.9F, 0.1F, 0.1F, 0.4F};

/// Adds parts and numbers them, so that ids are unique in the whole model.
class PartMaker {
 public:
  explicit PartMaker(QovRyx::Tree& tree) : mTree(tree) {}

  std::uint32_t AddPart(std::uint32_t parent, const std::string& name, const Vector3& place,
                        const ColourValue& colour, std::unique_ptr<QovRyx::Geometry> geometry) {
    auto group = MakeGroup(name, {{"part number", ++mNumParts + 100}});
    group->mTranslation = {place.mX, place.mY, place.mZ};
    return AddShape(mTree, AddNode(mTree, parent, std::move(group)), colour, std::move(geometry));
  }
  /// Numbers the points and elements of the mesh.
  Mesh Numbered(Mesh mesh) {
    mesh.mFirstNodeId = mNextNodeId;
    mesh.mFirstElementId = mNextElementId;
    mNextNodeId += static_cast<std::uint32_t>(mesh.mPoints.size());
    mNextElementId += static_cast<std::uint32_t>(mesh.GetNumElements());
    return mesh;
  }

 private:
  QovRyx::Tree& mTree;
  std::uint32_t mNumParts = 0;
  std::uint32_t mNextNodeId = 1;
  std::uint32_t mNextElementId = 1;
};

/// Adds the deflection of a shelf under a load in its middle.
void AddDeflection(QovRyx::Geometry& geometry, const Mesh& mesh, const std::string& loadCase,
                   float load) {
  Field deflection;
  for (const Vector3& point : mesh.mPoints) {
    const float x = point.mX / kWidth;
    const float y = point.mY / kDepth;
    const float depth = load * 16 * x * (1 - x) * (0.5F + 2 * y * (1 - y));
    deflection.insert(deflection.end(), {0.0F, 0.0F, -depth});
  }
  AddVector(geometry, InstanceName("Displacement", loadCase), deflection, "mm");
}

void AddShelves(std::uint32_t parent, PartMaker& parts) {
  for (std::uint32_t i = 0; i < 5; ++i) {
    const Mesh mesh = parts.Numbered(MakeRectangle(kWidth, kDepth, 18 + 2 * i, 8));
    const std::string name = fmt::format("Shelf {}", i + 1);
    auto geometry = MakeGeometry(name, mesh);
    AddDeflection(*geometry, mesh, "LC1", 0.5F * static_cast<float>(i + 1));
    AddDeflection(*geometry, mesh, "LC2", 2.0F);
    const float height = 100.0F + 400.0F * static_cast<float>(i);
    parts.AddPart(parent, name, {0, 0, height}, kWood, std::move(geometry));
  }
}

/// Adds the four posts. Returns the ids of the points on which they stand.
std::vector<std::uint32_t> AddPosts(std::uint32_t parent, PartMaker& parts) {
  std::vector<std::uint32_t> feet;
  for (std::uint32_t i = 0; i < 4; ++i) {
    const Vector3 place{i % 2 == 0 ? 0 : kWidth - kPost, i < 2 ? 0 : kDepth - kPost, 0};
    const Mesh mesh = parts.Numbered(MakeBox({kPost, kPost, kHeight}, 2));
    const auto ids = NodeIdsWhere(mesh, [](const Vector3& point) { return point.mZ == 0; });
    feet.insert(feet.end(), ids.begin(), ids.end());
    const std::string name = fmt::format("Post {}", i + 1);
    parts.AddPart(parent, name, place, kBlue, MakeGeometry(name, mesh));
  }
  return feet;
}

void AddRails(std::uint32_t parent, PartMaker& parts) {
  for (std::uint32_t i = 0; i < 4; ++i) {
    const Vector3 place{kPost, i % 2 == 0 ? 0 : kDepth - kPost, i < 2 ? 60 : kHeight - kPost};
    const Mesh mesh = parts.Numbered(MakeBox({kWidth - 2 * kPost, 20, 40}, 3));
    const std::string name = fmt::format("Rail {}", i + 1);
    parts.AddPart(parent, name, place, kGrey, MakeGeometry(name, mesh));
  }
}

/// Adds three bolts per rail. Only the first bolt of all has arrays of its own.
void AddBolts(std::uint32_t parent, PartMaker& parts) {
  std::uint32_t first = 0;
  for (std::uint32_t i = 0; i < 12; ++i) {
    const std::string name = fmt::format("Bolt {}", i + 1);
    const float x = kPost / 2 + static_cast<float>(i % 3) * (kWidth - kPost) / 2;
    const float y = i / 3 % 2 == 0 ? 0 : kDepth;
    const Vector3 place{x, y, i < 6 ? 80 : kHeight - kPost / 2};
    auto geometry = first != 0 ? MakeLinkedGeometry(name, first)
                               : MakeGeometry(name, parts.Numbered(MakeBox({8, 8, 30}, 2)));
    const std::uint32_t id = parts.AddPart(parent, name, place, kBrass, std::move(geometry));
    if (first == 0) first = id;
  }
}

void AddCutSection(QovRyx::Tree& tree, std::uint32_t parent, PartMaker& parts) {
  auto group = MakeGroup("Cut-Sections", {});
  group->mTranslation = {0, 0, kHeight / 2};
  const Mesh mesh = parts.Numbered(MakeRectangle(kWidth, kDepth, 6, 4));
  AddShape(tree, AddNode(tree, parent, std::move(group)), kRed, MakeGeometry("Section", mesh));
}

}  // namespace

void BuildAssembly(QovRyx::Tree& tree) {
  PartMaker parts(tree);
  auto rack = MakeGroup("Rack", {{"unit", std::string("mm")}});
  rack->mTakesModels = 1;
  const std::uint32_t top = AddNode(tree, QovRyx::NodeTree::kRootId, std::move(rack));
  const std::uint32_t frame = AddNode(tree, top, MakeGroup("Frame", {}));
  std::vector<std::uint32_t> feet = AddPosts(frame, parts);
  AddRails(frame, parts);
  AddShelves(AddNode(tree, top, MakeGroup("Shelves", {})), parts);
  AddBolts(AddNode(tree, top, MakeGroup("Bolts", {})), parts);
  AddCutSection(tree, top, parts);
  auto sets = std::make_unique<QovRyx::NodeSets>("Supports");
  sets->SetSets({{"Feet", std::move(feet)}, {"Wall", {}}});
  AddNode(tree, top, std::move(sets));
  AddViews(tree, "rack", "Shelf 1");
}

}  // namespace Qov::Tools
