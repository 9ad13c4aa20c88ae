#pragma once

namespace QovJbf {

/// What log lines and errors of StreamReader and its helpers give as their source.
inline constexpr const char* kStreamReaderSource = "include/Qov/Jbf/StreamReader";

}  // namespace QovJbf
