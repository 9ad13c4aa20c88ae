#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/ViewState.h"

namespace QovRyx {

/// A saved view: the camera and the display state (docs/format.md, "ViewPoint"). All values are
/// carried without being used.
struct QOV_EXPORT ViewPoint : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  // The bits of default values that are floats.
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

/// The views of a path: a vector that takes only a pointer when it is empty, because a file can
/// hold millions of paths without views.
class ViewPointList {
 public:
  ViewPointList() = default;
  ViewPointList(std::vector<ViewPoint> views)  // NOLINT(google-explicit-constructor): same data
      : mpViews(views.empty() ? nullptr
                              : std::make_unique<std::vector<ViewPoint>>(std::move(views))) {}
  ViewPointList(std::initializer_list<ViewPoint> views)
      : ViewPointList(std::vector<ViewPoint>(views)) {}
  ViewPointList(const ViewPointList& other)
      : ViewPointList(std::vector<ViewPoint>(other.begin(), other.end())) {}
  ViewPointList(ViewPointList&&) noexcept = default;
  ViewPointList& operator=(ViewPointList other) noexcept {
    mpViews = std::move(other.mpViews);
    return *this;
  }
  ~ViewPointList() = default;

  std::size_t size() const { return mpViews ? mpViews->size() : 0; }
  bool empty() const { return size() == 0; }
  ViewPoint& operator[](std::size_t i) { return (*mpViews)[i]; }
  const ViewPoint& operator[](std::size_t i) const { return (*mpViews)[i]; }
  ViewPoint* begin() { return mpViews ? mpViews->data() : nullptr; }
  ViewPoint* end() { return begin() + size(); }
  const ViewPoint* begin() const { return mpViews ? mpViews->data() : nullptr; }
  const ViewPoint* end() const { return begin() + size(); }

  void push_back(ViewPoint view) { Make().push_back(std::move(view)); }
  void resize(std::size_t size) { Make().resize(size); }

  friend bool operator==(const ViewPointList& a, const ViewPointList& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }

 private:
  std::vector<ViewPoint>& Make() {
    if (!mpViews) mpViews = std::make_unique<std::vector<ViewPoint>>();
    return *mpViews;
  }

  std::unique_ptr<std::vector<ViewPoint>> mpViews;
};

/// A named sequence of views.
struct ViewPointPath {
  std::string mName;
  ViewPointList mViewPoints;

  friend bool operator==(const ViewPointPath&, const ViewPointPath&) = default;
};

}  // namespace QovRyx

namespace QovJbf {

// The records inside a view point are compiled once, in ViewPoint.cpp.
extern template QOV_EXPORT void CopyToBlock_Versioned(Block& block,
                                                      const QovRyx::ViewPoint& record);
extern template QOV_EXPORT void CopyFromBlock_Versioned(Block& block, QovRyx::ViewPoint& record);

}  // namespace QovJbf
