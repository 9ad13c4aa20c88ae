#include "NodeFilter.h"

#include <algorithm>
#include <cctype>

#include "ResultPattern.h"
#include "Terminal.h"
#include "diagnostics/Pattern.h"

namespace Qov::Tools {
namespace {

bool EqualsIgnoringCase(const std::string& left, const std::string& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

}  // namespace

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  return Util::MatchesPattern(Escape(name, {}), pattern);
}

bool NodeCriteria::AcceptsResult(const std::string& name) const {
  return mResults.empty() ||
         std::any_of(mResults.begin(), mResults.end(),
                     [&name](const std::string& pattern) { return MatchesResult(name, pattern); });
}

bool NodeCriteria::Accept(const QovRyx::NodeTree::Node& entry) const {
  if (!mIds.empty() && std::find(mIds.begin(), mIds.end(), entry.mId) == mIds.end()) return false;
  if (!mName && mType.empty() && mResults.empty()) return true;
  if (!entry.mData) return false;
  if (!mType.empty() && !EqualsIgnoringCase(entry.mData->GetType(), mType)) return false;
  if (mName && !MatchesPattern(entry.mData->GetName(), *mName)) return false;
  if (mResults.empty()) return true;
  const QovRyx::Geometry* geometry = QovRyx::AsGeometry(entry);
  return geometry != nullptr &&
         std::any_of(geometry->GetVariables().begin(), geometry->GetVariables().end(),
                     [this](const auto& result) { return AcceptsResult(result.mName); });
}

NodeFilter::NodeFilter(const QovRyx::NodeTree& nodes, const NodeCriteria& criteria)
    : mCriteria(criteria) {
  if (!criteria.ChoosesNodes() && !criteria.mDepth) return;
  mChosen.emplace();
  mShown.emplace();
  std::vector<std::uint32_t> path;
  TreeWalk walk(nodes);
  while (const auto step = walk.Next()) {
    path.resize(step->mDepth);
    path.push_back(step->mId);
    const bool isEntry = step->mEntry != nullptr && !step->mAgain;
    if (criteria.mDepth && step->mDepth >= *criteria.mDepth) {
      if (isEntry && criteria.Accept(*step->mEntry)) ++mNumDeeper[path[*criteria.mDepth - 1]];
      continue;
    }
    if (isEntry ? criteria.Accept(*step->mEntry) : !criteria.ChoosesNodes()) Show(path);
  }
}

/// Shows the last node of the path with its content, and its ancestors.
void NodeFilter::Show(const std::vector<std::uint32_t>& path) {
  mChosen->insert(path.back());
  // The ancestors of a shown node are already shown.
  for (auto id = path.rbegin(); id != path.rend() && mShown->insert(*id).second; ++id) {
  }
}

std::uint64_t NodeFilter::CountDeeper(std::uint32_t id) const {
  const auto found = mNumDeeper.find(id);
  return found == mNumDeeper.end() ? 0 : found->second;
}

}  // namespace Qov::Tools
