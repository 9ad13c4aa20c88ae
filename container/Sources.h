#pragma once

/// The sources that log lines and errors of the container name, as far as several files use them.
namespace QovJbf {

inline constexpr const char* kBlockSource = "include/Qov/Jbf/Block";
inline constexpr const char* kCompressorSource = "include/Qov/Jbf/BlockZlibCompressor";
inline constexpr const char* kIndexSource = "include/Qov/Jbf/Index";
inline constexpr const char* kJbFileSource = "include/Qov/Jbf/JbFile";
inline constexpr const char* kStreamReaderSource = "include/Qov/Jbf/StreamReader";

}  // namespace QovJbf
