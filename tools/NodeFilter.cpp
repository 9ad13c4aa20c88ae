#include "NodeFilter.h"

#include <algorithm>
#include <cctype>

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

bool NodeCriteria::Accept(const QovRyx::NodeTree::Node& entry) const {
  if (!mIds.empty() && std::find(mIds.begin(), mIds.end(), entry.mId) == mIds.end()) return false;
  if (!mName && mType.empty()) return true;
  if (!entry.mData) return false;
  if (!mType.empty() && !EqualsIgnoringCase(entry.mData->GetType(), mType)) return false;
  return !mName || MatchesPattern(entry.mData->GetName(), *mName);
}

NodeFilter::NodeFilter(const QovRyx::NodeTree& nodes, const NodeCriteria& criteria) {
  if (criteria.IsEmpty()) return;
  mChosen.emplace();
  mShown.emplace();
  std::vector<std::uint32_t> path;
  TreeWalk walk(nodes);
  while (const auto step = walk.Next()) {
    path.resize(step->mDepth);
    path.push_back(step->mId);
    if (step->mEntry == nullptr || step->mAgain || !criteria.Accept(*step->mEntry)) continue;
    mChosen->insert(step->mId);
    // The ancestors of a shown node are already shown.
    for (auto id = path.rbegin(); id != path.rend() && mShown->insert(*id).second; ++id) {
    }
  }
}

}  // namespace Qov::Tools
