// Does only the work that no merge can avoid: reads the compressed heavy blocks of model files,
// inflates them once, deflates the same bytes at level 6 and writes them. The time that a merge
// takes beyond this is its own cost.
//
//   floor [--threads N] [--whole-blocks] [--block-size BYTES | --like MODEL] OUTPUT INPUT...
//   floor --inflate INPUT...
//
// --threads N       deflate on N threads besides the one that inflates. They share the work in
//                   pieces of 1 MiB, which is the best possible division.
// --whole-blocks    share the work in whole blocks, which is the best division for these blocks.
// --block-size      the largest block of the output; default: TELMORAX_MAX_RYX_BLOCK_SIZE, or
//                   200 MiB.
// --like MODEL      use the block lengths of a merged model.
// --inflate         only inflate.

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "floor/Deflaters.h"
#include "floor/HeavyBlocks.h"

namespace {

using namespace Qov::Bench;

struct Arguments {
  std::size_t mNumThreads = 1;
  bool mWholeBlocks = false;
  bool mInflateOnly = false;
  std::vector<std::uint64_t> mBlockLengths = {DefaultBlockLength()};
  std::vector<std::string> mPaths;
};

Arguments Parse(const std::vector<std::string>& words) {
  Arguments arguments;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--whole-blocks") {
      arguments.mWholeBlocks = true;
    } else if (word == "--inflate") {
      arguments.mInflateOnly = true;
    } else if (word == "--threads") {
      arguments.mNumThreads = std::stoul(words.at(++i));
    } else if (word == "--block-size") {
      arguments.mBlockLengths = {std::stoull(words.at(++i))};
    } else if (word == "--like") {
      arguments.mBlockLengths = ReadBlockLengths(words.at(++i));
    } else {
      arguments.mPaths.push_back(word);
    }
  }
  return arguments;
}

void Repack(const Arguments& arguments) {
  BlockCutter cutter(arguments.mBlockLengths, arguments.mWholeBlocks || arguments.mNumThreads == 1);
  const auto deflaters = MakeDeflaters(arguments.mNumThreads, arguments.mPaths.at(0));
  for (std::size_t i = 1; i < arguments.mPaths.size(); ++i) {
    InflateHeavyBlocks(arguments.mPaths[i], [&](const unsigned char* bytes, std::size_t size) {
      cutter.Cut(bytes, size, *deflaters);
    });
  }
  deflaters->Finish();
}

void InflateAll(const Arguments& arguments) {
  for (const std::string& path : arguments.mPaths) {
    InflateHeavyBlocks(path, [](const unsigned char*, std::size_t) {});
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Arguments arguments = Parse(std::vector<std::string>(argv + 1, argv + argc));
    arguments.mInflateOnly ? InflateAll(arguments) : Repack(arguments);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "floor: %s\n", error.what());
    return 1;
  }
}
