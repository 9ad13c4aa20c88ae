#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Qov::Bench {

using Receiver = std::function<void(const unsigned char* bytes, std::size_t size)>;

/// Inflates the heavy blocks of a model file one after the other and gives what comes out to
/// `receive`, piece by piece. The pieces are gone after the call.
void InflateHeavyBlocks(const std::string& path, const Receiver& receive);

/// The uncompressed lengths of a model's heavy blocks.
std::vector<std::uint64_t> ReadBlockLengths(const std::string& path);

/// What RyxMerge cuts its streams at.
std::uint64_t DefaultBlockLength();

}  // namespace Qov::Bench
