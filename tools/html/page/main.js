// Starts the page. `window.ryx` tells tests and scripts what the page shows.

const ryx = window.ryx = {errors: [], firstFrame: null, state: null};

function fail(error) {
  const text = error instanceof Error ? error.message : String(error);
  ryx.errors.push(text);
  showMessage(`Error: ${text}`);
}

function showHeading(manifest) {
  byId("title").textContent = manifest.title;
  byId("program").textContent = `Written by ${manifest.program}. Works without a network.`;
  byId("theme").onchange = event => { document.documentElement.dataset.theme = event.target.value; };
}

function showNotes(notes) {
  byId("notes").hidden = !notes.length;
  byId("note-list").replaceChildren(...notes.map(text => create("li", {textContent: text})));
}

// Returns the controls of the view, null if the model cannot be drawn.
async function startView(model) {
  const controls = new Controls(model);
  byId("model").hidden = false;
  let view;
  try {
    view = new View(model, () => { if (view) controls.refresh().catch(fail); });
  } catch (error) {
    byId("model").hidden = true;
    showMessage(`${error.message} The model cannot be drawn here; the tables below are complete.`);
    return null;
  }
  controls.start(view);
  byId("sections").append(create("a", {href: "#model", textContent: "Model"}));
  ryx.state = () => stateOf(view, controls);
  ryx.draw = () => view.draw();
  const meshOf = part => view.items.find(item => item.part.index === part).mesh;
  ryx.project = (part, point) => view.camera.project(meshOf(part).scenePosition(point));
  ryx.middle = (part, triangle) => {
    const corners = meshOf(part).triangles.subarray(3 * triangle, 3 * triangle + 3);
    const places = [...corners].map(point => ryx.project(part, point));
    return [0, 1].map(k => (places[0][k] + places[1][k] + places[2][k]) / 3);
  };
  await view.start();
  view.drawFirst();
  ryx.firstFrame = performance.now();
  byId("loading").hidden = true;
  return controls;
}

function stateOf(view, controls) {
  return {
    visibleParts: view.model.parts.filter(part => part.isVisible).map(part => part.name),
    result: view.model.results[view.result]?.name ?? null, component: view.component, step: view.step,
    isReady: view.updates === view.lastUpdate, range: view.range, edges: view.edges, isPlaying: Boolean(view.isPlaying), picked: controls.info,
    camera: {right: view.camera.right, up: view.camera.up, target: view.camera.target,
             halfHeight: view.camera.halfHeight}};
}

async function main() {
  const manifest = JSON.parse(byId("manifest").textContent);
  const model = new Model(manifest);
  const notes = [...(manifest.notes ?? [])];
  showHeading(manifest);
  if (!model.parts.length && !manifest.report) notes.unshift("The model has no geometry that can be drawn.");
  showNotes(notes);
  let controls = null;
  const viewStart = model.parts.length ? startView(model) : Promise.resolve(null);
  if (manifest.report) addReport(manifest.report);
  if (manifest.diff) addDifferences(model, place => controls?.showPlace(place).catch(fail));
  addTables(manifest.tables ?? []);
  controls = await viewStart;
}

window.addEventListener("error", event => fail(event.error ?? event.message));
window.addEventListener("unhandledrejection", event => fail(event.reason));
document.addEventListener("securitypolicyviolation", event => fail(`blocked: ${event.violatedDirective}`));
main().catch(fail);
