#pragma once

#include "check/Container.h"
#include "check/ModelContent.h"

namespace Qov::Tools {

/// Reads the tree records, and checks each by itself.
void ReadTreeRecords(Container& container, ModelContent& model, Findings& findings);

/// Checks that the links between the records agree: both ways, without circles, all beneath one
/// root.
void CheckTreeLinks(const ModelContent& model, Findings& findings);

/// Reports bytes after the last thing of a stream whose things belong to the nodes in their order.
/// They are an error if nodes of unknown types may own some of them, because then every node may
/// have got those of another one.
void ReportRest(const StreamCursor& cursor, const ModelContent& model, const char* what,
                Findings& findings);

/// Tells that a stage stopped because a stream ends, or cannot be read, at the cursor's place.
void ReportEnd(const StreamCursor& cursor, Place place, const char* what, Findings& findings);

}  // namespace Qov::Tools
