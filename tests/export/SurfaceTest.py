"""Reads .glb with a validator of its own, .stl and .ply with VTK and meshio."""

import json
import os
import unittest
import zlib

import support
from odd import cells_of, models, named_results, odd_model, points_of, unpack
from support import np, same, sample

vtk = {name: support.need(f"vtkmodules.vtk{name}", "python3-vtk9")
       for name in ("IOGeometry", "IOPLY", "IOXML", "FiltersCore", "FiltersGeometry")}
to_numpy = support.need("vtkmodules.util.numpy_support", "python3-vtk9").vtk_to_numpy
meshio = support.need("meshio", "python3-meshio")

SHARED = ("real/biplane.ryx", "real/exomerge_run1.ryx", "real/regr01.ryx", "real/zones14_run1.ryx")
FLOAT, UNSIGNED = 5126, 5125
QUADRATIC = range(21, 28)  # cell types


class Glb:
    """A .glb file. Everything that glTF asks for is checked."""

    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        assert unpack("4sII", data) == (b"glTF", 2, len(data)), "header"
        chunks, offset = {}, 12
        while offset < len(data):
            size, kind = unpack("I4s", data, offset)
            assert size % 4 == 0 and kind not in chunks
            chunks[kind] = data[offset + 8:offset + 8 + size]
            offset += 8 + size
        assert offset == len(data) and list(chunks) in ([b"JSON"], [b"JSON", b"BIN\0"])
        self.json = json.loads(chunks[b"JSON"].decode("ascii"))
        self.bytes = chunks.get(b"BIN\0", b"")
        assert self.json["asset"]["version"] == "2.0"
        assert [b["byteLength"] for b in self.json.get("buffers", [])] in ([], [len(self.bytes)])
        self.check_views()
        self.check_nodes()

    def check_views(self):
        end = 0  # views lie one after another
        for view in self.json.get("bufferViews", []):
            assert view["buffer"] == 0 and view["byteLength"] > 0 and view["byteOffset"] >= end
            end = view["byteOffset"] + view["byteLength"]
            assert view["byteOffset"] % 4 == 0 and end <= len(self.bytes)
        assert all(value not in ([], {}) for value in self.json.values()), "an empty member"

    def check_nodes(self):
        nodes = self.json["nodes"]
        roots = self.json["scenes"][self.json["scene"]]["nodes"]
        children = [child for node in nodes for child in node.get("children", [])]
        assert sorted(roots + children) == list(range(len(nodes))), "a node has two parents or none"

    def accessor(self, number, kind, width, target):
        accessor = self.json["accessors"][number]
        view = self.json["bufferViews"][accessor["bufferView"]]
        assert (accessor["componentType"], view["target"]) == (kind, target)
        assert accessor["type"] == {1: "SCALAR", 2: "VEC2", 3: "VEC3"}[width]
        assert accessor["count"] * width * 4 == view["byteLength"] and accessor["count"] > 0
        values = np.frombuffer(self.bytes, np.float32 if kind == FLOAT else np.uint32,
                               accessor["count"] * width, view["byteOffset"]).reshape(-1, width)
        if "min" in accessor:
            assert same(np.array(accessor["min"], values.dtype), values.min(axis=0))
            assert same(np.array(accessor["max"], values.dtype), values.max(axis=0))
        return values

    def primitives(self, node):
        """(mode, corners of shapes, places in the texture or None) of each primitive of a node."""
        if "mesh" not in node:
            return
        for primitive in self.json["meshes"][node["mesh"]]["primitives"]:
            positions = self.accessor(primitive["attributes"]["POSITION"], FLOAT, 3, 34962)
            assert "min" in self.json["accessors"][primitive["attributes"]["POSITION"]]
            assert np.isfinite(positions).all()
            indices = self.accessor(primitive["indices"], UNSIGNED, 1, 34963).ravel()
            assert set(indices) == set(range(len(positions))), "indices without or unused vertices"
            shapes = indices.reshape(-1, {4: 3, 1: 2}[primitive["mode"]])
            places = primitive["attributes"].get("TEXCOORD_0")
            material = self.json["materials"][primitive["material"]]
            assert ("baseColorTexture" in material["pbrMetallicRoughness"]) == (places is not None)
            if places is not None:
                assert material["extensions"] == {"KHR_materials_unlit": {}}
                places = self.accessor(places, FLOAT, 2, 34962)
                assert len(places) == len(positions) and (places > 0).all() and (places < 1).all()
                places = places[shapes, 0]
            yield primitive["mode"], positions[shapes], places

    def parts(self):
        """(names of groups, name, triangles, places) of each node that is not a group."""
        def walk(number, groups):
            node = self.json["nodes"][number]
            if "children" in node:
                for child in node["children"]:
                    yield from walk(child, groups + [node["name"]])
                return
            found = [p for p in self.primitives(node) if p[0] == 4]
            triangles, places = found[0][1:] if found else (np.empty((0, 3, 3), np.float32), None)
            yield groups, node["name"], triangles, places
        for root in self.json["scenes"][0]["nodes"]:
            yield from walk(root, [])

    def texture(self):
        """Pixels of the palette, decoded from the PNG file."""
        image = self.json["images"][self.json["textures"][0]["source"]]
        view = self.json["bufferViews"][image["bufferView"]]
        png = self.bytes[view["byteOffset"]:view["byteOffset"] + view["byteLength"]]
        assert png[:8] == b"\x89PNG\r\n\x1a\n" and image["mimeType"] == "image/png"
        chunks, offset = {}, 8
        while offset < len(png):
            size = int.from_bytes(png[offset:offset + 4], "big")
            kind, data = png[offset + 4:offset + 8], png[offset + 8:offset + 8 + size]
            assert zlib.crc32(kind + data) == int.from_bytes(png[offset + 8 + size:][:4], "big")
            chunks[kind] = data
            offset += 12 + size
        width, height = (int.from_bytes(chunks[b"IHDR"][i:i + 4], "big") for i in (0, 4))
        rows = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), np.uint8).reshape(height, -1)
        assert chunks[b"IHDR"][8:] == bytes([8, 2, 0, 0, 0]) and not rows[:, 0].any()
        return rows[:, 1:].reshape(height, width, 3)


def read(reader, path):
    reader.SetFileName(path)
    reader.Update()
    return reader.GetOutput()


def triangles_of(surface):
    """Corners of the triangles of a vtkPolyData."""
    points = to_numpy(surface.GetPoints().GetData()) if surface.GetPoints() else np.empty((0, 3))
    return points[to_numpy(surface.GetPolys().GetConnectivityArray()).reshape(-1, 3)]


def read_ply(path):
    """Triangles of each part, by the part numbers of the points."""
    with open(path, "rb") as file:
        data = file.read()
    header, body = data.split(b"end_header\n", 1)
    num_points, num_faces = (int(line.split()[2]) for line in header.splitlines()
                             if line.startswith(b"element"))
    points = np.frombuffer(body, [("place", "<f4", 3), ("part", "<i4")], num_points)
    faces = np.frombuffer(body, [("n", "u1"), ("corners", "<i4", 3)], num_faces, 16 * num_points)
    assert len(body) == 16 * num_points + 13 * num_faces and (faces["n"] == 3).all()
    names = [line.split(b": ", 1)[1] for line in header.splitlines() if b"comment part" in line]
    parts = points["part"][faces["corners"]]
    assert (parts[:, :1] == parts).all()
    return [points["place"][faces["corners"][parts[:, 0] == i]] for i in range(len(names))]


def measure(triangles):
    """Area and volume."""
    a, b, c = triangles.astype(np.float64).transpose(1, 0, 2)
    normals = np.cross(b - a, c - a)
    return np.linalg.norm(normals, axis=1).sum() / 2, (normals * a).sum() / 6


class Surface(unittest.TestCase):
    def check_part(self, grid, triangles):
        """Compares with the surface that VTK finds."""
        surface = vtk["FiltersGeometry"].vtkDataSetSurfaceFilter()
        surface.SetInputData(grid)
        flat = vtk["FiltersCore"].vtkTriangleFilter()
        flat.PassLinesOff()
        flat.PassVertsOff()
        flat.SetInputConnection(surface.GetOutputPort())
        flat.Update()
        expected = triangles_of(flat.GetOutput())
        expected = expected[np.isfinite(expected).all(axis=(1, 2))]
        types = set(to_numpy(grid.GetCellTypesArray())) if grid.GetNumberOfCells() else set()
        is_linear = not types & set(QUADRATIC)
        if is_linear:
            self.assertEqual(len(expected), len(triangles))
        self.assertEqual({p.tobytes() for p in expected.reshape(-1, 3)},
                         {p.tobytes() for p in triangles.reshape(-1, 3)})
        area, volume = measure(triangles)
        expected_area, expected_volume = measure(expected)
        tolerance = 0.01 if is_linear else 0.05  # VTK cuts quadratic faces in another way
        self.assertAlmostEqual(area, expected_area, delta=tolerance * expected_area)
        if types and types <= {10, 12, 13, 14}:
            self.assertAlmostEqual(volume / abs(expected_volume), 1, 2)

    def test_surface(self):
        for model in models(*SHARED):
            with self.subTest(model.name):
                parts = read_ply(model.export("a.ply"))
                grids = model.export("a.vtm")
                folder = os.path.splitext(grids)[0]
                names = sorted(os.listdir(folder), key=lambda name: int(name.split("_")[0]))
                for name, triangles in zip(names, parts, strict=True):
                    reader = vtk["IOXML"].vtkXMLUnstructuredGridReader()
                    self.check_part(read(reader, os.path.join(folder, name)), triangles)

    def test_same_in_all_formats(self):
        for model in models(*SHARED):
            with self.subTest(model.name):
                ply, stl = model.export("a.ply"), model.export("a.stl")
                parts = read_ply(ply)
                everything = np.concatenate(parts)
                reader = vtk["IOGeometry"].vtkSTLReader()
                reader.MergingOff()
                self.assertTrue(same(everything, triangles_of(read(reader, stl))))
                self.assertTrue(same(everything, triangles_of(
                    read(vtk["IOPLY"].vtkPLYReader(), ply))))
                for path in (ply, stl):
                    mesh = meshio.read(path)
                    self.assertTrue(same(everything,
                                         mesh.points[mesh.cells_dict["triangle"]].astype("f4")))
                glb = list(Glb(model.export("a.glb")).parts())
                self.assertEqual([(part.groups, part.name) for part in model.parts],
                                 [leaf[:2] for leaf in glb])
                for triangles, leaf in zip(parts, glb):
                    self.assertTrue(same(triangles, leaf[2]))

    def check_colours(self, model, name, options=(), scalar=lambda v: v):
        """Compares the places of all corners with the values at their points, or in their cells."""
        glb = Glb(model.export("a.glb", "--result", name, *options))
        values = {}  # by part, then by coordinates: possible values
        everything = []
        for part in model.parts:
            array = dict(named_results(model, part)).get(name)
            if array is None:
                continue
            instance = model.instances[0] if model.instances else None
            points, cells = points_of(part, instance), cells_of(part, instance)
            shown = scalar(array.values.astype(np.float64).reshape(-1, array.width)).ravel()
            everything.append(shown)
            known = values[part.id] = {}
            if len(shown) == len(points):
                for point, value in zip(points, shown):
                    known.setdefault(point.tobytes(), set()).add(value)
            else:
                for cell, value in zip(cells, shown):
                    for point in points[cell]:
                        known.setdefault(point.tobytes(), set()).add(value)
        finite = np.concatenate(everything)
        finite = finite[np.isfinite(finite)]
        least, span = finite.min(), np.ptp(finite)
        span = span if span > 5e-7 * np.abs(finite).max() else 0
        for part, (_, _, triangles, places) in zip(model.parts, glb.parts(), strict=True):
            self.assertEqual(places is not None, part.id in values and len(triangles) > 0)
            if places is None:
                continue
            for corners, at in zip(triangles, places):
                sets = [values[part.id][corner.tobytes()] for corner in corners]
                if not all(np.isfinite(list(s)).all() for s in sets):
                    self.assertTrue(np.allclose(at, 256.5 / 257), "grey if a corner has no value")
                    continue
                for possible, place in zip(sets, at):
                    shares = [(value - least) / span if span else 0.5 for value in possible]
                    distances = [abs(place * 257 - 0.5 - 255 * share) for share in shares]
                    self.assertLess(min(distances), 1e-3)
        return glb

    def test_colours(self):
        glb = self.check_colours(sample("plate"), "Stress (LC2)")
        texture = glb.texture()
        self.assertEqual(texture.shape, (1, 257, 3))
        shades = ((texture[0, :256] / 255 + 0.055) / 1.055) ** 2.4
        luminance = shades @ [0.2126, 0.7152, 0.0722]
        self.assertGreater(np.diff(luminance).min(), -0.002)
        self.assertGreater(len(np.unique(texture[0], axis=0)), 250)
        vector = lambda values: np.linalg.norm(values, axis=1)
        self.check_colours(sample("plate"), "Displacement (LC1)", scalar=vector)
        self.check_colours(odd_model(), "Flow", ("--component", "y"), lambda values: values[:, 1])
        self.check_colours(odd_model(), "geo")
        self.check_colours(odd_model(), "Temperature")


if __name__ == "__main__":
    support.main()
