#pragma once

/// Directs the trace log to RyxMerge_trace.log in the directory that the environment variable
/// PELORIN_TEMP_PATH names, or in /tmp, and says so on standard error. Where that cannot be
/// written to, nothing is logged.
void SetLogFile();
