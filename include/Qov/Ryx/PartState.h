#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"

/// The records that say how a view hides, explodes, picks and moves parts of the model
/// (docs/format.md, "Part states"). The keys of the maps name the parts. All values are carried
/// without being used.
namespace QovRyx {

struct UsrEntityData : RecordOrigin {
  static constexpr const char* kTag = "0.4";

  std::string mName;
  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::array<std::uint8_t, 8> mFlags{};
  std::array<std::uint32_t, 18> mValues{};
  std::vector<std::string> mNames;
  std::uint8_t mFlag = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("name", self.mName)
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("flags", self.mFlags)
        .Field("values", self.mValues)
        .Field("names", self.mNames);
    walk.Rung("0.4").Field("flag", self.mFlag);  // "0.2" and "0.3" brought nothing
  }

  friend bool operator==(const UsrEntityData&, const UsrEntityData&) = default;
};

struct HiddenState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::map<std::string, std::uint8_t> mHiddenEntities;
  std::map<std::string, UsrEntityData> mEntityData;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("hiddenEntities", self.mHiddenEntities);
    walk.Rung("0.2").Field("entityData", self.mEntityData);
  }

  friend bool operator==(const HiddenState&, const HiddenState&) = default;
};

struct XplodeState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::map<std::string, Vector3> mOffsets;
  std::map<std::string, std::array<std::uint32_t, 4>> mRotations;
  std::map<std::string, Vector3> mCentres;
  Vector3 mOrigin;
  std::vector<std::string> mNames;
  std::uint32_t mFactor = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("offsets", self.mOffsets)
        .Field("rotations", self.mRotations)
        .Field("centres", self.mCentres)
        .Field("origin", self.mOrigin)
        .Field("names", self.mNames);
    walk.Rung("0.2").Field("factor", self.mFactor);
  }

  friend bool operator==(const XplodeState&, const XplodeState&) = default;
};

struct PickXForm : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::array<std::uint32_t, 4> mQuad{};
  Vector3 mPoint1;
  Vector3 mPoint2;
  std::uint32_t mMode = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("quad", self.mQuad)
        .Field("point1", self.mPoint1)
        .Field("point2", self.mPoint2)
        .Field("mode", self.mMode);
  }

  friend bool operator==(const PickXForm&, const PickXForm&) = default;
};

struct PickNMoveState : RecordOrigin {
  static constexpr const char* kTag = "0.2";

  std::map<std::string, Vector3> mOffsets;
  std::map<std::string, std::array<std::uint32_t, 4>> mRotations;
  std::map<std::string, Vector3> mCentres;
  std::map<std::string, PickXForm> mTransforms;
  std::uint8_t mFlag = 0;
  std::uint32_t mValue = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("offsets", self.mOffsets)
        .Field("rotations", self.mRotations)
        .Field("centres", self.mCentres);
    walk.Rung("0.2")
        .Field("transforms", self.mTransforms)
        .Field("flag", self.mFlag)
        .Field("value", self.mValue);
  }

  friend bool operator==(const PickNMoveState&, const PickNMoveState&) = default;
};

struct TransformState : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::map<std::string, PickXForm> mTransforms;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("transforms", self.mTransforms);
  }

  friend bool operator==(const TransformState&, const TransformState&) = default;
};

}  // namespace QovRyx
