// The controls beside the view, and the bar in it.

class Controls {
  constructor(model) {
    this.model = model;
  }

  start(view) {
    const {model} = this;
    this.view = view;
    this.tree = new PartTree(byId("tree"), model, () => view.update());
    const viewNames = Object.entries(kViews);
    for (const [value, {name}] of viewNames) byId("view-name").append(create("option", {value, textContent: name}));
    byId("view-name").value = "iso";
    byId("view-name").onchange = event => view.setView(event.target.value);
    byId("fit").onclick = () => view.fit();
    for (const [id, factor] of [["zoom-in", kKeyZoom], ["zoom-out", 1 / kKeyZoom]]) {
      byId(id).onclick = () => {
        view.camera.zoom(factor);
        view.moved();
      };
    }
    byId("edges").onchange = event => view.setEdges(event.target.value);
    byId("hide-picked").onclick = () => this.tree.show(part => part.isVisible && part !== view.picked?.part);
    byId("only-picked").onclick = () => this.tree.show(part => part === view.picked?.part);
    this.startResult();
    this.startSteps();
    this.startRange();
  }

  startResult() {
    const {model, view} = this;
    byId("result-controls").hidden = !model.results.length && model.steps.length < 2;
    byId("result").parentElement.hidden = !model.results.length;
    fillSelect(byId("result"), ["None (colours of parts)", ...model.results.map(withUnit)],
               ["", ...model.results.keys()]);
    byId("result").onchange = event => view.choose(event.target.value === "" ? null : Number(event.target.value));
    byId("component").onchange = event => {
      const {value} = event.target;
      view.choose(view.result, value === "magnitude" ? value : Number(value));
    };
  }

  startSteps() {
    const {model, view} = this;
    byId("step-controls").hidden = model.steps.length < 2;
    fillSelect(byId("step"), model.steps.map(stepText));
    byId("step-slider").max = Math.max(model.steps.length - 1, 0);
    byId("step").onchange = event => view.setStep(Number(event.target.value));
    byId("step-slider").oninput = event => view.setStep(Number(event.target.value));
    byId("previous").onclick = () => view.changeStep(-1);
    byId("next").onclick = () => view.changeStep(1);
    byId("play").onclick = () => view.togglePlay();
  }

  startRange() {
    const {view} = this;
    const ends = this.rangeEnds = [byId("range-low"), byId("range-high")];
    byId("range-kind").onchange = event => view.setRange(event.target.value, view.range);
    for (const end of ends) {
      end.onchange = () => {
        const range = ends.map(e => e.valueAsNumber);
        const isValid = range.every(Number.isFinite) && range[0] <= range[1];
        for (const e of ends) e.setAttribute("aria-invalid", String(!isValid));
        if (isValid) view.setRange("own", range);
      };
    }
  }

  // Shows a place of the list of differences, and its part.
  showPlace(place) {
    this.model.parts[place.part].isVisible = true;
    this.tree.refresh();
    return this.view.showPlace(place);
  }

  // Shows the state of the view.
  async refresh() {
    const {model, view} = this;
    if (!view) return;
    const result = model.results[view.result];
    byId("result").value = result ? view.result : "";
    byId("component-field").hidden = !result || (result.components.length < 2 && !result.hasMagnitude);
    byId("range-controls").hidden = !result;
    if (result) this.refreshResult(result);
    byId("step").value = view.step;
    byId("step-slider").value = view.step;
    byId("step-slider").setAttribute("aria-valuetext", stepText(model.steps[view.step], view.step));
    byId("play").textContent = view.isPlaying ? "Stop" : "Play";
    byId("play").setAttribute("aria-pressed", Boolean(view.isPlaying));
    byId("edges").value = view.edges;
    byId("result-note").textContent = this.noteText();
    showBar(result ? titleOf(result, view.component) : "", view.range, view.isCentred);
    await this.refreshPicked();
  }

  // Leaves an open list of components and a range that the user enters as they are.
  refreshResult(result) {
    const {view} = this;
    if (this.listed !== result) {
      this.listed = result;
      fillSelect(byId("component"), [...result.components, ...(result.hasMagnitude ? ["Magnitude"] : [])],
                 [...result.components.keys(), ...(result.hasMagnitude ? ["magnitude"] : [])]);
    }
    byId("component").value = view.component;
    byId("range-kind").value = view.rangeKind;
    if (this.rangeEnds.includes(document.activeElement)) return;
    const range = view.range ?? ["", ""];
    this.rangeEnds.forEach((end, i) => {
      end.value = range[i];
      end.removeAttribute("aria-invalid");
    });
  }

  noteText() {
    const {model, view} = this;
    if (view.result === null) return "";
    if (!model.hasValues(view.result, view.step)) return "The result has no values at this step.";
    if (!view.range) return "The result has no finite values.";
    const without = view.items.filter(item => !item.field).length;
    return without ? `${plural(without, "part")} without values of this result (grey).` : "";
  }

  async refreshPicked() {
    const {view} = this;
    const {picked, result, component, step} = view;
    const key = JSON.stringify([picked?.part.index, picked?.point, picked?.triangle, picked?.line,
                                result, component, step]);
    if (key === this.pickedKey) return;
    this.pickedKey = key;
    byId("picked-actions").hidden = !picked;
    if (!picked) {
      this.info = null;
      byId("picked").textContent = "Click the model, or press Enter in the view, to see ids and values.";
      return;
    }
    const info = await describePicked(view);
    if (key !== this.pickedKey) return;
    this.info = info;
    showPicked(info);
  }
}

const withUnit = ({name, unit}) => unit ? `${name} (${unit})` : name;

function titleOf(result, component) {
  const {name, unit, components} = result;
  const of = component === "magnitude" ? " magnitude" : components.length > 1 ? ` ${components[component]}` : "";
  return withUnit({name: name + of, unit});
}
