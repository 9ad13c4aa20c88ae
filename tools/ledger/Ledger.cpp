#include "Ledger.h"

#include <algorithm>

namespace Qov::Tools {
namespace {

struct Wording {
  const char* mName;
  const char* mExplanation;
};

constexpr PerItem<const char*> kItemNames = {
    "groups",      "shapes",         "geometries",     "node sets",      "unknown nodes",
    "empty nodes", "results",        "linked results", "sets",           "current views",
    "view paths",  "views in paths", "sequencers",     "history entries"};

/// In the order of DropRule.
constexpr std::array<Wording, 15> kDropRules = {{
    {"further structure", "only the results of a further instance are taken"},
    {"no instance part", "only results with an instance part are taken from a further instance"},
    {"no geometry", "the node is not a geometry in the first model"},
    {"shared name", "the instance shares another result under this name"},
    {"linked to itself", "the link becomes a link to itself, so the result has no values"},
    {"link replaced", "the result that it shared was replaced or has lost its values"},
    {"unlinked", "the link is replaced by the values that it shared"},
    {"further views", "only the views of the first model are taken"},
    {"view replaced", "a later file has a current view"},
    {"sequencer replaced", "a later file has a sequencer"},
    {"further history", "only the history of the first model is taken"},
    {"not selected", "the selection leaves it out"},
    {"stored once", "the result becomes a link to an equal one"},
    {"joined root", "the contents of the dataset merge are put below one root"},
    {"views not taken", "the options for views leave it out"},
}};

/// In the order of MadeRule.
constexpr std::array<Wording, 7> kMadeRules = {{
    {"merge group", "the group that holds the models"},
    {"shared result", "a link by which an instance shares a result of another instance"},
    {"linked to itself", "a link to itself, without values"},
    {"link replaced", "a link to other values than in the input"},
    {"unlinked", "a result with the values that a link shared"},
    {"history entry", "the merge itself"},
    {"stored once", "a link to an equal result"},
}};

template <class Tallies>
bool AllAddUp(const Tallies& tallies) {
  return std::all_of(tallies.begin(), tallies.end(),
                     [](const auto& tally) { return tally.AddsUp(); });
}

}  // namespace

const char* NameOf(Item item) { return kItemNames[static_cast<std::size_t>(item)]; }
const char* NameOf(DropRule rule) { return kDropRules[static_cast<std::size_t>(rule)].mName; }
const char* NameOf(MadeRule rule) { return kMadeRules[static_cast<std::size_t>(rule)].mName; }
const char* Explain(DropRule rule) {
  return kDropRules[static_cast<std::size_t>(rule)].mExplanation;
}
const char* Explain(MadeRule rule) {
  return kMadeRules[static_cast<std::size_t>(rule)].mExplanation;
}

bool InputTally::AddsUp() const { return mFound == mCopied + Sum(mDropped); }
bool OutputTally::AddsUp() const { return mFound == mCopied + Sum(mMade); }

bool Ledger::AddsUp() const {
  const auto inputAddsUp = [](const InputLedger& input) { return AllAddUp(input.mTallies); };
  return std::all_of(mInputs.begin(), mInputs.end(), inputAddsUp) && AllAddUp(mOutput);
}

}  // namespace Qov::Tools
