#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/ViewState.h"

namespace QovRyx {

/// A saved view: where the model was looked at from, and its display state at that moment. All
/// values are only carried.
struct QOV_EXPORT ViewPoint {
  static constexpr const char* kTag = "0.2";

  // The bits of the floats that the values start as.
  static constexpr std::uint32_t kOne = std::bit_cast<std::uint32_t>(1.0F);
  static constexpr std::uint32_t kDefaultScalar2 = std::bit_cast<std::uint32_t>(100.0F);
  static constexpr std::uint32_t kDefaultScalar3 = std::bit_cast<std::uint32_t>(0.785F);
  static constexpr std::uint32_t kDefaultScalar4 = std::bit_cast<std::uint32_t>(0.75F);

  std::string mName;
  Vector3 mPoint1;
  std::array<std::uint32_t, 4> mQuad1{kOne, 0, 0, 0};
  Vector3 mPoint2;
  std::uint32_t mScalar1 = kOne;
  std::uint32_t mScalar2 = kDefaultScalar2;
  std::array<std::uint32_t, 16> mMatrix{
      kOne, 0,    0,    0,  //
      0,    kOne, 0,    0,  //
      0,    0,    kOne, 0,  //
      0,    0,    0,    kOne,
  };
  std::uint32_t mScalar3 = kDefaultScalar3;
  std::uint32_t mScalar4 = kDefaultScalar4;
  Vector3 mPoint3;
  std::array<std::uint32_t, 4> mQuad2{kOne, 0, 0, 0};
  ViewState mViewState;
  std::uint8_t mFlag = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("name", self.mName)
        .Field("point1", self.mPoint1)
        .Field("quad1", self.mQuad1)
        .Field("point2", self.mPoint2)
        .Field("scalar1", self.mScalar1)
        .Field("scalar2", self.mScalar2)
        .Field("matrix", self.mMatrix)
        .Field("scalar3", self.mScalar3)
        .Field("scalar4", self.mScalar4)
        .Field("point3", self.mPoint3)
        .Field("quad2", self.mQuad2)
        .Field("viewState", self.mViewState);
    walk.Rung("0.2").Field("flag", self.mFlag);
  }

  friend bool operator==(const ViewPoint&, const ViewPoint&) = default;
};

/// A named sequence of views.
struct ViewPointPath {
  std::string mName;
  std::vector<ViewPoint> mViewPoints;

  friend bool operator==(const ViewPointPath&, const ViewPointPath&) = default;
};

}  // namespace QovRyx

namespace QovJbf {

// Everything below a view point is compiled once, in ViewPoint.cpp.
extern template QOV_EXPORT void CopyToBlock_Versioned(Block& block,
                                                      const QovRyx::ViewPoint& record);
extern template QOV_EXPORT void CopyFromBlock_Versioned(Block& block, QovRyx::ViewPoint& record);

}  // namespace QovJbf
