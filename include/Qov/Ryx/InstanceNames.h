#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/Tree.h"

/// Names of results in a model merged from instances: BASE 0x1E INSTANCE, where the part after
/// the last 0x1E names the load case or time step, and F1, F2, ... in front of it the file.
namespace QovRyx {

inline constexpr char kInstanceSeparator = '\x1E';

/// For each geometry: a result's name to the names of the results that share its values.
using PartLinksMap = std::map<std::uint32_t, std::map<std::string, std::vector<std::string>>>;

/// Raises OutOfBounds if sharing the results that the instances of a geometry have in common would
/// take more than 64 times what the results of the model take, their values aside, and more than
/// 256 MiB: a small file could ask for any number of links.
QOV_EXPORT void CheckSharing(const Tree& tree);

/// Gives every result an instance part, with the suffix of file number `k` in front if
/// `useSuffix`. Results that are left without one become results of the smallest instance part
/// of their geometry (byte by byte, so LC10 comes before LC2), and `links`, which is made anew,
/// says that those of the other instance parts share their values. Without `useSuffix` it raises
/// what CheckSharing raises.
QOV_EXPORT void RenameResults(Tree& tree, std::uint64_t k, PartLinksMap& links, bool useSuffix);

/// Puts the suffix into the names that have an instance part; leaves `links` empty.
QOV_EXPORT void AutoRenameInstances(Tree& tree, std::uint64_t k, PartLinksMap& links,
                                    bool useSuffix);

/// Creates the linked results that `links` describes, or updates those that exist. They get the
/// kind, flag, attributes and carried fields of the result whose values they share. A result is not
/// changed if the result that it should share takes its values from it. Raises ElementNotFound for
/// a geometry that `tree` does not have. Takes amortised logarithmic time for each link,
/// independent of the length of the chains.
QOV_EXPORT void GenerateLinkedResults(Tree& tree, const PartLinksMap& links);

/// Whether the name's base is one of the mesh arrays. The character before the separator does
/// not count: "Coordinates |..." is one, "Coordinates|..." is not.
QOV_EXPORT bool isMeshResult(const std::string& name);

/// Whether there is text behind the last separator.
QOV_EXPORT bool HasInstancePart(const std::string& name);

}  // namespace QovRyx
