#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Gives the model a current view, two paths of views whose names end in `name`, and a sequencer.
/// `part` is the name of the part that the views move.
void AddViews(QovRyx::Tree& tree, const std::string& name, const std::string& part);

}  // namespace Qov::Tools
