#include <array>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Target.h"
#include "export/ExportFormat.h"
#include "html/PageTables.h"
#include "html/PageWriter.h"
#include "picture/DrawPicture.h"

/// Exports a model in every format, writes it as a page and draws it. A model that can be read and
/// has something to export can be exported, shown and drawn.
namespace {

using namespace Qov::Fuzz;
using namespace Qov::Tools;

/// Limit of the values that are exported, linked ones included, because one array can be shared by
/// many results.
constexpr std::uint64_t kMostElements = 1 << 18;

bool IsSmall(const ExportContent& content) {
  std::uint64_t numElements = 0;
  for (const ExportPart& part : content.mParts) {
    for (const auto& variable : part.mpGeometry->GetVariables()) {
      numElements += variable.mValues.GetNumElements();
    }
  }
  return numElements <= kMostElements;
}

/// A folder that is empty at first and removed at the end.
class Folder {
 public:
  Folder() {
    namespace fs = std::filesystem;
    const bool hasMemory = fs::is_directory("/dev/shm");
    std::string path =
        (hasMemory ? fs::path("/dev/shm") : fs::temp_directory_path()) / "fuzzXXXXXX";
    Require(::mkdtemp(path.data()) != nullptr, "a temporary folder can be made");
    mPath = path;
  }
  ~Folder() { std::filesystem::remove_all(mPath); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const std::filesystem::path& GetPath() const { return mPath; }

 private:
  std::filesystem::path mPath;
};

void Export(const QovRyx::Tree& tree, const std::string& path, bool onlyCounts) {
  const ExportFormat format = FindExportFormat(path);
  std::optional<ExportContent> content;
  const ExportRequest request;
  // Fails if there is nothing to export.
  if (!Accepts([&] { content = ChooseContent(tree, request, GetStepLayout(format)); })) return;
  if (!IsSmall(*content)) return;
  std::vector<std::string> notes;
  ResultCounts resultsLeftOut;
  OutputSet outputs(false, onlyCounts);
  Require(Accepts([&] {
            WriteExport(format, {tree, *content, request.mKinds, notes, resultsLeftOut}, {}, path,
                        outputs);
            outputs.CommitAll();
          }),
          "a model that can be read can be exported");
}

void WriteHtml(const QovRyx::Tree& tree, const std::string& path, bool onlyCounts) {
  std::optional<ExportContent> content;
  const ExportRequest request;
  if (!Accepts([&] { content = ChooseContent(tree, request, StepLayout::Meshes); })) return;
  if (!IsSmall(*content)) return;
  PageRequest page;
  page.mTitle = "fuzz";
  page.mLimit = 50'000'000;
  PageReport report;
  OutputSet outputs(false, onlyCounts);
  Require(Accepts([&] {
            WritePage(tree, *content, MakeTables(tree, {}, report.mNotes), request.mKinds, page,
                      nullptr, outputs.Open(path), report);
            outputs.CommitAll();
          }),
          "a model that can be read can be shown");
  Require(outputs.GetNumBytes() <= page.mLimit, "the limit of a page holds");
}

/// Draws the first result that has a value for each point or cell.
void Draw(const QovRyx::Tree& tree) {
  std::optional<ExportContent> content;
  if (!Accepts([&] { content = ChooseContent(tree, {}, StepLayout::Meshes); })) return;
  if (!IsSmall(*content)) return;
  PictureRequest request;
  request.mWidth = 64;
  request.mHeight = 64;
  for (const ExportPart& part : content->mParts) {
    for (const ExportResult& result : part.mResults) {
      if (!request.mResults.empty() || result.mPlacement == QovMesh::Placement::Field) continue;
      request.mResults.push_back(Escape(result.mpVariable->mName, {}));
    }
  }
  PictureReport report;
  Require(Accepts([&] {
            DrawPicture({tree, "model"}, request, report);
          }),
          "a model that can be read can be drawn");
}

}  // namespace

const InputLayout Qov::Fuzz::kInputLayout{};

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.SetContent(data, size);
  QovRyx::Tree tree(false);
  if (!LoadWithArrays(tree, file.GetPath())) return 0;
  // Every 16th model is written to files, because that takes most of the time.
  const bool onlyCounts = size % 16 != 0;
  const Folder folder;
  for (const char* ending : {"vtu", "vtm", "pvd", "glb", "stl", "ply", "csv", "npz", "case"}) {
    Export(tree, folder.GetPath() / (std::string("model.") + ending), onlyCounts);
  }
  WriteHtml(tree, folder.GetPath() / "model.html", onlyCounts);
  Draw(tree);
  return 0;
}
