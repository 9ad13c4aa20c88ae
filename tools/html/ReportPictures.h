#pragma once

#include <string>
#include <vector>

#include "html/ReportPage.h"

namespace Qov::Tools {

/// Geometries of which a report has pictures, at most.
inline constexpr std::size_t kMostReportPictures = 48;

/// Draws each geometry of a model, in the order of the tree. Reads one mesh at a time. Notes the
/// geometries that cannot be drawn, and the number of those after the first kMostReportPictures.
/// Raises the errors of Tree::Load.
std::vector<ReportPicture> DrawGeometries(const std::string& path, std::vector<std::string>& notes);

}  // namespace Qov::Tools
