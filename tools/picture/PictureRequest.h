#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Palette.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {

/// What to draw, and how.
struct PictureRequest {
  std::vector<std::string> mNodes;      ///< Names or ids; a node includes its descendants.
  std::vector<std::uint32_t> mNodeIds;  ///< Used instead of mNodes unless it is empty.
  std::vector<std::string> mResults;    ///< Names as shown; empty for one colour a part.
  Component mComponent;                 ///< Of the results.
  std::vector<std::string> mSteps;      ///< Patterns of names, or numbers from 1; empty for all.
  std::string mDeform;                  ///< Name of the result that moves the points; may be empty.
  std::optional<double> mScale;         ///< Of the deformation; nothing for one that can be seen.
  bool mEdges = false;
  bool mSmooth = false;
  std::string mView = "iso";  ///< A standard view, or a view of the model by name or number.
  std::optional<std::pair<double, double>> mRange;  ///< Of the colours; nothing for that of values.
  std::uint32_t mWidth = 1200;                      ///< In pixels.
  std::uint32_t mHeight = 900;
  Colour mBackground = {255, 255, 255};
};

}  // namespace Qov::Tools
