#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace QovRyx {

/// One list of words that choose items of a kind. Remembers the words that fit an item.
class SelectionWords {
 public:
  /// `noun` is the kind of the items. The words must exist as long as this object.
  SelectionWords(const std::vector<std::string>& words, const char* noun)
      : mWords(words), mHasFitted(words.size(), false), mNoun(noun) {}

  bool IsEmpty() const { return mWords.empty(); }

  /// Returns true if `fits(word)` is true for one of the words. Calls it for all of them.
  template <class Fits>
  bool Test(Fits fits) {
    bool fitsOne = false;
    for (std::size_t i = 0; i < mWords.size(); ++i) {
      if (!fits(mWords[i])) continue;
      mHasFitted[i] = true;
      fitsOne = true;
    }
    return fitsOne;
  }

  /// Raises ElementNotFound if there are words, but none fits anything. `hint` ends the text.
  void RequireAny(std::string_view hint = {}) const;

  /// Appends a line for each word that fits nothing.
  void NoteUnused(const char* effect, std::vector<std::string>& notes) const;

 private:
  const std::vector<std::string>& mWords;
  std::vector<bool> mHasFitted;
  const char* mNoun;
};

/// Returns true if a word is equal to a name, or matches it as a pattern (Pattern.h).
bool FitsName(const std::string& word, const std::string& name);

}  // namespace QovRyx
