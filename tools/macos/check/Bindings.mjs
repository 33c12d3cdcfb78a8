// The symbols that the loader is to find in other libraries.

import { commands } from './MachO.mjs';

/// [{symbol, library}], each once; `library` is the install name, or undefined where any library
/// may have the symbol.
export function imports(image) {
  const [opcodes] = image.all(commands.bindings);
  const [chained] = image.all(commands.fixups);
  const found = opcodes ? byOpcodes(image, opcodes) : chained ? byFixups(image, chained) : [];
  const once = new Map(found.map(each => [`${each.symbol} ${each.ordinal}`, each]));
  return [...once.values()].map(({ symbol, ordinal }) => ({
    symbol,
    library: image.libraries[ordinal - 1],
  }));
}

// The tables are programs for a small machine. Weak bindings (the third table) name what this very
// program offers and another might replace; they are no imports.
function byOpcodes(image, { offset }) {
  const table = at => {
    const start = image.bytes.readUInt32LE(offset + at);
    return runOpcodes(
      image.bytes.subarray(start, start + image.bytes.readUInt32LE(offset + at + 4)),
    );
  };
  return [...table(16), ...table(32)];
}

function runOpcodes(program) {
  const found = [];
  let at = 0;
  let ordinal = 0;
  const number = () => {
    let value = 0;
    for (let shift = 0; ; shift += 7) {
      const byte = program[at++];
      value += (byte & 0x7f) * 2 ** shift;
      if (byte < 0x80) return value;
    }
  };
  const text = () => {
    const end = program.indexOf(0, at);
    const value = program.toString('latin1', at, end);
    at = end + 1;
    return value;
  };
  let symbol;
  while (at < program.length) {
    const byte = program[at++];
    const immediate = byte & 0x0f;
    switch (byte & 0xf0) {
      case 0x10:
        ordinal = immediate;
        break;
      case 0x20:
        ordinal = number();
        break;
      case 0x30:
        ordinal = immediate === 0 ? 0 : immediate - 16;
        break;
      case 0x40:
        symbol = text();
        break;
      case 0x60:
      case 0x70:
      case 0x80:
        number();
        break; // addend, place, step
      case 0x90:
      case 0xb0:
        found.push({ symbol, ordinal });
        break;
      case 0xa0:
        found.push({ symbol, ordinal });
        number();
        break;
      case 0xc0:
        found.push({ symbol, ordinal });
        number();
        number();
        break;
      default:
        break; // the end of one lazy binding; the kind of pointer
    }
  }
  return found;
}

// The newer form: a table of the symbols.
function byFixups(image, { offset }) {
  const start = image.bytes.readUInt32LE(offset + 8);
  const word = at => image.bytes.readUInt32LE(start + at);
  const [, , table, names, count, format] = [0, 4, 8, 12, 16, 20].map(word);
  if (format !== 1) throw new Error(`imports of format ${format} are not known`);
  return Array.from({ length: count }, (_, index) => {
    const entry = word(table + index * 4);
    return { symbol: image.text(start + names + (entry >>> 9)), ordinal: (entry << 24) >> 24 };
  });
}
