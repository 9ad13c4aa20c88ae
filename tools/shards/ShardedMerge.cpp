#include "ShardedMerge.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "GivenOptions.h"
#include "OutputSettingsOptions.h"
#include "Qov/Util/Raise.h"
#include "ledger/MergeRequest.h"

namespace Qov::Tools {
namespace {

/// Options that the plan replaces by its own choices.
const std::vector<std::string> kChosen{"as", "names", "first-number", "natural-order"};
const std::vector<std::string> kSelection{"nodes",         "results",         "instances",
                                          "without-nodes", "without-results", "without-instances"};

std::vector<std::string> Concatenate(std::vector<std::string> first,
                                     const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

ShardedMerge::ShardedMerge(std::vector<std::string> arguments) {
  Declare();
  Parse(std::move(arguments));
  mInputOptions.ReadLists();
  mGivenInputs = mRequest.mInputs;
  mContentOptions.ArrangeInputs(mRequest);
}

void ShardedMerge::Declare() {
  mApp.set_help_flag();
  mInputOptions.Declare(mApp, mRequest.mInputs, "");
  mContentOptions.Declare(mApp, mRequest);
  const std::size_t numBefore = mApp.get_options({}).size();
  DeclareOutputSettings(mApp, mRequest.mOutput, mRequest.mSettings);
  const auto options = mApp.get_options({});
  mOutputOptions.assign(options.begin() + static_cast<std::ptrdiff_t>(numBefore), options.end());
  mApp.add_flag("--strict", mStrict);
  mApp.add_flag("--verify", mVerify);
}

void ShardedMerge::Parse(std::vector<std::string> arguments) {
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the end
  try {
    mApp.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    Util::Raise("tools/shards/ShardedMerge", Util::Exception::ErrorType::InvalidMethod,
                std::string("after \"--\", where the arguments of ryx merge are: ") + error.what());
  }
}

std::vector<std::string> ShardedMerge::ListInputs(bool viewPointFiles) const {
  std::vector<std::string> inputs;
  std::copy_if(mRequest.mInputs.begin(), mRequest.mInputs.end(), std::back_inserter(inputs),
               [=](const std::string& path) { return IsViewPointFile(path) == viewPointFiles; });
  return inputs;
}

std::vector<std::string> ShardedMerge::Repeat(const std::vector<const CLI::Option*>& options,
                                              const std::vector<std::string>& without) const {
  std::vector<std::string> arguments;
  for (const CLI::Option* option : options) {
    if (std::count(without.begin(), without.end(), option->get_lnames().front()) != 0) continue;
    arguments = Concatenate(std::move(arguments), RepeatOption(*option));
  }
  return arguments;
}

std::vector<std::string> ShardedMerge::RepeatContentOptions() const {
  return Repeat(mContentOptions.GetOptions(), {});
}

std::vector<std::string> ShardedMerge::RepeatPartOptions() const {
  return Concatenate(Repeat(mContentOptions.GetOptions(), Concatenate(kChosen, kSelection)),
                     Repeat(mOutputOptions, {"output", "overwrite"}));
}

std::vector<std::string> ShardedMerge::RepeatJoinOptions() const {
  std::vector<std::string> arguments =
      Concatenate(Repeat(mContentOptions.GetOptions(), Concatenate(kChosen, {"join"})),
                  Repeat(mOutputOptions, {"output", "keep-blocks"}));
  const std::vector<std::string> kept =
      Repeat(mOutputOptions, {"output", "overwrite", "level", "block-size", "threads"});
  return Concatenate(std::move(arguments),
                     kept.empty() ? std::vector<std::string>{"--keep-blocks"} : kept);
}

}  // namespace Qov::Tools
