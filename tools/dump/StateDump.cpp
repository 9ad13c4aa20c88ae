#include "dump/StateDump.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "ModelJson.h"
#include "Qov/Util/Raise.h"
#include "RecordPrinter.h"
#include "ValueText.h"
#include "dump/Choice.h"

namespace Qov::Tools {
namespace {

using QovRyx::Geometry;
using QovRyx::Group;
using QovRyx::NodeSets;

/// A word such as NODE or NODE:SET. The name of a node may contain colons.
struct SetWord {
  SetWord(const QovRyx::Tree& tree, const std::string& word) : mNode(word) {
    const std::size_t colon = word.rfind(':');
    if (colon == word.npos || NamesSets(tree, Unescape(word))) return;
    mNode = word.substr(0, colon);
    mSet = word.substr(colon + 1);
  }

  static bool NamesSets(const QovRyx::Tree& tree, const std::string& name) {
    for (const auto& [id, entry] : tree.GetNodes()) {
      const auto* sets = dynamic_cast<const NodeSets*>(entry.mData.get());
      if (sets != nullptr && sets->GetName() == name) return true;
    }
    return false;
  }

  std::string mNode;
  std::optional<std::string> mSet;
};

NodeSets::Set ChooseSet(std::vector<NodeSets::Set>& sets, const std::string& word) {
  std::vector<Candidate> candidates;
  candidates.reserve(sets.size());
  for (const auto& set : sets) candidates.push_back({candidates.size(), set.mName});
  return std::move(sets[Choose(candidates, word, "set")]);
}

void WriteAttributes(const QovUtil::Attributes& attributes, const std::string& before,
                     Output& output) {
  for (const auto& attribute : attributes) {
    output.Line(before + AttributesText({{attribute.first, attribute.second}}, output.GetStyle()));
  }
}

Json ResultAttributes(const Geometry& geometry) {
  Json list = Json::array();
  for (const auto& variable : geometry.GetVariables()) {
    list.push_back({{"result", JsonText(variable.mName)},
                    {"attributes", AttributesJson(variable.mAttributes)}});
  }
  return list;
}

}  // namespace

void StateDump::Finish(const char* member, Json json) {
  (*mDocument)[member] = std::move(json);
  mOutput.Line(FormatJson(*mDocument));
}

void StateDump::ShowRecord(const char* member, const Json& record) {
  if (mDocument) {
    Finish(member, MakeJson(record));
  } else {
    WriteRecord(record, mOutput);
  }
}

void StateDump::RequireViews() const {
  if (mTree.HasViewPoints()) return;
  Util::Raise("tools/dump/StateDump", Util::Exception::ErrorType::ElementNotFound,
              "there are no view points and no sequencer");
}

void StateDump::ShowView(const std::string& word) {
  RequireViews();
  std::vector<const QovRyx::ViewPoint*> views{&mTree.GetViewPoint()};
  for (const auto& path : mTree.GetViewPointPaths()) {
    for (const auto& view : path.mViewPoints) views.push_back(&view);
  }
  std::vector<Candidate> candidates;
  candidates.reserve(views.size());
  for (const auto* view : views) candidates.push_back({candidates.size(), view->mName});
  ShowRecord("view", PrintRecord(*views[Choose(candidates, word, "view point")]));
}

void StateDump::ShowSequencer() {
  RequireViews();
  ShowRecord("sequencer", PrintRecord(mTree.GetSequencerData()));
}

void StateDump::ShowHistory() { ShowRecord("history", PrintValue(mTree.GetModifiers())); }

void StateDump::ShowMaterial(const std::string& node) {
  const auto& entry = ChooseNode<QovRyx::Shape>(mTree, node, "shape");
  const auto& shape = dynamic_cast<const QovRyx::Shape&>(*entry.mData);
  ShowRecord("material", PrintRecord(shape.mMaterial.mValues));
}

void StateDump::ShowAttributes(const std::string& word) {
  const auto& node = *ChooseNode<QovRyx::Node>(mTree, word, "node").mData;
  const auto* group = dynamic_cast<const Group*>(&node);
  const auto* geometry = dynamic_cast<const Geometry*>(&node);
  if (group == nullptr && geometry == nullptr) {
    Util::Raise("tools/dump/StateDump", Util::Exception::ErrorType::ElementNotFound,
                "a node of type " + node.GetType() + " has no attributes");
  }
  if (mDocument) {
    return Finish("attributes", group != nullptr ? AttributesJson(group->mAttributes)
                                                 : ResultAttributes(*geometry));
  }
  if (group != nullptr) return WriteAttributes(group->mAttributes, "", mOutput);
  for (const auto& variable : geometry->GetVariables()) {
    const std::string name = Escape(variable.mName, mOutput.GetStyle());
    WriteAttributes(variable.mAttributes, name + ": ", mOutput);
  }
}

void StateDump::ShowSets(const std::string& word) {
  const SetWord parts(mTree, word);
  const auto& entry = ChooseNode<NodeSets>(mTree, parts.mNode, "node with sets");
  auto sets = dynamic_cast<const NodeSets&>(*entry.mData).GetSets();
  if (!parts.mSet) return ShowSets(sets, true);
  ShowSets({ChooseSet(sets, *parts.mSet)}, false);
}

void StateDump::ShowSets(const std::vector<NodeSets::Set>& sets, bool headings) {
  Json list = Json::array();
  for (const auto& set : sets) {
    if (mDocument) {
      list.push_back({{"name", JsonText(set.mName)}, {"values", set.mValues}});
      continue;
    }
    if (headings) mOutput.Line(Escape(set.mName, mOutput.GetStyle()) + ":");
    for (const std::uint32_t value : set.mValues) mOutput.Line(fmt::format("{}", value));
  }
  if (mDocument) Finish("sets", std::move(list));
}

}  // namespace Qov::Tools
