#include <fmt/format.h>

#include <limits>
#include <map>
#include <unordered_map>

#include "ExpectNodes.h"
#include "ExpectedChains.h"
#include "LinkFollower.h"
#include "MergedNames.h"
#include "Qov/Ryx/InstanceNames.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;

/// Which result of a geometry is the first of a name. Results are only ever appended.
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

/// Adds one model after the other to the first one.
class InstanceExpecter {
 public:
  InstanceExpecter(MergeMode mode, ExpectedModel& model) : mMode(mode), mModel(model) {}

  void TakeFirst(const InputFile& input, std::size_t position);
  void TakeFurther(const InputFile& input, std::size_t position);

 private:
  using Starts = std::unordered_map<std::uint32_t, std::size_t>;

  Starts FindStarts(const InputFile& input);
  void Append(ExpectedNode& source, ExpectedNode& target, const Starts& starts,
              LinkFollower<Result>& follower);
  void MoveLink(ExpectedResult& result, const ExpectedNode& target, const Starts& starts) const;
  void Share(std::uint32_t id, const MergedNames& names, std::size_t position,
             ExpectedChains& chains);
  void ShareOne(std::uint32_t id, const std::string& name, const std::string& primaryName,
                std::size_t position, ExpectedChains& chains);
  bool Takes(const ExpectedResult& result) const {
    return mMode != MergeMode::AutomaticInstances || !InstancePartOf(result.mName).empty();
  }

  MergeMode mMode;
  ExpectedModel& mModel;
  std::unordered_map<std::uint32_t, NameIndex> mIndexes;
};

void Rename(ExpectedNode& node, const MergedNames& names) {
  for (std::size_t i = 0; i < names.mNames.size(); ++i) node.mResults[i].mName = names.mNames[i];
}

void InstanceExpecter::TakeFirst(const InputFile& input, std::size_t position) {
  std::map<std::uint32_t, MergedNames> shared;
  for (const auto& [id, entry] : input.GetNodes()) {
    ExpectedNode& node =
        mModel.mNodes.emplace(id, ExpectNode(input, position, entry)).first->second;
    const Geometry* geometry = QovRyx::AsGeometry(entry);
    if (geometry == nullptr || !IsInstanceMode(mMode)) continue;
    MergedNames names = NameResults(*geometry, input.mNumber, mMode);
    Rename(node, names);
    if (!names.mShared.empty()) shared.emplace(id, std::move(names));
  }
  ExpectedChains chains(mModel);
  for (const auto& [id, names] : shared) Share(id, names, position, chains);
}

InstanceExpecter::Starts InstanceExpecter::FindStarts(const InputFile& input) {
  Starts starts;
  QovRyx::ForEachGeometry(input.GetNodes(), [&](std::uint32_t id, const Geometry&) {
    const ExpectedNode& target = mModel.mNodes.at(id);
    if (target.IsGeometry()) starts.emplace(id, target.mResults.size());
  });
  return starts;
}

Item ItemOf(const ExpectedResult& result) {
  return result.mLinked ? Item::LinkedResult : Item::Result;
}

void DropResults(ExpectedModel& model, const ExpectedNode& node, DropRule rule) {
  for (const ExpectedResult& result : node.mResults) model.Drop(node.mInput, ItemOf(result), rule);
}

/// The structure of a further model is that of the first one, so its own goes.
void DropStructure(ExpectedModel& model, std::size_t position) {
  InputLedger& books = model.mLedger.mInputs[position];
  for (const Item item : {Item::Group, Item::Shape, Item::Geometry, Item::NodeSets,
                          Item::UnknownNode, Item::EmptyNode, Item::Set}) {
    model.Drop(position, item, DropRule::FurtherStructure, books[item].mFound);
  }
}

void InstanceExpecter::TakeFurther(const InputFile& input, std::size_t position) {
  DropStructure(mModel, position);
  const Starts starts = FindStarts(input);
  LinkFollower<Result> follower = FollowLinks(input.GetNodes());
  std::map<std::uint32_t, MergedNames> shared;
  for (const auto& [id, entry] : input.GetNodes()) {
    const Geometry* geometry = QovRyx::AsGeometry(entry);
    if (geometry == nullptr) continue;
    ExpectedNode source = ExpectNode(input, position, entry);
    if (!starts.contains(id)) {
      DropResults(mModel, source, DropRule::NoGeometryInFirst);
      continue;
    }
    MergedNames names = NameResults(*geometry, input.mNumber, mMode);
    Rename(source, names);
    Append(source, mModel.mNodes.at(id), starts, follower);
    if (!names.mShared.empty()) shared.emplace(id, std::move(names));
  }
  ExpectedChains chains(mModel);
  for (const auto& [id, names] : shared) Share(id, names, position, chains);
}

/// Replaces the link of the result by the shared values, with the kind's high byte.
void Unlink(ExpectedResult& result, LinkFollower<Result>& follower) {
  result.mpValues = follower.Follow(*result.mpSource);
  result.mKindHighByte = result.mpValues == nullptr ? 0 : result.mpValues->mKindHighByte;
  result.mLinked = false;
  result.mMade = MadeRule::Unlinked;
}

void InstanceExpecter::Append(ExpectedNode& source, ExpectedNode& target, const Starts& starts,
                              LinkFollower<Result>& follower) {
  for (ExpectedResult& result : source.mResults) {
    if (!Takes(result)) {
      mModel.Drop(source.mInput, ItemOf(result), DropRule::NoInstancePart);
      continue;
    }
    if (result.mLinked) MoveLink(result, target, starts);
    if (result.mMade == MadeRule::Unlinked) Unlink(result, follower);
    target.mResults.push_back(std::move(result));
  }
}

/// Appended automatically, a link within a geometry leads to its own place. Every other link
/// leads to the same result as before, or marks the result as one to be unlinked.
void InstanceExpecter::MoveLink(ExpectedResult& result, const ExpectedNode& target,
                                const Starts& starts) const {
  if (mMode == MergeMode::AutomaticInstances && result.mLink.mNode == target.mLinks.mId) {
    result.mLeadsNowhere = true;
    result.mMade = MadeRule::LinkedToItself;
    return;
  }
  if (result.mLeadsNowhere) return;
  const auto start = starts.find(result.mLink.mNode);
  const std::uint64_t moved =
      start == starts.end() ? 0 : std::uint64_t{start->second} + result.mLink.mVariable;
  if (mMode == MergeMode::AutomaticInstances || start == starts.end() ||
      moved > std::numeric_limits<std::uint32_t>::max()) {
    result.mMade = MadeRule::Unlinked;
  } else {
    result.mLink.mVariable = static_cast<std::uint32_t>(moved);
  }
}

void InstanceExpecter::Share(std::uint32_t id, const MergedNames& names, std::size_t position,
                             ExpectedChains& chains) {
  for (const auto& [primary, others] : names.mShared) {
    for (const std::string& name : others) ShareOne(id, name, primary, position, chains);
  }
}

/// Makes the first result of that name a link, unless it holds the values to be shared.
void InstanceExpecter::ShareOne(std::uint32_t id, const std::string& name,
                                const std::string& primaryName, std::size_t position,
                                ExpectedChains& chains) {
  ExpectedNode& node = mModel.mNodes.at(id);
  NameIndex& index = mIndexes[id];
  const std::size_t numBefore = node.mResults.size();
  const std::size_t place = index.FindOrAppend(node, name);
  const std::size_t primaryPlace = index.FindOrAppend(node, primaryName);
  const ExpectedResult& primary = node.mResults[primaryPlace];
  ExpectedResult& result = node.mResults[place];
  const Geometry::Link here{id, static_cast<std::uint32_t>(place)};
  const Geometry::Link there{id, static_cast<std::uint32_t>(primaryPlace)};
  if (place == primaryPlace) return;
  if (primary.mLinked && place < numBefore && chains.LeadsTo(there, here)) return;
  result.mpFields = primary.mpFields;
  result.mKind = primary.mKind;
  result.mKindHighByte = primary.mKindHighByte;
  result.mLink = primary.mLinked ? primary.mLink : there;
  result.mLeadsNowhere = primary.mLinked && primary.mLeadsNowhere;
  result.mLinked = true;
  result.mpValues = nullptr;
  if (result.mpSource == nullptr && !result.mMade) result.mInput = position;
  result.mMade = MadeRule::SharedResult;
  chains.Update(here);
}

/// Returns whether all geometries of the input have a node in the first one.
bool HasAllNodes(const InputFile& first, const InputFile& input, std::vector<Obstacle>& obstacles) {
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

/// Returns whether there are not too many links to be made.
bool CanShare(MergeMode mode, const InputFile& input, std::vector<Obstacle>& obstacles) {
  if (mode != MergeMode::Instances) return true;
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
  InstanceExpecter expecter(mode, model);
  const InputFile* first = nullptr;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (inputs[i].mIsViewFile) continue;
    if (!CanShare(mode, inputs[i], obstacles)) return;
    if (first == nullptr) {
      first = &inputs[i];
      expecter.TakeFirst(*first, i);
      continue;
    }
    if (!HasAllNodes(*first, inputs[i], obstacles)) return;
    expecter.TakeFurther(inputs[i], i);
  }
}

}  // namespace Qov::Tools
