#include "ExpectInstances.h"

#include <fmt/format.h>

#include <limits>
#include <map>
#include <unordered_map>

#include "MergedNames.h"
#include "Qov/Ryx/InstanceNames.h"
#include "merge/LinkChains.h"
#include "model/LinkFollower.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using QovRyx::LinkFollower;
using Chains = QovRyx::LinkChains<ExpectedResult>;

/// Finds the first result of a name in a geometry. Results may only be appended meanwhile.
class NameIndex {
 public:
  std::size_t FindOrAppend(ExpectedNode& node, const std::string& name) {
    for (; mNumIndexed < node.mResults.size(); ++mNumIndexed) {
      mFirst.emplace(node.mResults[mNumIndexed].mName, mNumIndexed);
    }
    const auto found = mFirst.find(name);
    if (found != mFirst.end()) return found->second;
    node.mResults.emplace_back().mName = name;
    node.mResults.back().mKind = Geometry::kNoKind;
    return node.mResults.size() - 1;
  }

 private:
  std::unordered_map<std::string, std::size_t> mFirst;
  std::size_t mNumIndexed = 0;
};

/// Adds the first model and then the results of the further models, one after the other.
class InstanceMerge {
 public:
  InstanceMerge(MergeMode mode, ExpectedModel& model) : mMode(mode), mModel(model) {}

  void AddFirst(const InputFile& input, std::size_t position);
  void AddFurther(const InputFile& input, std::size_t position);

 private:
  using Starts = std::unordered_map<std::uint32_t, std::size_t>;

  Starts FindStarts(const InputFile& input);
  void Append(ExpectedNode& source, ExpectedNode& target, const Starts& starts,
              LinkFollower<Result>& follower);
  void MoveLink(ExpectedResult& result, const ExpectedNode& target, const Starts& starts) const;
  void Share(std::uint32_t id, const MergedNames& names, std::size_t position, Chains& chains);
  void ShareOne(std::uint32_t id, const std::string& name, const std::string& primaryName,
                std::size_t position, Chains& chains);
  /// Returns true if a result of a further model is appended.
  bool IsTaken(const ExpectedResult& result) const {
    return !TakesOnlyInstances(mMode) || !InstancePartOf(result.mName).empty();
  }

  MergeMode mMode;
  ExpectedModel& mModel;
  std::unordered_map<std::uint32_t, NameIndex> mIndexes;
};

Chains IndexChains(const ExpectedModel& model) {
  return Chains([&model](const QovRyx::ResultPlace& place) { return model.FindResult(place); });
}

void Rename(ExpectedNode& node, const MergedNames& names) {
  for (std::size_t i = 0; i < names.mNames.size(); ++i) node.mResults[i].mName = names.mNames[i];
}

void InstanceMerge::AddFirst(const InputFile& input, std::size_t position) {
  std::map<std::uint32_t, MergedNames> shared;
  for (const auto& [id, entry] : input.GetNodes()) {
    ExpectedNode& node = mModel.mNodes.emplace(id, ExpectNode(position, entry)).first->second;
    const Geometry* geometry = QovRyx::AsGeometry(entry);
    if (geometry == nullptr || !IsInstanceMode(mMode)) continue;
    MergedNames names = NameResults(*geometry, input.mNumber, mMode);
    Rename(node, names);
    if (!names.mShared.empty()) shared.emplace(id, std::move(names));
  }
  Chains chains = IndexChains(mModel);
  for (const auto& [id, names] : shared) Share(id, names, position, chains);
}

InstanceMerge::Starts InstanceMerge::FindStarts(const InputFile& input) {
  Starts starts;
  QovRyx::ForEachGeometry(input.GetNodes(), [&](std::uint32_t id, const Geometry&) {
    const ExpectedNode& target = mModel.mNodes.at(id);
    if (target.IsGeometry()) starts.emplace(id, target.mResults.size());
  });
  return starts;
}

Item ItemOfResult(const ExpectedResult& result) {
  return result.mLink.IsLinked() ? Item::LinkedResult : Item::Result;
}

void DropResults(ExpectedModel& model, const ExpectedNode& node, DropRule rule) {
  for (const ExpectedResult& result : node.mResults)
    model.Drop(node.mInput, ItemOfResult(result), rule);
}

/// Drops the nodes and sets of a further model, because those of the first model are used.
void DropStructure(ExpectedModel& model, std::size_t position) {
  InputLedger& ledger = model.mLedger.mInputs[position];
  for (const Item item : {Item::Group, Item::Shape, Item::Geometry, Item::NodeSets,
                          Item::UnknownNode, Item::EmptyNode, Item::Set}) {
    model.Drop(position, item, DropRule::FurtherStructure, ledger[item].mFound);
  }
}

void InstanceMerge::AddFurther(const InputFile& input, std::size_t position) {
  DropStructure(mModel, position);
  const Starts starts = FindStarts(input);
  LinkFollower follower = QovRyx::FollowLinks(input.GetNodes());
  std::map<std::uint32_t, MergedNames> shared;
  for (const auto& [id, entry] : input.GetNodes()) {
    const Geometry* geometry = QovRyx::AsGeometry(entry);
    if (geometry == nullptr) continue;
    ExpectedNode source = ExpectNode(position, entry);
    if (!starts.contains(id)) {
      DropResults(mModel, source, DropRule::NoGeometryInFirst);
      continue;
    }
    MergedNames names = NameResults(*geometry, input.mNumber, mMode);
    Rename(source, names);
    Append(source, mModel.mNodes.at(id), starts, follower);
    if (!names.mShared.empty()) shared.emplace(id, std::move(names));
  }
  Chains chains = IndexChains(mModel);
  for (const auto& [id, names] : shared) Share(id, names, position, chains);
}

/// Replaces the link of a result by the values that it shares, with the high byte of their kind.
void Unlink(ExpectedResult& result, LinkFollower<Result>& follower) {
  result.mpValues = follower.FindOwner(*result.mpSource);
  result.mKindHighByte = result.mpValues == nullptr ? 0 : result.mpValues->mKindHighByte;
  result.mLink = {};
  result.mMade = MadeRule::Unlinked;
}

void InstanceMerge::Append(ExpectedNode& source, ExpectedNode& target, const Starts& starts,
                           LinkFollower<Result>& follower) {
  for (ExpectedResult& result : source.mResults) {
    if (!IsTaken(result)) {
      mModel.Drop(source.mInput, ItemOfResult(result), DropRule::NoInstancePart);
      continue;
    }
    if (result.mLink.IsLinked()) MoveLink(result, target, starts);
    if (result.mMade == MadeRule::Unlinked) Unlink(result, follower);
    target.mResults.push_back(std::move(result));
  }
}

/// Makes the link of a result that is appended to `target` name the same result as before, or marks
/// the result as one to be unlinked. With automatic renaming, a link within a geometry becomes a
/// link to itself.
void InstanceMerge::MoveLink(ExpectedResult& result, const ExpectedNode& target,
                             const Starts& starts) const {
  const auto [node, position] = result.mLink.GetPlace();
  if (TakesOnlyInstances(mMode) && node == target.mEntry.mId) {
    result.mLink = QovRyx::ResultLink({node, static_cast<std::uint32_t>(target.mResults.size())});
    result.mMade = MadeRule::LinkedToItself;
    return;
  }
  if (!result.mLink.HasTarget()) return;
  const auto start = starts.find(node);
  const std::uint64_t moved = start == starts.end() ? 0 : std::uint64_t{start->second} + position;
  if (TakesOnlyInstances(mMode) || start == starts.end() ||
      moved > std::numeric_limits<std::uint32_t>::max()) {
    result.mMade = MadeRule::Unlinked;
  } else {
    result.mLink.MoveTo({node, static_cast<std::uint32_t>(moved)});
  }
}

void InstanceMerge::Share(std::uint32_t id, const MergedNames& names, std::size_t position,
                          Chains& chains) {
  for (const auto& [primary, others] : names.mShared) {
    for (const std::string& name : others) ShareOne(id, name, primary, position, chains);
  }
}

/// Links the first result named `name` to the primary result, unless the primary result takes its
/// values from it.
void InstanceMerge::ShareOne(std::uint32_t id, const std::string& name,
                             const std::string& primaryName, std::size_t position, Chains& chains) {
  ExpectedNode& node = mModel.mNodes.at(id);
  NameIndex& index = mIndexes[id];
  const std::size_t numBefore = node.mResults.size();
  const std::size_t place = index.FindOrAppend(node, name);
  const std::size_t primaryPlace = index.FindOrAppend(node, primaryName);
  const ExpectedResult& primary = node.mResults[primaryPlace];
  ExpectedResult& result = node.mResults[place];
  const QovRyx::ResultPlace here{id, static_cast<std::uint32_t>(place)};
  const QovRyx::ResultPlace there{id, static_cast<std::uint32_t>(primaryPlace)};
  if (place == primaryPlace) return;
  if (primary.mLink.IsLinked() && place < numBefore && chains.LeadsTo(there, here)) return;
  result.mpFields = primary.mpFields;
  result.mKind = primary.mKind;
  result.mKindHighByte = primary.mKindHighByte;
  result.mLink = primary.mLink.IsLinked() ? primary.mLink : QovRyx::ResultLink(there);
  result.mpValues = nullptr;
  if (result.mpSource == nullptr && !result.mMade) result.mInput = position;
  result.mMade = MadeRule::SharedResult;
  chains.Update(here);
}

/// Returns false and adds obstacles if the first model has no node for a geometry of the input.
bool CheckNodes(const InputFile& first, const InputFile& input, std::vector<Obstacle>& obstacles) {
  bool hasAll = true;
  QovRyx::ForEachGeometry(input.GetNodes(), [&](std::uint32_t id, const Geometry& geometry) {
    if (first.GetNodes().FindNode(id) != nullptr) return;
    hasAll = false;
    obstacles.push_back(
        {input.mPath, fmt::format("Element Not Found: geometry {} is not in the first model", id),
         geometry.GetName()});
  });
  return hasAll;
}

/// Returns false and adds an obstacle if the input needs too many links.
bool CheckSharingLimit(MergeMode mode, const InputFile& input, std::vector<Obstacle>& obstacles) {
  if (mode.mNaming != QovRyx::InstanceNaming::Plain) return true;
  try {
    QovRyx::CheckSharing(*input.mpTree);
    return true;
  } catch (const Util::Exception& error) {
    obstacles.push_back({input.mPath, error.GetLogMessage(), ""});
    return false;
  }
}

}  // namespace

void ExpectInstances(MergeMode mode, const std::vector<InputFile>& inputs, ExpectedModel& model,
                     std::vector<Obstacle>& obstacles) {
  InstanceMerge merge(mode, model);
  const InputFile* first = nullptr;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) continue;
    if (!CheckSharingLimit(mode, inputs[i], obstacles)) return;
    if (first == nullptr) {
      first = &inputs[i];
      merge.AddFirst(*first, i);
      continue;
    }
    if (!CheckNodes(*first, inputs[i], obstacles)) return;
    merge.AddFurther(inputs[i], i);
  }
}

}  // namespace Qov::Tools
