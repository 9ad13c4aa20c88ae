#pragma once

#include <vector>

#include "ExpectedModel.h"
#include "Faults.h"
#include "check/Finding.h"

namespace Qov::Tools {

/// Compares an output with the model that is expected from the merge: nodes, results, attributes,
/// materials, node sets, views, history, and every value, bit for bit. Adds what differs to
/// `faults` and marks it in `model`.
///
/// Reads one array of the output and one of an input at a time, in stored order. Raises the errors
/// of reading an input, with its path. An output that cannot be read is a fault.
void VerifyOutput(ExpectedModel& model, const std::vector<InputFile>& inputs,
                  const QovRyx::Tree& output, Faults& faults);

/// Adds the findings about data in the output that programs drop. A merge never writes such data.
void AddUnreadContent(const std::vector<Finding>& unread, Faults& faults);

}  // namespace Qov::Tools
