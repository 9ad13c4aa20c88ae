#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/OpaqueRecord.h"

/// The records that say how one view shows simulation results (docs/format.md, "CAEState"). All
/// values are carried without being used.
namespace QovRyx {

struct QOV_EXPORT CAELegendState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::CAELegendState";
  static constexpr const char* kTag = "0.7";
  CAELegendState();
};

struct QOV_EXPORT CAEProbeState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::CAEProbeState";
  static constexpr const char* kTag = "0.6";
  CAEProbeState();
};

struct QOV_EXPORT CAEAnimationState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::CAEAnimationState";
  static constexpr const char* kTag = "0.5";
  CAEAnimationState();
};

struct QOV_EXPORT CAEXYPlotV1State : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::CAEXYPlotV1State";
  static constexpr const char* kTag = "0.3";
  CAEXYPlotV1State();
};

struct QOV_EXPORT CAEScalarInfo : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::CAEScalarInfo";
  static constexpr const char* kTag = "0.1";
  CAEScalarInfo();
};

/// Part of the body of a CAEAnimationState, which is opaque here.
struct CAEEigenVectorAnimationState : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::string mText1;
  std::string mText2;
  std::string mText3;
  std::string mText4;
  std::string mText5;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("text1", self.mText1)
        .Field("text2", self.mText2)
        .Field("text3", self.mText3)
        .Field("text4", self.mText4)
        .Field("text5", self.mText5);
  }

  friend bool operator==(const CAEEigenVectorAnimationState&,
                         const CAEEigenVectorAnimationState&) = default;
};

struct CAEVectorPlotState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::uint32_t mValue3 = 0;
  std::uint8_t mFlag1 = 0;
  std::uint32_t mValue4 = 0;
  std::uint32_t mValue5 = 0;
  std::uint32_t mValue6 = 0;
  std::uint32_t mValue7 = 0;
  std::uint8_t mFlag2 = 0;
  std::uint8_t mFlag3 = 0;
  std::uint8_t mFlag4 = 0;
  std::uint32_t mValue8 = 0;
  std::uint32_t mValue9 = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("value3", self.mValue3)
        .Field("flag1", self.mFlag1)
        .Field("value4", self.mValue4)
        .Field("value5", self.mValue5)
        .Field("value6", self.mValue6)
        .Field("value7", self.mValue7)
        .Field("flag2", self.mFlag2)
        .Field("flag3", self.mFlag3)
        .Field("flag4", self.mFlag4);
    walk.Rung("0.2").Field("value8", self.mValue8).Field("value9", self.mValue9);
  }

  friend bool operator==(const CAEVectorPlotState&, const CAEVectorPlotState&) = default;
};

struct CAEContourLineMgrState : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  Vector3 mColour;
  std::array<std::uint8_t, 3> mFlags{};
  std::uint32_t mValue = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("colour", self.mColour)
        .Field("flags", self.mFlags)
        .Field("value", self.mValue);
  }

  friend bool operator==(const CAEContourLineMgrState&, const CAEContourLineMgrState&) = default;
};

/// Part of the body of a CAEXYPlotV1State, which is opaque here.
struct CAEXYPlotV1CurveState : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::string mName;
  std::vector<std::array<std::uint32_t, 2>> mPoints;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("name", self.mName).Field("points", self.mPoints);
  }

  friend bool operator==(const CAEXYPlotV1CurveState&, const CAEXYPlotV1CurveState&) = default;
};

struct CAEXYPlotMgrState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::uint32_t mValue1 = 0;
  std::vector<CAEXYPlotV1State> mPlots;
  std::uint32_t mValue2 = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("value1", self.mValue1).Field("plots", self.mPlots);
    walk.Rung("0.2").Field("value2", self.mValue2);
  }

  friend bool operator==(const CAEXYPlotMgrState&, const CAEXYPlotMgrState&) = default;
};

struct CAEState : RecordOrigin {
  /// A tag after "0.7", so that a record with it contains every rung.
  static constexpr const char* kTag = "0.8";

  std::string mName1;
  std::string mName2;
  std::string mName3;
  std::uint8_t mFlag1 = 0;
  std::uint8_t mFlag2 = 0;
  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::array<std::uint8_t, 4> mFlags1{};
  std::array<std::uint32_t, 4> mValues1{};
  std::array<std::uint8_t, 4> mFlags2{};
  std::array<std::uint32_t, 4> mValues2{};
  std::uint8_t mFlag3 = 0;
  CAELegendState mLegend;
  CAEProbeState mProbe;
  CAEAnimationState mAnimation;
  std::uint8_t mFlag4 = 0;
  std::string mName4;
  std::uint8_t mFlag5 = 0;
  std::uint8_t mFlag6 = 0;
  CAEVectorPlotState mVectorPlot;
  std::uint8_t mFlag7 = 0;
  CAEXYPlotMgrState mXyPlots;
  CAEContourLineMgrState mContourLines;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("name1", self.mName1)
        .Field("name2", self.mName2)
        .Field("name3", self.mName3)
        .Field("flag1", self.mFlag1)
        .Field("flag2", self.mFlag2)
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("flags1", self.mFlags1)
        .Field("values1", self.mValues1)
        .Field("flags2", self.mFlags2)
        .Field("values2", self.mValues2)
        .Field("flag3", self.mFlag3)
        .Field("legend", self.mLegend)
        .Field("probe", self.mProbe);
    walk.Rung("0.2").Field("animation", self.mAnimation);
    walk.Rung("0.3").Field("flag4", self.mFlag4);
    walk.Rung("0.4")
        .Field("name4", self.mName4)
        .Field("flag5", self.mFlag5)
        .Field("flag6", self.mFlag6);
    walk.Rung("0.5").Field("vectorPlot", self.mVectorPlot);
    walk.Rung("0.6").Field("flag7", self.mFlag7);
    walk.Rung("0.7").Field("xyPlots", self.mXyPlots);
    walk.Rung("0.8").Field("contourLines", self.mContourLines);
  }

  friend bool operator==(const CAEState&, const CAEState&) = default;
};

/// The further result displays of one view.
struct MultiCAEState : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::string mName;
  std::array<std::uint8_t, 4> mFlags{};
  std::uint32_t mValue = 0;
  std::vector<CAEState> mStates;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("name", self.mName)
        .Field("flags", self.mFlags)
        .Field("value", self.mValue)
        .Field("states", self.mStates);
  }

  friend bool operator==(const MultiCAEState&, const MultiCAEState&) = default;
};

}  // namespace QovRyx
