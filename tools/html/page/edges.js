// Edges of the surface: those of its cells, and its outline.

const kOutlineCosine = Math.cos(30 * Math.PI / 180);
const kFaceCosine = 0.5;  // two triangles of a cell with a smaller cosine belong to two faces

// Returns the normals of all triangles, of length 1, or 0 for triangles without an area.
function normalsOf(mesh) {
  const {points, triangles, scale} = mesh;
  const normals = new Float32Array(triangles.length);
  for (let t = 0; t < triangles.length; t += 3) {
    const a = 4 * triangles[t], b = 4 * triangles[t + 1], c = 4 * triangles[t + 2];
    const ux = (points[b] - points[a]) * scale[0], vx = (points[c] - points[a]) * scale[0];
    const uy = (points[b + 1] - points[a + 1]) * scale[1];
    const vy = (points[c + 1] - points[a + 1]) * scale[1];
    const uz = (points[b + 2] - points[a + 2]) * scale[2];
    const vz = (points[c + 2] - points[a + 2]) * scale[2];
    const x = uy * vz - uz * vy, y = uz * vx - ux * vz, z = ux * vy - uy * vx;
    const length = Math.sqrt(x * x + y * y + z * z) || 1;
    normals[t] = x / length;
    normals[t + 1] = y / length;
    normals[t + 2] = z / length;
  }
  return normals;
}

// Returns {cells, outline}: the points of edges, two each. An edge between two triangles of a face
// is not among them. The triangles of each pair of points are found in lists, one a point.
function findEdges(mesh, triangleCells) {
  const {triangles, info} = mesh;
  const normals = normalsOf(mesh);
  const starts = new Uint32Array(info.numPoints + 1);
  const count = triangles.length;
  const lower = i => Math.min(triangles[i], triangles[i % 3 === 2 ? i - 2 : i + 1]);
  const upper = i => Math.max(triangles[i], triangles[i % 3 === 2 ? i - 2 : i + 1]);
  for (let i = 0; i < count; ++i) ++starts[lower(i) + 1];
  for (let p = 0; p < info.numPoints; ++p) starts[p + 1] += starts[p];
  const ends = new Uint32Array(count);
  const owners = new Uint32Array(count);
  const filled = starts.slice(0, -1);
  for (let i = 0; i < count; ++i) {
    const place = filled[lower(i)]++;
    ends[place] = upper(i);
    owners[place] = Math.floor(i / 3);
  }
  const cells = [];
  const outline = [];
  for (let p = 0; p < info.numPoints; ++p) {
    for (let i = starts[p]; i < starts[p + 1]; ++i) {
      const end = ends[i];
      if (end === p) continue;
      let partner = -1;
      let uses = 1;
      let isFirst = true;
      for (let j = starts[p]; j < starts[p + 1]; ++j) {
        if (j === i || ends[j] !== end) continue;
        if (j < i) isFirst = false;
        partner = owners[j];
        ++uses;
      }
      if (!isFirst) continue;
      const a = 3 * owners[i], b = 3 * partner;
      const cosine = uses === 2 ? normals[a] * normals[b] + normals[a + 1] * normals[b + 1] +
          normals[a + 2] * normals[b + 2] : 0;
      const isSameCell = uses === 2 && triangleCells && triangleCells[owners[i]] === triangleCells[partner];
      if (uses !== 2 || Math.abs(cosine) < kOutlineCosine) outline.push(p, end);
      if (!isSameCell || cosine < kFaceCosine) cells.push(p, end);
    }
  }
  return {cells: Uint32Array.from(cells), outline: Uint32Array.from(outline)};
}
