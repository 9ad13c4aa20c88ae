#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace QovRyx {

/// A forest that can change, with a fast test whether a vertex is an ancestor of another vertex.
///
/// Every operation takes amortised logarithmic time, independent of the depth of the trees. The
/// forest is a link-cut tree: each tree is divided into paths towards its root. The vertices of a
/// path form a splay tree, in which a vertex closer to the root is further left.
class LinkForest {
 public:
  using Vertex = std::uint32_t;
  static constexpr Vertex kNone = 0;

  /// Adds a vertex without a parent.
  Vertex Add() {
    mPlaces.emplace_back();
    return static_cast<Vertex>(mPlaces.size() - 1);
  }

  /// Gives a parent to `child`, which has none and is not an ancestor of `parent`.
  void Attach(Vertex child, Vertex parent) {
    Expose(child);
    mPlaces[child].mUp = parent;
  }

  /// Removes the link from `child` to its parent, if it has one.
  void Detach(Vertex child) {
    Expose(child);
    Vertex& rest = mPlaces[child].mDown[kLeft];
    mPlaces[rest].mUp = kNone;
    rest = kNone;
  }

  /// Returns true if `to` is `from` or one of its ancestors. Changes the division into paths, but
  /// not the trees.
  bool Reaches(Vertex from, Vertex to) {
    if (from == to) return true;
    Expose(from);
    Splay(to);  // replaces `from` as the top if both are on one path
    return mPlaces[from].mUp != kNone;
  }

 private:
  static constexpr std::size_t kLeft = 0;
  static constexpr std::size_t kRight = 1;

  /// The place of a vertex in the splay tree of its path. For the top vertex, `mUp` is the parent
  /// of the whole path; that parent does not list it in `mDown`.
  struct Place {
    Vertex mUp = kNone;
    std::array<Vertex, 2> mDown = {kNone, kNone};
  };

  std::size_t SideOf(Vertex vertex) const {
    return mPlaces[mPlaces[vertex].mUp].mDown[kRight] == vertex ? kRight : kLeft;
  }
  bool IsTop(Vertex vertex) const {
    const Vertex up = mPlaces[vertex].mUp;
    return up == kNone || mPlaces[up].mDown[SideOf(vertex)] != vertex;
  }

  /// Exchanges a vertex and the one above it.
  void Rotate(Vertex vertex) {
    const Vertex above = mPlaces[vertex].mUp;
    const Vertex top = mPlaces[above].mUp;
    const std::size_t side = SideOf(vertex);
    const Vertex inner = mPlaces[vertex].mDown[1 - side];
    if (!IsTop(above)) mPlaces[top].mDown[SideOf(above)] = vertex;
    mPlaces[above].mDown[side] = inner;
    if (inner != kNone) mPlaces[inner].mUp = above;
    mPlaces[vertex].mDown[1 - side] = above;
    mPlaces[above].mUp = vertex;
    mPlaces[vertex].mUp = top;
  }

  /// Makes a vertex the top of its splay tree.
  void Splay(Vertex vertex) {
    while (!IsTop(vertex)) {
      const Vertex above = mPlaces[vertex].mUp;
      if (!IsTop(above)) Rotate(SideOf(vertex) == SideOf(above) ? above : vertex);
      Rotate(vertex);
    }
  }

  /// Joins the vertices from `vertex` to its root into one path, with `vertex` as the top.
  void Expose(Vertex vertex) {
    Vertex below = kNone;
    for (Vertex at = vertex; at != kNone; at = mPlaces[at].mUp) {
      Splay(at);
      mPlaces[at].mDown[kRight] = below;
      below = at;
    }
    Splay(vertex);
  }

  std::vector<Place> mPlaces = std::vector<Place>(1);  ///< The first place is that of kNone.
};

}  // namespace QovRyx
