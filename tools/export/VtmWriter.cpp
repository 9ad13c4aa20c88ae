#include "export/VtmWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <numeric>
#include <set>

#include "Plural.h"
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

/// A group above a part. Groups of the same name are different blocks, so the id counts.
struct Block {
  std::uint32_t mId = 0;
  std::string mName;
  bool operator==(const Block&) const = default;
};

/// Returns the groups above a part, the topmost first.
std::vector<Block> FindBlocks(const QovRyx::NodeTree& nodes, const ExportPart& part) {
  std::vector<std::uint32_t> ids;
  std::size_t stepsLeft = nodes.GetSize() + 1;  // parents of damaged trees may form a cycle
  const auto* entry = nodes.FindNode(part.mId);
  for (; entry != nullptr && stepsLeft > 0; --stepsLeft) {
    const std::uint32_t parent = entry->mParent;
    entry = nodes.FindNode(parent);
    if (entry != nullptr && dynamic_cast<const QovRyx::Group*>(entry->mData.get()) != nullptr) {
      ids.insert(ids.begin(), parent);
    }
  }
  ids.resize(part.mGroups.size());
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < ids.size(); ++i) blocks.push_back({ids[i], part.mGroups[i]});
  return blocks;
}

/// Writes the nested blocks of parts. Compares the groups of a part with those of the part before.
class BlockLines {
 public:
  explicit BlockLines(SafeOutput& output) : mOutput(output) {}

  void Add(const std::vector<Block>& blocks, const std::string& name, const std::string& file) {
    std::size_t same = 0;
    while (same < std::min(mOpen.size(), blocks.size()) && mOpen[same] == blocks[same]) ++same;
    Close(same);
    for (std::size_t i = same; i < blocks.size(); ++i) {
      mOutput.Write(fmt::format("{}<Block index=\"{}\" name=\"{}\">\n", Indent(), mNext.back()++,
                                XmlText(blocks[i].mName)));
      mOpen.push_back(blocks[i]);
      mNext.push_back(0);
    }
    mOutput.Write(fmt::format("{}<DataSet index=\"{}\" name=\"{}\" file=\"{}\"/>\n", Indent(),
                              mNext.back()++, XmlText(name), XmlText(file)));
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
  std::vector<Block> mOpen;
  std::vector<std::size_t> mNext{0};  ///< The next index in each open block.
};

/// Writes a .vtm that refers to a .vtu of each part.
void WriteBlocks(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  SafeOutput& output = outputs.Open(path);
  outputs.MakeFolder(StemOf(path));
  output.Write(fmt::format(fmt::runtime(kStart), "vtkMultiBlockDataSet"));
  output.Write("<vtkMultiBlockDataSet>\n");
  BlockLines lines(output);
  const auto& parts = task.mContent.mParts;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    lines.Add(FindBlocks(task.mTree.GetNodes(), parts[i]), parts[i].mName,
              fs::path(StemOf(path)).filename().string() + "/" + FileName(i, parts[i].mName));
  }
  lines.Close(0);
  output.Write("</vtkMultiBlockDataSet>\n</VTKFile>\n");
  output.Finish();
}

/// Writes the .vtu of a part of the .vtm at `path`.
void WritePart(const ExportTask& task, const std::string& path, std::size_t number,
               ExportSets& sets, MeshCache& meshes, OutputSet& outputs) {
  const ExportPart& part = task.mContent.mParts[number];
  SafeOutput& file = outputs.Open(StemOf(path) + "/" + FileName(number, part.mName));
  WriteVtu({&part}, sets, meshes, task.mNotes, file);
  file.Finish();
}

/// Returns a time for each step. They are the numbers of the steps, and that is noted, if a time is
/// unknown or if several steps have the same one.
std::vector<double> ChooseTimes(const std::vector<QovMesh::Step>& steps,
                                std::vector<std::string>& notes) {
  std::vector<double> times;
  std::set<double> different;
  std::size_t numUnknown = 0;
  for (const QovMesh::Step& step : steps) {
    times.push_back(step.mTime.value_or(std::numeric_limits<double>::quiet_NaN()));
    if (std::isfinite(times.back())) {
      different.insert(times.back());
    } else {
      ++numUnknown;
    }
  }
  if (different.size() == steps.size()) return times;
  std::iota(times.begin(), times.end(), 0.0);
  const std::string reason =
      numUnknown == 0
          ? fmt::format("some of {} have the same time", Plural(steps.size(), "step"))
          : fmt::format("no time is known for {}{}", Plural(numUnknown, "step"),
                        numUnknown == steps.size() ? "" : fmt::format(" of {}", steps.size()));
  notes.push_back(reason + "; the numbers of the steps, from 0, are written as times");
  return times;
}

/// The .vtm of a step.
struct StepFile {
  ExportContent mContent;
  std::string mPath;
};

std::vector<StepFile> MakeStepFiles(const ExportContent& content, const std::string& folder) {
  std::vector<StepFile> files;
  const std::size_t numSteps = std::max<std::size_t>(content.mSteps.size(), 1);
  for (std::size_t i = 0; i < numSteps; ++i) {
    files.push_back({content.mSteps.empty() ? content : TakeStep(content, i),
                     fmt::format("{}/step_{:04}.vtm", folder, i)});
  }
  return files;
}

/// Writes the parts of all steps, part by part, so that a mesh that does not change is read once.
void WriteStepParts(const ExportTask& task, const std::vector<StepFile>& files,
                    OutputSet& outputs) {
  ExportSets sets(task.mTree, task.mContent);
  std::vector<ExportSets> setsOfSteps;
  for (const StepFile& file : files) setsOfSteps.emplace_back(task.mTree, file.mContent);
  MeshCache meshes(task.mKinds);
  for (std::size_t part = 0; part < task.mContent.mParts.size(); ++part) {
    for (std::size_t i = 0; i < files.size(); ++i) {
      const ExportContent& content = files[i].mContent;
      const ExportTask step{task.mTree, content, task.mKinds, task.mNotes, task.mResultsLeftOut};
      const bool hasOwnMesh =
          content.mParts[part].mMeshInstance != task.mContent.mParts[part].mMeshInstance;
      WritePart(step, files[i].mPath, part, hasOwnMesh ? setsOfSteps[i] : sets, meshes, outputs);
      setsOfSteps[i].Clear();
    }
  }
}

}  // namespace

void WriteVtm(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  WriteBlocks(task, path, outputs);
  ExportSets sets(task.mTree, task.mContent);
  MeshCache meshes(task.mKinds);
  for (std::size_t i = 0; i < task.mContent.mParts.size(); ++i) {
    WritePart(task, path, i, sets, meshes, outputs);
  }
}

void WritePvd(const ExportTask& task, const std::string& path, OutputSet& outputs) {
  SafeOutput& output = outputs.Open(path);
  const std::string folder = StemOf(path);
  outputs.MakeFolder(folder);
  const std::vector<StepFile> files = MakeStepFiles(task.mContent, folder);
  const std::vector<double> times = task.mContent.mSteps.empty()
                                        ? std::vector<double>{0}
                                        : ChooseTimes(task.mContent.mSteps, task.mNotes);
  output.Write(fmt::format(fmt::runtime(kStart), "Collection"));
  output.Write("<Collection>\n");
  for (std::size_t i = 0; i < files.size(); ++i) {
    WriteBlocks({task.mTree, files[i].mContent, task.mKinds, task.mNotes, task.mResultsLeftOut},
                files[i].mPath, outputs);
    output.Write(fmt::format(
        "<DataSet timestep=\"{}\" group=\"\" part=\"0\" file=\"{}\"/>\n", times[i],
        XmlText((fs::path(folder).filename() / fs::path(files[i].mPath).filename()).string())));
  }
  output.Write("</Collection>\n</VTKFile>\n");
  output.Finish();
  WriteStepParts(task, files, outputs);
}

}  // namespace Qov::Tools
