#pragma once

#include <string>

/// The streams that a model is spread over.
namespace QovRyx {

inline const std::string kHeavyData = "Heavy Data";                  ///< Arrays and node sets.
inline const std::string kRyxTree = "Ryx Tree";                      ///< One record per tree entry.
inline const std::string kLightData = "Light Data";                  ///< Small values per node.
inline const std::string kAttributes = "Attributes";                 ///< Attribute maps.
inline const std::string kResources = "Resources";                   ///< Materials.
inline const std::string kGlobalInformation = "Global Information";  ///< The history.
inline const std::string kViewPoints = "View Points";  ///< Views and sequencer; optional.

}  // namespace QovRyx
