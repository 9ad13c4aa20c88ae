#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Qov::Bench {

using Receiver = std::function<void(const unsigned char* bytes, std::size_t size)>;

/// Inflates the heavy blocks of a model file one after the other and passes the output to `receive`
/// piece by piece. A piece is valid only during the call.
void InflateHeavyBlocks(const std::string& path, const Receiver& receive);

/// Returns the uncompressed lengths of the heavy blocks of a model.
std::vector<std::uint64_t> ReadBlockLengths(const std::string& path);

/// Returns the block size that RyxMerge uses.
std::uint64_t DefaultBlockLength();

}  // namespace Qov::Bench
