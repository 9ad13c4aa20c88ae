#pragma once

/// The sources in log lines and errors that several files of the container use.
namespace QovJbf {

inline constexpr const char* kBlockSource = "include/Qov/Jbf/Block";
inline constexpr const char* kCompressorSource = "include/Qov/Jbf/BlockZlibCompressor";
inline constexpr const char* kIndexSource = "include/Qov/Jbf/Index";
inline constexpr const char* kJbFileSource = "include/Qov/Jbf/JbFile";
inline constexpr const char* kStreamReaderSource = "include/Qov/Jbf/StreamReader";

}  // namespace QovJbf
