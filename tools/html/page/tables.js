// Documents below the model: the report, differences, and tables that can be folded and filtered.

const kShownRows = 300;      // more rows are shown on request
const kRowsToFilter = 9;     // shorter tables have no filter

// Returns a table. `actions(index)` returns an element for the last column, or null.
function makeTable({title, columns, rows}, actions = null) {
  const body = create("tbody");
  const more = create("button", {type: "button", hidden: true});
  const count = create("p", {className: "quiet", role: "status"});
  const filter = create("input", {type: "search", "aria-label": `Filter ${title}`, placeholder: "Filter"});
  let shown = rows.keys();
  const makeRow = index => {
    const row = create("tr", {}, ...rows[index].map(cell => (
      create("td", {className: isNumberText(cell) ? "number" : "", textContent: cell ?? ""}))));
    if (actions) row.append(create("td", {}, actions(index) ?? ""));
    return row;
  };
  const showRows = number => {
    for (const index of shown.slice(body.rows.length, number)) body.append(makeRow(index));
    const rest = shown.length - body.rows.length;
    more.hidden = rest === 0;
    more.textContent = `Show ${Math.min(rest, 10 * kShownRows)} more of ${plural(rest, "row")}`;
  };
  const applyFilter = () => {
    const word = filter.value.trim().toLowerCase();
    shown = [...rows.keys()].filter(i => !word ||
        rows[i].some(cell => String(cell ?? "").toLowerCase().includes(word)));
    body.replaceChildren();
    count.textContent = word ? `${plural(shown.length, "row")} of ${rows.length}` : "";
    showRows(kShownRows);
  };
  filter.oninput = applyFilter;
  more.onclick = () => showRows(body.rows.length + 10 * kShownRows);
  applyFilter();
  const head = create("tr", {}, ...columns.map(c => create("th", {scope: "col", textContent: c})));
  if (actions) head.append(create("th", {scope: "col", textContent: "View"}));
  const table = create("table", {"aria-label": title}, create("thead", {}, head), body);
  const content = create("div", {className: "table-content"});
  if (rows.length >= kRowsToFilter) content.append(create("div", {className: "row"}, filter, count));
  content.append(create("div", {className: "scroll", tabIndex: 0, role: "region", "aria-label": title},
                        table), more);
  return content;
}

function isNumberText(cell) {
  return typeof cell === "number" || (typeof cell === "string" && /^-?[\d.]+(e[+-]?\d+)?$/i.test(cell));
}

// Appends a section that can be folded, with a link to it in the header. `make` is called when the
// section is opened for the first time.
function addSection(title, size, isOpen, make) {
  const id = `section-${byId("documents").children.length}`;
  const summary = create("summary", {}, create("h2", {textContent: title}));
  if (size !== null) summary.append(create("span", {className: "quiet", textContent: size.toLocaleString("en")}));
  const section = create("details", {id}, summary);
  section.ontoggle = () => {
    if (section.open && section.children.length === 1) section.append(make());
  };
  section.open = isOpen;
  byId("documents").append(section);
  byId("sections").append(create("a", {
    href: `#${id}`, textContent: title, onclick: () => { section.open = true; }}));
}

function addTables(tables) {
  tables.forEach((table, i) => {
    addSection(table.title, table.rows.length, i === 0 && table.rows.length <= 50, () => makeTable(table));
  });
}

// Shows the greatest differences. `show(place)` shows one in the view.
function addDifferences(model, show) {
  const {a, b, greatest} = model.manifest.diff;
  const rows = greatest.map(({result, part, step, value}) => [
    model.results[result]?.name, model.parts[part]?.name, stepText(model.steps[step], step),
    value === null ? "not a number" : exactText(value)]);
  addSection("Greatest differences", rows.length, true, () => makeTable(
      {title: `Greatest differences of ${b} minus ${a}`, columns: ["Result", "Part", "Step", "Difference"], rows},
      i => greatest[i].index === null ? null : create("button", {
        type: "button", textContent: "Show", "aria-label": `Show row ${i + 1}`,
        onclick: () => show(greatest[i])})));
}

function stepText(step, index) {
  if (!step) return "";
  const name = step.name || `Step ${index + 1}`;
  return step.time === null || step.time === undefined ? name : `${name} (t = ${exactOrShort(step.time)})`;
}

function exactOrShort(value) {
  return String(Number(value.toPrecision(9)));
}

function addReport(report) {
  const {verdict, isOk, counts, lines, pictures} = report;
  const banner = create("p", {className: isOk ? "verdict ok" : "verdict error", role: "status"},
                        create("strong", {textContent: isOk ? "OK" : "Not OK"}), ` ${verdict}`);
  byId("documents").before(banner);
  if (lines.length) {
    addSection("Findings", lines.length, true, () => makeTable(
        {title: "Findings", columns: ["Kind", "Text"], rows: lines}));
  }
  if (counts.length) {
    addSection("Counts", counts.length, true, () => makeTable(
        {title: "Counts", columns: ["Item", "Number"], rows: counts}));
  }
  if (pictures.length) {
    addSection("Pictures", pictures.length, true, () => create(
        "div", {className: "pictures"}, ...pictures.map(({name, png, alt}) => create(
            "figure", {}, create("img", {src: `data:image/png;base64,${png}`, alt, loading: "lazy"}),
            create("figcaption", {textContent: name})))));
  }
}
