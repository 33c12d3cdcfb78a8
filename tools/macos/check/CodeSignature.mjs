// The code signature of an executable: a digest of each of its pages. (Its numbers are big-endian.)

import { createHash } from 'node:crypto';

const magics = { blobs: 0xfade0cc0, directory: 0xfade0c02 };

/// The faults of the image's signature: none if it is valid, undefined if there is no signature.
export function signatureFaults(image) {
  if (!image.signature) return undefined;
  const { start, size } = image.signature;
  if (start + size > image.bytes.length) return ['the signature is cut off'];
  const directory = findDirectory(image.bytes.subarray(start, start + size));
  if (!directory) return ['the signature has no code directory'];

  const word = at => directory.readUInt32BE(at);
  const problems = [];
  const limit = word(32);
  if (limit !== start) problems.push(`the signature covers ${limit} bytes of ${start}`);
  if (directory[36] !== 32 || directory[37] !== 2) problems.push('its digests are not SHA-256');
  const page = 2 ** directory[39];
  const count = word(28);
  if (count !== Math.ceil(limit / page))
    problems.push(`it has ${count} digests for ${limit} bytes`);
  for (let index = 0; index < count; ++index) {
    const bytes = image.bytes.subarray(index * page, Math.min((index + 1) * page, limit));
    const expected = directory.subarray(word(16) + index * 32, word(16) + (index + 1) * 32);
    if (!createHash('sha256').update(bytes).digest().equals(expected)) {
      problems.push(`the digest of page ${index} (from byte ${index * page}) is not its own`);
    }
  }
  return problems;
}

function findDirectory(blobs) {
  if (blobs.readUInt32BE(0) !== magics.blobs) return undefined;
  return Array.from({ length: blobs.readUInt32BE(8) }, (_, index) =>
    blobs.subarray(blobs.readUInt32BE(16 + index * 8)),
  ).find(blob => blob.readUInt32BE(0) === magics.directory);
}
