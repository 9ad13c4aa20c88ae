#pragma once

#include <cstdint>

#include "Qov/Jbf/ValueTypes.h"
#include "Qov/Ryx/BlockVersionedIo.h"

namespace QovRyx {

/// The colours and lighting values of the material of a shape (docs/format.md, "Materials").
struct MaterialValues : RecordOrigin {
  static constexpr const char* kTag = "0.3";
  static constexpr float kDefaultGrey = 0.8F;
  static constexpr float kDefaultShare = 0.2F;
  static constexpr float kDefaultDark = kDefaultGrey * kDefaultShare;

  ColourValue mColour1{kDefaultGrey, kDefaultGrey, kDefaultGrey, 1.0F};
  ColourValue mColour2{0.0F, 0.0F, 0.0F, 1.0F};
  ColourValue mColour3{0.0F, 0.0F, 0.0F, 1.0F};
  ColourValue mColour4{kDefaultDark, kDefaultDark, kDefaultDark, kDefaultShare};
  float mScalar1 = 0.0F;
  float mScalar2 = kDefaultShare;
  std::uint8_t mMode = 1;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("colour1", self.mColour1)
        .Field("colour2", self.mColour2)
        .Field("colour3", self.mColour3)
        .Field("colour4", self.mColour4)
        .Field("scalar1", self.mScalar1);
    walk.Rung("0.2").Field("scalar2", self.mScalar2);
    walk.Rung("0.3").Field("mode", self.mMode);
  }

  friend bool operator==(const MaterialValues&, const MaterialValues&) = default;
};

}  // namespace QovRyx
