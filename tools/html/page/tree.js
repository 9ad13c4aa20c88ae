// The tree of nodes. A check box shows and hides the parts of a node and of the nodes below it.

const kGreatestOpenTree = 150;  // larger trees are folded at start

class PartTree {
  // Calls onChange() after the visibility of parts has changed.
  constructor(container, model, onChange) {
    this.model = model;
    this.onChange = onChange;
    this.items = [];  // parents come before their children
    const roots = [];
    const itemOf = new Map();
    const add = (node, part, parent = null) => {
      const item = {node, part, parent, children: []};
      (parent ? parent.children : roots).push(item);
      this.items.push(item);
      return item;
    };
    for (const node of model.nodes) {
      itemOf.set(node.id, add(node, model.parts[node.part] ?? null, itemOf.get(node.parent)));
    }
    const placed = new Set(this.items.map(item => item.part));
    for (const part of model.parts) {
      if (!placed.has(part)) add({name: part.name, kind: "geometry"}, part);
    }
    const isOpen = model.nodes.length <= kGreatestOpenTree;
    container.append(this.list(roots, isOpen || roots.length === 1, isOpen));
    this.refresh();
  }

  list(items, isOpen, isOpenBelow) {
    const list = create("ul");
    for (const item of items) list.append(this.row(item, isOpen, isOpenBelow));
    return list;
  }

  // The rows below a node are made when it is unfolded.
  row(item, isOpen, isOpenBelow) {
    const {node, part, children} = item;
    item.box = create("input", {type: "checkbox", onchange: () => this.set(item, item.box.checked)});
    const label = create("label", {title: node.name}, item.box);
    if (part) {
      const swatch = create("span", {className: "swatch", "aria-hidden": "true"});
      swatch.style.backgroundColor = `rgb(${part.colour.map(Number).join(",")})`;
      label.append(swatch);
    }
    label.append(create("span", {className: "name", textContent: node.name || "(no name)"}));
    if (node.kind !== "geometry") label.append(create("span", {className: "kind", textContent: node.kind}));
    const row = create("div", {className: "node"});
    const element = create("li", {}, row);
    if (children.length) {
      const fold = create("button", {type: "button", className: "fold", "aria-expanded": "false",
                                     "aria-label": `Nodes below ${node.name}`});
      let list = null;
      const setOpen = open => {
        fold.setAttribute("aria-expanded", open);
        if (open && !list) element.append(list = this.list(children, isOpenBelow, isOpenBelow));
        if (list) list.hidden = !open;
        this.refresh();
      };
      fold.onclick = () => setOpen(fold.getAttribute("aria-expanded") !== "true");
      row.append(fold);
      if (isOpen) setOpen(true);
    } else {
      row.classList.add("leaf");
    }
    row.append(label);
    return element;
  }

  // Calls visit for each part of an item and of those below it.
  static forEachPart(item, visit) {
    const open = [item];
    while (open.length) {
      const {part, children} = open.pop();
      if (part) visit(part);
      for (const child of children) open.push(child);
    }
  }

  set(item, isVisible) {
    PartTree.forEachPart(item, part => { part.isVisible = isVisible; });
    this.changed();
  }

  // Shows only the parts that `accept` takes.
  show(accept) {
    for (const part of this.model.parts) part.isVisible = accept(part);
    this.changed();
  }

  changed() {
    this.refresh();
    this.onChange();
  }

  // Sets the check boxes that exist, from the leaves up; without recursion, as trees may be deep.
  refresh() {
    for (const item of this.items) {
      item.numParts = item.part ? 1 : 0;
      item.numVisible = item.part?.isVisible ? 1 : 0;
    }
    for (let i = this.items.length; i-- > 0;) {
      const {parent, box, numParts, numVisible} = this.items[i];
      if (parent) {
        parent.numParts += numParts;
        parent.numVisible += numVisible;
      }
      if (!box) continue;
      box.disabled = numParts === 0;
      box.checked = numVisible > 0 && numVisible === numParts;
      box.indeterminate = numVisible > 0 && numVisible < numParts;
    }
    const {parts} = this.model;
    byId("part-count").textContent = `${parts.filter(p => p.isVisible).length} of ${parts.length}`;
  }
}
