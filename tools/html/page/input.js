// Mouse, touch and keys of the view.

const kClickReach = 4;       // a pointer that moves less, in pixels, clicks
const kTurn = Math.PI / 24;  // of an arrow key
const kKeyPan = 40;          // pixels
const kKeyZoom = 1.25;
const kViewKeys = ["iso", "front", "back", "left", "right", "top", "bottom"];

// Connects a canvas with an object that has camera, moved(), rotate(right, down), pickAt(x, y),
// fit(), setView(name), nextEdges(), changeStep(difference) and togglePlay().
function listen(canvas, target) {
  const pointers = new Map();
  let start = null;  // null after a drag
  const placeOf = event => {
    const box = canvas.getBoundingClientRect();
    return {x: event.clientX - box.left, y: event.clientY - box.top};
  };

  canvas.addEventListener("pointerdown", event => {
    canvas.setPointerCapture(event.pointerId);
    canvas.classList.add("by-pointer");
    canvas.focus({preventScroll: true});
    pointers.set(event.pointerId, placeOf(event));
    start = pointers.size === 1 && event.button === 0 ? placeOf(event) : null;
  });

  canvas.addEventListener("pointermove", event => {
    const before = pointers.get(event.pointerId);
    if (!before) return;
    const place = placeOf(event);
    if (start && Math.hypot(place.x - start.x, place.y - start.y) < kClickReach) return;
    start = null;
    const others = [...pointers].filter(([id]) => id !== event.pointerId).map(([, other]) => other);
    pointers.set(event.pointerId, place);
    const {camera} = target;
    const dx = place.x - before.x, dy = place.y - before.y;
    if (others.length) {
      const [other] = others;
      const distance = p => Math.hypot(p.x - other.x, p.y - other.y) || 1;
      camera.pan(dx / 2, dy / 2);
      camera.zoom(distance(place) / distance(before), (place.x + other.x) / 2, (place.y + other.y) / 2);
    } else if (event.shiftKey || event.buttons & 6) {
      camera.pan(dx, dy);
    } else {
      target.rotate(dx * 0.008, dy * 0.008);
    }
    target.moved();
  });

  const release = event => {
    const place = pointers.get(event.pointerId);
    pointers.delete(event.pointerId);
    if (event.type === "pointerup" && start && place) target.pickAt(start.x, start.y);
    start = null;
  };
  canvas.addEventListener("pointerup", release);
  canvas.addEventListener("pointercancel", release);
  canvas.addEventListener("contextmenu", event => event.preventDefault());

  canvas.addEventListener("wheel", event => {
    event.preventDefault();
    const pixels = event.deltaY * (event.deltaMode === 1 ? 30 : event.deltaMode === 2 ? 300 : 1);
    const {x, y} = placeOf(event);
    target.camera.zoom(Math.exp(Math.min(Math.max(-pixels, -300), 300) * 0.0015), x, y);
    target.moved();
  }, {passive: false});

  canvas.addEventListener("keydown", event => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const {camera} = target;
    const arrows = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
    const actions = {
      "+": () => camera.zoom(kKeyZoom), "=": () => camera.zoom(kKeyZoom),
      "-": () => camera.zoom(1 / kKeyZoom), "_": () => camera.zoom(1 / kKeyZoom),
      "f": () => target.fit(), "e": () => target.nextEdges(),
      "Enter": () => target.pickAt(camera.width / 2, camera.height / 2),
      ",": () => target.changeStep(-1), ".": () => target.changeStep(1), " ": () => target.togglePlay(),
    };
    const arrow = arrows[event.key];
    const view = kViewKeys[event.key];
    const action = actions[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    if (arrow && event.shiftKey) camera.pan(kKeyPan * arrow[0], kKeyPan * arrow[1]);
    else if (arrow) target.rotate(kTurn * arrow[0], kTurn * arrow[1]);
    else if (view) target.setView(view);
    else if (action) action();
    else return;
    canvas.classList.remove("by-pointer");
    event.preventDefault();
    if (arrow || "+=-_".includes(event.key)) target.moved();
  });
}
