#include "picture/ModelView.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <unordered_set>
#include <utility>

#include "Plural.h"
#include "Qov/Ryx/ViewPoint.h"
#include "Terminal.h"
#include "dump/Choice.h"
#include "mesh/Vectors.h"

namespace Qov::Tools {
namespace {

using QovMesh::Cross;
using QovMesh::Dot;
using QovRyx::ViewPoint;

/// Angles that the camera can have, in radians.
constexpr double kLeastAngle = 0.01;
constexpr double kMostAngle = 3;

Triple AsTriple(const QovRyx::Vector3& vector) { return {vector.mX, vector.mY, vector.mZ}; }
double AsNumber(std::uint32_t bits) { return std::bit_cast<float>(bits); }

bool IsFinite(const Triple& a) {
  return std::all_of(a.begin(), a.end(), [](double c) { return std::isfinite(c); });
}

/// w, x, y, z.
using Quad = std::array<double, 4>;

Quad AsQuad(const std::array<std::uint32_t, 4>& bits) {
  Quad quad{};
  std::transform(bits.begin(), bits.end(), quad.begin(), AsNumber);
  return quad;
}

/// Returns true for a rotation other than the identity.
bool Rotates(const Quad& quad) {
  constexpr double kTolerance = 1e-3;
  const double length = std::hypot(std::hypot(quad[0], quad[1]), std::hypot(quad[2], quad[3]));
  return std::abs(length - 1) < kTolerance && std::abs(quad[0]) < 1 - 1e-9;
}

Triple Rotate(const Quad& quad, const Triple& vector) {
  const Triple axis = {quad[1], quad[2], quad[3]};
  const Triple first = Cross(axis, vector);
  const Triple second = Cross(axis, first);
  Triple rotated{};
  for (std::size_t k = 0; k < 3; ++k) {
    rotated[k] = vector[k] + 2 * (quad[0] * first[k] + second[k]);
  }
  return rotated;
}

/// Returns true if `up` tells which side of a picture is up when the camera looks along
/// `direction`.
bool IsUsableUp(const Triple& up, const Triple& direction) {
  const Triple side = Cross(direction, up);
  return IsFinite(up) && Dot(side, side) > 1e-12 * Dot(direction, direction) * Dot(up, up);
}

/// Returns the saved view with that number or name.
const ViewPoint& FindSavedView(const QovRyx::Tree& tree, const std::string& word) {
  std::vector<const ViewPoint*> views;
  std::vector<Candidate> candidates;
  const auto add = [&](const ViewPoint& view) {
    candidates.push_back({views.size(), view.mName});
    views.push_back(&view);
  };
  if (tree.HasViewPoints()) {
    add(tree.GetViewPoint());
    for (const auto& path : tree.GetViewPointPaths()) {
      for (const ViewPoint& view : path.mViewPoints) add(view);
    }
  }
  return *views[Choose(candidates, word, "view")];
}

/// Returns the names by which a view can mean a part: its own and those of its groups.
std::vector<std::string> NamesOf(const ExportPart& part) {
  std::vector<std::string> names = part.mGroups;
  names.push_back(part.mName);
  return names;
}

/// Adds a note for the names that are not among the known ones.
template <class Map>
void NoteUnknown(const Map& map, const std::unordered_set<std::string>& known, const char* what,
                 std::vector<std::string>& notes) {
  const auto count = std::count_if(map.begin(), map.end(), [&](const auto& entry) {
    return entry.second != typename Map::mapped_type{} && !known.contains(entry.first);
  });
  if (count == 0) return;
  notes.push_back(fmt::format("the view {} {} that no drawn part has", what,
                              Plural(static_cast<std::uint64_t>(count), "name")));
}

}  // namespace

ModelView::ModelView(const QovRyx::Tree& tree, const std::string& word,
                     std::vector<std::string>& notes)
    : mName(word), mStandard(FindStandardView(word)) {
  if (!mStandard) Read(FindSavedView(tree, word), notes);
}

void ModelView::Read(const ViewPoint& view, std::vector<std::string>& notes) {
  const QovRyx::ViewState& state = view.mViewState;
  mName = view.mName;
  mResult = state.mCaeState.mName1;
  for (const auto& [name, value] : state.mHiddenState.mHiddenEntities) mHidden[name] = value != 0;
  for (const auto* offsets : {&state.mXplodeState.mOffsets, &state.mPickNMoveState.mOffsets}) {
    for (const auto& [name, value] : *offsets) {
      const Triple offset = AsTriple(value);
      if (!IsFinite(offset)) continue;
      for (std::size_t k = 0; k < 3; ++k) mOffsets[name][k] += offset[k];
    }
  }
  ReadCamera(view, notes);
  const auto note = [&](std::size_t count, const char* what) {
    if (count != 0) notes.push_back(fmt::format("the view has {}: not used", Plural(count, what)));
  };
  const auto countTurns = [](const auto& rotations) {
    return static_cast<std::size_t>(
        std::count_if(rotations.begin(), rotations.end(),
                      [](const auto& entry) { return Rotates(AsQuad(entry.second)); }));
  };
  note(countTurns(state.mXplodeState.mRotations) + countTurns(state.mPickNMoveState.mRotations),
       "part rotation");
  note(state.mPickNMoveState.mTransforms.size() + state.mTransformState.mTransforms.size(),
       "part transformation");
  note(state.mHiddenState.mEntityData.size(), "part look of unknown meaning");
  note(state.mSectionState.mPoints.size(), "section point");
}

void ModelView::ReadCamera(const ViewPoint& view, std::vector<std::string>& notes) {
  const Quad turn = AsQuad(view.mQuad1);
  const Triple target = AsTriple(view.mPoint3);
  mEye = AsTriple(view.mPoint1);
  for (std::size_t k = 0; k < 3; ++k) mDirection[k] = target[k] - mEye[k];
  mUp = AsTriple(view.mPoint2);
  if (!IsUsableUp(mUp, mDirection)) mUp = {0, 0, 1};
  if (!IsUsableUp(mUp, mDirection)) mUp = {0, 1, 0};
  if (Rotates(turn)) {
    mDirection = Rotate(turn, mDirection);
    mUp = Rotate(turn, mUp);
  }
  mAngle = AsNumber(view.mScalar3);
  const bool isUsable = IsFinite(mEye) && IsFinite(mDirection) && Dot(mDirection, mDirection) > 0 &&
                        mAngle >= kLeastAngle && mAngle <= kMostAngle;
  if (isUsable) return;
  mAngle = 0;
  notes.push_back("the camera of view " + Escape(view.mName, {}) +
                  " cannot be used: everything is shown in a parallel projection");
}

void ModelView::Apply(Scene& scene, std::vector<std::string>& notes) const {
  for (std::size_t i = 0; i < scene.mLooks.size(); ++i) {
    PartLook& look = scene.mLooks[i];
    for (const std::string& name : NamesOf(scene.mContent.mParts[i])) {
      const auto hidden = mHidden.find(name);
      if (hidden != mHidden.end() && hidden->second) look.mIsHidden = true;
    }
    // The innermost name counts, because a group may have the name of its part.
    for (const std::string& name : NamesOf(scene.mContent.mParts[i])) {
      const auto offset = mOffsets.find(name);
      if (offset != mOffsets.end()) look.mOffset = offset->second;
    }
  }
  std::unordered_set<std::string> known;
  for (const ExportPart& part : scene.mContent.mParts) {
    for (std::string& name : NamesOf(part)) known.insert(std::move(name));
  }
  NoteUnknown(mHidden, known, "hides", notes);
  NoteUnknown(mOffsets, known, "moves", notes);
}

Camera ModelView::MakeCamera(const Box& box, const Rectangle& viewport) const {
  Camera camera = mStandard ? Camera(*mStandard) : Camera::FromDirections(mDirection, mUp);
  if (mAngle > 0) {
    camera.PlaceEye(mEye, mAngle, box, viewport);
  } else {
    camera.Fit(box, viewport);
  }
  return camera;
}

}  // namespace Qov::Tools
