#include "InputFile.h"

#include <algorithm>
#include <exception>

#include "ErrorText.h"
#include "Qov/Util/Raise.h"
#include "container/ContainerFormat.h"
#include "records/FileVersionScope.h"

namespace Qov::Tools {
namespace {

using QovRyx::Tree;

void LoadModel(InputFile& input) {
  Tree::IdMap ids;
  input.mpTree->Load(input.mPath, ids, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
}

/// Loads a model without its history and views, because the merge does not read them: they may be
/// damaged.
void LoadFurtherModel(InputFile& input) {
  try {
    LoadModel(input);
  } catch (const std::exception&) {
    input.mpTree = std::make_unique<Tree>(false);
    input.mpTree->Merge(input.mPath, Tree::ReadMode::Everything, Tree::SupportedFileFormats::Ryx);
    input.mNote = "its views or history cannot be read; the merge does not need them";
  }
}

void CheckHeaderSize(const QovJbf::JbFile& file) {
  ::fseeko(file.GetStream(), 0, SEEK_END);
  if (::ftello(file.GetStream()) >= off_t{QovJbf::kHeaderSize}) return;
  Util::Raise("tools/ledger/InputFile", Util::Exception::ErrorType::ReadError,
              "\"" + file.GetPath() + "\" is too short for a view-point file");
}

void LoadViewFile(InputFile& input) {
  QovJbf::JbFile file;
  file.OpenFile(input.mPath, "rb");
  CheckHeaderSize(file);
  const std::string version = file.ReadVersion();
  if (!QovJbf::HasViews(version)) {
    input.mNote = "has version 0.1, whose views are not read";
  } else {
    const QovRyx::FileVersionScope scope(version);
    input.mpTree->LoadViewPathVec(file);
    if (!input.mpTree->HasViewPoints()) input.mNote = "holds no views";
  }
  file.CloseFile();
}

void Load(InputFile& input) {
  input.mpTree = std::make_unique<Tree>(false);
  try {
    if (input.mIsViewFile) {
      LoadViewFile(input);
    } else if (input.mNumber > 1) {
      LoadFurtherModel(input);
    } else {
      LoadModel(input);
    }
  } catch (const std::exception& error) {
    input.mError = FileErrorText(input.mPath, error);
  }
}

}  // namespace

std::vector<InputFile> LoadInputs(const MergeRequest& request) {
  std::vector<InputFile> inputs;
  std::size_t numModels = 0;
  for (const std::string& path : request.mInputs) {
    InputFile input;
    input.mPath = path;
    input.mIsViewFile = IsViewPointFile(path);
    if (!input.mIsViewFile) input.mNumber = ++numModels;
    Load(input);
    inputs.push_back(std::move(input));
  }
  return inputs;
}

bool AllAreReadable(const std::vector<InputFile>& inputs) {
  return std::all_of(inputs.begin(), inputs.end(),
                     [](const InputFile& input) { return input.mError.empty(); });
}

Item ItemOf(const QovRyx::NodeTree::Node& entry) {
  const QovRyx::Node* node = entry.mData.get();
  if (node == nullptr) return Item::EmptyNode;
  if (dynamic_cast<const QovRyx::Group*>(node) != nullptr) return Item::Group;
  if (dynamic_cast<const QovRyx::Shape*>(node) != nullptr) return Item::Shape;
  if (dynamic_cast<const QovRyx::Geometry*>(node) != nullptr) return Item::Geometry;
  if (dynamic_cast<const QovRyx::NodeSets*>(node) != nullptr) return Item::NodeSets;
  return Item::UnknownNode;
}

PerItem<std::uint64_t> CountItems(const Tree& tree) {
  PerItem<std::uint64_t> counts{};
  const auto count = [&counts](Item item) -> std::uint64_t& {
    return counts[static_cast<std::size_t>(item)];
  };
  for (const auto& [id, entry] : tree.GetNodes()) {
    ++count(ItemOf(entry));
    if (const auto* sets = dynamic_cast<const QovRyx::NodeSets*>(entry.mData.get())) {
      count(Item::Set) += sets->GetNumSets();
    } else if (const auto* geometry = QovRyx::AsGeometry(entry)) {
      for (const auto& result : geometry->GetVariables()) {
        ++count(result.mLink.IsLinked() ? Item::LinkedResult : Item::Result);
      }
    }
  }
  count(Item::HistoryEntry) = tree.GetModifiers().size();
  if (!tree.HasViewPoints()) return counts;
  count(Item::CurrentView) = count(Item::Sequencer) = 1;
  count(Item::ViewPath) = tree.GetViewPointPaths().size();
  for (const auto& path : tree.GetViewPointPaths()) {
    count(Item::PathView) += path.mViewPoints.size();
  }
  return counts;
}

}  // namespace Qov::Tools
