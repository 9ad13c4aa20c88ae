#include "SelectionWords.h"

#include <algorithm>

#include "Qov/Util/Raise.h"
#include "diagnostics/Pattern.h"
#include "diagnostics/Printable.h"

namespace QovRyx {

void SelectionWords::RequireAny(std::string_view hint) const {
  const bool anyFits = std::find(mHasFitted.begin(), mHasFitted.end(), true) != mHasFitted.end();
  if (mWords.empty() || anyFits) return;
  std::string text = std::string("No ") + mNoun + " matches ";
  for (std::size_t i = 0; i < mWords.size(); ++i) {
    text += (i == 0 ? "" : " or ") + Qov::Util::Quote(mWords[i]);
  }
  Qov::Util::Raise("include/Qov/Ryx/Selection", Qov::Util::Exception::ErrorType::ElementNotFound,
                   text.append(hint));
}

void SelectionWords::NoteUnused(const char* effect, std::vector<std::string>& notes) const {
  for (std::size_t i = 0; i < mWords.size(); ++i) {
    if (mHasFitted[i]) continue;
    notes.push_back(Qov::Util::Quote(mWords[i]) + effect + ": no " + mNoun + " matches it");
  }
}

bool FitsName(const std::string& word, const std::string& name) {
  return word == name || Qov::Util::MatchesPattern(name, word);
}

}  // namespace QovRyx
