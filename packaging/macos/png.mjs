// Decodes the PNG files that make-icon.mjs draws.
import { inflateSync } from 'node:zlib';

const signature = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]);
const channels = 4;

function* chunks(png) {
  if (!png.subarray(0, signature.length).equals(signature)) throw new Error('not a PNG');
  for (let at = signature.length; at < png.length;) {
    const size = png.readUInt32BE(at);
    yield [png.toString('latin1', at + 4, at + 8), png.subarray(at + 8, at + 8 + size)];
    at += size + 12;
  }
}

/// The one of three neighbours that is nearest to their gradient (the Paeth predictor).
function nearest(left, above, corner) {
  const gradient = left + above - corner;
  const [toLeft, toAbove, toCorner] = [left, above, corner].map((n) => Math.abs(gradient - n));
  if (toLeft <= toAbove && toLeft <= toCorner) return left;
  return toAbove <= toCorner ? above : corner;
}

const predictions = [
  () => 0,
  (left) => left,
  (left, above) => above,
  (left, above) => (left + above) >> 1,
  nearest,
];

/// The width, height and pixels (red, green, blue, opacity) of a PNG with eight bits in each of
/// these channels and without interlacing. Throws an Error for any other.
export function decodePng(png) {
  let header = Buffer.alloc(13);
  const data = [];
  for (const [type, content] of chunks(png)) {
    if (type === 'IHDR') header = content;
    if (type === 'IDAT') data.push(content);
  }
  const [width, height] = [header.readUInt32BE(0), header.readUInt32BE(4)];
  if (header[8] !== 8 || header[9] !== 6 || header[12] !== 0)
    throw new Error('not a PNG with four channels of eight bits');

  const rows = inflateSync(Buffer.concat(data));
  const stride = width * channels;
  const pixels = Buffer.alloc(stride * height);
  for (let y = 0; y < height; ++y) {
    const predict = predictions[rows[y * (stride + 1)]];
    for (let x = 0; x < stride; ++x) {
      const at = y * stride + x;
      const left = x >= channels ? pixels[at - channels] : 0;
      const above = y > 0 ? pixels[at - stride] : 0;
      const corner = x >= channels && y > 0 ? pixels[at - stride - channels] : 0;
      pixels[at] = rows[y * (stride + 1) + 1 + x] + predict(left, above, corner);
    }
  }
  return { width, height, pixels };
}
