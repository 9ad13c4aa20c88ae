// Scales of colours with equal steps of OKLab lightness: dark blue over green to yellow, and blue
// over light grey to red for values around 0. The pictures of `ryx picture` have the same scales
// (Palette.cpp).

const kNoValueColour = [160, 160, 160];
const kNumColours = 256;

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

// Returns the colour of a lightness and a hue in degrees, with the greatest chroma up to a limit
// that a screen can show.
function makeColour(lightness, greatestChroma, hue) {
  const angle = hue * Math.PI / 180;
  let linear = [0, 0, 0];
  for (let chroma = greatestChroma; chroma >= 0; chroma -= 0.001) {
    linear = fromOklab(lightness, chroma * Math.cos(angle), chroma * Math.sin(angle));
    if (linear.every(c => c >= 0 && c <= 1)) break;
  }
  return linear.map(encodeChannel);
}

// Returns the colour at a place of the scale, 0 to 1.
function colourAt(place) {
  return makeColour(0.28 + place * (0.92 - 0.28), 0.17, 285 + place * (105 - 285));
}

// Returns the colour at a place of the scale around 0, -1 to 1.
function signedColourAt(place) {
  const distance = Math.abs(place);
  return makeColour(0.94 - distance * (0.94 - 0.42), 0.2 * distance, place < 0 ? 260 : 28);
}

// Returns red, green, blue and 255 of each colour of a scale, one after the other.
function makePalette(isSigned) {
  const bytes = new Uint8Array(4 * kNumColours);
  for (let i = 0; i < kNumColours; ++i) {
    const place = i / (kNumColours - 1);
    bytes.set([...(isSigned ? signedColourAt(2 * place - 1) : colourAt(place)), 255], 4 * i);
  }
  return bytes;
}
