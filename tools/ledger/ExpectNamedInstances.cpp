#include "ExpectNamedInstances.h"

#include <fmt/format.h>

#include <limits>
#include <map>
#include <set>
#include <string>
#include <unordered_set>

#include "MergedNames.h"
#include "Qov/Ryx/InstanceNames.h"
#include "model/LinkFollower.h"
#include "model/TimeAttribute.h"

namespace Qov::Tools {
namespace {

using QovRyx::kInstanceSeparator;

using Nodes = std::map<std::uint32_t, ExpectedNode>;
using Parts = std::set<std::string>;

std::string BaseOf(const std::string& name) {
  return name.substr(0, name.rfind(kInstanceSeparator));
}

/// Returns the instance part that a result gets, for the one that it has.
std::string NewPart(const MergeRequest& request, std::size_t model, const std::string& part) {
  const std::string& own = request.mParts[model];
  if (own.empty() || part.empty()) return own + part;
  const bool isStem = request.mMode.mNames == QovRyx::MergedNames::Stem;
  const bool hasDigit = part.find_first_of(" 0123456789") == 0;
  return own + (isStem || hasDigit ? " " : "") + part;
}

/// Gives the results of one geometry the names of its instances.
class GeometryNaming {
 public:
  explicit GeometryNaming(ExpectedNode& node) : mNode(node) {}

  /// Renames the results that belong to one instance. Returns the parts of the names.
  Parts NameInstances(const MergeRequest& request, std::size_t model) {
    Parts parts;
    for (ExpectedResult& result : mNode.mResults) {
      const std::string old = InstancePartOf(result.mName);
      if (old.empty()) continue;
      const std::string part = NewPart(request, model, old);
      parts.insert(part);
      result.mName = BaseOf(result.mName) + kInstanceSeparator + part;
      mTaken.insert(result.mName);
    }
    return parts;
  }

  /// Names the other results. They belong to all instances: the first one gets the result, and the
  /// others get links to it.
  void NameCommon(const Parts& parts, const std::string& ownPart) {
    const std::size_t count = mNode.mResults.size();
    for (std::size_t i = 0; i < count; ++i) {
      if (!InstancePartOf(mNode.mResults[i].mName).empty()) continue;
      const std::string base = BaseOf(mNode.mResults[i].mName);
      bool isNamed = false;
      for (const std::string& part : parts) {
        const std::string name = base + kInstanceSeparator + part;
        if (!mTaken.insert(name).second) continue;
        if (isNamed) {
          AddLink(i, name);
        } else {
          mNode.mResults[i].mName = name;
        }
        isNamed = true;
      }
      if (!isNamed && !ownPart.empty()) {
        mNode.mResults[i].mName = base + kInstanceSeparator + ownPart;
        mTaken.insert(mNode.mResults[i].mName);
      }
    }
  }

 private:
  void AddLink(std::size_t i, const std::string& name) {
    ExpectedResult link = mNode.mResults[i];
    link.mName = name;
    link.mpSource = nullptr;
    link.mpValues = nullptr;
    link.mMade = MadeRule::SharedResult;
    if (!link.mLink.IsLinked()) {
      link.mLink = QovRyx::ResultLink({mNode.mEntry.mId, static_cast<std::uint32_t>(i)});
    }
    mNode.mResults.push_back(std::move(link));
  }

  ExpectedNode& mNode;
  std::unordered_set<std::string> mTaken;
};

void NameResults(const MergeRequest& request, std::size_t model, Nodes& nodes) {
  std::vector<std::pair<GeometryNaming, Parts>> namings;
  Parts all;
  for (auto& [id, node] : nodes) {
    if (!node.IsGeometry()) continue;
    GeometryNaming naming(node);
    Parts parts = naming.NameInstances(request, model);
    all.insert(parts.begin(), parts.end());
    namings.emplace_back(std::move(naming), std::move(parts));
  }
  for (auto& [naming, parts] : namings) {
    naming.NameCommon(parts.empty() ? all : parts, request.mParts[model]);
  }
}

/// Gives the results of instances the times of the groups above them.
void TakeTimes(const InputFile& input, Nodes& nodes) {
  QovRyx::GroupTimes times(input.GetNodes());
  for (auto& [id, node] : nodes) {
    const QovRyx::Group* group = node.IsGeometry() ? times.Find(id) : nullptr;
    if (group == nullptr) continue;
    for (ExpectedResult& result : node.mResults) {
      const bool isCommon = InstancePartOf(result.mName).empty();
      const bool hasTime = QovRyx::GetTimeValue(result.mpFields->mAttributes).has_value();
      if (!isCommon && !hasTime) result.mpTimedGroup = group;
    }
  }
}

/// Makes a link name the same result after `numBefore[id]` results of each geometry `id`.
void ShiftLink(ExpectedResult& result, const std::map<std::uint32_t, std::size_t>& numBefore,
               QovRyx::LinkFollower<Result>& follower) {
  if (!result.mLink.HasTarget()) return;
  const auto [node, position] = result.mLink.GetPlace();
  const std::uint64_t moved = std::uint64_t{numBefore.at(node)} + position;
  if (moved <= std::numeric_limits<std::uint32_t>::max()) {
    result.mLink.MoveTo({node, static_cast<std::uint32_t>(moved)});
    return;
  }
  result.mpValues = result.mpSource == nullptr ? nullptr : follower.FindOwner(*result.mpSource);
  result.mKindHighByte = result.mpValues == nullptr ? 0 : result.mpValues->mKindHighByte;
  result.mLink = {};
  result.mMade = MadeRule::Unlinked;
}

/// Drops the nodes of a further model that the output does not have from it. Returns false and adds
/// an obstacle if a geometry with results has no place in the first model.
bool DropFurtherNodes(const InputFile& input, std::size_t position, const Nodes& nodes,
                      ExpectedModel& model, std::vector<Obstacle>& obstacles) {
  for (const auto& [id, node] : nodes) {
    model.Drop(position, ItemOf(*node.mpSource), DropRule::FurtherStructure);
    model.Drop(position, Item::Set, DropRule::FurtherStructure, node.mNumSoundSets);
    const auto place = model.mNodes.find(id);
    const bool hasPlace = place != model.mNodes.end() && place->second.IsGeometry();
    if (!node.IsGeometry() || hasPlace || node.mResults.empty()) continue;
    obstacles.push_back({input.mPath,
                         fmt::format("geometry {} with results is not in the first model", id),
                         node.GetContent()->GetName()});
    return false;
  }
  return true;
}

void AppendResults(const InputFile& input, Nodes& nodes, ExpectedModel& model) {
  std::map<std::uint32_t, std::size_t> numBefore;
  for (const auto& [id, node] : nodes) {
    if (node.IsGeometry() && !node.mResults.empty()) {
      numBefore[id] = model.mNodes.at(id).mResults.size();
    }
  }
  QovRyx::LinkFollower<Result> follower = QovRyx::FollowLinks(input.GetNodes());
  for (auto& [id, node] : nodes) {
    for (ExpectedResult& result : node.mResults) {
      ShiftLink(result, numBefore, follower);
      model.mNodes.at(id).mResults.push_back(std::move(result));
    }
  }
}

}  // namespace

void ExpectNamedInstances(const MergeRequest& request, const std::vector<InputFile>& inputs,
                          ExpectedModel& model, std::vector<Obstacle>& obstacles) {
  const bool isUnchanged =
      request.CountModels() == 1 && request.mMode.mNames == QovRyx::MergedNames::Keep;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) continue;
    Nodes nodes;
    for (const auto& [id, entry] : inputs[i].GetNodes()) nodes.emplace(id, ExpectNode(i, entry));
    const bool isFirst = inputs[i].mNumber == 1;
    if (!isFirst && !DropFurtherNodes(inputs[i], i, nodes, model, obstacles)) return;
    if (!isUnchanged) NameResults(request, inputs[i].mNumber - 1, nodes);
    if (request.CountModels() > 1) TakeTimes(inputs[i], nodes);
    if (isFirst) {
      model.mNodes = std::move(nodes);
    } else {
      AppendResults(inputs[i], nodes, model);
    }
  }
}

}  // namespace Qov::Tools
