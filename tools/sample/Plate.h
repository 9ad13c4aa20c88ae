#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Qov/Ryx/Tree.h"
#include "sample/Fields.h"

namespace Qov::Tools {

struct LoadCase {
  std::string mName;
  Tension mTension;
};

/// The load cases of the plate, LC1 to LC4.
std::vector<LoadCase> PlateLoadCases();

/// A plate with a hole under those load cases, with its edges and corners as node sets.
void BuildPlate(QovRyx::Tree& tree, const std::vector<LoadCase>& cases);

/// A plate that is heated at one edge, at that time. Its results have no instance part.
void BuildHeatedPlate(QovRyx::Tree& tree, double time);

}  // namespace Qov::Tools
