#include "MergeRequestOptions.h"

#include <fmt/format.h>

#include <CLI/App.hpp>
#include <map>

#include "MergeText.h"
#include "OptionValues.h"
#include "Qov/Ryx/FileArrangement.h"
#include "Qov/Util/Raise.h"
#include "SelectionOptions.h"

namespace Qov::Tools {
namespace {

/// The words of an option, and what they mean.
template <class T>
using Words = std::map<std::string, T>;

template <class T, std::size_t N>
Words<T> WordsOf(const T (&values)[N]) {
  Words<T> words;
  for (const T value : values) words.emplace(NameOf(value), value);
  return words;
}

template <class T>
void AddChoice(CLI::App& app, const char* name, T& value, const Words<T>& words, const char* type,
               const char* help) {
  std::vector<std::string> known;
  for (const auto& [word, meaning] : words) known.push_back(word);
  app.add_option_function<std::string>(
         name, [&value, words](const std::string& word) { value = words.at(word); }, help)
      ->type_name(type)
      ->check(CLI::IsMember(known))
      ->option_text(type);
}

void DeclareRequest(CLI::App& app, QovRyx::MergeRequest& request) {
  using QovRyx::MergedNames;
  using QovRyx::MergedViews;
  using QovRyx::MergeMode;
  AddChoice(app, "--as", request.mMode,
            WordsOf({MergeMode::Automatic, MergeMode::Instances, MergeMode::Datasets}),
            "auto|instances|datasets", "How models are put together");
  AddChoice(
      app, "--names", request.mNames,
      WordsOf({MergedNames::Automatic, MergedNames::Keep, MergedNames::Stem, MergedNames::Number}),
      "auto|keep|stem|number",
      "Instance parts of names: as they are, with the file's name, or with F1, F2 ...");
  app.add_option("--first-number", request.mFirstNumber, "The number of the first model")
      ->option_text("K")
      ->transform(WholeNumber());
  app.add_flag("--share,!--no-share", request.mShare, "Store equal arrays once, the default");
  AddChoice(app, "--views", request.mViews,
            WordsOf({MergedViews::First, MergedViews::All, MergedViews::None}), "first|all|none",
            "The models whose views are taken");
  app.add_flag("--join", request.mJoin,
               "Put the contents of models that are merged datasets below one root");
}

}  // namespace

void MergeRequestOptions::Declare(CLI::App& app, QovRyx::MergeRequest& request) {
  const std::size_t numBefore = app.get_options({}).size();
  app.add_flag("--natural-order", mNaturalOrder,
               "Order the inputs by their trailing numbers: run2 before run10");
  DeclareRequest(app, request);
  DeclareSelection(app, request.mSelection);
  const auto options = app.get_options({});
  mOptions.assign(options.begin() + static_cast<std::ptrdiff_t>(numBefore), options.end());
}

std::string MergeRequestOptions::FindGiven() const {
  for (const CLI::Option* option : mOptions) {
    if (option->count() != 0) return option->get_name();
  }
  return "";
}

void MergeRequestOptions::RefuseTogetherWith(const MergeOptions& options) const {
  const std::string given = FindGiven();
  const std::vector<std::string> others = options.GetNames();
  if (given.empty() || others.empty()) return;
  Util::Raise("tools/merge/MergeRequestOptions", Util::Exception::ErrorType::InvalidMethod,
              fmt::format("{} is an option of ryx merge and {} one of RyxMerge: give those of one "
                          "program only",
                          given, others.front()));
}

void MergeRequestOptions::ArrangeInputs(QovRyx::MergeRequest& request) const {
  if (mNaturalOrder) request.mInputs = QovRyx::arrange_files(request.mInputs);
}

}  // namespace Qov::Tools
