#pragma once

#include <span>
#include <string>

#include "Qov/Ryx/Tree.h"
#include "picture/Image.h"
#include "picture/PictureReport.h"
#include "picture/PictureRequest.h"

namespace Qov::Tools {

/// A loaded model and the name that pictures show for it.
struct NamedModel {
  const QovRyx::Tree& mTree;
  std::string mName;
};

/// Draws the outer surface of a model: the first of the chosen steps that has the result. Fills in
/// what was drawn, and adds notes. Reads one mesh at a time.
///
/// Raises ElementNotFound if there is nothing to draw, or for an unknown node, result, step or
/// view; MismatchError for a result that cannot deform; OutOfBounds for a size that is too large;
/// and the errors of reading.
Image DrawPicture(const NamedModel& model, const PictureRequest& request, PictureReport& report);

/// Draws all chosen results at all chosen steps of all models, each with a caption, into one image.
/// Results with the same unit have one range. Raises OutOfBounds for more than 100 panels.
Image DrawSheet(std::span<const NamedModel> models, const PictureRequest& request,
                PictureReport& report);

/// Draws the values of the second model minus those of the first, on the mesh of the first, and
/// marks the largest difference. The request has a result. Raises MismatchError if the meshes or
/// the results do not fit.
Image DrawDifference(const NamedModel& first, const NamedModel& second,
                     const PictureRequest& request, PictureReport& report);

}  // namespace Qov::Tools
