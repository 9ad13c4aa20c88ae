// The scale of colours with ticks, and the axes of the model.

function paintBarColours(isSigned) {
  const palette = makePalette(isSigned);
  const canvas = byId("bar-colours");
  const context = canvas.getContext("2d");
  const image = context.createImageData(1, kNumColours);
  for (let i = 0; i < kNumColours; ++i) {
    image.data.set(palette.subarray(4 * i, 4 * i + 4), 4 * (kNumColours - 1 - i));
  }
  context.putImageData(image, 0, 0);
}

// Shows the bar of a range with a title; hides it if the range is null.
function showBar(title, range, isSigned) {
  const bar = byId("bar");
  bar.hidden = !range;
  if (!range) return;
  paintBarColours(isSigned);
  byId("bar-title").textContent = title;
  const [low, high] = range;
  const ticks = ticksOf(low, high, bar.clientHeight > 200 ? 6 : 4);
  const texts = tickTexts(ticks);
  byId("bar-ticks").replaceChildren(...ticks.map((tick, i) => {
    const element = create("span", {textContent: texts[i]});
    const place = high > low ? tick / (high - low) - low / (high - low) : 0.5;
    element.style.bottom = `${100 * place}%`;
    return element;
  }));
}

const kAxes = [["X", "#d5404b"], ["Y", "#2f9e44"], ["Z", "#3b7ddd"]];

function createSvg(name, attributes) {
  const element = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
  return element;
}

// Shows the directions of the axes; the one that points to the viewer is drawn last.
function showAxes(camera) {
  const axes = kAxes.map(([name, colour], k) => (
    {name, colour, x: 20 * camera.right[k], y: -20 * camera.up[k], depth: camera.back[k]}));
  axes.sort((a, b) => a.depth - b.depth);
  byId("triad").replaceChildren(...axes.flatMap(({name, colour, x, y}) => {
    const text = createSvg("text", {x: 1.35 * x, y: 1.35 * y, "text-anchor": "middle",
                                    "dominant-baseline": "central", "font-size": 9});
    text.textContent = name;
    return [createSvg("line", {x1: 0, y1: 0, x2: x, y2: y, stroke: colour, "stroke-width": 2.5,
                               "stroke-linecap": "round"}), text];
  }));
}
