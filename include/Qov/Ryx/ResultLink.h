#pragma once

#include <cstdint>

namespace QovRyx {

/// The place of a result in a model.
struct ResultPlace {
  std::uint32_t mNode = 0;      ///< Tree id of a geometry.
  std::uint32_t mPosition = 0;  ///< Position among the results of the geometry.
  friend bool operator==(const ResultPlace&, const ResultPlace&) = default;
};

/// Tells whether a result has its own values or shares those of another result.
///
/// A dangling link names a place where the file of the linked result has no result. The place stays
/// recorded, but the link has no target, even if another file brings a result to that place.
class ResultLink {
 public:
  /// Makes a result that is not linked: it has its own values.
  ResultLink() = default;
  /// Makes a result that shares the values of the result at `target`.
  explicit ResultLink(const ResultPlace& target) : mPlace(target), mState(State::HasTarget) {}

  bool IsLinked() const { return mState != State::NotLinked; }
  /// Returns true if the link names a result, false if it is dangling or if there is no link.
  bool HasTarget() const { return mState == State::HasTarget; }
  /// Returns the place that the link names; (0, 0) if there is no link. Only a link with a target
  /// may be followed.
  const ResultPlace& GetPlace() const { return mPlace; }

  /// Makes a link dangling, because there is no result at its place.
  void LoseTarget() {
    if (HasTarget()) mState = State::Dangling;
  }
  /// Follows a result that moved to `target`. A dangling link stays as it is.
  void MoveTo(const ResultPlace& target) {
    if (HasTarget()) mPlace = target;
  }
  /// Replaces the place of a dangling link by (0, 0), where no file has a result.
  void ClearDanglingPlace() {
    if (mState == State::Dangling) mPlace = {};
  }

 private:
  enum class State : std::uint8_t { NotLinked, HasTarget, Dangling };

  ResultPlace mPlace;
  State mState = State::NotLinked;
};

}  // namespace QovRyx
