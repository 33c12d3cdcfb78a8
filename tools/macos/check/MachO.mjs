// A reader of Mach-O executables, single or in a universal file, through what llvm-objdump shows.

import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import path from 'node:path';

/// The images of a file, one for each architecture. Throws if it is no Mach-O file.
export function readImages(file) {
  const bytes = readFileSync(file);
  const slices = show(file, '--universal-headers').matchAll(
    /^architecture (\w+)$[^]*?^ *offset (\d+)$\s*^ *size (\d+)$/gm,
  );
  const images = [...slices].map(([, architecture, offset, size]) => {
    const start = Number(offset);
    return new Image(
      bytes.subarray(start, start + Number(size)),
      contents(file, `--arch=${architecture}`),
      start,
    );
  });
  return images.length ? images : [new Image(bytes, contents(file))];
}

const contents = (file, ...options) =>
  show(file, ...options, '--private-headers', '--chained-fixups', '--bind', '--lazy-bind');

function show(file, ...options) {
  const { status, stdout, stderr, error } = spawnSync(
    'llvm-objdump-19',
    ['--macho', ...options, file],
    { encoding: 'utf8', maxBuffer: 1 << 30 },
  );
  if (status !== 0) throw error ?? new Error(stderr);
  return stdout;
}

/// The lines "name value" of a text. Of a name that occurs again, the first.
const fields = text =>
  Object.fromEntries(
    [...text.matchAll(/^ *(\w+) +(\S.*)$/gm)].reverse().map(([, name, value]) => [name, value]),
  );

export class Image {
  /// {name, address, fileOffset, fileSize}
  segments = [];
  /// {name, address, size, offset}
  sections = [];
  #commands;
  #shown;

  /// `shown` is what llvm-objdump shows of the image, `start` its offset in its file.
  constructor(bytes, shown, start = 0) {
    this.bytes = bytes;
    this.start = start;
    this.#shown = shown;
    const [header, ...blocks] = shown.split(/^Load command \d+$/m);
    const [, architecture, flags] = header.match(/^MH_MAGIC_64 +(\w+) (.*)$/m);
    this.architecture = architecture.toLowerCase();
    this.isPositionIndependent = /\bPIE\b/.test(flags);
    this.#commands = blocks.map(fields);
    for (const block of blocks.filter(text => fields(text).cmd === 'LC_SEGMENT_64')) {
      const [segment, ...sections] = block.split(/^Section$/m).map(fields);
      this.segments.push({
        name: segment.segname,
        address: Number(segment.vmaddr),
        fileOffset: Number(segment.fileoff),
        fileSize: Number(segment.filesize),
      });
      for (const { sectname, addr, size, offset } of sections) {
        this.sections.push({
          name: sectname,
          address: Number(addr),
          size: Number(size),
          offset: Number(offset),
        });
      }
    }
  }

  /// The install names of the libraries, in the order of their numbers in bindings.
  get libraries() {
    return this.#all('LC_LOAD_DYLIB', 'LC_LOAD_WEAK_DYLIB', 'LC_REEXPORT_DYLIB').map(({ name }) =>
      name.replace(/ \(offset \d+\)$/, ''),
    );
  }

  /// {platform: "macos", minos: "13.0", sdk}, or undefined.
  get version() {
    return this.#all('LC_BUILD_VERSION')[0];
  }

  /// The symbols that the loader is to find in other libraries: [{symbol, library}], each once; `library`
  /// is the install name, or undefined where any library may have the symbol.
  get imports() {
    const { libraries } = this;
    const called = short => libraries.find(name => path.basename(name).split('.')[0] === short);
    const chained = this.#shown.matchAll(
      /^ *lib_ordinal = (-?\d+).*\n.*\n *name_offset = \d+ \((\S+)\)$/gm,
    );
    const bound = this.#shown.matchAll(
      /^__\w+ +__\w+ +0x\w+ +(?:pointer +-?\d+ +)?(\S+) +(\S+)(?: \(weak import\))?$/gm,
    );
    const found = [...chained]
      .map(([, ordinal, symbol]) => ({ symbol, library: libraries[ordinal - 1] }))
      .concat([...bound].map(([, short, symbol]) => ({ symbol, library: called(short) })));
    return [...new Map(found.map(each => [`${each.symbol} ${each.library}`, each])).values()];
  }

  /// The bytes of the code signature, {start, size}, or undefined.
  get signature() {
    const [command] = this.#all('LC_CODE_SIGNATURE');
    return command && { start: Number(command.dataoff), size: Number(command.datasize) };
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
    if (!this.#all('LC_DYLD_CHAINED_FIXUPS').length) return Number(word);
    if (word === 0n || word >> 63n) return 0;
    const target = Number(word & 0xfffffffffn);
    const base = this.segments.find(segment => segment.name === '__TEXT').address;
    return target < base ? target + base : target;
  }

  #all(...names) {
    return this.#commands.filter(({ cmd }) => names.includes(cmd));
  }
}
