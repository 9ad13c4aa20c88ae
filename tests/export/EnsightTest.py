"""Reads .case with VTK, and the ids, which VTK ignores, with a reader of its own."""

import glob
import os
import unittest

import support
from odd import cells_of, models, odd_model, points_of, unique, unpack
from support import np, same

ensight = support.need("vtkmodules.vtkIOEnSight", "python3-vtk9")
data_model = support.need("vtkmodules.vtkCommonDataModel", "python3-vtk9")
to_numpy = support.need("vtkmodules.util.numpy_support", "python3-vtk9").vtk_to_numpy

SHARED = ("real/biplane.ryx", "real/exomerge_run1.ryx", "real/thermomech_run1.ryx")
# Cells in the order of the blocks of a part, by cell type; VTK's reader turns wedges.
ORDER = [1, 3, 21, 5, 22, 9, 23, 10, 24, 14, 27, 13, 26, 12, 25, 7]
QUADRATIC = range(21, 28)
ODD_NAMES = {"geo": "geo_2", "@x": "_x", 100 * "n" + "1": 40 * "n",
             100 * "n" + "2": 40 * "n" + "_2", '../a/b:c "d", e\\xFF': "___a_b_c__d___e_"}
NUM_NODES = {"point": 1, "bar2": 2, "bar3": 3, "tria3": 3, "tria6": 6, "quad4": 4, "quad8": 8,
             "tetra4": 4, "tetra10": 10, "pyramid5": 5, "penta6": 6, "hexa8": 8, "hexa20": 20}


def read_case(path, time=None):
    """List of the grids of all parts at a time."""
    reader = ensight.vtkGenericEnSightReader()
    errors = []
    reader.AddObserver("ErrorEvent", lambda *_: errors.append(path))
    reader.SetCaseFileName(path)
    reader.UpdateInformation()
    if time is not None:
        reader.SetTimeValue(time)
    reader.ReadAllVariablesOn()
    reader.Update()
    assert not errors, errors
    output = reader.GetOutput()
    parts = [(output.GetMetaData(i).Get(data_model.vtkCompositeDataSet.NAME()), output.GetBlock(i))
             for i in range(output.GetNumberOfBlocks())]
    sets = reader.GetTimeSets()
    return parts, list(to_numpy(sets.GetItem(0))) if sets.GetNumberOfItems() else None


def read_ids(path):
    """(node ids, element ids) of each part of a .geo file, or None."""
    with open(path, "rb") as file:
        data = file.read()
    assert data[:8] == b"C Binary" and len(data) % 4 == 0
    text = lambda at: data[at:at + 80].rstrip(b"\0").decode()
    if text(240) == "node id assign":
        return None
    offset, parts = 400, []
    while offset < len(data):
        kind = text(offset)
        count = unpack("i", data, offset + 80)[0]
        if kind == "part":
            parts.append([])
            offset += 164
            continue
        ids = np.frombuffer(data, "<i4", count, offset + 84)
        parts[-1].append(ids)
        offset += 84 + ids.nbytes + 4 * count * (3 if kind == "coordinates" else NUM_NODES[kind])
    return [(p[0], np.concatenate([p[0][:0], *p[1:]])) for p in parts]


class Ensight(unittest.TestCase):
    def check_mesh(self, part, grid, instance):
        """Returns the positions of the cells in the order of the file."""
        self.assertTrue(same(points_of(part, instance), to_numpy(grid.GetPoints().GetData())))
        cells = cells_of(part, instance)
        types = to_numpy(grid.GetCellTypesArray()) if cells else []
        ranks = [ORDER.index(t) for t in types]
        self.assertEqual(ranks, sorted(ranks))
        ends = to_numpy(grid.GetCells().GetOffsetsArray())
        nodes = np.split(to_numpy(grid.GetCells().GetConnectivityArray()), ends[1:-1])
        turned = {13: [0, 2, 1, 3, 5, 4]}
        order = []
        rest = {}
        for i, cell in enumerate(cells):
            rest.setdefault(len(cell), []).append(i)
        for kind, found in zip(types, nodes):
            order.append(rest[len(found)].pop(0))
            expected = cells[order[-1]]
            if kind in QUADRATIC:  # models have the nodes on edges in several orders
                expected, found = np.sort(expected), np.sort(found)
            self.assertEqual(list(expected[turned.get(kind, slice(None))]), list(found))
        self.assertEqual([], [i for left in rest.values() for i in left if len(cells[i])])
        return order

    def check_results(self, model, part, grid, order, instance):
        """Compares all arrays of a step."""
        actual = {"point": grid.GetPointData(), "cell": grid.GetCellData()}
        shown = [a for a in part.results if a.instance in (None, instance)]
        for name, array in zip(unique(a.base for a in shown), shown):
            if array.base == "Temperature 2":
                name = "Temperature_2_2"  # of the odd model
            placement = part.placement(array).replace("either", "point")
            if placement == "field" or array.count == 0:
                continue
            values = array.values.astype(np.float32).reshape(-1, array.width)
            values = values if placement == "point" else values[order]
            columns = [values] if array.width == 3 else list(values.T)
            for k, column in enumerate(columns):
                suffix = f"_{k + 1}" if len(columns) > 1 else ""
                found = actual[placement].GetArray(self.name(name, suffix))
                self.assertIsNotNone(found, name + suffix)
                self.assertTrue(same(column, to_numpy(found)), f"{model.name}: {name}{suffix}")

    @staticmethod
    def name(name, suffix):
        name = ODD_NAMES.get(name) or "".join(c if c.isalnum() else "_" for c in name)
        return name + suffix

    def check_step(self, model, path, instance, time):
        grids = read_case(path, time)[0]
        self.assertEqual([part.name[:79] for part in model.parts], [name for name, _ in grids])
        mesh_instance = model.instances[0] if model.instances else None
        ids = read_ids(glob.glob(os.path.join(os.path.dirname(path), "*.geo"))[0])
        bases = [{array.base for array in part.arrays} for part in model.parts]
        have_ids = model is not odd_model() and all({"Node Ids", "Element IDs"} <= b for b in bases)
        self.assertEqual(ids is not None, have_ids)
        for i, (part, (_, grid)) in enumerate(zip(model.parts, grids)):
            if grid is None:
                self.assertEqual(len(part.points(mesh_instance)), 0)
                continue
            order = self.check_mesh(part, grid, mesh_instance)
            self.check_results(model, part, grid, order, instance)
            if ids is not None:
                for base, actual in zip(("Node Ids", "Element IDs"), ids[i]):
                    values = part.mesh(base, mesh_instance).astype(np.int32)
                    self.assertTrue(same(values if base == "Node Ids" else values[order], actual))

    def test_case(self):
        for model in models(*SHARED):
            with self.subTest(model.name):
                path = model.export("my *case.case")
                times = read_case(path)[1]
                self.assertEqual(len(times or ()) or 1, len(model.instances) or 1)
                for instance, time in zip(model.instances or [None], times or [None]):
                    self.check_step(model, path, instance, time)


if __name__ == "__main__":
    support.main()
