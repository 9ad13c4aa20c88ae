#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Qov/Jbf/Index.h"

/// The names of the streams of a model (docs/format.md, "Streams of a model").
namespace QovRyx {

inline const std::string kHeavyData = "Heavy Data";                  ///< Arrays and node sets.
inline const std::string kRyxTree = "Ryx Tree";                      ///< One record per tree entry.
inline const std::string kLightData = "Light Data";                  ///< Small values per node.
inline const std::string kAttributes = "Attributes";                 ///< Attribute maps.
inline const std::string kResources = "Resources";                   ///< Materials.
inline const std::string kGlobalInformation = "Global Information";  ///< The history.
inline const std::string kViewPoints = "View Points";  ///< Views and sequencer; optional.

/// Returns true for the names above.
bool IsModelStream(std::string_view name);

/// Returns the names of the streams in a file that no reader uses, each once, in the order of the
/// blocks. A merge leaves their data out. Either another program has added such a stream, or its
/// name is damaged. `items` is the index of the file. Streams without stored bytes are not listed.
std::vector<std::string> FindUnknownStreams(const std::vector<QovJbf::IndexItem>& items);

}  // namespace QovRyx
