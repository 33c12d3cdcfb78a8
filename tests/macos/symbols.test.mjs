// Tests that the check of the debug symbols reports each kind of error, with a program that is built here.
// Takes the name of a case.

import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { build, run } from './program.mjs';
import { check, macosTools, runCase, spoil } from './support.mjs';

/// Builds the program of the fixtures with debug information and splits it. Returns {program, symbols}.
function split(folder, hidden = path.resolve(macosTools, '../..')) {
  const options = ['-g', '-fdebug-compilation-dir=.', `-ffile-prefix-map=${hidden}/=`];
  const whole = build(folder, { options, debug: [] });
  const symbols = path.join(folder, 'program.dSYM');
  run(folder, 'dsymutil-19', ['-o', symbols, whole]);
  const program = path.join(folder, 'program');
  run(folder, 'llvm-strip-19', ['-S', program]);
  return { program, symbols };
}

const inspect = ({ program, symbols }) => check('symbols.mjs', program, symbols, 'program.m');

function finds({ status, lines }, expected) {
  assert.equal(lines.length, 1, lines.join('\n'));
  assert.match(lines[0], expected);
  assert.equal(status, 1);
}

await runCase({
  symbolsOfProgramAreAccepted(folder) {
    const { status, lines } = inspect(split(folder));
    assert.equal(status, 0, lines.join('\n'));
  },

  symbolsOfAnotherBuildAreReported(folder) {
    const { symbols } = split(folder);
    spoil(folder, { file: 'program.m', from: 'hello', to: 'bye' });
    const program = build(folder);
    finds(inspect({ program, symbols }), /arm64: the symbols are of \S{36}, the program is \S{36}/);
  },

  unknownLineIsReported(folder) {
    const built = split(folder);
    const file = path.join(built.symbols, 'Contents/Resources/DWARF/program');
    const bytes = readFileSync(file);
    bytes.write('__rebug_line', bytes.indexOf('__debug_line\0'));
    writeFileSync(file, bytes);
    finds(inspect(built), /arm64: main is read as "main, .*0"/);
  },

  folderOfBuildIsReported(folder) {
    finds(inspect(split(folder, folder)), /the symbols name the folder of the build/);
  },

  missingSymbolsAreReported(folder) {
    const { program } = split(folder);
    const symbols = path.join(folder, 'other.dSYM');
    finds(inspect({ program, symbols }), /there is no .*other\.dSYM/);
  },
});
