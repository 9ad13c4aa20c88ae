"""Prints the times that VTK needs, in seconds: vtktimes.py write|surface FILE.vtu RUNS

write: writes the grid of the file with the same encoding, compression and index size.
surface: extracts its outer surface. The time to read the file does not count.
"""

import os
import sys
import time

from vtkmodules.vtkFiltersGeometry import vtkDataSetSurfaceFilter
from vtkmodules.vtkIOXML import vtkXMLUnstructuredGridReader, vtkXMLUnstructuredGridWriter


def write(grid, path):
    writer = vtkXMLUnstructuredGridWriter()
    writer.SetInputData(grid)
    writer.SetFileName(path + ".copy")
    writer.SetDataModeToAppended()
    writer.EncodeAppendedDataOff()
    writer.SetCompressorTypeToZLib()
    writer.SetHeaderTypeToUInt64()
    assert writer.Write() == 1


def surface(grid, _):
    surface_filter = vtkDataSetSurfaceFilter()
    surface_filter.SetInputData(grid)
    surface_filter.Update()
    assert surface_filter.GetOutput().GetNumberOfCells() > 0


def main():
    action = {"write": write, "surface": surface}[sys.argv[1]]
    path = sys.argv[2]
    reader = vtkXMLUnstructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    grid = reader.GetOutput()
    assert grid.GetCells().ConvertTo32BitStorage()
    for _ in range(int(sys.argv[3])):
        start = time.perf_counter()
        action(grid, path)
        print(f"{time.perf_counter() - start:.4f}")
    if os.path.exists(path + ".copy"):
        os.remove(path + ".copy")


main()
