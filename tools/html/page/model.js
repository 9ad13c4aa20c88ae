// The model of the manifest: its meshes, and the values of its results.

const kNotFinite = 65535;  // among the 16-bit values of a result
const kLargestValue = 65534;
const kCachedBytes = 256 * 1024 * 1024;

function isBox(box) {
  return Array.isArray(box) && box.flat().length === 6 && box.flat().every(Number.isFinite);
}

// Returns the centre of the boxes and half of the greatest extent, 1 if that is 0. Halves keep
// boxes near the largest number finite.
function frameOf(boxes) {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (const [least, greatest] of boxes) {
    for (let k = 0; k < 3; ++k) {
      low[k] = Math.min(low[k], least[k]);
      high[k] = Math.max(high[k], greatest[k]);
    }
  }
  if (!boxes.length) return {centre: [0, 0, 0], size: 1};
  const size = Math.max(...high.map((h, k) => h / 2 - low[k] / 2));
  return {centre: high.map((h, k) => h / 2 + low[k] / 2), size: size > 0 ? size : 1};
}

// A mesh of a part. Its points are 16-bit numbers in its box. `offset` and `scale` lead to the
// scene, in which the model is from -1 to 1:
//   scene = offset + scale * number / 65535
class Mesh {
  constructor(model, info) {
    this.model = model;
    this.info = info;
    this.steps = info.steps;
    this.isUsable = isBox(info.box) && info.numPoints > 0;
    if (!this.isUsable) return;
    const {centre, size} = model.frame;
    const [low, high] = info.box;
    this.offset = low.map((x, k) => x / size - centre[k] / size);
    this.scale = high.map((x, k) => x / size - low[k] / size);
  }

  // Loads what is drawn: points (4 numbers each; the last is unused), triangles, lines.
  load() {
    this.loading ??= this.loadGeometry();
    return this.loading;
  }

  async loadGeometry() {
    const {points, triangles, lines, numPoints} = this.info;
    const [planes, indices, ends] = await Promise.all([
      decodeBuffer(points, 3),
      triangles ? decodeBuffer(triangles) : new Uint32Array(0),
      lines ? decodeBuffer(lines) : new Uint32Array(0)]);
    if (planes.length !== 3 * numPoints) throw new Error("A mesh has the wrong number of points.");
    if (![...[indices, ends]].every(list => isBelow(list, numPoints))) {
      throw new Error("A triangle or line of the page has points that do not exist.");
    }
    this.points = new Uint16Array(4 * numPoints);
    for (let i = 0; i < numPoints; ++i) {
      this.points[4 * i] = planes[i];
      this.points[4 * i + 1] = planes[numPoints + i];
      this.points[4 * i + 2] = planes[2 * numPoints + i];
    }
    this.triangles = indices;
    this.lines = new Uint32Array(ends);
    this.isLoaded = true;
  }

  // Returns the decoded buffer of a name, null if the mesh has none.
  buffer(name) {
    this.buffers ??= {};
    const buffer = this.info[name];
    return this.buffers[name] ??= buffer ? decodeBuffer(buffer) : Promise.resolve(null);
  }

  // Returns the coordinates of a point, and the distance of two 16-bit steps in each direction.
  position(point) {
    const [low, high] = this.info.box;
    const resolution = low.map((x, k) => (high[k] - x) / 65535);
    return {resolution, at: low.map((x, k) => x + this.points[4 * point + k] * resolution[k])};
  }

  scenePosition(point) {
    return this.offset.map((x, k) => x + this.scale[k] * this.points[4 * point + k] / 65535);
  }
}

function isBelow(indices, limit) {
  let greatest = -1;
  for (let i = 0; i < indices.length; ++i) if (indices[i] > greatest) greatest = indices[i];
  return greatest < limit;
}

class Model {
  constructor(manifest) {
    this.manifest = manifest;
    this.steps = manifest.steps ?? [];
    this.results = manifest.results ?? [];
    this.nodes = manifest.nodes ?? [];
    const parts = manifest.parts ?? [];
    this.frame = frameOf(parts.flatMap(part => part.meshes).filter(mesh => mesh.numPoints > 0)
                             .map(mesh => mesh.box).filter(isBox));
    this.parts = parts.map((info, index) => ({
      index, name: info.name, colour: info.colour, node: info.node, isVisible: true,
      meshes: info.meshes.map(mesh => new Mesh(this, mesh))}));
    this.cache = new Map();  // key of the buffer -> values, least recently used first
    this.cachedBytes = 0;
  }

  // Returns [mesh, its index], or [null, -1] if the part is not there at the step.
  meshAt(part, step) {
    const index = part.meshes.findIndex(
        mesh => mesh.isUsable && (!mesh.steps || mesh.steps.includes(step)));
    return [part.meshes[index] ?? null, index];
  }

  fieldAt(result, part, mesh, step) {
    return this.results[result]?.fields.find(
        field => field.part === part && field.mesh === mesh && (field.step ?? step) === step);
  }

  // Returns true if any part has values of the result at the step.
  hasValues(result, step) {
    return this.results[result].fields.some(field => (field.step ?? step) === step);
  }

  // Equal bytes have one number, and may have several codings.
  async cached(buffer, numComponents = 1) {
    const key = [buffer.data, buffer.coding, numComponents].join();
    const values = this.cache.get(key) ?? await decodeBuffer(buffer, numComponents);
    if (!this.cache.delete(key)) this.cachedBytes += values.byteLength;
    this.cache.set(key, values);
    for (const [oldKey, old] of this.cache) {
      if (this.cachedBytes <= kCachedBytes || oldKey === key) break;
      this.cachedBytes -= old.byteLength;
      this.cache.delete(oldKey);
    }
    return values;
  }

  // Returns the greatest and least value of a component over the fields that `accept` takes, null
  // if there is none.
  rangeOf(result, component, accept = () => true) {
    const ranges = this.results[result].fields.filter(accept)
                       .map(field => fieldRange(field, component)).filter(Boolean);
    if (!ranges.length) return null;
    return [Math.min(...ranges.map(r => r[0])), Math.max(...ranges.map(r => r[1]))];
  }

  // Returns the 16-bit values of one component of a field; they go from the least to the greatest
  // value of fieldRange.
  async quantised(result, field, component) {
    const numComponents = this.results[result].components.length;
    const values = await this.cached(field.values, numComponents);
    const length = values.length / numComponents;
    if (component !== "magnitude") return values.subarray(component * length, (component + 1) * length);
    return magnitudes(values, field, numComponents);
  }

  // Returns {components, resolutions} at a place of a field; the resolutions are null if the values
  // are exact.
  async valuesAt(result, field, index) {
    const numComponents = this.results[result].components.length;
    const buffer = field.exact ?? field.values;
    const values = await this.cached(buffer, numComponents);
    const length = values.length / numComponents;
    const components = [];
    const resolutions = field.exact ? null : [];
    for (let c = 0; c < numComponents; ++c) {
      const value = values[c * length + index];
      if (field.exact) {
        components.push(value);
        continue;
      }
      const range = field.ranges[c];
      const resolution = range ? (range[1] - range[0]) / kLargestValue : 0;
      resolutions.push(resolution);
      components.push(value === kNotFinite || !range ? NaN : range[0] + value * resolution);
    }
    return {components, resolutions};
  }
}

// Returns [least, greatest] of a component, null if no value is finite.
function fieldRange(field, component) {
  const range = component === "magnitude" ? field.magnitudeRange : field.ranges[component];
  return range && Number.isFinite(range[0]) && Number.isFinite(range[1]) ? range : null;
}

function magnitudes(values, field, numComponents) {
  const length = values.length / numComponents;
  const [low, high] = fieldRange(field, "magnitude") ?? [0, 0];
  const scale = high > low ? kLargestValue / (high - low) : 0;
  const ranges = field.ranges.map(range => range ?? [0, 0]);
  const steps = ranges.map(range => (range[1] - range[0]) / kLargestValue);
  const result = new Uint16Array(length);
  for (let i = 0; i < length; ++i) {
    let sum = 0;
    let isFinite = true;
    for (let c = 0; c < numComponents; ++c) {
      const value = values[c * length + i];
      if (value === kNotFinite) isFinite = false;
      const x = ranges[c][0] + value * steps[c];
      sum += x * x;
    }
    const place = Math.round((Math.sqrt(sum) - low) * scale);
    result[i] = isFinite ? Math.min(Math.max(place, 0), kLargestValue) : kNotFinite;
  }
  return result;
}
