#pragma once

#include <string>
#include <vector>

/// Directs the trace log to RyxMerge_trace.log in the directory that the environment variable
/// PELORIN_TEMP_PATH names, or in /tmp, and reports that on standard error. Reports on standard
/// error that there is no log, and logs nothing, if the file cannot be written to, belongs to
/// another user, is not an ordinary file with one name, or is one of `models`: the inputs and the
/// output, which need not exist yet.
void SetLogFile(const std::vector<std::string>& models);
