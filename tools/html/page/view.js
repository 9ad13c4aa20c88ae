// The 3D view: what is shown, and when it is drawn again.

const kGreatestMeshWithEdges = 30000;  // triangles; more show only their outline at start
const kEdgeKinds = ["none", "outline", "cells"];

class View {
  // Calls onChange() after each change of what is shown. Raises an error without WebGL2.
  constructor(model, onChange) {
    this.model = model;
    this.onChange = onChange;
    this.canvas = byId("canvas");
    this.camera = new Camera();
    const show = model.manifest.show ?? {};
    this.result = model.results[show.result] ? show.result : null;
    this.component = show.component ?? 0;
    this.step = model.steps[show.step] ? show.step : 0;
    this.ownRange = model.manifest.range ?? null;
    this.rangeKind = this.ownRange ? "own" : "all";
    this.items = [];    // what is drawn
    this.picked = null;
    this.updates = 0;
    const meshes = model.parts.map(part => model.meshAt(part, this.step)[0]).filter(Boolean);
    const numTriangles = meshes.reduce((sum, mesh) => sum + mesh.info.numTriangles, 0);
    this.edges = numTriangles > kGreatestMeshWithEdges ? "outline" : "cells";
    this.renderer = new Renderer(
        this.canvas, () => showMessage("The graphics context was lost. The view waits for it."),
        () => {
          showMessage("");
          this.moved();
        });
  }

  async start() {
    listen(this.canvas, this);
    new ResizeObserver(() => this.resized()).observe(this.canvas);
    this.resized();
    this.fit();
    await this.update();
  }

  resized() {
    this.camera.width = Math.max(this.canvas.clientWidth, 1);
    this.camera.height = Math.max(this.canvas.clientHeight, 1);
    this.moved();
    this.onChange();
  }

  // Draws the view soon.
  moved() {
    this.frame ??= requestAnimationFrame(() => {
      this.frame = null;
      this.draw();
    });
  }

  draw() {
    this.renderer.draw(this.items, this.camera,
                       {shown: this.range ?? [0, 0], isSigned: this.isCentred, edges: this.edges});
    showAxes(this.camera);
    this.placeMarker();
  }

  // Returns the parts that are visible and exist at the step: {part, mesh, meshIndex}.
  visibleMeshes() {
    return this.model.parts.filter(part => part.isVisible).map(part => {
      const [mesh, meshIndex] = this.model.meshAt(part, this.step);
      return {part, mesh, meshIndex};
    }).filter(item => item.mesh);
  }

  // Returns the range of the palette, null if there is no result with values.
  get range() {
    if (this.result === null) return null;
    if (this.rangeKind === "own" && this.ownRange) return this.ownRange;
    const ofStep = field => (field.step ?? this.step) === this.step;
    const range = this.model.rangeOf(this.result, this.component,
                                     this.rangeKind === "step" ? ofStep : undefined);
    if (!range || !this.isSigned) return range;
    const greatest = Math.max(...range.map(Math.abs));
    return [-greatest, greatest];
  }

  // Returns true if 0 is the middle of a scale of both signs. A range of the user may have another.
  get isCentred() {
    const {range} = this;
    return this.isSigned && range !== null && range[0] === -range[1];
  }

  // Returns true if the values are differences of both signs; their scale has 0 in its middle
  // unless the user sets its range.
  get isSigned() {
    if (!this.model.manifest.diff || this.result === null) return false;
    return (this.model.rangeOf(this.result, this.component)?.[0] ?? 0) < 0;
  }

  // Loads what is visible and draws it. A later call replaces an earlier one.
  async update() {
    const update = ++this.updates;
    const {result, component, step} = this;
    const items = await Promise.all(this.visibleMeshes().map(async item => {
      await item.mesh.load();
      const field = this.model.fieldAt(result, item.part.index, item.meshIndex, step);
      const range = field ? fieldRange(field, component) ?? [0, 0] : null;
      const values = field ? await this.valuesOf(item.mesh, field, result, component) : null;
      const colour = result === null ? item.part.colour : kNoValueColour;
      return {...item, colour, range, field: values};
    }));
    if (update !== this.updates) return;
    this.items = items;
    this.lastUpdate = update;
    this.moved();
    this.onChange();
    this.addEdges();
  }

  // Returns what the renderer needs of a field. It stays the same object until the choice changes.
  async valuesOf(mesh, field, result, component) {
    if (mesh.drawn?.of === field && mesh.drawn.component === component) return mesh.drawn;
    const {placement} = this.model.results[result];
    const [values, ...cells] = await Promise.all([
      this.model.quantised(result, field, component),
      ...(placement === "cell" ? [mesh.buffer("triangleCells"), mesh.buffer("lineCells")] : [])]);
    return mesh.drawn = {of: field, component, placement, values, cells};
  }

  // Finds the edges of what is drawn, one mesh at a time, so that the page stays responsive.
  async addEdges() {
    if (this.edges === "none" || !this.hasDrawn) return;
    for (const {mesh} of this.items) {
      if (mesh.edges || !mesh.triangles.length) continue;
      const cells = await mesh.buffer("triangleCells");
      mesh.edges ??= findEdges(mesh, cells);
      this.moved();
      await new Promise(resolve => setTimeout(resolve));
    }
  }

  // Draws at once and waits until the picture is complete.
  drawFirst() {
    this.draw();
    const {gl} = this.renderer;
    gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(4));
    this.hasDrawn = true;
    this.addEdges();
  }

  setEdges(kind) {
    this.edges = kind;
    this.addEdges();
    this.moved();
    this.onChange();
  }

  nextEdges() {
    this.setEdges(kEdgeKinds[(kEdgeKinds.indexOf(this.edges) + 1) % kEdgeKinds.length]);
  }

  fit() {
    const boxes = this.visibleMeshes().map(
        ({mesh}) => [mesh.offset, mesh.offset.map((x, k) => x + mesh.scale[k])]);
    this.camera.fit(boxes);
    this.moved();
  }

  rotate(right, down) {
    this.camera.rotate(right, down);
    byId("view-name").value = "";
  }

  setView(name) {
    this.camera.setView(name);
    byId("view-name").value = name;
    this.fit();
  }

  choose(result, component = undefined) {
    const {components, hasMagnitude} = this.model.results[result] ?? {components: []};
    this.result = result;
    this.component = component ?? (hasMagnitude ? "magnitude" : 0);
    if (this.component !== "magnitude" && !(this.component < components.length)) this.component = 0;
    if (this.rangeKind === "own") this.rangeKind = "all";
    return this.update();
  }

  setStep(step) {
    this.step = Math.min(Math.max(step, 0), Math.max(this.model.steps.length - 1, 0));
    if (this.picked && this.model.meshAt(this.picked.part, this.step)[0] !== this.picked.mesh) {
      this.picked = null;
    }
    return this.update();
  }

  changeStep(difference) {
    const count = this.model.steps.length;
    return count ? this.setStep((this.step + difference + count) % count) : undefined;
  }

  togglePlay() {
    this.isPlaying = !this.isPlaying && this.model.steps.length > 1;
    this.onChange();
    if (this.isPlaying) this.play();
  }

  // Changes the step until playing is stopped, more slowly if the user prefers reduced motion. A
  // later call ends an earlier one that still waits.
  async play() {
    const run = this.run = {};
    const isCurrent = () => this.isPlaying && this.run === run;
    const isReduced = matchMedia("(prefers-reduced-motion: reduce)").matches;
    while (isCurrent()) {
      await new Promise(resolve => setTimeout(resolve, isReduced ? 1500 : 300));
      if (isCurrent()) await this.changeStep(1);
    }
  }

  setRange(kind, own = this.ownRange) {
    this.rangeKind = kind;
    this.ownRange = own;
    this.moved();
    this.onChange();
  }

  pickAt(x, y) {
    this.picked = pick(this.items, this.camera, x, y);
    this.moved();
    this.onChange();
  }

  // Shows a place of the list of differences. Its part is visible.
  async showPlace({result, part, step, index}) {
    const item = this.model.parts[part];
    this.step = step ?? this.step;
    const [mesh, meshIndex] = this.model.meshAt(item, this.step);
    await this.choose(result);
    if (!mesh) return;
    const picked = {part: item, mesh, meshIndex, point: index};
    if (this.model.results[result].placement === "cell") {
      const find = async name => (await mesh.buffer(name))?.indexOf(index) ?? -1;
      const triangle = await find("triangleCells");
      const line = triangle < 0 ? await find("lineCells") : -1;
      if (triangle >= 0) Object.assign(picked, {triangle, point: mesh.triangles[3 * triangle]});
      else if (line >= 0) Object.assign(picked, {line, point: mesh.lines[2 * line]});
      else return;
    }
    this.picked = picked;
    this.camera.target = this.pickedPlace();
    this.moved();
    this.onChange();
  }

  // Returns the place of the marker in the scene: the cell if values of cells are shown.
  pickedPlace() {
    const {mesh, point, triangle, line} = this.picked;
    let points = [point];
    if (this.model.results[this.result]?.placement === "cell") {
      if (triangle !== undefined) points = [...mesh.triangles.subarray(3 * triangle, 3 * triangle + 3)];
      else if (line !== undefined) points = [...mesh.lines.subarray(2 * line, 2 * line + 2)];
    }
    const places = points.map(p => mesh.scenePosition(p));
    return [0, 1, 2].map(k => places.reduce((sum, place) => sum + place[k], 0) / places.length);
  }

  placeMarker() {
    const marker = byId("marker");
    marker.hidden = !this.picked?.part.isVisible;
    if (marker.hidden) return;
    const [x, y] = this.camera.project(this.pickedPlace());
    marker.style.left = `${x}px`;
    marker.style.top = `${y}px`;
  }
}
