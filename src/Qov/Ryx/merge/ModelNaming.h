#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Qov/Ryx/Merge.h"
#include "Qov/Ryx/Tree.h"

namespace QovRyx {

/// The part that the names of one model's results get in a merge as instances.
struct ModelNaming {
  MergedNames mNames = MergedNames::Keep;
  std::string mPart;  ///< Empty for MergedNames::Keep.

  /// Returns the new instance part for an old one, which may be empty.
  std::string Combine(const std::string& instance) const;
};

/// Returns the naming of each model. `names` is not Automatic. Stems that several models have get
/// the names of as many folders as make them distinct: "a/run", "b/run". Parts that are still equal
/// get a number: "run(2)". Blanks become "_" in all parts if one begins with another one and a
/// blank. So no names of two models combine to the same instance part.
///
/// Raises OutOfBounds if the number of the last model is too large.
std::vector<ModelNaming> NameModels(const std::vector<std::string>& models, MergedNames names,
                                    std::uint64_t firstNumber);

/// Renames the results of a model. Results without an instance part are common to all instances:
/// they become results of the first instance, and links to them are added for the others. The
/// instances are those of the geometry, or those of the model if the geometry has none. If the
/// model has none, common results get the part of the model, or keep their names. A name that the
/// geometry has already is never given to another result.
///
/// Raises OutOfBounds if the links would take too much memory (SharingLimit).
void NameInstances(Tree& tree, const ModelNaming& naming);

}  // namespace QovRyx
