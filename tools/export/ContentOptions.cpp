#include "export/ContentOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_set>

#include "ErrorText.h"
#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"
#include "ledger/MergeRequest.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/export/ContentOptions";
/// Notes that a run prints.
constexpr std::size_t kMostNotes = 20;

/// Reads "4=quad".
void AddKind(const std::string& text, QovMesh::KindChoices& kinds) {
  const std::size_t sign = text.find('=');
  std::size_t numNodes = 0;
  const char* end = text.data() + std::min(sign, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, numNodes);
  const auto kind =
      sign == text.npos ? std::nullopt : QovMesh::FindKind(std::string_view(text).substr(sign + 1));
  if (error != std::errc() || stop != end || !kind) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                "--cells takes a number of nodes and a kind, such as 4=quad, not " +
                    Util::Quote(text) + "; ryx export --help lists the kinds");
  }
  if (!QovMesh::CanHaveNodes(*kind, numNodes)) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                fmt::format("--cells {}: a cell of the kind {} cannot have {}", text,
                            QovMesh::GetShape(*kind).mName, Plural(numNodes, "node")));
  }
  if (!kinds.emplace(numNodes, *kind).second) {
    Util::Raise(kSource, ErrorType::InvalidEnumeration,
                fmt::format("--cells gives two kinds for {}", Plural(numNodes, "node")));
  }
}

/// Returns true if a model cannot be read because the file is a view-point file.
bool IsWithoutModel(const std::string& path, const std::exception& error) {
  const auto* raised = dynamic_cast<const Util::Exception*>(&error);
  return IsViewPointFile(path) && raised != nullptr &&
         raised->GetType() == ErrorType::ElementNotFound;
}

}  // namespace

void ContentOptions::DeclareChoice(CLI::App& app) {
  AddPatterns(app, "--nodes", mRequest.mNodes, "Only these nodes and their descendants");
  AddPatterns(app, "--results", mRequest.mResults, "Only these results");
  AddPatterns(app, "--steps", mRequest.mSteps, "Only these steps or load cases");
}

void ContentOptions::DeclareCells(CLI::App& app) {
  app.add_option("--cells", mCells, "Kind of the cells with COUNT nodes")
      ->type_name("COUNT=KIND")
      ->allow_extra_args(false);
}

void ContentOptions::Finish() {
  for (const std::string& text : mCells) AddKind(text, mRequest.mKinds);
}

CLI::Option* AddPatterns(CLI::App& app, const char* name, std::vector<std::string>& words,
                         const char* help) {
  return app.add_option(name, words, help)->type_name("PATTERN")->allow_extra_args(false);
}

bool LoadForExport(const char* command, const std::string& path, QovRyx::Tree& tree,
                   Output& errors) {
  try {
    QovRyx::Tree::IdMap ids;
    tree.Load(path, ids, QovRyx::Tree::ReadMode::WithoutViews,
              QovRyx::Tree::SupportedFileFormats::Ryx);
    return true;
  } catch (const std::exception& error) {
    const TextStyle& style = errors.GetStyle();
    const std::string text = IsWithoutModel(path, error)
                                 ? "is a view-point file, which has no geometry; give a model"
                                 : FileErrorText(path, error);
    errors.Line(fmt::format("ryx {}: {}: {}", command, Escape(path, style), Escape(text, style)));
    return false;
  }
}

void RemoveRepeated(std::vector<std::string>& notes) {
  std::unordered_set<std::string> seen;
  std::erase_if(notes, [&](const std::string& note) { return !seen.insert(note).second; });
}

void PrintNotes(const char* command, const std::vector<std::string>& notes, const char* allOption,
                Output& errors) {
  for (std::size_t i = 0; i < std::min(notes.size(), kMostNotes); ++i) {
    errors.Line(fmt::format("ryx {}: {}", command, notes[i]));
  }
  if (notes.size() <= kMostNotes) return;
  errors.Line(fmt::format("ryx {}: and {}; --{} shows all", command,
                          Plural(notes.size() - kMostNotes, "further note"), allOption));
}

}  // namespace Qov::Tools
