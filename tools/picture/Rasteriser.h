#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "picture/Camera.h"
#include "picture/ColourScale.h"
#include "picture/Image.h"

namespace Qov::Tools {

/// What the values of a surface belong to.
enum class ValuesAt : std::uint8_t { None, Point, Cell };

/// Triangles, lines and points with their look. Refers to arrays of others, which have to exist
/// during Rasteriser::Draw only. Triangles and lines with a point outside of `mPoints` or with a
/// coordinate that is not finite are not drawn.
struct ShadedSurface {
  std::span<const float> mPoints;                 ///< x, y, z of each point, as in the model.
  std::span<const std::uint32_t> mTriangles;      ///< Three points for each triangle.
  std::span<const std::uint32_t> mTriangleCells;  ///< One for each triangle; for values at cells.
  /// Bits 0, 1, 2 of each triangle: its edges from the first, second, third point to the next are
  /// edges of a face (QovMesh::Surface::mTriangleEdges). Empty: all edges are.
  std::span<const std::uint8_t> mTriangleEdges;
  std::span<const std::uint32_t> mLines;      ///< Two points for each line.
  std::span<const std::uint32_t> mLineCells;  ///< One for each line; for values at cells.
  bool mDrawPoints = false;                   ///< Draws all of mPoints, too.

  ValuesAt mValuesAt = ValuesAt::None;
  std::span<const float> mValues;    ///< One for each point or cell; missing ones are no values.
  Colour mColour = {191, 191, 191};  ///< Used without values.
  bool mSmooth = false;              ///< Smooth shading, except at edges of more than 30 degrees.
  bool mEdges = false;               ///< Draws the edges of the faces.
  float mOpacity = 1;                ///< 0 to 1.
  float mLineWidth = 2;              ///< In pixels.
  float mPointSize = 4;              ///< In pixels.
};

/// Draws surfaces into the viewport of an image. A light shines from the viewer; both sides of a
/// surface are alike.
///
///   Rasteriser rasteriser(image, camera);
///   for (const auto& surface : surfaces) rasteriser.Draw(surface, &scale);
///   rasteriser.Finish();
class Rasteriser {
 public:
  /// `smoothing` is the number of samples of a pixel in each direction: 1, or 2 for smooth edges.
  Rasteriser(Image& image, const Camera& camera, int smoothing = 2);
  ~Rasteriser();

  /// Draws a surface. Transparent surfaces are kept until Finish. `pScale` is needed for surfaces
  /// with values.
  void Draw(const ShadedSurface& surface, const ColourScale* pScale = nullptr);

  /// Blends the transparent triangles, from the farthest to the nearest, and writes the pixels into
  /// the image. Pixels that nothing covers keep their colour. Must be called once, after Draw.
  void Finish();

  /// Returns true if nothing opaque hides the place. May be called before Finish.
  bool IsVisible(const Triple& point) const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> mpImplementation;
};

}  // namespace Qov::Tools
