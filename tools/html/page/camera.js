// An orthographic camera in the scene, in which the model is from -1 to 1.

// The directions up in the image and toward the viewer; z of the model points up.
const kViews = {
  iso: {name: "Iso", up: [0, 0, 1], back: [1, -1, 1]},
  front: {name: "Front", up: [0, 0, 1], back: [0, -1, 0]},
  back: {name: "Back", up: [0, 0, 1], back: [0, 1, 0]},
  left: {name: "Left", up: [0, 0, 1], back: [-1, 0, 0]},
  right: {name: "Right", up: [0, 0, 1], back: [1, 0, 0]},
  top: {name: "Top", up: [0, 1, 0], back: [0, 0, 1]},
  bottom: {name: "Bottom", up: [0, -1, 0], back: [0, 0, -1]},
};
const kGreatestZoom = 1e5;

const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                         a[0] * b[1] - a[1] * b[0]];
const normalized = a => a.map(x => x / (Math.hypot(...a) || 1));

class Camera {
  constructor() {
    this.width = 1;  // of the viewport, in CSS pixels
    this.height = 1;
    this.target = [0, 0, 0];
    this.halfHeight = 1;  // of the viewport, in the scene
    this.setView("iso");
  }

  setView(name) {
    this.setDirections(kViews[name].up, kViews[name].back);
  }

  setDirections(up, back) {
    this.back = normalized(back);
    this.right = normalized(cross(up, this.back));
    this.up = cross(this.back, this.right);
  }

  // Turns the model by angles in radians, to the right and downward in the image.
  rotate(right, down) {
    const turn = (a, b, angle) => a.map((x, k) => x * Math.cos(angle) + b[k] * Math.sin(angle));
    const back = turn(this.back, this.right, -right);
    this.right = normalized(turn(this.right, this.back, right));
    const newBack = turn(back, this.up, down);
    this.setDirections(turn(this.up, back, -down), newBack);
  }

  get pixelSize() {
    return 2 * this.halfHeight / this.height;
  }

  // Moves the model by pixels.
  pan(right, down) {
    const size = this.pixelSize;
    this.target = this.target.map(
        (x, k) => x - size * right * this.right[k] + size * down * this.up[k]);
  }

  // Makes the model larger; the place at x, y (pixels from the upper left corner) stays.
  zoom(factor, x = this.width / 2, y = this.height / 2) {
    const before = this.halfHeight;
    this.halfHeight = Math.min(Math.max(before / factor, 1 / kGreatestZoom), 100);
    const moved = this.halfHeight / before;
    this.pan((x - this.width / 2) * (1 - 1 / moved), (y - this.height / 2) * (1 - 1 / moved));
  }

  // Shows boxes of the scene completely, with a margin.
  fit(boxes) {
    let halfWidth = 0;
    let halfHeight = 0;
    const {centre} = frameOf(boxes);
    this.target = centre;
    for (const box of boxes) {
      for (let corner = 0; corner < 8; ++corner) {
        const place = centre.map((c, k) => box[corner >> k & 1][k] - c);
        halfWidth = Math.max(halfWidth, Math.abs(dot(place, this.right)));
        halfHeight = Math.max(halfHeight, Math.abs(dot(place, this.up)));
      }
    }
    const fitting = 1.08 * Math.max(halfHeight, halfWidth * this.height / this.width);
    this.halfHeight = fitting > 0 ? Math.max(fitting, 1 / kGreatestZoom) : 1;
  }

  // Returns x and y in pixels from the upper left corner, and the depth toward the viewer.
  project(place) {
    const relative = place.map((x, k) => x - this.target[k]);
    return [this.width / 2 + dot(relative, this.right) / this.pixelSize,
            this.height / 2 - dot(relative, this.up) / this.pixelSize, dot(relative, this.back)];
  }
}
