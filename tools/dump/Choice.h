#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"

/// Resolves words of the command line, which are numbers or names as shown, to parts of a model.
namespace Qov::Tools {

/// A part that a word can name.
struct Candidate {
  std::uint64_t mNumber = 0;
  std::string mName;
};

/// Returns the position of the candidate with that number, else with that name. `noun` is the term
/// for a candidate in errors. Raises ElementNotFound if there is no such candidate, and lists the
/// existing ones, or if several have that name.
std::size_t Choose(const std::vector<Candidate>& candidates, const std::string& word,
                   const std::string& noun);

/// Returns the entry with that id or name whose node is a T.
template <class T>
const QovRyx::NodeTree::Node& ChooseNode(const QovRyx::Tree& tree, const std::string& word,
                                         const std::string& noun) {
  std::vector<Candidate> candidates;
  for (const auto& [id, entry] : tree.GetNodes()) {
    if (dynamic_cast<const T*>(entry.mData.get()) == nullptr) continue;
    candidates.push_back({id, entry.mData->GetName()});
  }
  const std::uint64_t id = candidates[Choose(candidates, word, noun)].mNumber;
  return tree.GetNodes().GetReqNode(static_cast<std::uint32_t>(id));
}

struct ChosenResult {
  std::size_t mPosition = 0;
  bool mIsOnlyInstance = false;  ///< True if the word is its name without the instance part.
};
/// Returns the result with that position or name, or the only result with that name without the
/// instance part. Raises the errors of Choose. If several instances match, the error lists them.
ChosenResult ChooseResult(const QovRyx::Geometry& geometry, const std::string& word);

}  // namespace Qov::Tools
