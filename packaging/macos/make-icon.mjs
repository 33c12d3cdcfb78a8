// Makes the icon of a Mac bundle from a vector drawing.
// Usage: node make-icon.mjs DRAWING.svg ICON.icns
import { execFileSync } from 'node:child_process';
import { writeFileSync } from 'node:fs';
import { decodePng } from './png.mjs';
import { commandLine } from '../../tools/commandLine.mjs';

/// The images in an icon file by type, with their sizes in pixels. Several types have the same size
/// because some are for high-resolution displays. The system draws images below 64 pixels correctly
/// only as packed channels.
const packedPictures = [['ic04', 16], ['ic05', 32]];
const pngPictures = [
  ['ic11', 32], ['ic12', 64], ['ic07', 128], ['ic13', 256],
  ['ic08', 256], ['ic14', 512], ['ic09', 512], ['ic10', 1024],
];

function drawn(drawing, size) {
  return execFileSync('rsvg-convert', ['-w', `${size}`, '-h', `${size}`, drawing],
    { maxBuffer: 1 << 26 });
}

/// The number of equal bytes from `start` on, at most `max`.
function runLength(bytes, start, max) {
  let end = start + 1;
  while (end < bytes.length && end - start < max && bytes[end] === bytes[start]) ++end;
  return end - start;
}

/// Run-length encoding. A byte N below 128 is followed by N + 1 literal bytes. A byte N from 128 on is
/// followed by one byte that is repeated N - 125 times.
function packed(bytes) {
  const result = [];
  let plain = [];
  const flush = () => {
    if (plain.length > 0) result.push(plain.length - 1, ...plain);
    plain = [];
  };
  for (let at = 0; at < bytes.length;) {
    const length = runLength(bytes, at, 130);
    if (length >= 3) {
      flush();
      result.push(length + 125, bytes[at]);
      at += length;
    } else {
      plain.push(bytes[at++]);
      if (plain.length === 128) flush();
    }
  }
  flush();
  return Buffer.from(result);
}

/// The channels in sequence, opacity first.
function packedChannels(png) {
  const { pixels } = decodePng(png);
  const channel = (offset) => packed(pixels.filter((_, index) => index % 4 === offset));
  return Buffer.concat([Buffer.from('ARGB'), channel(3), channel(0), channel(1), channel(2)]);
}

function element(type, data) {
  const head = Buffer.alloc(8);
  head.write(type, 0, 'latin1');
  head.writeUInt32BE(head.length + data.length, 4);
  return Buffer.concat([head, data]);
}

const usage = `usage: make-icon.mjs DRAWING.svg ICON.icns

Draws the icon of the Mac's bundle in all its sizes.
`;
const [drawing, target] = commandLine(usage, { least: 2, most: 2 }).positionals;
const pictures = [
  ...packedPictures.map(([type, size]) => element(type, packedChannels(drawn(drawing, size)))),
  ...pngPictures.map(([type, size]) => element(type, drawn(drawing, size))),
];
writeFileSync(target, element('icns', Buffer.concat(pictures)));
