#include "html/PageDiff.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "html/PageResults.h"

namespace Qov::Tools {
namespace {

constexpr const char* kSource = "tools/html/PageDiff";

using ResultKey = std::tuple<std::string, std::string, QovMesh::Placement, std::size_t>;

/// Returns the step's name, "" for none; steps have names.
ResultKey KeyOf(const ExportContent& content, const ExportResult& result) {
  const std::string step = result.mStep ? content.mSteps[*result.mStep].mName : "";
  return {result.mName, step, result.mPlacement, result.mWidth};
}

/// Finds parts by their names and groups; the second of two equal ones belongs to the second.
class PartFinder {
 public:
  explicit PartFinder(const ExportContent& content) {
    for (const ExportPart& part : content.mParts) mParts[KeyOf(part)].push_back(&part);
  }
  /// Returns the next part like this one; null if there is none.
  const ExportPart* TakeLike(const ExportPart& part) {
    const Key key = KeyOf(part);
    const std::size_t number = mNumTaken[key]++;
    const auto found = mParts.find(key);
    return found == mParts.end() || number >= found->second.size() ? nullptr
                                                                   : found->second[number];
  }

 private:
  using Key = std::pair<std::vector<std::string>, std::string>;
  static Key KeyOf(const ExportPart& part) { return {part.mGroups, part.mName}; }

  std::map<Key, std::vector<const ExportPart*>> mParts;
  std::map<Key, std::size_t> mNumTaken;
};

/// Returns why the meshes of two parts differ; empty if their cells are equal.
std::string CompareMeshes(ExportContent& a, const ExportPart& part, const ExportPart& other,
                          const QovMesh::KindChoices& kinds) {
  for (const PartMesh& mesh : ListMeshes(a, part)) {
    ExportPart copy = part;
    copy.mMeshInstance = mesh.mInstance;
    const QovMesh::Mesh& first = a.mpMeshes->Get(copy);
    const QovMesh::Mesh second = QovMesh::LoadMesh(*other.mpGeometry, mesh.mInstance, kinds);
    if (first.GetNumPoints() != second.GetNumPoints()) {
      return fmt::format("it has {} in A and {} in B", Plural(first.GetNumPoints(), "point"),
                         second.GetNumPoints());
    }
    if (!QovMesh::HaveEqualCells(first, second)) {
      return "its cells differ between A and B";
    }
    if (first.mPoints != second.mPoints) {
      a.mNotes.push_back(fmt::format("geometry {}: its coordinates differ; those of A are shown",
                                     Escape(part.mName, {})));
    }
  }
  return {};
}

}  // namespace

void PairResults(ExportContent& a, const ExportContent& b, const QovMesh::KindChoices& kinds,
                 PageDiff& diff) {
  const auto leaveOut = [&a](const std::string& what, const std::string& why) {
    a.mIsComplete = false;
    a.mNotes.push_back(fmt::format("not compared: {}: {}", what, why));
  };
  PartFinder finder(b);
  for (ExportPart& part : a.mParts) {
    const std::string name = "geometry " + Escape(part.mName, {});
    const ExportPart* other = finder.TakeLike(part);
    const std::string reason =
        other == nullptr ? "B does not have it" : CompareMeshes(a, part, *other, kinds);
    if (!reason.empty()) {
      leaveOut(name, reason);
      part.mResults.clear();
      continue;
    }
    std::multimap<ResultKey, const ExportResult*> others;
    for (const ExportResult& result : other->mResults) others.emplace(KeyOf(b, result), &result);
    std::erase_if(part.mResults, [&](const ExportResult& result) {
      const bool isKnown = others.contains(KeyOf(a, result));
      if (!isKnown)
        leaveOut(fmt::format("result {} of {}", Escape(result.mName, {}), name),
                 "B does not have it");
      return !isKnown;
    });
    for (const ExportResult& result : part.mResults) {
      const auto found = others.find(KeyOf(a, result));
      diff.mPairs[&result] = found->second;
      if (others.count(found->first) > 1) others.erase(found);
    }
  }
  if (diff.mPairs.empty()) {
    Util::Raise(kSource, Util::Exception::ErrorType::MismatchError,
                "the models have no result at points or cells in common" +
                    (a.mNotes.empty() ? "" : ": " + a.mNotes.back()));
  }
}

}  // namespace Qov::Tools
