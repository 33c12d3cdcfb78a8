// A reader of Mach-O executables: 64-bit, little-endian, single or in a universal file.

import { readFileSync } from 'node:fs';

const magics = { thin: 0xfeedfacf, universal: 0xcafebabe };
const architectures = { 0x0100000c: 'arm64', 0x01000007: 'x86_64' };

export const commands = {
  segment: 0x19,
  library: 0x0c,
  weakLibrary: 0x80000018,
  reexport: 0x8000001f,
  uuid: 0x1b,
  signature: 0x1d,
  bindings: 0x80000022,
  fixups: 0x80000034,
  version: 0x32,
};

/// The images of a file, one for each architecture. Throws if it is no Mach-O file.
export function readImages(file) {
  const bytes = readFileSync(file);
  if (bytes.readUInt32LE(0) === magics.thin) return [new Image(bytes)];
  if (bytes.readUInt32BE(0) !== magics.universal) throw new Error(`${file} is no Mach-O file`);
  return Array.from({ length: bytes.readUInt32BE(4) }, (_, index) => {
    const entry = 8 + index * 20;
    const offset = bytes.readUInt32BE(entry + 8);
    return new Image(bytes.subarray(offset, offset + bytes.readUInt32BE(entry + 12)), offset);
  });
}

export class Image {
  /// {number, offset, size} in the file's order.
  commands = [];
  /// {name, address, size, fileOffset, fileSize, sections}; a section is {segment, name, address,
  /// size, offset}.
  segments = [];

  /// `start` is the offset of the image in its file.
  constructor(bytes, start = 0) {
    this.bytes = bytes;
    this.start = start;
    this.architecture = architectures[bytes.readUInt32LE(4)] ?? 'unknown';
    this.flags = bytes.readUInt32LE(24);
    let offset = 32;
    for (let left = bytes.readUInt32LE(16); left > 0; --left) {
      const command = {
        number: bytes.readUInt32LE(offset),
        offset,
        size: bytes.readUInt32LE(offset + 4),
      };
      this.commands.push(command);
      if (command.number === commands.segment) this.segments.push(this.#segment(offset));
      offset += command.size;
    }
  }

  all(...numbers) {
    return this.commands.filter(command => numbers.includes(command.number));
  }

  /// The install names of the libraries, in the order of their numbers in bindings.
  get libraries() {
    return this.all(commands.library, commands.weakLibrary, commands.reexport).map(({ offset }) =>
      this.text(offset + this.bytes.readUInt32LE(offset + 8)),
    );
  }

  /// {platform, minimum: "13.0", sdk}, or undefined.
  get version() {
    const [command] = this.all(commands.version);
    if (!command) return undefined;
    const shown = number => `${number >>> 16}.${(number >>> 8) & 255}`;
    const word = at => this.bytes.readUInt32LE(command.offset + at);
    return { platform: word(8), minimum: shown(word(12)), sdk: shown(word(16)) };
  }

  get isPositionIndependent() {
    return (this.flags & 0x200000) !== 0;
  }

  sections(name) {
    return this.segments
      .flatMap(segment => segment.sections)
      .filter(section => section.name === name);
  }

  /// The zero-terminated text at an offset in the file.
  text(offset) {
    return this.bytes.toString('utf8', offset, this.bytes.indexOf(0, offset));
  }

  /// The offset in the file of the byte at an address.
  offsetOf(address) {
    const segment = this.segments.find(
      each => address >= each.address && address < each.address + each.fileSize,
    );
    if (!segment) throw new Error(`no part of the file is at 0x${address.toString(16)}`);
    return address - segment.address + segment.fileOffset;
  }

  /// The address in the pointer at an offset in the file, 0 for none. In an image with chained
  /// fixups the word also contains the link to the next pointer, and the address may be relative to
  /// the start of the image.
  pointer(offset) {
    const word = this.bytes.readBigUInt64LE(offset);
    if (!this.all(commands.fixups).length) return Number(word);
    if (word === 0n || word >> 63n) return 0;
    const target = Number(word & 0xfffffffffn);
    const base = this.segments.find(segment => segment.name === '__TEXT').address;
    return target < base ? target + base : target;
  }

  #segment(offset) {
    const name = at => this.bytes.toString('latin1', at, at + 16).replace(/\0+$/, '');
    const long = at => Number(this.bytes.readBigUInt64LE(at));
    const segment = {
      name: name(offset + 8),
      address: long(offset + 24),
      size: long(offset + 32),
      fileOffset: long(offset + 40),
      fileSize: long(offset + 48),
    };
    segment.sections = Array.from({ length: this.bytes.readUInt32LE(offset + 64) }, (_, index) => {
      const at = offset + 72 + index * 80;
      return {
        segment: segment.name,
        name: name(at),
        address: long(at + 32),
        size: long(at + 40),
        offset: this.bytes.readUInt32LE(at + 48),
      };
    });
    return segment;
  }
}
