#pragma once

/// Small value types. A file stores their components one after the other.
namespace QovRyx {

struct Vector2 {
  float mX = 0.0F;
  float mY = 0.0F;
  friend bool operator==(const Vector2&, const Vector2&) = default;
};

struct Vector3 {
  float mX = 0.0F;
  float mY = 0.0F;
  float mZ = 0.0F;
  friend bool operator==(const Vector3&, const Vector3&) = default;
};

struct ColourValue {
  float mR = 0.0F;
  float mG = 0.0F;
  float mB = 0.0F;
  float mA = 0.0F;
  friend bool operator==(const ColourValue&, const ColourValue&) = default;
};

struct Quaternion {
  float mX = 0.0F;
  float mY = 0.0F;
  float mZ = 0.0F;
  float mW = 0.0F;
  friend bool operator==(const Quaternion&, const Quaternion&) = default;
};

}  // namespace QovRyx
