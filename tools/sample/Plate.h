#pragma once

#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "sample/Fields.h"

namespace Qov::Tools {

struct LoadCase {
  std::string mName;
  Tension mTension;
};

/// Returns the load cases of the plate, LC1 to LC4.
std::vector<LoadCase> PlateLoadCases();

/// Builds a plate with a hole under those load cases, with its edges and corners as node sets.
void BuildPlate(QovRyx::Tree& tree, const std::vector<LoadCase>& cases);

/// Builds a plate that is heated at one edge, at that time. Its results have no instance part.
void BuildHeatedPlate(QovRyx::Tree& tree, double time);

}  // namespace Qov::Tools
