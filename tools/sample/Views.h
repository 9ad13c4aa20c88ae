#pragma once

#include <string>

#include "Qov/Ryx/Tree.h"

namespace Qov::Tools {

/// Gives the model a current view, two paths of views whose names end in `name`, and a sequencer
/// with an action of every kind. `part` is what the views show apart.
void AddViews(QovRyx::Tree& tree, const std::string& name, const std::string& part);

}  // namespace Qov::Tools
