#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/Index.h"

/// The streams that a model is spread over.
namespace QovRyx {

inline const std::string kHeavyData = "Heavy Data";                  ///< Arrays and node sets.
inline const std::string kRyxTree = "Ryx Tree";                      ///< One record per tree entry.
inline const std::string kLightData = "Light Data";                  ///< Small values per node.
inline const std::string kAttributes = "Attributes";                 ///< Attribute maps.
inline const std::string kResources = "Resources";                   ///< Materials.
inline const std::string kGlobalInformation = "Global Information";  ///< The history.
inline const std::string kViewPoints = "View Points";  ///< Views and sequencer; optional.

/// Returns true for the names above.
QOV_EXPORT bool IsModelStream(std::string_view name);

/// Returns the names of the streams in a file that no reader uses, each once, in the order of the
/// blocks. Such a stream holds data that a merge leaves out, or its name is damaged. `items` is the
/// index of the file. Streams without stored bytes are not listed.
QOV_EXPORT std::vector<std::string> FindUnknownStreams(const std::vector<QovJbf::IndexItem>& items);

}  // namespace QovRyx
