#pragma once

#include "ExpectedModel.h"
#include "FaultReporter.h"

namespace Qov::Tools {

/// Matches the expected results of a node with those of a geometry, by name and in order, and
/// compares their descriptors. A result that is missing or unexpected does not make later results
/// differ. With `mayStoreOnce`, a link is accepted instead of values, and marked as StoredOnce.
void VerifyResults(ExpectedNode& node, const QovRyx::Geometry& geometry, bool mayStoreOnce,
                   FaultReporter& reporter);

/// Compares the ends of the chains of links, and the places of dangling links. Chains may contain
/// other results than expected. All results must have been matched before.
void VerifyLinks(ExpectedModel& model, const QovRyx::NodeTree& output, FaultReporter& reporter);

/// Returns true if a result has the carried fields of the owner of its values; null for none.
bool HasSameFlags(const Result* owner, const Result& right);

}  // namespace Qov::Tools
