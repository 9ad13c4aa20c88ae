#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Qov/Export.h"

/// Names of results in a model merged from instances: BASE 0x1E INSTANCE. The part after the last
/// 0x1E is the name of the load case or time step, with F1, F2, ... before it for the file.
namespace QovRyx {

class Tree;

inline constexpr char kInstanceSeparator = '\x1E';

/// Maps the id of a geometry and the name of a result to the names of the results that share its
/// values.
using PartLinksMap = std::map<std::uint32_t, std::map<std::string, std::vector<std::string>>>;

/// Raises OutOfBounds if the links that share the common results of all instances would take more
/// than 256 MiB and more than 64 times the size of the results of the model, without their values.
/// Otherwise a small file could ask for any number of links.
QOV_EXPORT void CheckSharing(const Tree& tree);

/// Gives every result an instance part, with the suffix of file number `k` before it if
/// `useSuffix`. A result that still has none gets the smallest instance part of its geometry (byte
/// by byte, so LC10 comes before LC2). Replaces `links` by the names under which the other
/// instances share such results. Raises the errors of CheckSharing if `useSuffix` is false.
QOV_EXPORT void RenameResults(Tree& tree, std::uint64_t k, PartLinksMap& links, bool useSuffix);

/// Inserts the suffix into the names that have an instance part. Clears `links`.
QOV_EXPORT void AutoRenameInstances(Tree& tree, std::uint64_t k, PartLinksMap& links,
                                    bool useSuffix);

/// Creates the linked results that `links` describes, or updates those that exist. They get the
/// kind, flag, attributes and carried fields of the result whose values they share. A result is not
/// changed if the result that it should share takes its values from it. Raises ElementNotFound for
/// a geometry that `tree` does not have. Takes amortised logarithmic time for each link,
/// independent of the length of the chains.
QOV_EXPORT void GenerateLinkedResults(Tree& tree, const PartLinksMap& links);

/// Returns true if the base of the name is that of a mesh array. Ignores the character before the
/// separator: true for "Coordinates |...", false for "Coordinates|...".
QOV_EXPORT bool isMeshResult(const std::string& name);

/// Returns true if there is text after the last separator.
QOV_EXPORT bool HasInstancePart(const std::string& name);

}  // namespace QovRyx
