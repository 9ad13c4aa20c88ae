#include "Warnings.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iterator>
#include <map>
#include <string_view>
#include <unordered_set>

#include "InstanceMismatches.h"
#include "Plural.h"
#include "Qov/Jbf/JbFile.h"
#include "check/Finding.h"
#include "check/UnreadContent.h"
#include "merge/ArrayNames.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

bool IsContainer(const std::string& path) {
  try {
    QovJbf::JbFile file;
    file.OpenFile(path, "rb");
    return file.IsJbFile();
  } catch (const std::exception&) {
    return false;
  }
}

void FindRepeatedInputs(const MergeRequest& request, std::vector<Warning>& warnings) {
  std::map<std::pair<dev_t, ino_t>, std::string> known;
  for (const std::string& path : request.mInputs) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) continue;
    const auto [first, isNew] = known.try_emplace({status.st_dev, status.st_ino}, path);
    if (isNew) continue;
    warnings.push_back({"same-input", path,
                        "is the same file as the input \"" + first->second + "\"",
                        "Leave one of them out."});
  }
}

/// Finds warnings about the content of the inputs.
class ContentWarnings {
 public:
  ContentWarnings(const std::vector<InputFile>& inputs, const ExpectedModel& model,
                  const Ledger& ledger)
      : mInputs(inputs), mModel(model), mLedger(ledger) {}

  std::vector<Warning> Find();

 private:
  void FindSameNames();
  void FindInputsWithoutEffect();
  void FindMismatches();
  void FindLostContent(const InputFile& first, const InputFile& input, const char* remedy);
  void FindLostValues();
  void FindViewsLeftOut();
  void FindUnread(std::size_t input);

  std::vector<std::uint64_t> CountResultsTaken() const;
  std::uint64_t Dropped(std::size_t input, Item item, DropRule rule) const;
  void Add(const char* code, const std::string& path, std::string text, std::string remedy) {
    mWarnings.push_back({code, path, std::move(text), std::move(remedy)});
  }

  const std::vector<InputFile>& mInputs;
  const ExpectedModel& mModel;
  const Ledger& mLedger;
  std::vector<Warning> mWarnings;
};

std::uint64_t ContentWarnings::Dropped(std::size_t input, Item item, DropRule rule) const {
  const auto& dropped = mLedger.mInputs[input].mTallies[static_cast<std::size_t>(item)].mDropped;
  const auto found = dropped.find(rule);
  return found == dropped.end() ? 0 : found->second;
}

void ContentWarnings::FindSameNames() {
  std::uint64_t count = 0;
  std::string example;
  for (const auto& [id, node] : mModel.mNodes) {
    std::unordered_set<std::string_view> names;
    for (const ExpectedResult& result : node.mResults) {
      if (names.insert(result.mName).second) continue;
      if (count++ == 0) example = fmt::format("{} in node {}", Quoted(result.mName), id);
    }
  }
  if (count == 0) return;
  const char* remedy = "Rename the results in the inputs.";
  if (mLedger.mMode.mNaming == QovRyx::InstanceNaming::Plain) {
    remedy = "Add --suffix-file-instance, which gives the results of each file different names.";
  } else if (IsInstanceMode(mLedger.mMode) && mLedger.mMode.mNames == QovRyx::MergedNames::Keep) {
    remedy = "Use --names stem, which puts the names of the files into the names of results.";
  }
  Add("same-name", "",
      Plural(count, "result", "get") + " the name of another result of the geometry, for example " +
          example,
      remedy);
}

bool IsMeshArray(const std::string& name) {
  return QovRyx::IsMeshBase(QovRyx::SplitName(name).mBase);
}

/// Returns the number of results of each input that the output contains, without mesh arrays.
std::vector<std::uint64_t> ContentWarnings::CountResultsTaken() const {
  std::vector<std::uint64_t> counts(mInputs.size());
  for (const auto& [id, node] : mModel.mNodes) {
    for (const ExpectedResult& result : node.mResults) {
      if (result.mpSource != nullptr && !IsMeshArray(result.mpSource->mName))
        ++counts[result.mInput];
    }
  }
  return counts;
}

std::uint64_t CountResults(const InputFile& input) {
  std::uint64_t count = 0;
  QovRyx::ForEachGeometry(input.GetNodes(), [&count](std::uint32_t, const auto& geometry) {
    for (const Result& result : geometry.GetVariables()) count += !IsMeshArray(result.mName);
  });
  return count;
}

/// Finds further instances of which less than a tenth is taken, and view-point files without views.
void ContentWarnings::FindInputsWithoutEffect() {
  constexpr std::uint64_t kAlmostNothing = 10;
  const std::vector<std::uint64_t> taken = CountResultsTaken();
  for (std::size_t i = 0; i < mInputs.size(); ++i) {
    const InputFile& input = mInputs[i];
    if (input.mIsViewFile && !input.mpTree->HasViewPoints()) {
      Add("nothing-taken", input.mPath, input.mNote + "; the merge takes nothing from it",
          "Leave it out.");
    }
    if (input.mIsViewFile || input.mNumber == 1 || !IsInstanceMode(mLedger.mMode)) continue;
    const std::uint64_t numResults = CountResults(input);
    if (taken[i] != 0 && taken[i] >= numResults / kAlmostNothing) continue;
    const char* remedy = TakesOnlyInstances(mLedger.mMode)
                             ? "Use --suffix-file-instance, which also takes results without an "
                               "instance part."
                             : "Leave it out, or merge as datasets.";
    if (!mLedger.mMode.IsOfRyxMerge()) remedy = "Leave it out, or select more results.";
    Add("nothing-taken", input.mPath,
        numResults == 0 ? "holds no results besides its mesh"
                        : fmt::format("{} of its {} result{} taken", taken[i], numResults,
                                      numResults == 1 ? " is" : "s are"),
        remedy);
  }
}

/// Finds content of the nodes of a further instance that the first one has otherwise.
void ContentWarnings::FindLostContent(const InputFile& first, const InputFile& input,
                                      const char* remedy) {
  const bool resultsTakeTimes = !mLedger.mMode.IsOfRyxMerge();
  const ContentMismatches found =
      FindContentMismatches(first.GetNodes(), input.GetNodes(), resultsTakeTimes);
  const auto add = [&](const char* code, const Mismatches& mismatches, const char* content,
                       const char* noun) {
    if (mismatches.mCount == 0) return;
    Add(code, input.mPath,
        fmt::format("{} of {} differ from the first model and are left out: {}", content,
                    Plural(mismatches.mCount, noun), mismatches.mFirst),
        remedy);
  };
  add("other-attributes", found.mGroups, "attributes or placements", "group");
  add("other-material", found.mShapes, "materials", "shape");
  add("other-sets", found.mSets, "sets", "node");
}

/// Compares further instances with the first one.
void ContentWarnings::FindMismatches() {
  if (!IsInstanceMode(mLedger.mMode)) return;
  const char* remedy =
      mLedger.mMode.IsOfRyxMerge()
          ? "Merge as datasets (without --merge-as-instances), or leave the file out."
          : "Merge as datasets (--as datasets), or leave the file out.";
  const InputFile* first = nullptr;
  for (const InputFile& input : mInputs) {
    if (input.mIsViewFile) continue;
    if (first == nullptr) {
      first = &input;
      continue;
    }
    const Mismatches nodes = FindNodeMismatches(first->GetNodes(), input.GetNodes());
    if (nodes.mCount != 0) {
      Add("other-tree", input.mPath,
          Plural(nodes.mCount, "node", "differ") + " from the first model: " + nodes.mFirst,
          remedy);
    }
    const Mismatches meshes = FindMeshMismatches(first->GetNodes(), input.GetNodes());
    if (meshes.mCount != 0) {
      Add("other-mesh", input.mPath,
          fmt::format("{} mesh{} from the first model: {}", meshes.mCount,
                      meshes.mCount == 1 ? " differs" : "es differ", meshes.mFirst),
          remedy);
    }
    FindLostContent(*first, input, remedy);
  }
}

void ContentWarnings::FindLostValues() {
  for (std::size_t i = 0; i < mInputs.size(); ++i) {
    const std::uint64_t numReplaced = Dropped(i, Item::Result, DropRule::SharedName) +
                                      Dropped(i, Item::LinkedResult, DropRule::SharedName) +
                                      Dropped(i, Item::LinkedResult, DropRule::LinkReplaced);
    if (numReplaced != 0) {
      Add("values-replaced", mInputs[i].mPath,
          Plural(numReplaced, "result", "get") +
              " the values of another result that is shared under the same name",
          "Add --suffix-file-instance, which shares no results.");
    }
    const std::uint64_t count = Dropped(i, Item::LinkedResult, DropRule::LinkedToItself);
    if (count == 0) continue;
    Add("values-lost", mInputs[i].mPath,
        Plural(count, "linked result", "lose") +
            " the values, because links within a geometry become links to themselves",
        "Use --suffix-file-instance instead of --auto-rename-instances; it keeps the links.");
  }
}

void ContentWarnings::FindViewsLeftOut() {
  for (std::size_t i = 0; i < mInputs.size(); ++i) {
    const std::uint64_t count = Dropped(i, Item::CurrentView, DropRule::FurtherViews) +
                                Dropped(i, Item::PathView, DropRule::FurtherViews);
    if (count == 0) continue;
    Add("views-left-out", mInputs[i].mPath,
        fmt::format("{} view{} left out: only those of the first model are taken", count,
                    count == 1 ? " is" : "s are"),
        mLedger.mMode.IsOfRyxMerge()
            ? "Save the views as a view-point file (.vpt) and add it to the inputs."
            : "Use --views all, which takes the paths of all models.");
  }
}

void ContentWarnings::FindUnread(std::size_t i) {
  const InputFile& input = mInputs[i];
  const bool isFurther = !input.mIsViewFile && input.mNumber != 1;
  std::uint64_t count = 0;
  std::string example;
  for (const Finding& finding : FindUnreadContent(input.mPath)) {
    const std::string& stream = finding.mPlace.mStream;
    if (finding.mCode == "unknown-stream") {
      Add("unknown-stream", input.mPath,
          "stream " + Quoted(stream) + " has an unknown name and is left out",
          "Ask the author of the file what the stream holds.");
      continue;
    }
    const bool isView = stream == QovRyx::kViewPoints;
    const bool isState = isView || stream == QovRyx::kGlobalInformation;
    if (input.mIsViewFile ? !isView : isFurther && isState) continue;
    if (isFurther && IsInstanceMode(mLedger.mMode) && !finding.mPlace.mResult) continue;
    if (count++ == 0) example = finding.mPlace.GetText() + ": " + finding.mText;
  }
  if (count == 0) return;
  Add("unread-content", input.mPath,
      Plural(count, "place", "hold") +
          " data that no program reads and that the merge leaves out: " + example,
      "`ryx check` lists all of them.");
}

std::vector<Warning> ContentWarnings::Find() {
  FindSameNames();
  FindInputsWithoutEffect();
  FindMismatches();
  FindLostValues();
  FindViewsLeftOut();
  for (std::size_t i = 0; i < mInputs.size(); ++i) FindUnread(i);
  return std::move(mWarnings);
}

}  // namespace

std::vector<Warning> FindOutputWarnings(const MergeRequest& request) {
  std::error_code ignored;
  const std::string& output = request.mOutput;
  if (!fs::is_regular_file(output, ignored)) return {};
  if (!IsContainer(output)) {
    return {{"output-exists", output, "exists and will be replaced",
             "To keep it, give another output."}};
  }
  return {
      {"output-exists", output,
       fmt::format("is a {} and will be replaced",
                   IsViewPointFile(output) ? "view-point file" : "model"),
       "If it is an input, add the path of the output after it. To keep it, give another output."}};
}

std::vector<Warning> FindRequestWarnings(const MergeOptions& options, const MergeRequest& request) {
  std::vector<Warning> warnings;
  FindRepeatedInputs(request, warnings);
  const auto addUseless = [&warnings](const char* option, const char* why, const char* remedy) {
    warnings.push_back({"no-effect", "", std::string(option) + " has no effect " + why, remedy});
  };
  const char* leaveOut = "Leave the option out.";
  if (!options.mAsInstances) {
    const char* why = "without --merge-as-instances";
    for (const MergeOption& option : kMergeOptions) {
      const bool isUseless = option.mNaming && options.*option.mpFlag;
      if (isUseless) addUseless(option.mName, why, "Add --merge-as-instances.");
    }
  } else if (request.CountModels() < 2) {
    addUseless("--merge-as-instances", "on a single model", leaveOut);
  } else if (options.mSuffix && options.mAutoRename) {
    addUseless("--auto-rename-instances", "together with --suffix-file-instance", leaveOut);
  }
  return warnings;
}

std::vector<Warning> FindContentWarnings(const std::vector<InputFile>& inputs,
                                         const ExpectedModel& model, const Ledger& ledger) {
  return ContentWarnings(inputs, model, ledger).Find();
}

}  // namespace Qov::Tools
