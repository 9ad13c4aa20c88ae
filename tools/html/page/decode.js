// Buffers: BASE64 of a zlib stream, each in a script element of its own.

function bytesOfBase64(base64) {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

async function inflate(number) {
  const element = document.getElementById(`data-${number}`);
  if (!element) throw new Error(`The page does not contain buffer ${number}. Write it again.`);
  const stream = new Blob([bytesOfBase64(element.textContent)]).stream();
  const inflated = stream.pipeThrough(new DecompressionStream("deflate"));
  return new Uint8Array(await new Response(inflated).arrayBuffer());
}

// Joins byte planes: all low bytes, then all high bytes.
function joinPlanes16(bytes, count) {
  const values = new Uint16Array(count);
  for (let i = 0; i < count; ++i) values[i] = bytes[i] | (bytes[count + i] << 8);
  return values;
}

function joinPlanesF32(bytes, count) {
  const bits = new Uint32Array(count);
  for (let i = 0; i < count; ++i) {
    bits[i] = bytes[i] | (bytes[count + i] << 8) | (bytes[2 * count + i] << 16) |
        (bytes[3 * count + i] << 24);
  }
  return new Float32Array(bits.buffer);
}

// Adds up differences modulo 65536. They start again at 0 for each component.
function undoDifferences16(values, numComponents) {
  const length = values.length / numComponents;
  for (let c = 0; c < numComponents; ++c) {
    const end = (c + 1) * length;
    for (let i = c * length + 1; i < end; ++i) values[i] += values[i - 1];
  }
  return values;
}

// Calls put(i, number) for `count` LEB128 numbers of up to 32 bits.
function readVariableLength(bytes, count, put) {
  let at = 0;
  for (let i = 0; i < count; ++i) {
    let byte = bytes[at++];
    let number = byte & 127;
    for (let shift = 7; byte & 128; shift += 7) {
      byte = bytes[at++];
      number |= (byte & 127) << shift;
    }
    put(i, number);
  }
  if (at !== bytes.length) throw new Error("A buffer has the wrong size. Write the page again.");
}

function decodeIntegers(bytes, count) {
  const values = new Uint32Array(count);
  let previous = 0;
  readVariableLength(bytes, count, (i, zigzag) => {
    previous = (previous + ((zigzag >>> 1) ^ -(zigzag & 1))) | 0;
    values[i] = previous;
  });
  return values;
}

// Points have numbers in the order of their first use: 0 stands for the next new point.
function decodeIndices(bytes, count) {
  const values = new Uint32Array(count);
  let next = 0;
  readVariableLength(bytes, count, (i, back) => {
    const index = next - back;
    if (back === 0) ++next;
    values[i] = index;
  });
  return values;
}

const kBytesPerValue = {"u16": 2, "u16-delta": 2, "f32": 4};

// Returns the values of a buffer as a typed array. Raises an error if its size is wrong.
async function decodeBuffer(buffer, numComponents = 1) {
  const bytes = await inflate(buffer.data);
  const size = kBytesPerValue[buffer.coding];
  if (size && bytes.length !== size * buffer.count) {
    throw new Error(`Buffer ${buffer.data} has the wrong size. Write the page again.`);
  }
  switch (buffer.coding) {
    case "u16": return joinPlanes16(bytes, buffer.count);
    case "u16-delta": return undoDifferences16(joinPlanes16(bytes, buffer.count), numComponents);
    case "f32": return joinPlanesF32(bytes, buffer.count);
    case "i32-delta": return decodeIntegers(bytes, buffer.count);
    case "index": return decodeIndices(bytes, buffer.count);
    default: throw new Error(`Unknown coding of buffer ${buffer.data}: ${buffer.coding}`);
  }
}
