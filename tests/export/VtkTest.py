"""Reads .vtu, .vtm and .pvd with VTK and meshio."""

import contextlib
import io
import os
import unittest
import xml.etree.ElementTree as ElementTree

import support
from support import models, np, same, sample

xml = support.need("vtkmodules.vtkIOXML", "python3-vtk9")
data_model = support.need("vtkmodules.vtkCommonDataModel", "python3-vtk9")
to_numpy = support.need("vtkmodules.util.numpy_support", "python3-vtk9").vtk_to_numpy
meshio = support.need("meshio", "python3-meshio")

SHARED = ("plate_version_0.5.ryx", "real/mug_run3.ryx", "real/regr01.ryx", "real/wavy_run1.ryx")
VTK_TYPES = {"HE20": 25, "HEX": 12, "HEX8": 12, "QUAD": 9, "TETRA": 10, "TRI": 5}
SAMPLE_TYPES = {4: 9, 8: 12}
MESHIO_TYPES = {3: "vertex", 5: "triangle", 9: "quad", 10: "tetra", 12: "hexahedron",
                25: "hexahedron20"}


def vtk_type(model, part):
    """The kind of cells that the source of the model says, or that the sample has."""
    if part.type_name:
        return VTK_TYPES[part.type_name.upper()]
    if part.name == "Solid 2":
        return 10
    return SAMPLE_TYPES[int(part.mesh("Polylength", model.instances[:1] and model.instances[0])[0])]


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


def part_names(model):
    """The names of the parts; the second "a" is "a 2"."""
    names = [part.name for part in model.parts]
    return [name if name not in names[:i] else f"{name} {names[:i].count(name) + 1}"
            for i, name in enumerate(names)]


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
        points = [part.points(instance) for part in dict.fromkeys(owners)]
        self.assertTrue(same(np.concatenate(points), to_numpy(grid.GetPoints().GetData())))
        ends = np.cumsum([0] + [len(p) for p in points])
        first = dict(zip(dict.fromkeys(owners), ends))
        cells = [cell + first[owner] for part, owner in zip(parts, owners)
                 for cell in part.cells(instance)]
        types = [vtk_type(model, part) for part in parts for _ in part.cells(instance)]
        connectivity = to_numpy(grid.GetCells().GetConnectivityArray())
        self.assertTrue(np.array_equal(np.concatenate(cells), connectivity))
        ends = np.cumsum([0] + [len(cell) for cell in cells])
        self.assertTrue(np.array_equal(ends, to_numpy(grid.GetCells().GetOffsetsArray())))
        self.assertTrue(np.array_equal(types, to_numpy(grid.GetCellTypesArray())))

    def expected_results(self, model, parts, instance, name_of):
        """Values for each part by placement, name, width and type."""
        expected = {}
        for i, part in enumerate(parts):
            for array in part.results:
                placement = part.placement(array)
                self.assertNotEqual(placement, "either", f"{model.name}: {array.name}")
                name = name_of(array)
                if name is not None:
                    key = (placement, name, array.width, array.is_unsigned)
                    expected.setdefault(key, {})[i] = array.values
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
        sizes = {"point": [len(part.points(instance)) if owner is part else 0
                           for part, owner in zip(parts, owners)],
                 "cell": [len(part.cells(instance)) for part in parts]}
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
        for model in models(*SHARED):
            with self.subTest(model.name):
                grid = read(xml.vtkXMLUnstructuredGridReader(), model.export("all.vtu"))
                instance = model.instances[0] if model.instances else None
                self.check_mesh(grid, model, model.parts, instance)
                rest = self.check_arrays(grid, model, model.parts, instance, model.result_name)
                if len(model.parts) > 1:
                    part = to_numpy(rest["cell"].pop("Part"))
                    counts = [len(p.cells(instance)) for p in model.parts]
                    self.assertTrue(np.array_equal(np.repeat(range(len(counts)), counts), part))
                    for i, name in enumerate(part_names(model)):
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
                yield list(groups), name, child

    def check_blocks(self, path, model, instance, name_of):
        leaves = list(self.leaves(read(xml.vtkXMLMultiBlockDataReader(), path)))
        self.assertEqual([(part.groups, part.name) for part in model.parts],
                         [leaf[:2] for leaf in leaves])
        for part, (_, _, grid) in zip(model.parts, leaves):
            self.check_leaf(grid, model, part, instance, name_of)

    def test_vtm(self):
        for model in models("real/mug_run3.ryx", "real/regr01.ryx"):
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

    def test_meshio(self):
        for model in models("real/wavy_run1.ryx"):
            with self.subTest(model.name):
                with contextlib.redirect_stdout(io.StringIO()):
                    mesh = meshio.read(model.export("all.vtu"))
                instance = model.instances[0] if model.instances else None
                owners = dict.fromkeys(point_owners(model.parts, instance))
                points = [part.points(instance) for part in owners]
                self.assertTrue(same(np.concatenate(points), mesh.points))
                kinds = [MESHIO_TYPES[vtk_type(model, part)] for part in model.parts
                         for _ in part.cells(instance)]
                self.assertEqual(kinds, [b.type for b in mesh.cells for _ in b.data])
                for part in model.parts:
                    for array in part.results if len(model.parts) == 1 else ():
                        data = {"point": mesh.point_data, "cell": mesh.cell_data}
                        values = data[part.placement(array)][model.result_name(array)]
                        self.assertTrue(same(array.values, np.squeeze(values)), array.name)


if __name__ == "__main__":
    support.main()
