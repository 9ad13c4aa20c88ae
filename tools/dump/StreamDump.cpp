#include "dump/StreamDump.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "ContainerInfo.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Util/Raise.h"
#include "TextTable.h"
#include "dump/Choice.h"

namespace Qov::Tools {
namespace {

using Align = TextTable::Align;

/// Returns the name of the stream that `word` names.
std::string ChooseStream(const ContainerInfo& container, const std::string& word) {
  std::vector<Candidate> candidates;
  for (const StreamInfo& stream : container.mStreams) {
    candidates.push_back({candidates.size(), stream.mName});
  }
  return candidates[Choose(candidates, word, "stream")].mName;
}

void RaiseTrouble(const ContainerInfo& container) {
  if (container.mTrouble.empty()) return;
  Util::Raise("tools/dump/StreamDump", Util::Exception::ErrorType::ReadError, container.mTrouble);
}

const char* FlagsText(std::uint8_t flags) {
  const bool compressed = (flags & QovJbf::BlockFlag::kCompressed) != 0;
  return compressed ? "compressed" : "plain";
}

std::vector<std::string> TableRow(const BlockInfo& block, const TextStyle& style) {
  return {fmt::format("{}", block.mNumber),
          block.IsIndex() ? "(index)" : Escape(block.mStream, style),
          fmt::format("{}", block.mPosition),
          fmt::format("{}", block.mStored),
          block.mRaw ? fmt::format("{}", *block.mRaw) : "?",
          fmt::format("0x{:02X} {}", block.mFlags, FlagsText(block.mFlags)),
          block.mRaw ? "" : "(beyond the end of the file)"};
}

Json BlockJson(const BlockInfo& block) {
  return {{"number", block.mNumber},
          {"stream", block.IsIndex() ? Json() : Json(JsonText(block.mStream))},
          {"position", block.mPosition},
          {"stored", block.mStored},
          {"uncompressed", block.mRaw ? Json(*block.mRaw) : Json()},
          {"flags", block.mFlags}};
}

void WriteTable(const std::vector<BlockInfo>& blocks, Output& output) {
  TextTable table({{"BLOCK", Align::Right},
                   {"STREAM"},
                   {"POSITION", Align::Right},
                   {"STORED", Align::Right},
                   {"IN MEMORY", Align::Right},
                   {"FLAGS"},
                   {"TROUBLE"}},
                  40);
  for (const BlockInfo& block : blocks) table.AddRow(TableRow(block, output.GetStyle()));
  for (const std::string& line : table.GetLines()) output.Line(line);
}

}  // namespace

void WriteStream(const std::string& path, const std::string& stream, Output& output) {
  const ContainerInfo container = ReadContainer(path);
  RaiseTrouble(container);
  QovJbf::JbFile file;
  file.OpenFile(path, "rb");
  file.ReadIndex();
  const auto reader = file.OpenStreamReader(ChooseStream(container, stream));
  std::array<char, 1U << 16U> piece{};
  std::uint64_t done = 0;
  while (done < reader->GetLength()) {
    const auto size =
        static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), reader->GetLength() - done));
    reader->Read(done, piece.data(), size);
    output.Write({piece.data(), size});
    done += size;
  }
}

void ShowBlocks(const std::string& path, const std::optional<std::string>& stream,
                std::optional<Json> document, Output& output) {
  ContainerInfo container = ReadContainer(path);
  if (container.mBlocks.empty()) RaiseTrouble(container);
  if (stream) {
    const std::string name = ChooseStream(container, *stream);
    std::erase_if(container.mBlocks, [&](const BlockInfo& block) { return block.mStream != name; });
  }
  if (document) {
    Json list = Json::array();
    for (const BlockInfo& block : container.mBlocks) list.push_back(BlockJson(block));
    (*document)["blocks"] = std::move(list);
    output.Line(FormatJson(*document));
  } else {
    WriteTable(container.mBlocks, output);
  }
  RaiseTrouble(container);
}

}  // namespace Qov::Tools
