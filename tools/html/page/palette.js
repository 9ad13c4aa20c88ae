// The scale of colours: dark blue over green to yellow, with equal steps of OKLab lightness. The
// pictures of `ryx picture` have the same scale (Palette.cpp).

const kNoValueColour = [160, 160, 160];

function encodeChannel(linear) {
  const c = Math.min(Math.max(linear, 0), 1);
  return Math.round(255 * (c <= 0.0031308 ? 12.92 * c : 1.055 * c ** (1 / 2.4) - 0.055));
}

function fromOklab(lightness, a, b) {
  const l = (lightness + 0.3963377774 * a + 0.2158037573 * b) ** 3;
  const m = (lightness - 0.1055613458 * a - 0.0638541728 * b) ** 3;
  const s = (lightness - 0.0894841775 * a - 1.2914855480 * b) ** 3;
  return [4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s,
          -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s,
          -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s];
}

function colourAt(place) {
  const lightness = 0.28 + place * (0.92 - 0.28);
  const hue = (285 + place * (105 - 285)) * Math.PI / 180;
  let linear;
  for (let chroma = 0.17; chroma >= 0; chroma -= 0.001) {
    linear = fromOklab(lightness, chroma * Math.cos(hue), chroma * Math.sin(hue));
    if (linear.every(c => c >= 0 && c <= 1)) break;
  }
  return linear.map(encodeChannel);
}

// Returns red, green, blue and 255 of each colour, one after the other.
function makePalette(numColours) {
  const bytes = new Uint8Array(4 * numColours);
  for (let i = 0; i < numColours; ++i) bytes.set([...colourAt(i / (numColours - 1)), 255], 4 * i);
  return bytes;
}
