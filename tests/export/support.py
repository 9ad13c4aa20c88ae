"""Shared by the tests that read exported files with other libraries.

The expected values come from `ryx ls --json` and `ryx dump`, which do not use the export code.
Run a test by hand: python3 VtkTest.py PATH/TO/ryx PATH/TO/RyxMerge [unittest options]
"""

import atexit
import functools
import importlib
import io
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77  # SKIP_RETURN_CODE in CMakeLists.txt
SEPARATOR = "\x1e"  # between the base name of a result and its instance
MESH_NAMES = ("Coordinates", "Connectivity", "Polylength", "Node Ids", "Element IDs",
              "Part Elements")


def need(module, package):
    """Returns a module. Ends the program as skipped if it is not installed."""
    try:
        return importlib.import_module(module)
    except ImportError as error:
        print(f"Skipped: {error}. Install the Debian package {package} to run this test.")
        sys.exit(SKIPPED)


np = need("numpy", "python3-numpy")

if len(sys.argv) < 3:
    sys.exit(__doc__)
RYX, RYXMERGE = map(os.path.abspath, sys.argv[1:3])
del sys.argv[1:3]

FOLDER = tempfile.mkdtemp(prefix="ryx-export-")
atexit.register(shutil.rmtree, FOLDER, ignore_errors=True)


def run(*command):
    """Runs a program and returns its output. Raises AssertionError if it fails."""
    result = subprocess.run(command, capture_output=True, cwd=FOLDER, check=False,
                            env={**os.environ, "PELORIN_TEMP_PATH": FOLDER})
    if result.returncode != 0:
        raise AssertionError(f"{command} returned {result.returncode}: {result.stderr.decode()}")
    return result.stdout


class Array:
    """A result of a geometry, from its line of `ryx ls`."""

    def __init__(self, model, node, position, line):
        self.model, self.place, self.link = model, (node, position), line.get("link")
        self.name, self.count = line["name"], line["count"]
        self.width = max(line["width"], 1)
        self.is_unsigned = line.get("type") == "u32"
        base, separator, instance = self.name.rpartition(SEPARATOR)
        self.base = base.removesuffix(" ") if separator else self.name
        self.instance = instance if separator else None
        self.is_mesh = self.base in MESH_NAMES

    @property
    def owner(self):
        """The array that has the values: this one, or the one that its link leads to."""
        if not self.link:
            return self
        return self.model.arrays[self.link["node"], self.link["result"]].owner

    @functools.cached_property
    def values(self):
        """The values as a NumPy array; a row for each item if the width is above 1."""
        if self.link:
            return self.owner.values
        node, position = map(str, self.place)
        values = np.load(io.BytesIO(
            run(RYX, "dump", self.model.path, node, position, "--format", "npy")))
        return values.ravel() if self.width == 1 else values


class Part:
    """A geometry with coordinates."""

    def __init__(self, model, node, groups, type_name):
        self.name, self.id = node["name"], node["id"]
        self.groups = groups  # names of the groups above it, the topmost first
        self.type_name = type_name  # attribute "type" of the nearest group, or None
        self.arrays = [Array(model, self.id, i, line) for i, line in enumerate(node["results"])]
        self.results = [array for array in self.arrays if not array.is_mesh]

    def mesh_array(self, base, instance=None):
        """The mesh array of that name, of this instance or of all; None if missing."""
        found = [a for a in self.arrays if a.base == base and a.instance == instance]
        found += [a for a in self.arrays if a.base == base and a.instance is None]
        return found[0] if found else None

    def mesh(self, base, instance=None):
        """The values of that array; None if it is missing."""
        array = self.mesh_array(base, instance)
        return None if array is None else array.values

    def points(self, instance=None):
        return self.mesh("Coordinates", instance)

    def cells(self, instance=None):
        """List of the points of each cell."""
        ends = np.cumsum(self.mesh("Polylength", instance))
        return np.split(self.mesh("Connectivity", instance), ends[:-1])

    def placement(self, array):
        """"point", "cell" or "field" by the number of items; "either" if both counts fit."""
        counts = {len(self.points(array.instance)): "point"}
        num_cells = len(self.mesh("Polylength", array.instance))
        if num_cells in counts:
            counts[num_cells] = "either"
        return counts.get(array.count, "cell" if array.count == num_cells else "field")


class Model:
    """A model file."""

    def __init__(self, path):
        self.path = path
        self.name = os.path.basename(path)
        self.parts = []
        self.arrays = {}  # by id of the geometry and position
        self.set_nodes = []  # (id of the node, id of its parent)
        above = []  # nodes above the current one, by depth
        listing = json.loads(run(RYX, "ls", "--json", path))
        for node in listing["files"][0]["nodes"]:
            if "type" not in node:
                continue
            del above[node["depth"]:]
            groups = [n for n in above if n["type"] == "Group"]
            types = [n["attributes"]["type"]["value"] for n in groups if "type" in n["attributes"]]
            if node["type"] == "Geometry":
                part = Part(self, node, [n["name"] for n in groups], types[-1] if types else None)
                part.ancestors = [n["id"] for n in above]
                self.arrays.update((array.place, array) for array in part.arrays)
                if any(array.base == "Coordinates" for array in part.arrays):
                    self.parts.append(part)
            elif node["type"] == "NodeSets":
                self.set_nodes.append((node["id"], node["parent"]))
            above.append(node)

    @functools.cached_property
    def instances(self):
        """The instance parts of names, in order."""
        names = [a.instance for part in self.parts for a in part.arrays if a.instance is not None]
        return list(dict.fromkeys(names))

    def result_name(self, array):
        """The name of a result in a file that holds all steps."""
        if array.instance is None or len(self.instances) < 2:
            return array.base
        return f"{array.base} ({array.instance})"

    @functools.cached_property
    def sets(self):
        """(id of the parent, name, numbers) of each node set."""
        found = []
        for node, parent in self.set_nodes:
            dump = json.loads(
                run(RYX, "dump", self.path, "--node-set", str(node), "--format", "json"))
            found += [(parent, s["name"], np.array(s["values"], np.uint32)) for s in dump["sets"]]
        return found

    def export(self, output, *options):
        """Exports into the folder of the test and returns the path."""
        path = os.path.join(tempfile.mkdtemp(dir=FOLDER), output)
        run(RYX, "export", self.path, "-o", path, *options)
        return path


@functools.cache
def open_model(path):
    return Model(path)


def sample(name):
    """A sample model: plate, assembly, steps (3 steps), solids (2 load cases)."""
    samples = os.path.join(FOLDER, "samples")
    if not os.path.exists(samples):
        run(RYX, "sample", samples)
        run(RYX, "sample", f"{samples}/solids", "--size", "4", "--parts", "2", "--cases", "2",
            "--steps", "1")
        run(RYXMERGE, "--merge-as-instances", "--suffix-file-instance",
            *(f"{samples}/steps/run{i}.ryx" for i in (1, 2, 3)), f"{samples}/steps.ryx")
    paths = {"solids": f"{samples}/solids/run1.ryx"}
    return open_model(paths.get(name, f"{samples}/{name}.ryx"))


def models(*shared):
    """All sample models, and these of the folder in RYXMERGE_SHARED_MODELS, if there is one."""
    folder = os.environ.get("RYXMERGE_SHARED_MODELS")
    found = [sample(name) for name in ("plate", "assembly", "steps", "solids")]
    if folder:
        found += [open_model(os.path.join(folder, path)) for path in shared]
    return found


def same(expected, actual):
    """Returns True if two arrays have the same shape and the same bits, so that NaN equals NaN."""
    expected, actual = np.ascontiguousarray(expected), np.ascontiguousarray(actual)
    return (expected.shape == actual.shape and expected.dtype == actual.dtype
            and expected.tobytes() == actual.tobytes())


def main():
    unittest.main(verbosity=2)
