#include "sample/Fields.h"

#include <cmath>

namespace Qov::Tools {
namespace {

using QovRyx::Vector3;

constexpr double kYoungsModulus = 210000.0;
constexpr double kPoissonsRatio = 0.3;
constexpr double kDiffusivity = 14.0;  // mm^2 / s
constexpr double kInitialTemperature = 20.0;
constexpr double kEdgeTemperature = 200.0;

struct Vector2d {
  double mX = 0.0;
  double mY = 0.0;
};

struct Stress2d {
  double mXX = 0.0;
  double mYY = 0.0;
  double mXY = 0.0;

  double Equivalent() const { return std::sqrt(mXX * mXX - mXX * mYY + mYY * mYY + 3 * mXY * mXY); }
};

/// A point in polar coordinates, with the harmonics that the solutions consist of.
struct Polar {
  Polar(double x, double y)
      : mR(std::sqrt(x * x + y * y)),
        mC1(x / mR),
        mS1(y / mR),
        mC2(mC1 * mC1 - mS1 * mS1),
        mS2(2 * mS1 * mC1),
        mC3(mC2 * mC1 - mS2 * mS1),
        mS3(mS2 * mC1 + mC2 * mS1) {}

  double mR, mC1, mS1, mC2, mS2, mC3, mS3;
};

/// Returns Kirsch's solution for unit tension along x.
Stress2d KirschStress(const Polar& p, double radius) {
  const double q2 = radius * radius / (p.mR * p.mR);
  const double q4 = q2 * q2;
  const double rr = (1 - q2) / 2 + (1 - 4 * q2 + 3 * q4) / 2 * p.mC2;
  const double tt = (1 + q2) / 2 - (1 + 3 * q4) / 2 * p.mC2;
  const double rt = -(1 + 2 * q2 - 3 * q4) / 2 * p.mS2;
  const double cc = p.mC1 * p.mC1;
  const double ss = p.mS1 * p.mS1;
  return {rr * cc + tt * ss - rt * p.mS2, rr * ss + tt * cc + rt * p.mS2,
          (rr - tt) / 2 * p.mS2 + rt * p.mC2};
}

Vector2d KirschDisplacement(const Polar& p, double radius) {
  const double kappa = (3 - kPoissonsRatio) / (1 + kPoissonsRatio);
  const double shearModulus = kYoungsModulus / (2 * (1 + kPoissonsRatio));
  const double scale = radius / (8 * shearModulus);
  const double q = radius / p.mR;
  const double q3 = 2 * q * q * q;
  return {scale * ((kappa + 1) * p.mC1 / q + 2 * q * ((1 + kappa) * p.mC1 + p.mC3) - q3 * p.mC3),
          scale * ((kappa - 3) * p.mS1 / q + 2 * q * ((1 - kappa) * p.mS1 + p.mS3) - q3 * p.mS3)};
}

/// Returns the stress from tension in one direction, in a frame rotated by (c, s).
Stress2d TurnedStress(const Vector3& point, double radius, double tension, double c, double s) {
  const Polar p(c * point.mX + s * point.mY, c * point.mY - s * point.mX);
  const Stress2d t = KirschStress(p, radius);
  return {tension * (c * c * t.mXX + s * s * t.mYY - 2 * c * s * t.mXY),
          tension * (s * s * t.mXX + c * c * t.mYY + 2 * c * s * t.mXY),
          tension * (c * s * (t.mXX - t.mYY) + (c * c - s * s) * t.mXY)};
}

Vector2d TurnedDisplacement(const Vector3& point, double radius, double tension, double c,
                            double s) {
  const Polar p(c * point.mX + s * point.mY, c * point.mY - s * point.mX);
  const Vector2d u = KirschDisplacement(p, radius);
  return {tension * (c * u.mX - s * u.mY), tension * (s * u.mX + c * u.mY)};
}

void AppendVector(Field& field, double x, double y) {
  field.insert(field.end(), {static_cast<float>(x), static_cast<float>(y), 0.0F});
}

}  // namespace

Field DisplacementAroundHole(const Mesh& mesh, double radius, const Tension& load) {
  Field field;
  for (const Vector3& point : mesh.mPoints) {
    const auto a = TurnedDisplacement(point, radius, load.mFirst, load.mCosine, load.mSine);
    const auto b = TurnedDisplacement(point, radius, load.mSecond, -load.mSine, load.mCosine);
    AppendVector(field, a.mX + b.mX, a.mY + b.mY);
  }
  return field;
}

Field StressAroundHole(const Mesh& mesh, double radius, const Tension& load) {
  Field field;
  for (const Vector3& point : mesh.mPoints) {
    const auto a = TurnedStress(point, radius, load.mFirst, load.mCosine, load.mSine);
    const auto b = TurnedStress(point, radius, load.mSecond, -load.mSine, load.mCosine);
    const Stress2d sum{a.mXX + b.mXX, a.mYY + b.mYY, a.mXY + b.mXY};
    field.push_back(static_cast<float>(sum.Equivalent()));
  }
  return field;
}

Field Temperature(const Mesh& mesh, double time) {
  const double depth = 2 * std::sqrt(kDiffusivity * time);  // of the heated zone
  Field field;
  for (const Vector3& point : mesh.mPoints) {
    const double share = std::erfc(point.mX / depth);
    field.push_back(
        static_cast<float>(kInitialTemperature + (kEdgeTemperature - kInitialTemperature) * share));
  }
  return field;
}

}  // namespace Qov::Tools
