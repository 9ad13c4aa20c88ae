#include "export/VtmWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>

#include "Terminal.h"
#include "export/VtuWriter.h"
#include "export/XmlText.h"

namespace Qov::Tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStart =
    "<?xml version=\"1.0\"?>\n<VTKFile type=\"{}\" version=\"1.0\" byte_order=\"LittleEndian\" "
    "header_type=\"UInt64\">\n";

std::string StemOf(const std::string& path) {
  return fs::path(path).replace_extension("").string();
}

/// Returns a name for a file: the number of the part and what is harmless of its name.
std::string FileName(std::size_t number, const std::string& name) {
  constexpr std::size_t kMost = 60;
  std::string text;
  for (const char c : name.substr(0, kMost)) {
    const bool isHarmless =
        std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_';
    text += isHarmless ? c : '_';
  }
  return fmt::format("{}_{}.vtu", number, text);
}

/// Writes the nested blocks of parts, whose groups are compared with those of the part before.
class BlockLines {
 public:
  explicit BlockLines(SafeOutput& output) : mOutput(output) {}

  void Add(const ExportPart& part, const std::string& file) {
    std::size_t same = 0;
    while (same < std::min(mOpen.size(), part.mGroups.size()) &&
           mOpen[same] == part.mGroups[same]) {
      ++same;
    }
    Close(same);
    for (std::size_t i = same; i < part.mGroups.size(); ++i) {
      mOutput.Write(fmt::format("{}<Block index=\"{}\" name=\"{}\">\n", Indent(), mNext.back()++,
                                XmlText(part.mGroups[i])));
      mOpen.push_back(part.mGroups[i]);
      mNext.push_back(0);
    }
    mOutput.Write(fmt::format("{}<DataSet index=\"{}\" name=\"{}\" file=\"{}\"/>\n", Indent(),
                              mNext.back()++, XmlText(part.mName), XmlText(file)));
  }

  /// Closes all blocks but the first `kept`.
  void Close(std::size_t kept) {
    while (mOpen.size() > kept) {
      mOpen.pop_back();
      mNext.pop_back();
      mOutput.Write(Indent() + "</Block>\n");
    }
  }

 private:
  std::string Indent() const { return std::string(mOpen.size(), ' '); }

  SafeOutput& mOutput;
  std::vector<std::string> mOpen;
  std::vector<std::size_t> mNext{0};  ///< The next index in each open block.
};

void WriteBlocks(const ExportTask& task, const std::string& path, ExportSets& sets,
                 MeshCache& meshes, OutputSet& outputs) {
  SafeOutput& main = outputs.Open(path);
  const std::string folder = StemOf(path);
  outputs.MakeFolder(folder);
  main.Write(fmt::format(fmt::runtime(kStart), "vtkMultiBlockDataSet"));
  main.Write("<vtkMultiBlockDataSet>\n");
  BlockLines lines(main);
  const auto& parts = task.mContent.mParts;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string name = FileName(i, parts[i].mName);
    SafeOutput& file = outputs.Open(folder + "/" + name);
    WriteVtu({&parts[i]}, sets, meshes, task.mNotes, file);
    file.Finish();
    lines.Add(parts[i], fs::path(folder).filename().string() + "/" + name);
  }
  lines.Close(0);
  main.Write("</vtkMultiBlockDataSet>\n</VTKFile>\n");
  main.Finish();
}

}  // namespace

void WriteVtm(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  ExportSets sets(task.mTree, task.mContent);
  MeshCache meshes(task.mKinds);
  WriteBlocks(task, path, sets, meshes, outputs);
}

void WritePvd(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  SafeOutput& main = outputs.Open(path);
  const std::string folder = StemOf(path);
  outputs.MakeFolder(folder);
  main.Write(fmt::format(fmt::runtime(kStart), "Collection"));
  main.Write("<Collection>\n");
  const std::size_t numSteps = std::max<std::size_t>(task.mContent.mSteps.size(), 1);
  for (std::size_t i = 0; i < numSteps; ++i) {
    const bool hasSteps = !task.mContent.mSteps.empty();
    const ExportContent content = hasSteps ? TakeStep(task.mContent, i) : task.mContent;
    const std::string name = fmt::format("step_{:04}.vtm", i);
    ExportSets sets(task.mTree, content);
    MeshCache meshes(task.mKinds);
    WriteBlocks({task.mTree, content, task.mKinds, task.mNotes}, folder + "/" + name, sets, meshes,
                outputs);
    const std::optional<double> time = hasSteps ? content.mSteps[0].mTime : std::optional(0.0);
    if (!time) {
      task.mNotes.push_back(fmt::format("step {}: no time is known, {} is written",
                                        Escape(content.mSteps[0].mName, {}), i));
    }
    main.Write(fmt::format("<DataSet timestep=\"{}\" group=\"\" part=\"0\" file=\"{}\"/>\n",
                           time.value_or(static_cast<double>(i)),
                           XmlText(fs::path(folder).filename().string() + "/" + name)));
  }
  main.Write("</Collection>\n</VTKFile>\n");
  main.Finish();
}

}  // namespace Qov::Tools
