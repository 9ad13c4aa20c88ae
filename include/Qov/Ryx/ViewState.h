#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/CAEState.h"
#include "Qov/Ryx/LabelState.h"
#include "Qov/Ryx/PartState.h"

/// The records of the complete display state of one view (docs/format.md, "ViewState"). All values
/// are carried without being used.
namespace QovRyx {

struct MiscState : RecordOrigin {
  static constexpr const char* kTag = "0.6";
  static constexpr float kHalfGrey = 128.0F / 255.0F;
  static constexpr std::int32_t kNoLimit = std::numeric_limits<std::int32_t>::max();
  static constexpr float kNoRange = std::numeric_limits<float>::max();

  std::uint32_t mMode = 0;
  Vector3 mColour1{kHalfGrey, kHalfGrey, kHalfGrey};
  Vector3 mColour2{1.0F, 1.0F, 1.0F};
  Vector3 mVector3;
  std::string mText;
  std::array<std::uint32_t, 4> mValues1{};
  std::uint8_t mFlag1 = 0;
  std::uint32_t mValue2 = 0;
  std::array<std::uint32_t, 3> mVector4{};
  std::array<std::uint8_t, 5> mFlags2{1, 0, 0, 0, 0};
  std::uint32_t mValue3 = 0;
  std::uint8_t mFlag3 = 0;
  std::uint32_t mValue4 = 0;
  std::uint8_t mFlag4 = 1;
  std::uint8_t mFlag5 = 0;
  std::int32_t mValue5 = 0;
  std::uint8_t mFlag6 = 1;
  std::uint8_t mFlag7 = 1;
  std::uint8_t mFlag8 = 0;
  std::int32_t mLimit1 = kNoLimit;
  std::int32_t mLimit2 = kNoLimit;
  float mRange1 = kNoRange;
  float mRange2 = kNoRange;
  std::string mText2;
  std::string mText3;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("mode", self.mMode)
        .Field("colour1", self.mColour1)
        .Field("colour2", self.mColour2)
        .Field("vector3", self.mVector3)
        .Field("text", self.mText)
        .Field("values1", self.mValues1)
        .Field("flag1", self.mFlag1)
        .Field("value2", self.mValue2)
        .Field("vector4", self.mVector4);
    walk.Rung("0.2").Field("flags2", self.mFlags2);
    walk.Rung("0.3")
        .Field("value3", self.mValue3)
        .Field("flag3", self.mFlag3)
        .Field("value4", self.mValue4)
        .Field("flag4", self.mFlag4);
    walk.Rung("0.4").Field("flag5", self.mFlag5);
    walk.Rung("0.5").Field("value5", self.mValue5);
    walk.Rung("0.6")
        .Field("flag6", self.mFlag6)
        .Field("flag7", self.mFlag7)
        .Field("flag8", self.mFlag8)
        .Field("limit1", self.mLimit1)
        .Field("limit2", self.mLimit2)
        .Field("range1", self.mRange1)
        .Field("range2", self.mRange2)
        .Field("text2", self.mText2)
        .Field("text3", self.mText3);
  }

  friend bool operator==(const MiscState&, const MiscState&) = default;
};

struct SectionState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::array<std::uint8_t, 7> mFlags{};
  std::array<Vector3, 12> mPlanes{};
  std::uint32_t mValue3 = 0;
  Vector3 mPoint1;
  Vector3 mPoint2;
  std::array<std::uint32_t, 6> mValues{};
  Vector3 mPoint3;
  std::uint8_t mFlag = 0;
  std::uint32_t mValue4 = 0;
  std::vector<Vector3> mPoints;
  std::uint8_t mFlag2 = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("flags", self.mFlags)
        .Field("planes", self.mPlanes)
        .Field("value3", self.mValue3)
        .Field("point1", self.mPoint1)
        .Field("point2", self.mPoint2)
        .Field("values", self.mValues)
        .Field("point3", self.mPoint3)
        .Field("flag", self.mFlag)
        .Field("value4", self.mValue4)
        .Field("points", self.mPoints);
    walk.Rung("0.2").Field("flag2", self.mFlag2);
  }

  friend bool operator==(const SectionState&, const SectionState&) = default;
};

struct ViewState : RecordOrigin {
  static constexpr const char* kTag = "0.5";

  CAEState mCaeState;
  XplodeState mXplodeState;
  HiddenState mHiddenState;
  MiscState mMiscState;
  UserLabelState mUserLabelState;
  MeasurementState mMeasurementState;
  SectionState mSectionState;
  PickNMoveState mPickNMoveState;
  TransformState mTransformState;
  MultiCAEState mMultiCAEState;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("caeState", self.mCaeState)
        .Field("xplodeState", self.mXplodeState)
        .Field("hiddenState", self.mHiddenState)
        .Field("miscState", self.mMiscState)
        .Field("userLabelState", self.mUserLabelState);
    walk.Rung("0.2").Field("measurementState", self.mMeasurementState);
    walk.Rung("0.3")
        .Field("sectionState", self.mSectionState)
        .Field("pickNMoveState", self.mPickNMoveState);
    walk.Rung("0.4").Field("transformState", self.mTransformState);
    walk.Rung("0.5").Field("multiCAEState", self.mMultiCAEState);
  }

  friend bool operator==(const ViewState&, const ViewState&) = default;
};

}  // namespace QovRyx
