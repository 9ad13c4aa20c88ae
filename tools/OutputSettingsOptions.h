#pragma once

#include <CLI/App.hpp>
#include <string>

#include "Qov/Ryx/OutputSettings.h"

namespace Qov::Tools {

/// Adds -o, which is required, --overwrite, --level, --block-size, --threads and --keep-blocks: the
/// options of subcommands that write a model.
void DeclareOutputSettings(CLI::App& app, std::string& path, QovRyx::OutputSettings& settings);

}  // namespace Qov::Tools
