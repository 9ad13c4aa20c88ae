// What is known of a picked place, as values and as text.

// Returns ids, positions in the file, coordinates and values.
async function describePicked(view) {
  const {model, picked, result, component, step} = view;
  const {part, mesh, meshIndex, point, triangle, line} = picked;
  const read = async (name, index) => (await mesh.buffer(name))?.[index] ?? null;
  // Ids that are the positions plus 1 are not in the page.
  const readId = async (name, index, position, hasIds) =>
      hasIds && position !== null ? await read(name, index) ?? position + 1 : null;
  const info = {part: part.name, partNode: part.node, element: null, elementPosition: null};
  info.nodePosition = await read("pointPositions", point);
  info.node = await readId("pointIds", point, info.nodePosition, mesh.info.hasPointIds);
  let cell = null;
  if (triangle !== undefined) cell = await read("triangleCells", triangle);
  else if (line !== undefined) cell = await read("lineCells", line);
  if (cell !== null) {
    info.elementPosition = await read("cellPositions", cell);
    info.element = await readId("cellIds", cell, info.elementPosition, mesh.info.hasCellIds);
  }
  const {at, resolution} = mesh.position(point);
  info.coordinates = at.map((x, k) => roundedText(x, resolution[k]));
  if (result === null) return info;
  const {name, unit, placement, components} = model.results[result];
  Object.assign(info, {result: name, unit, placement, component, step: model.steps[step]?.name ?? null});
  const field = model.fieldAt(result, part.index, meshIndex, step);
  const index = placement === "cell" ? cell : point;
  if (!field || index === null) return info;
  const values = await model.valuesAt(result, field, index);
  return Object.assign(info, values, {
    isExact: values.resolutions === null, names: components, text: valueText(values, component)});
}

// Returns the text of a component or of the magnitude.
function valueText({components, resolutions}, component) {
  if (component === "magnitude") {
    const magnitude = Math.hypot(...components);
    return Number.isNaN(magnitude) ? "not a number"
                                   : roundedText(magnitude, resolutions ? Math.max(...resolutions) : magnitude * 1e-8);
  }
  const value = components[component];
  if (Number.isNaN(value)) return "not a number";
  return resolutions?.[component] > 0 ? roundedText(value, resolutions[component]) : exactText(value);
}

// A component with one value everywhere has no steps, and is exact.
function precisionText({isExact, resolutions, component}) {
  if (isExact) return component === "magnitude" ? "from values of full precision" : "full precision";
  const step = component === "magnitude" ? Math.max(...resolutions) : resolutions[component];
  if (!(step > 0)) return "full precision";
  return `display precision, in steps of ${Number(step.toPrecision(2))}`;
}

const numberText = (id, position) => `${id ?? "no id"} (position ${position} in the file)`;

function showPicked(info) {
  const list = create("dl");
  const add = (term, text, className = "") => list.append(
      create("dt", {textContent: term}), create("dd", {textContent: text, className}));
  if (info.result !== undefined) {
    const unit = info.unit ? ` ${info.unit}` : "";
    add(info.result, info.text === undefined ? "no value here" : `${info.text}${unit}`, "value");
    if (info.text !== undefined) {
      add("Precision", precisionText(info));
      if (info.names.length > 1) {
        info.names.forEach((name, c) => add(name, valueText(info, c) + unit));
      }
    }
  }
  add("Part", info.part);
  if (info.elementPosition !== null) add("Element", numberText(info.element, info.elementPosition));
  if (info.nodePosition !== null) add("Nearest node", numberText(info.node, info.nodePosition));
  add("Coordinates", `${info.coordinates.join(", ")} (display precision)`);
  byId("picked").replaceChildren(list);
}
