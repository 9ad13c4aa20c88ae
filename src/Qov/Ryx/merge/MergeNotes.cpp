#include "MergeNotes.h"

#include "MergeSteps.h"
#include "Qov/Log/Record.h"

namespace QovRyx {
namespace {

using Event = MergeNotes::Event;

struct EventText {
  Event mEvent;
  const char* mOne;
  const char* mMany;
};

constexpr EventText kEventTexts[] = {
    {Event::NodeLeftOut,
     "node of a further input is left out, because the first input does not have it",
     "nodes of further inputs are left out, because the first input does not have them"},
    {Event::OtherAttributes,
     "group of a further input has other attributes or another placement, which are left out",
     "groups of further inputs have other attributes or another placement, which are left out"},
    {Event::OtherMaterial, "shape of a further input has another material, which is left out",
     "shapes of further inputs have other materials, which are left out"},
    {Event::NodeSetsLeftOut,
     "node with sets of a further input is left out without a comparison with the first input",
     "nodes with sets of further inputs are left out without a comparison with the first input"},
    {Event::OtherGeometryName,
     "geometry of a further input has another name than that of its id in the first input",
     "geometries of further inputs have other names than those of their ids in the first input"},
    {Event::EqualName, "result has the name of another result of its geometry",
     "results have the names of other results of their geometries"},
    {Event::NoInstance,
     "result belongs to no instance, because its model has none: it applies to all models; "
     "--names stem prevents this",
     "results belong to no instance, because their models have none: they apply to all models; "
     "--names stem prevents this"},
    {Event::EqualKey, "map entry is left out, because an earlier one has its key",
     "map entries are left out, because earlier ones have their keys"},
    {Event::CutText, "text is cut at a zero byte", "texts are cut at a zero byte"},
    {Event::ViewsNotCounted, "input has views that are left out and could not be counted",
     "inputs have views that are left out and could not be counted"},
};

}  // namespace

void MergeNotes::AddLine(const std::string& line) {
  Qov::Log::Trace(kMergeSource) << line;
  if (mLines.size() < kMostLines) {
    mLines.push_back(line);
  } else {
    ++mNumMoreLines;
  }
}

void MergeNotes::Count(Event event, std::uint64_t number) { mCounts[event] += number; }

void MergeNotes::CountLosses(const Tree::Losses& losses) {
  for (const QovJbf::ReadLosses* part : {&losses.mModel, &losses.mHistory, &losses.mViews}) {
    Count(Event::EqualKey, part->mNumEqualKeys);
    Count(Event::CutText, part->mNumCutTexts);
  }
}

std::vector<std::string> MergeNotes::GetLines() const {
  std::vector<std::string> lines = mLines;
  if (mNumMoreLines != 0) {
    lines.push_back(std::to_string(mNumMoreLines) + " more such lines are in the log");
  }
  for (const EventText& text : kEventTexts) {
    const auto found = mCounts.find(text.mEvent);
    if (found == mCounts.end() || found->second == 0) continue;
    lines.push_back(std::to_string(found->second) + " " +
                    (found->second == 1 ? text.mOne : text.mMany));
  }
  return lines;
}

}  // namespace QovRyx
