"""Reads .csv with the module csv and .npz with NumPy."""

import csv
import os
import unittest
import zipfile

import support
from odd import cells_of, models, named_results, odd_model, points_of
from support import np, same, sample

SHARED = ("plate_version_0.5.ryx", "real/exomerge_run1.ryx", "real/regr01.ryx",
          "real/segment_run1.ryx")


class Csv(unittest.TestCase):
    def expected(self, model, placement, chosen, parts):
        """Heading and rows."""
        parts = parts or model.parts
        named = [[(name, array) for name, array in named_results(model, part)
                  if part.placement(array) in (placement, "either") and chosen in name]
                 for part in parts]
        widths = dict.fromkeys((name, array.width) for part in named for name, array in part)
        columns = [name if width == 1 else f"{name} {k + 1}"
                   for name, width in widths for k in range(width)]
        rows = []
        for part, results in zip(parts, named):
            instance = model.instances[0] if model.instances else None
            points, cells = points_of(part, instance), cells_of(part, instance)
            if placement == "cell":
                points = np.array([points[cell].mean(axis=0, dtype=np.float64) for cell in cells
                                   if len(cell)])
            ids = part.mesh({"point": "Node Ids", "cell": "Element IDs"}[placement], instance)
            ids = np.arange(len(points)) + 1 if ids is None else ids
            results = {(name, array.width): array.values for name, array in results}
            for i, point in enumerate(points):
                row = [part.name, int(ids[i]), *point]
                for name, width in widths:
                    values = results.get((name, width))
                    row += [None] * width if values is None else list(np.atleast_1d(values[i]))
                rows.append(row)
        return columns, rows

    def check(self, model, placement, options=(), chosen="", quote=lambda name: name,
              parts=None):
        with open(model.export("a.csv", *options), newline="", encoding="utf-8") as file:
            heading, *lines = csv.reader(file, strict=True)
        columns, rows = self.expected(model, placement, chosen, parts)
        self.assertEqual(["part", "id", "x", "y", "z", *map(quote, columns)], heading)
        self.assertEqual(len(rows), len(lines))
        for row, line in zip(rows, lines):
            self.assertEqual([quote(row[0]), str(row[1])], line[:2])
            for value, text in zip(row[2:], line[2:], strict=True):
                if value is None:
                    self.assertEqual(text, "")
                elif isinstance(value, np.float64):  # coordinate of a centre
                    self.assertAlmostEqual(float(text), value, delta=1e-5 * (1 + abs(value)))
                else:  # the same bits
                    self.assertTrue(np.isnan(value) and text == "nan" or
                                    same(value, type(value)(text)), (value, text))

    def test_points(self):
        for model in support.models(*SHARED[:2]):
            with self.subTest(model.name):
                self.check(model, "point")

    def test_cells(self):
        model = support.models("real/exomerge_run1.ryx")[-1]
        if model.name.startswith("exomerge"):
            self.check(model, "cell", ("--results", "*stress*"), "stress")

    def test_odd_names(self):
        names = {"=1+1": "'=1+1", "@x": "'@x", "x": "x 2"}
        self.check(odd_model(), "point", quote=lambda name: names.get(name, name))
        self.check(odd_model(), "cell", ("--nodes", "Solids*", "--results", "Flow"), "Flow",
                   parts=odd_model().parts[1:2])


class Npz(unittest.TestCase):
    def test_arrays(self):
        for model in models(*SHARED):
            with self.subTest(model.name):
                path = model.export("a.npz")
                with zipfile.ZipFile(path) as archive:
                    self.assertIsNone(archive.testzip())
                with np.load(path) as archive:
                    actual = dict(archive)
                for part in model.parts:
                    self.check_part(model, part, actual)
                self.assertEqual(list(actual), [])

    def check_part(self, model, part, actual):
        folder = "/".join((name.replace("/", "_").replace(":", "_").replace("\\", "\\\\") or "_")
                          for name in [*part.groups, part.name])
        arrays = [(a.base if a.instance is None else f"{a.base} ({a.instance})", a)
                  for a in part.arrays if a.is_mesh] + named_results(model, part)
        if f"{folder}/{arrays[0][0]}" not in actual:  # another part has the same name
            folder += " 2"
        for name, array in arrays:
            name = name.replace("/", "_").replace(":", "_")
            self.assertTrue(same(array.values, actual.pop(f"{folder}/{name}")), name)
        instance = model.instances[0] if model.instances else None
        if cells := cells_of(part, instance):
            self.assertEqual(len(actual.pop(f"{folder}/VTK cell types")), len(cells))
            nodes = actual.pop(f"{folder}/VTK connectivity", np.concatenate(cells))
            self.assertTrue(same(np.sort(np.concatenate(cells)), np.sort(nodes)))
        for parent, name, numbers in model.sets:
            owners = [p for p in model.parts if parent in p.ancestors]
            if part in owners:
                values = actual.pop(f"{folder}/set {name}", None)
                self.assertTrue(part is not owners[0] or values is not None, name)
                self.assertTrue(values is None or same(numbers, values), name)


if __name__ == "__main__":
    support.main()
