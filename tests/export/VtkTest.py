"""Reads .vtu, .vtm and .pvd with VTK and meshio."""

import contextlib
import io
import os
import unittest
import unittest.mock
import xml.etree.ElementTree as ElementTree

import support
from odd import cells_of, odd_model, points_of, unique
from support import RYX, RYXMERGE, Model, models, np, run, same, sample

xml = support.need("vtkmodules.vtkIOXML", "python3-vtk9")
data_model = support.need("vtkmodules.vtkCommonDataModel", "python3-vtk9")
to_numpy = support.need("vtkmodules.util.numpy_support", "python3-vtk9").vtk_to_numpy
meshio = support.need("meshio", "python3-meshio")

SHARED = ("plate_version_0.5.ryx", "real/biplane.ryx", "real/mug_run3.ryx", "real/regr01.ryx",
          "real/thermomech_run1.ryx")
# Cell types by the kinds that the sources of the real models name.
VTK_TYPES = {"BAR2": 3, "BEAM": 3, "HE20": 25, "HEX": 12, "HEX20": 25, "HEX8": 12, "QUAD": 9,
             "SHELL": 9, "SHELL8": 23, "TETRA": 10, "TETRA10": 24, "TRI": 5, "TRI3": 5, "TRI6": 22}
# Cell types by the number of nodes.
SHELL_TYPES = {0: 0, 1: 1, 3: 5, 4: 9, 7: 7}
SOLID_TYPES = {2: 3, 4: 10, 5: 14, 6: 13, 8: 12}
MESHIO_TYPES = {3: "vertex", 5: "triangle", 9: "quad", 10: "tetra", 12: "hexahedron",
                25: "hexahedron20"}


def vtk_types(part, instance):
    """The type of each cell, from the source of the model or from what the samples have."""
    sizes = [len(cell) for cell in cells_of(part, instance)]
    if part.type_name:
        return [VTK_TYPES[part.type_name.upper()]] * len(sizes)
    types = SOLID_TYPES if part.name.startswith("Solid") else SHELL_TYPES
    return [types[size] for size in sizes]


def read(reader, path):
    """Reads a file. Raises AssertionError for an error of VTK."""
    errors = []
    reader.AddObserver("ErrorEvent", lambda *_: errors.append(path))
    reader.SetFileName(path)
    reader.Update()
    assert not errors, errors
    return reader.GetOutput()


def arrays_of(attributes):
    arrays = [attributes.GetAbstractArray(i) for i in range(attributes.GetNumberOfArrays())]
    return {array.GetName(): array for array in arrays}


def point_owners(parts, instance):
    """For each part the part whose points it uses: itself, or an earlier one with the same points
    and ids if both have no results at points."""
    owners = []
    known = {}
    for part in parts:
        if any(part.placement(array) == "point" for array in part.results):
            owners.append(part)
            continue
        arrays = [part.mesh_array(base, instance) for base in ("Coordinates", "Node Ids")]
        owners.append(known.setdefault(tuple(a and a.owner for a in arrays), part))
    return owners


class Grid(unittest.TestCase):
    def check_mesh(self, grid, model, parts, instance):
        owners = point_owners(parts, instance)
        points = [points_of(part, instance) for part in dict.fromkeys(owners)]
        self.assertTrue(same(np.concatenate(points), to_numpy(grid.GetPoints().GetData())))
        ends = np.cumsum([0] + [len(p) for p in points])
        first = dict(zip(dict.fromkeys(owners), ends))
        cells = [cell + first[owner] for part, owner in zip(parts, owners)
                 for cell in cells_of(part, instance)]
        types = [kind for part in parts for kind in vtk_types(part, instance)]
        self.assertTrue(np.array_equal(types, to_numpy(grid.GetCellTypesArray())))
        ends = np.cumsum([0] + [len(cell) for cell in cells])
        self.assertTrue(np.array_equal(ends, to_numpy(grid.GetCells().GetOffsetsArray())))
        nodes = to_numpy(grid.GetCells().GetConnectivityArray())
        for i, cell in enumerate(cells):
            actual = nodes[ends[i]:ends[i + 1]]
            if types[i] > 20:
                self.assertEqual(sorted(cell), sorted(actual))
            else:
                self.assertEqual(list(cell), list(actual))
        for i in [types.index(kind) for kind in set(types) if kind > 20]:
            self.check_edges(grid.GetCell(i))

    def check_edges(self, cell):
        """Every node on an edge must be near the middle of the edge that VTK sees there."""
        for i in range(cell.GetNumberOfEdges()):
            a, b, middle = (np.array(cell.GetEdge(i).GetPoints().GetPoint(k)) for k in range(3))
            offset = np.linalg.norm(middle - (a + b) / 2) / np.linalg.norm(a - b)
            self.assertLess(offset, 0.25, f"type {cell.GetCellType()}, edge {i}")

    def expected_results(self, model, parts, instance, name_of):
        """Values for each part by placement, name, width and type."""
        expected = {}
        for i, part in enumerate(parts):
            wanted = [array for array in part.results if name_of(array) is not None]
            for name, array in zip(unique(map(name_of, wanted)), wanted):
                placement = part.placement(array).replace("either", "point")
                if placement == "field" and len(parts) > 1:
                    name = f"{part.name}: {name}"
                key = (placement, name, array.width, array.is_unsigned)
                expected.setdefault(key, {})[0 if placement == "field" else i] = array.values
            for name, base in (("Node Ids", "point"), ("Element IDs", "cell")):
                if (values := part.mesh(name, instance)) is not None:
                    expected.setdefault((base, name, 1, True), {})[i] = values
        for parent, name, numbers in model.sets:
            below = [part for part in model.parts if parent in part.ancestors]
            ids = np.concatenate([part.mesh("Node Ids", instance) for part in below])
            if np.isin(numbers, ids).all():
                for i, part in enumerate(parts):
                    if part in below:
                        mask = np.isin(part.mesh("Node Ids", instance), numbers).astype(np.uint8)
                        expected.setdefault(("point", f"set {name}", 1, True), {})[i] = mask
            elif below[0] in parts:
                expected["field", f"set {name}", 1, True] = {0: numbers}
        return expected

    def check_arrays(self, grid, model, parts, instance, name_of):
        owners = point_owners(parts, instance)
        sizes = {"point": [len(points_of(part, instance)) if owner is part else 0
                           for part, owner in zip(parts, owners)],
                 "cell": [len(cells_of(part, instance)) for part in parts]}
        actual = {"point": arrays_of(grid.GetPointData()), "cell": arrays_of(grid.GetCellData()),
                  "field": arrays_of(grid.GetFieldData())}
        for key, by_part in self.expected_results(model, parts, instance, name_of).items():
            placement, name, width, is_unsigned = key
            values = []
            for i, size in enumerate(sizes.get(placement, [0])):
                fill = np.uint32(0) if is_unsigned else np.float32(np.nan)
                if name.startswith("set "):
                    fill = np.uint8(0)
                missing = np.full((size, width) if width > 1 else size, fill)
                values.append(by_part.get(i, missing) if size or placement == "field" else missing)
            array = actual[placement].pop(name, None)
            self.assertIsNotNone(array, f"{placement} data {name}")
            self.assertTrue(same(np.concatenate(values), to_numpy(array)), name)
        return actual

    def test_vtu(self):
        for model in [*models(*SHARED), odd_model()]:
            with self.subTest(model.name):
                grid = read(xml.vtkXMLUnstructuredGridReader(), model.export("all.vtu"))
                instance = model.instances[0] if model.instances else None
                self.check_mesh(grid, model, model.parts, instance)
                rest = self.check_arrays(grid, model, model.parts, instance, model.result_name)
                if len(model.parts) > 1:
                    part = to_numpy(rest["cell"].pop("Part"))
                    counts = [len(cells_of(p, instance)) for p in model.parts]
                    self.assertTrue(np.array_equal(np.repeat(range(len(counts)), counts), part))
                    for i, name in enumerate(unique(p.name for p in model.parts)):
                        self.assertEqual([i], list(to_numpy(rest["field"].pop(f"part {name}"))))
                self.assertEqual(rest, {"point": {}, "cell": {}, "field": {}})

    def check_leaf(self, grid, model, part, instance, name_of):
        self.check_mesh(grid, model, [part], instance)
        rest = self.check_arrays(grid, model, [part], instance, name_of)
        self.assertEqual(rest, {"point": {}, "cell": {}, "field": {}})

    def leaves(self, block, groups=()):
        """(names of the blocks above, name, grid) of each data set."""
        for i in range(block.GetNumberOfBlocks()):
            name = block.GetMetaData(i).Get(data_model.vtkCompositeDataSet.NAME())
            child = block.GetBlock(i)
            if child.IsA("vtkMultiBlockDataSet"):
                yield from self.leaves(child, (*groups, name))
            else:
                yield list(groups), name or "", child  # VTK drops an empty name

    def check_blocks(self, path, model, instance, name_of):
        leaves = list(self.leaves(read(xml.vtkXMLMultiBlockDataReader(), path)))
        self.assertEqual([(part.groups, part.name) for part in model.parts],
                         [leaf[:2] for leaf in leaves])
        for part, (_, _, grid) in zip(model.parts, leaves):
            self.check_leaf(grid, model, part, instance, name_of)

    def test_vtm(self):
        for model in [*models("real/mug_run3.ryx"), odd_model()]:
            with self.subTest(model.name):
                instance = model.instances[0] if model.instances else None
                self.check_blocks(model.export("all.vtm"), model, instance, model.result_name)

    def test_pvd(self):
        for model in models("real/mug_run3.ryx"):
            with self.subTest(model.name):
                path = model.export("all.pvd")
                sets = ElementTree.parse(path).getroot().findall("Collection/DataSet")
                instances = model.instances or [None]
                self.assertEqual(len(instances), len(sets))
                for instance, data_set in zip(instances, sets):
                    self.check_blocks(
                        os.path.join(os.path.dirname(path), data_set.get("file")), model, instance,
                        lambda a, i=instance: a.base if a.instance in (None, i) else None)

    def test_times(self):
        """Each of three groups of the same name has its own time."""
        folder = os.path.dirname(sample("steps").path)
        merged = os.path.join(folder, "datasets.ryx")
        run(RYXMERGE, *(f"{folder}/steps/run{i}.ryx" for i in (1, 2, 3)), merged)
        path = Model(merged).export("times.pvd")
        sets = ElementTree.parse(path).getroot().findall("Collection/DataSet")
        self.assertEqual([5.0, 10.0, 15.0], [float(data_set.get("timestep")) for data_set in sets])
        for i, data_set in enumerate(sets):
            blocks = read(xml.vtkXMLMultiBlockDataReader(),
                          os.path.join(os.path.dirname(path), data_set.get("file")))
            self.assertEqual(3, blocks.GetBlock(0).GetNumberOfBlocks())
            grids = [grid for _, _, grid in self.leaves(blocks)]
            have = [grid.GetPointData().HasArray("Temperature") for grid in grids]
            self.assertEqual([int(k == i) for k in range(3)], have)

    def test_threads(self):
        """The number of threads does not change a byte; arrays have several blocks."""
        folder = os.path.join(support.FOLDER, "threads")
        run(RYX, "sample", folder, "--size", "20", "--parts", "2", "--steps", "1")
        for parts in ("Solid 1", "*"):
            files = []
            for threads in "1", "3":
                with unittest.mock.patch.dict(os.environ, RYXMERGE_THREADS=threads):
                    path = Model(f"{folder}/run1.ryx").export("all.vtu", "--nodes", parts)
                with open(path, "rb") as file:
                    files.append(file.read())
            self.assertEqual(files[0], files[1])
            self.assertGreater(len(files[0]), 1 << 16)

    def test_meshio(self):
        for model in models("real/wavy_run1.ryx"):
            with self.subTest(model.name):
                with contextlib.redirect_stdout(io.StringIO()):
                    mesh = meshio.read(model.export("all.vtu"))
                instance = model.instances[0] if model.instances else None
                owners = dict.fromkeys(point_owners(model.parts, instance))
                points = [part.points(instance) for part in owners]
                self.assertTrue(same(np.concatenate(points), mesh.points))
                kinds = [MESHIO_TYPES[kind] for part in model.parts
                         for kind in vtk_types(part, instance)]
                self.assertEqual(kinds, [b.type for b in mesh.cells for _ in b.data])
                for part in model.parts:
                    for array in part.results if len(model.parts) == 1 else ():
                        data = {"point": mesh.point_data, "cell": mesh.cell_data}
                        values = data[part.placement(array)][model.result_name(array)]
                        self.assertTrue(same(array.values, np.squeeze(values)), array.name)


if __name__ == "__main__":
    support.main()
