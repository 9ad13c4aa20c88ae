// Finds what is at a pixel. The view is parallel, so the points are projected once and the search
// is in two dimensions. 332,000 triangles take some milliseconds.

const kReach = 7;  // pixels from a line or a point

function projectPoints(mesh, camera) {
  const places = new Float32Array(3 * mesh.info.numPoints);
  const origin = camera.project(mesh.offset);
  const unit = axis => mesh.scale[axis] / 65535 / camera.pixelSize;
  const x = [0, 1, 2].map(k => camera.right[k] * unit(k));
  const y = [0, 1, 2].map(k => -camera.up[k] * unit(k));
  const z = [0, 1, 2].map(k => camera.back[k] * mesh.scale[k] / 65535);
  for (let i = 0, from = 0, to = 0; i < mesh.info.numPoints; ++i, from += 4, to += 3) {
    const a = mesh.points[from], b = mesh.points[from + 1], c = mesh.points[from + 2];
    places[to] = origin[0] + x[0] * a + x[1] * b + x[2] * c;
    places[to + 1] = origin[1] + y[0] * a + y[1] * b + y[2] * c;
    places[to + 2] = origin[2] + z[0] * a + z[1] * b + z[2] * c;
  }
  return places;
}

// Returns {triangle, depth} of the front triangle at a pixel, null if there is none.
function pickTriangle(mesh, places, x, y) {
  const {triangles} = mesh;
  let best = null;
  for (let t = 0; t < triangles.length; t += 3) {
    const a = 3 * triangles[t], b = 3 * triangles[t + 1], c = 3 * triangles[t + 2];
    const ax = places[a] - x, bx = places[b] - x, cx = places[c] - x;
    if ((ax < 0 && bx < 0 && cx < 0) || (ax > 0 && bx > 0 && cx > 0)) continue;
    const ay = places[a + 1] - y, by = places[b + 1] - y, cy = places[c + 1] - y;
    const u = bx * cy - by * cx, v = cx * ay - cy * ax, w = ax * by - ay * bx;
    if ((u < 0 || v < 0 || w < 0) && (u > 0 || v > 0 || w > 0)) continue;
    const area = u + v + w;
    if (area === 0) continue;
    const depth = (u * places[a + 2] + v * places[b + 2] + w * places[c + 2]) / area;
    if (!best || depth > best.depth) best = {triangle: t / 3, depth};
  }
  return best;
}

// Returns {line, depth, distance} of the nearest line within reach, null if there is none.
function pickLine(mesh, places, x, y) {
  let best = null;
  for (let i = 0; i < mesh.lines.length; i += 2) {
    const a = 3 * mesh.lines[i], b = 3 * mesh.lines[i + 1];
    const dx = places[b] - places[a], dy = places[b + 1] - places[a + 1];
    const along = ((x - places[a]) * dx + (y - places[a + 1]) * dy) / (dx * dx + dy * dy || 1);
    const t = Math.min(Math.max(along, 0), 1);
    const distance = Math.hypot(places[a] + t * dx - x, places[a + 1] + t * dy - y);
    const depth = places[a + 2] + t * (places[b + 2] - places[a + 2]);
    if (distance <= kReach && (!best || distance < best.distance)) best = {line: i / 2, depth, distance};
  }
  return best;
}

function nearestPoint(points, places, x, y) {
  let best = null;
  for (const point of points) {
    const distance = Math.hypot(places[3 * point] - x, places[3 * point + 1] - y);
    if (!best || distance < best.distance) best = {point, distance, depth: places[3 * point + 2]};
  }
  return best;
}

// Returns {part, mesh, meshIndex, point, triangle or line, depth} in front at a pixel, or null.
// `items` are {part, mesh, meshIndex}. `point` is the nearest point of the mesh.
function pick(items, camera, x, y) {
  let best = null;
  const offer = (item, found, ends, places) => {
    if (!found || (best && best.depth >= found.depth)) return;
    const {point} = ends ? nearestPoint(ends, places, x, y) : found;
    best = {...item, point, triangle: found.triangle, line: found.line, depth: found.depth};
  };
  for (const item of items) {
    const {mesh} = item;
    const places = projectPoints(mesh, camera);
    const found = pickTriangle(mesh, places, x, y);
    offer(item, found, found && mesh.triangles.subarray(3 * found.triangle, 3 * found.triangle + 3),
          places);
    const line = pickLine(mesh, places, x, y);
    offer(item, line, line && mesh.lines.subarray(2 * line.line, 2 * line.line + 2), places);
    if (!mesh.triangles.length && !mesh.lines.length) {
      const nearest = nearestPoint(Array.from({length: mesh.info.numPoints}, (_, i) => i), places, x, y);
      if (nearest && nearest.distance <= kReach) offer(item, nearest, null, places);
    }
  }
  return best;
}
