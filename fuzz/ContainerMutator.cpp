#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "InputLayout.h"
#include "MemoryFile.h"
#include "Models.h"
#include "Target.h"
#include "container/ContainerFormat.h"
#include "support/Streams.h"

/// Mutates one stream of a container and rebuilds the container around it. Plain mutations of a
/// file mostly damage the header, the index or the checksum of a block, so they seldom reach the
/// content of the blocks.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace Qov::Fuzz {
namespace {

constexpr std::size_t kMostOfAStream = std::size_t{1} << 20;

class Mutation {
 public:
  explicit Mutation(unsigned seed) : mRandom(seed) {}

  /// Mutates the container in place. Returns its new size, at most `maxSize`.
  std::size_t Run(std::uint8_t* data, std::size_t size, std::size_t maxSize);
  bool OneIn(unsigned n) { return mRandom() % n == 0; }

 private:
  void MutateStream(Test::Streams& streams);
  std::string Build(const Test::Streams& streams, const std::string& version);
  void Put(QovJbf::JbFile& file, const std::string& name, const std::string& bytes);

  std::minstd_rand mRandom;
};

std::size_t Mutation::Run(std::uint8_t* data, std::size_t size, std::size_t maxSize) {
  static MemoryFile file;
  std::string built;
  if (size > QovJbf::kHeaderSize && !OneIn(5)) {
    file.SetContent(data, size);
    Accepts([&] {
      Test::Streams streams = Test::ReadStreams(file.GetPath());
      if (streams.empty()) return;
      MutateStream(streams);
      const std::string version(reinterpret_cast<const char*>(data) + QovJbf::kVersionPosition,
                                QovJbf::kVersionSize);
      built = Build(streams, version.substr(0, version.find('\0')));
    });
  }
  if (built.empty() || built.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  std::copy(built.begin(), built.end(), data);
  return built.size();
}

void Mutation::MutateStream(Test::Streams& streams) {
  auto stream = streams.begin();
  std::advance(stream, mRandom() % streams.size());
  if (stream->second.size() > kMostOfAStream) return;
  std::vector<std::uint8_t> bytes(stream->second.begin(), stream->second.end());
  const std::size_t size = bytes.size();
  bytes.resize(size + 64);
  bytes.resize(LLVMFuzzerMutate(bytes.data(), size, bytes.size()));
  stream->second.assign(bytes.begin(), bytes.end());
}

std::string Mutation::Build(const Test::Streams& streams, const std::string& version) {
  static MemoryFile output;
  QovJbf::JbFile file;
  for (const auto& [name, bytes] : streams) Put(file, name, bytes);
  Test::WriteTo(file, output.GetPath(), version);
  return output.GetContent();
}

/// Puts a stream in one block or in several, compressed or not.
void Mutation::Put(QovJbf::JbFile& file, const std::string& name, const std::string& bytes) {
  QovJbf::Index& index = file.GetIndex();
  index.GetWritingBlockIndex(name);
  std::size_t piece = std::max<std::size_t>(1, bytes.size());
  if (OneIn(8)) {
    piece = 1 + mRandom() % piece;
    index.GetBlockSizeLimiter(name).mLimit = static_cast<std::uint32_t>(piece);
  }
  if (bytes.size() / piece > 200) piece = bytes.size();
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    index.Put(name, bytes.data() + at, std::min(piece, bytes.size() - at));
  }
  if (!OneIn(3)) index.AddFlags(name, QovJbf::BlockFlag::kCompressed);
}

std::size_t MutatePair(Mutation& mutation, std::uint8_t* data, std::size_t size,
                       std::size_t maxSize) {
  const FilePair pair = SplitPair({data, size});
  std::vector<std::uint8_t> first(pair.mFirst.begin(), pair.mFirst.end());
  std::vector<std::uint8_t> second(pair.mSecond.begin(), pair.mSecond.end());
  const std::size_t room = maxSize - sizeof(std::uint32_t);
  const bool chooseFirst = mutation.OneIn(2);
  std::vector<std::uint8_t>& chosen = chooseFirst ? first : second;
  const std::size_t other = (chooseFirst ? second : first).size();
  const std::size_t oldSize = chosen.size();
  chosen.resize(std::max(oldSize, room - std::min(room, other)));
  chosen.resize(mutation.Run(chosen.data(), oldSize, chosen.size()));
  if (first.size() + second.size() > room) return size;
  const auto length = static_cast<std::uint32_t>(first.size());
  std::memcpy(data, &length, sizeof length);
  std::copy(first.begin(), first.end(), data + sizeof length);
  std::copy(second.begin(), second.end(), data + sizeof length + first.size());
  return sizeof length + first.size() + second.size();
}

}  // namespace
}  // namespace Qov::Fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  using Qov::Fuzz::kInputLayout;
  Qov::Fuzz::Mutation mutation(seed);
  const std::size_t prefix = kInputLayout.mPrefix;
  if (size < prefix + 8 || mutation.OneIn(16)) return LLVMFuzzerMutate(data, size, maxSize);
  const auto mutate = [&](std::uint8_t* bytes, std::size_t n, std::size_t most) {
    return kInputLayout.mIsPair ? Qov::Fuzz::MutatePair(mutation, bytes, n, most)
                                : mutation.Run(bytes, n, most);
  };
  return prefix + mutate(data + prefix, size - prefix, maxSize - prefix);
}
