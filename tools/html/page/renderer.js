// Draws meshes with WebGL2. It keeps the buffers of each mesh on the GPU; after a loss of the
// context they are made again.

const kVertexShader = `#version 300 es
layout(location = 0) in vec3 aPlace;   // 0 to 1 in the box of the mesh
layout(location = 1) in float aValue;  // 0 to 65534; 65535 is not finite
uniform vec3 uOffset;                  // of the mesh, relative to the target of the camera
uniform vec3 uScale;
uniform mat3 uRotation;
uniform vec3 uZoom;
uniform vec2 uRange;                   // place in the palette of the value 0, and of a step
out vec3 vPlace;
out vec2 vValue;
void main() {
  vec3 scene = uRotation * (uOffset + uScale * aPlace);
  vPlace = scene * uZoom.y;
  gl_Position = vec4(scene.xy * uZoom.xy, -scene.z * uZoom.z, 1.0);
  gl_PointSize = 6.0;
  vValue = vec2(uRange.x + uRange.y * aValue, aValue > 65534.5 ? 1.0 : 0.0);
}`;

const kFragmentShader = `#version 300 es
precision highp float;
uniform sampler2D uPalette;
uniform vec4 uColour;      // used if uMode is 0
uniform vec3 uNoValue;
uniform int uMode;         // 0: uColour, 1: value
uniform float uShade;      // 0: no shading
in vec3 vPlace;
in vec2 vValue;
out vec4 colour;
void main() {
  vec4 base = uColour;
  if (uMode == 1) {
    float place = (clamp(vValue.x, 0.0, 1.0) * 255.0 + 0.5) / 256.0;
    base = vec4(vValue.y > 0.0 ? uNoValue : texture(uPalette, vec2(place, 0.5)).rgb, 1.0);
  }
  vec3 normal = cross(dFdx(vPlace), dFdy(vPlace));
  float size = length(normal);
  float light = size > 0.0 ? abs(normal.z) / size : 1.0;
  colour = vec4(base.rgb * (1.0 - uShade * (1.0 - light)), base.a);
}`;

class Renderer {
  // Raises an error if the browser has no WebGL2. Calls onRestored when a lost context is back.
  constructor(canvas, onLost, onRestored) {
    this.canvas = canvas;
    this.gl = canvas.getContext("webgl2", {alpha: true, antialias: true});
    if (!this.gl) throw new Error("This browser does not offer WebGL2.");
    canvas.addEventListener("webglcontextlost", event => {
      event.preventDefault();
      onLost();
    });
    canvas.addEventListener("webglcontextrestored", () => {
      this.prepare();
      onRestored();
    });
    this.prepare();
  }

  prepare() {
    const gl = this.gl;
    this.buffers = new Map();  // mesh -> what the GPU has of it
    this.program = gl.createProgram();
    for (const [type, source] of [[gl.VERTEX_SHADER, kVertexShader],
                                  [gl.FRAGMENT_SHADER, kFragmentShader]]) {
      const shader = gl.createShader(type);
      gl.shaderSource(shader, source);
      gl.compileShader(shader);
      gl.attachShader(this.program, shader);
    }
    gl.linkProgram(this.program);
    if (!gl.getProgramParameter(this.program, gl.LINK_STATUS) && !gl.isContextLost()) {
      throw new Error(`WebGL2 cannot compile the shaders: ${gl.getProgramInfoLog(this.program)}`);
    }
    this.uniforms = {};
    for (const name of ["uOffset", "uScale", "uRotation", "uZoom", "uRange", "uPalette", "uColour",
                        "uNoValue", "uMode", "uShade"]) {
      this.uniforms[name] = gl.getUniformLocation(this.program, name);
    }
    this.palettes = [false, true].map(isSigned => {
      const texture = gl.createTexture();
      gl.bindTexture(gl.TEXTURE_2D, texture);
      gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA, kNumColours, 1, 0, gl.RGBA, gl.UNSIGNED_BYTE,
                    makePalette(isSigned));
      gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.LINEAR);
      gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_WRAP_S, gl.CLAMP_TO_EDGE);
      return texture;
    });
    gl.enable(gl.DEPTH_TEST);
    gl.depthFunc(gl.LEQUAL);
    gl.blendFuncSeparate(gl.SRC_ALPHA, gl.ONE_MINUS_SRC_ALPHA, gl.ONE,
                         gl.ONE_MINUS_SRC_ALPHA);
    gl.polygonOffset(1, 1);
  }

  upload(target, data) {
    const buffer = this.gl.createBuffer();
    this.gl.bindBuffer(target, buffer);
    this.gl.bufferData(target, data, this.gl.STATIC_DRAW);
    return buffer;
  }

  // Makes a vertex array of points (4 numbers of 16 bits each) and a place for values.
  makeVertices(points) {
    const gl = this.gl;
    const vertices = {array: gl.createVertexArray(), values: gl.createBuffer()};
    gl.bindVertexArray(vertices.array);
    this.upload(gl.ARRAY_BUFFER, points);
    gl.enableVertexAttribArray(0);
    gl.vertexAttribPointer(0, 3, gl.UNSIGNED_SHORT, true, 8, 0);
    return vertices;
  }

  indexBuffer(indices) {
    return indices.length ? this.upload(this.gl.ELEMENT_ARRAY_BUFFER, indices) : null;
  }

  buffersOf(mesh) {
    let buffers = this.buffers.get(mesh);
    if (!buffers) {
      const vertices = this.makeVertices(mesh.points);
      buffers = {vertices, triangles: this.indexBuffer(mesh.triangles),
                 lines: this.indexBuffer(mesh.lines), edges: {}};
      this.buffers.set(mesh, buffers);
    }
    return buffers;
  }

  // Values of cells: each triangle and each line has its own points.
  cellVerticesOf(mesh) {
    const buffers = this.buffersOf(mesh);
    if (buffers.cellVertices) return buffers.cellVertices;
    const corners = [mesh.triangles, mesh.lines];
    const points = new Uint16Array(4 * (corners[0].length + corners[1].length));
    let at = 0;
    for (const list of corners) {
      for (let i = 0; i < list.length; ++i, at += 4) {
        const from = 4 * list[i];
        points[at] = mesh.points[from];
        points[at + 1] = mesh.points[from + 1];
        points[at + 2] = mesh.points[from + 2];
      }
    }
    return buffers.cellVertices = this.makeVertices(points);
  }

  // Sets the values of a mesh: {placement, values, cells} (cells: [of triangles, of lines]), null
  // for none. An equal object is not uploaded again.
  setValues(mesh, field) {
    const gl = this.gl;
    const buffers = this.buffersOf(mesh);
    if (buffers.field === field) return;
    buffers.field = field;
    if (!field) return;
    const isCell = field.placement === "cell";
    const vertices = isCell ? this.cellVerticesOf(mesh) : buffers.vertices;
    gl.bindVertexArray(vertices.array);
    gl.bindBuffer(gl.ARRAY_BUFFER, vertices.values);
    gl.bufferData(gl.ARRAY_BUFFER, isCell ? spreadCells(mesh, field) : field.values, gl.STATIC_DRAW);
    gl.enableVertexAttribArray(1);
    gl.vertexAttribPointer(1, 1, gl.UNSIGNED_SHORT, false, 0, 0);
  }

  edgesOf(mesh, kind) {
    const buffers = this.buffersOf(mesh);
    if (!(kind in buffers.edges)) {
      this.gl.bindVertexArray(buffers.vertices.array);
      buffers.edges[kind] = this.indexBuffer(mesh.edges[kind]);
    }
    return buffers.edges[kind];
  }

  resize(ratio) {
    const width = Math.max(1, Math.round(this.canvas.clientWidth * ratio));
    const height = Math.max(1, Math.round(this.canvas.clientHeight * ratio));
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
    }
    this.gl.viewport(0, 0, width, height);
  }

  // Draws items {mesh, colour, field, range}. `range` is the least and greatest value of the field;
  // `shown` those of the palette. `isSigned` chooses the palette around 0. `edges` is
  // "none", "outline" or "cells".
  draw(items, camera, {shown, isSigned, edges}) {
    const gl = this.gl;
    const u = this.uniforms;
    if (gl.isContextLost()) return;
    this.resize(Math.min(window.devicePixelRatio || 1, 2));
    gl.clearColor(0, 0, 0, 0);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    gl.useProgram(this.program);
    gl.bindTexture(gl.TEXTURE_2D, this.palettes[isSigned ? 1 : 0]);
    const {right, up, back, target} = camera;
    gl.uniformMatrix3fv(u.uRotation, false, [0, 1, 2].flatMap(k => [right[k], up[k], back[k]]));
    const depth = 1 / (1.05 * (Math.hypot(...target) + Math.sqrt(3)));
    gl.uniform3f(u.uZoom, camera.height / camera.width / camera.halfHeight, 1 / camera.halfHeight,
                 depth);
    gl.uniform3fv(u.uNoValue, kNoValueColour.map(c => c / 255));
    for (const item of items) {
      gl.uniform3fv(u.uOffset, item.mesh.offset.map((x, k) => x - target[k]));
      gl.uniform3fv(u.uScale, item.mesh.scale);
      this.setValues(item.mesh, item.field);
      this.drawSurface(item, shown);
      if (edges !== "none" && item.mesh.edges) this.drawEdges(item.mesh, edges);
    }
  }

  drawSurface({mesh, colour, field, range}, shown) {
    const gl = this.gl;
    const u = this.uniforms;
    const buffers = this.buffersOf(mesh);
    const isCell = field?.placement === "cell";
    gl.bindVertexArray((isCell ? buffers.cellVertices : buffers.vertices).array);
    gl.uniform1i(u.uMode, field ? 1 : 0);
    gl.uniform4fv(u.uColour, [...colour.map(c => c / 255), 1]);
    if (field) gl.uniform2fv(u.uRange, placeOfValues(range, shown));
    gl.uniform1f(u.uShade, field ? 0.4 : 0.65);
    gl.enable(gl.POLYGON_OFFSET_FILL);
    const numCorners = mesh.triangles.length;
    if (isCell) {
      gl.drawArrays(gl.TRIANGLES, 0, numCorners);
    } else if (numCorners) {
      gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffers.triangles);
      gl.drawElements(gl.TRIANGLES, numCorners, gl.UNSIGNED_INT, 0);
    }
    gl.disable(gl.POLYGON_OFFSET_FILL);
    gl.uniform1f(u.uShade, 0);
    if (isCell) {
      gl.drawArrays(gl.LINES, numCorners, mesh.lines.length);
    } else if (mesh.lines.length) {
      gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffers.lines);
      gl.drawElements(gl.LINES, mesh.lines.length, gl.UNSIGNED_INT, 0);
    } else if (!numCorners) {
      gl.drawArrays(gl.POINTS, 0, mesh.info.numPoints);
    }
  }

  drawEdges(mesh, kind) {
    const gl = this.gl;
    const buffer = this.edgesOf(mesh, kind);
    if (!buffer) return;
    gl.bindVertexArray(this.buffersOf(mesh).vertices.array);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffer);
    gl.uniform1i(this.uniforms.uMode, 0);
    gl.uniform4f(this.uniforms.uColour, 0.05, 0.07, 0.1, kind === "cells" ? 0.45 : 0.8);
    gl.enable(gl.BLEND);
    gl.drawElements(gl.LINES, mesh.edges[kind].length, gl.UNSIGNED_INT, 0);
    gl.disable(gl.BLEND);
  }
}

// Returns the values of the corners of triangles and of the ends of lines.
function spreadCells(mesh, {values, cells}) {
  const spread = new Uint16Array(mesh.triangles.length + mesh.lines.length);
  let at = 0;
  for (const [list, corners] of [[cells[0], 3], [cells[1], 2]]) {
    for (let i = 0; i < (list?.length ?? 0); ++i) {
      for (let k = 0; k < corners; ++k) spread[at++] = values[list[i]];
    }
  }
  return spread;
}

// Returns the place in the palette of the 16-bit value 0, and the distance of two such values.
function placeOfValues([least, greatest], [low, high]) {
  const extent = high - low;
  if (!(extent > 0)) return [0.5, 0];
  return [(least - low) / extent, (greatest - least) / extent / kLargestValue];
}
