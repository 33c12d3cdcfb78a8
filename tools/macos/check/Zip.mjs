// A reader of the zip archives that packages are: not encrypted, not split, below 4 GiB.

import { inflateRawSync } from 'node:zlib';

/// [{name, mode: the file's mode if a Unix tool packed it, time: the DOS date and time as a number,
/// bytes()}] in the archive's order.
export function readZip(archive) {
  const end = archive.lastIndexOf(Buffer.from('PK\x05\x06', 'latin1'));
  if (end < 0) throw new Error('no zip archive');
  const entries = [];
  let at = archive.readUInt32LE(end + 16);
  for (let left = archive.readUInt16LE(end + 10); left > 0; --left) {
    const size = archive.readUInt16LE(at + 28);
    entries.push(entry(archive, at, size));
    at += 46 + size + archive.readUInt16LE(at + 30) + archive.readUInt16LE(at + 32);
  }
  return entries;
}

function entry(archive, at, nameSize) {
  const madeByUnix = archive[at + 5] === 3;
  return {
    name: archive.toString('utf8', at + 46, at + 46 + nameSize),
    mode: madeByUnix ? archive.readUInt16LE(at + 40) : undefined,
    time: archive.readUInt32LE(at + 12),
    bytes() {
      const local = archive.readUInt32LE(at + 42);
      const start =
        local + 30 + archive.readUInt16LE(local + 26) + archive.readUInt16LE(local + 28);
      const packed = archive.subarray(start, start + archive.readUInt32LE(at + 20));
      return archive.readUInt16LE(at + 10) === 0 ? packed : inflateRawSync(packed);
    },
  };
}
