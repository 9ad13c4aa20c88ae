#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "picture/Camera.h"
#include "picture/Scene.h"

namespace Qov::Tools {

/// The point of view of a picture: a standard view, or a saved view of the model.
///
/// A file does not say what the numbers of a view mean. They are taken so:
///
///   point1           the eye
///   point3           the point that the eye looks at
///   point2           up; z if it is 0
///   quad1            a rotation w, x, y, z of both directions, if it is not the identity
///   scalar3          the vertical angle in radians
///   hiddenEntities   names of parts, or of nodes above them; 0 is visible
///   offsets          moves of the same names (xplodeState, pickNMoveState)
///   caeState.name1   the result, if no other is chosen
///
/// Everything else is not used; the notes say so where a view sets it.
class ModelView {
 public:
  /// Finds the view. `word` is the name of a standard view, or the name or number of a saved one; 0
  /// is the current view. Raises ElementNotFound for any other word.
  ModelView(const QovRyx::Tree& tree, const std::string& word, std::vector<std::string>& notes);

  /// Returns true for a view that the model has to be read with.
  static bool IsSaved(const std::string& word) { return !FindStandardView(word); }

  const std::string& GetName() const { return mName; }
  /// Returns the base name of the result that the view shows; empty if it shows none.
  const std::string& GetResult() const { return mResult; }

  /// Hides and moves the parts that the view hides and moves. Adds a note for each of its names
  /// that no part has.
  void Apply(Scene& scene, std::vector<std::string>& notes) const;

  /// Returns the camera for a box, which contains everything that is drawn.
  Camera MakeCamera(const Box& box, const Rectangle& viewport) const;

 private:
  void Read(const QovRyx::ViewPoint& view, std::vector<std::string>& notes);
  void ReadCamera(const QovRyx::ViewPoint& view, std::vector<std::string>& notes);

  std::string mName;
  std::string mResult;
  std::optional<StandardView> mStandard;
  Triple mEye{};
  Triple mDirection{};
  Triple mUp{};
  double mAngle = 0;  ///< 0 for a parallel projection that shows everything.
  std::map<std::string, Triple> mOffsets;
  std::map<std::string, bool> mHidden;
};

}  // namespace Qov::Tools
