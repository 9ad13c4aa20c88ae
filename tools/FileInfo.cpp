#include "FileInfo.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "ModelInput.h"
#include "ModelJson.h"
#include "ModelReport.h"
#include "Plural.h"
#include "TextTable.h"
#include "ValueText.h"
#include "model/StreamNames.h"

namespace Qov::Tools {
namespace {

using Align = TextTable::Align;

/// Returns the text after a label, in columns.
std::string Labelled(const char* label, const std::string& text) {
  return fmt::format("  {:<11}{}", label, text);
}

std::string ExactSizeText(std::uint64_t bytes) {
  return fmt::format("{} ({} bytes)", SizeText(bytes), bytes);
}

std::string ContainerText(const ContainerInfo& container, const TextStyle& style) {
  return fmt::format("version {}, {} in {}", Escape(container.mVersion, style),
                     Plural(container.mBlocks.size(), "block"),
                     Plural(container.mStreams.size(), "stream"));
}

std::string NodesText(const ModelCounts& counts) {
  std::string text;
  for (const auto& [type, count] : counts.mNodes) {
    if (!type.empty()) text += fmt::format(", {} {}", count, type);
  }
  const auto empty = counts.mNodes.find("");
  if (empty != counts.mNodes.end()) text += fmt::format(", {} without content", empty->second);
  return fmt::format("{}: {}", counts.GetNumNodes(), text.substr(2));
}

std::string ResultsText(const ModelCounts& counts) {
  std::string text = fmt::format("{}", counts.mNumResults);
  if (counts.mNumLinked != 0) text += fmt::format(", {} of them linked", counts.mNumLinked);
  if (counts.mNumLost != 0) text += fmt::format(", {} to nowhere", counts.mNumLost);
  return text + fmt::format("; {}", Plural(counts.mNumValues, "value"));
}

/// Returns the count, and as many names as fit on a line.
std::string InstancesText(const std::set<std::string>& names, const TextStyle& style) {
  constexpr std::size_t kRoom = 60;
  std::string text = fmt::format("{}", names.size());
  const char* separator = ": ";
  for (const std::string& name : names) {
    if (DisplayWidth(text) > kRoom) return text + ", ...";
    text += separator + Escape(name, style);
    separator = ", ";
  }
  return text;
}

std::vector<std::string> StreamLines(const ContainerInfo& container, const TextStyle& style) {
  TextTable table({{"STREAM"},
                   {"BLOCKS", Align::Right},
                   {"STORED", Align::Right},
                   {"IN MEMORY", Align::Right},
                   {"TROUBLE"}},
                  40);
  for (const StreamInfo& stream : container.mStreams) {
    const bool isSound = stream.mTrouble.empty();
    table.AddRow({Escape(stream.mName, style), fmt::format("{}", stream.mNumBlocks),
                  fmt::format("{}", stream.mStored), isSound ? fmt::format("{}", stream.mRaw) : "?",
                  isSound ? "" : "(cannot be read: " + Escape(stream.mTrouble, style) + ")"});
  }
  return table.GetLines();
}

/// Returns the count and the names of the streams that no reader uses; empty if there are none.
std::string UnknownText(const ContainerInfo& container, const TextStyle& style) {
  constexpr std::size_t kRoom = 60;
  std::uint64_t count = 0;
  std::string names;
  for (const StreamInfo& stream : container.mStreams) {
    if (QovRyx::IsModelStream(stream.mName)) continue;
    if (++count == 1 || DisplayWidth(names) < kRoom) {
      names += (count == 1 ? "" : ", ") + Escape(stream.mName, style);
    } else if (!names.ends_with(", ...")) {
      names += ", ...";
    }
  }
  if (count == 0) return "";
  return fmt::format("{} that no reader uses, left out by merges: {}", Plural(count, "stream"),
                     names);
}

Json StreamsJson(const ContainerInfo& container) {
  Json list = Json::array();
  for (const StreamInfo& stream : container.mStreams) {
    Json json{{"name", JsonText(stream.mName)},
              {"blocks", stream.mNumBlocks},
              {"stored", stream.mStored},
              {"uncompressed", stream.mRaw}};
    if (!QovRyx::IsModelStream(stream.mName)) json["unknown"] = true;
    if (!stream.mTrouble.empty()) {
      json["uncompressed"] = nullptr;
      json["trouble"] = Escape(stream.mTrouble, {});
    }
    list.push_back(std::move(json));
  }
  return list;
}

Json CountsJson(const ModelCounts& counts) {
  Json nodes = Json::object();
  for (const auto& [type, count] : counts.mNodes) nodes[type.empty() ? "none" : type] = count;
  Json instances = Json::array();
  for (const std::string& name : counts.mInstances) instances.push_back(JsonText(name));
  return {{"nodes", std::move(nodes)},        {"results", counts.mNumResults},
          {"linked", counts.mNumLinked},      {"lost", counts.mNumLost},
          {"values", counts.mNumValues},      {"nodeSets", counts.mNumSets},
          {"instances", std::move(instances)}};
}

/// Returns the program that wrote the file.
std::string WriterText(const QovRyx::Tree& tree, const TextStyle& style) {
  if (tree.GetModifiers().empty()) return "-";
  const QovRyx::ModifierInfo& last = tree.GetModifiers().back();
  return Escape(fmt::format("{} {}", last.mApplication, last.mApplicationVersion), style);
}

bool IsTroubled(const StreamInfo& stream) { return !stream.mTrouble.empty(); }

}  // namespace

FileInfo::FileInfo(const std::string& path)
    : mPath(path),
      mContainer(ReadContainer(path)),
      mTrouble(LoadWhatCanBeRead(path, mTree)),
      mCounts(mTree.GetNodes()) {
  const bool partly =
      std::any_of(mContainer.mStreams.begin(), mContainer.mStreams.end(), IsTroubled);
  if (mTrouble.empty() && partly) mTrouble = "parts of it cannot be read";
}

bool FileInfo::HasContent() const {
  return mTrouble.empty() || !mContainer.mStreams.empty() || HoldsAnything(mTree);
}

void FileInfo::Report(Output& output) const {
  const TextStyle& style = output.GetStyle();
  output.Line(Bold(Escape(mPath, style), style));
  output.Line(Labelled("Container", ContainerText(mContainer, style)));
  output.Line(Labelled("On disk", ExactSizeText(mContainer.mFileSize)));
  output.Line(Labelled("In memory", ExactSizeText(mContainer.GetRawSize())));
  if (HoldsNodes(mTree)) {
    output.Line(Labelled("Nodes", NodesText(mCounts)));
    output.Line(Labelled("Results", ResultsText(mCounts)));
    output.Line(Labelled("Instances", InstancesText(mCounts.mInstances, style)));
    output.Line(Labelled("Node sets", fmt::format("{}", mCounts.mNumSets)));
  }
  const std::string unknown = UnknownText(mContainer, style);
  if (!unknown.empty()) output.Line(Labelled("Unknown", unknown));
  for (const std::string& line : StreamLines(mContainer, style)) output.Line("  " + line);
  ReportViews(mTree, LongLines::Kept, output);
  ReportHistory(mTree, LongLines::Kept, output);
}

TextTable FileInfo::MakeTable(const TextStyle& style) {
  using Cut = TextTable::Cut;
  constexpr std::size_t kWidestInPipe = 80;
  return {{{"FILE", Align::Left, Cut::Start, false, 18},
           {"VER."},
           {"NODES", Align::Right},
           {"GEOM.", Align::Right},
           {"RESULTS", Align::Right},
           {"INST.", Align::Right},
           {"SIZE", Align::Right},
           {"RATIO", Align::Right, Cut::Never, true},
           {"WRITER", Align::Left, Cut::End, true}},
          style.mTerminal ? std::string::npos : kWidestInPipe};
}

TextTable::Row FileInfo::MakeRow(const TextStyle& style) const {
  const auto geometries = mCounts.mNodes.find("Geometry");
  const double ratio = mContainer.mFileSize == 0 ? 0.0
                                                 : static_cast<double>(mContainer.GetRawSize()) /
                                                       static_cast<double>(mContainer.mFileSize);
  const bool isModel = HoldsNodes(mTree);
  const auto count = [isModel](std::uint64_t n) { return isModel ? fmt::format("{}", n) : "-"; };
  return {Escape(mPath, style),
          Escape(mContainer.mVersion, style),
          count(mCounts.GetNumNodes()),
          count(geometries == mCounts.mNodes.end() ? 0 : geometries->second),
          count(mCounts.mNumResults),
          count(mCounts.mInstances.size()),
          SizeText(mContainer.mFileSize),
          fmt::format("{:.2f}", ratio),
          WriterText(mTree, style)};
}

Json FileInfo::MakeJson() const {
  Json json{{"path", JsonText(mPath)}};
  if (!mTrouble.empty()) json["trouble"] = Escape(mTrouble, {});
  json["version"] = JsonText(mContainer.mVersion);
  json["size"] = mContainer.mFileSize;
  json["uncompressed"] = mContainer.GetRawSize();
  json["blocks"] = mContainer.mBlocks.size();
  json["streams"] = StreamsJson(mContainer);
  json["model"] = HoldsNodes(mTree) ? CountsJson(mCounts) : Json();
  json["views"] = ViewsJson(mTree);
  json["history"] = HistoryJson(mTree);
  return json;
}

}  // namespace Qov::Tools
