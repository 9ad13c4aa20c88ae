"""Models for the tests of several formats, among them one that other programs stumble over."""

import os
import struct

from support import FOLDER, np, open_model, run
from support import models as usual_models


def odd_model():
    path = os.path.join(FOLDER, "odd.ryx")
    if not os.path.exists(path):
        run(os.environ["WRITE_ODD_MODEL"], path)
    return open_model(path)


def models(*shared):
    return usual_models(*shared) + [odd_model()]


def cells_of(part, instance):
    """List of the points of each cell; also for a part without cells."""
    lengths = part.mesh("Polylength", instance)
    return part.cells(instance) if lengths is not None and len(lengths) else []


def points_of(part, instance):
    """Coordinates with three components."""
    points = part.points(instance)
    return np.pad(points, ((0, 0), (0, 3 - points.shape[1])))


def unique(names):
    """The second "a" becomes "a 2", as in exported files."""
    result = []
    for name in names:
        numbered = (f"{name} {n}" for n in range(2, 1000))
        result.append(next(n for n in [name, *numbered] if n not in result))
    return result


def named_results(model, part):
    """(name, array) of each result, by the names of files that hold all steps."""
    names = unique(model.result_name(array) for array in part.results)
    return list(zip(names, part.results))


def unpack(layout, data, offset=0):
    return struct.unpack_from("<" + layout, data, offset)
