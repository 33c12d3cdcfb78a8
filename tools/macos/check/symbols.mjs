#!/usr/bin/env node
// Checks the debug symbols of a program: they are of this very program, for each of its processors, name the
// line of main, and contain no path of the build. Prints each difference; exits with 1 if there are any.

import { spawnSync } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import path from 'node:path';
import { commandLine } from '../../commandLine.mjs';
import { macosTools, shownPath } from './toolchain.mjs';

const usage = `usage: symbols.mjs PROGRAM SYMBOLS.dSYM SOURCE

Checks the debug symbols of a program, and prints each difference. SOURCE is the source of main, as the
symbols name it.
`;
const [program, folder, source] = commandLine(usage, { least: 3, most: 3 }).positionals;
const symbols = path.join(folder, 'Contents', 'Resources', 'DWARF', path.basename(program));

function run(tool, ...args) {
  const { stdout, error } = spawnSync(`${tool}-19`, args, { encoding: 'utf8' });
  if (error) throw error;
  return stdout;
}

/// architecture -> UUID
function identifiers(file) {
  const lines = run('llvm-dwarfdump', '--uuid', file).matchAll(/^UUID: (\S+) \((\w+)\)/gm);
  return new Map([...lines].map(([, uuid, architecture]) => [architecture, uuid]));
}

/// "main, FILE:LINE", as a crash report is read.
function nameOfMain(architecture) {
  const listed = run('llvm-nm', `--arch=${architecture}`, symbols);
  const [, address] = listed.match(/^([0-9a-f]+) \w _main$/m) ?? [];
  const options = [`--default-arch=${architecture}`, `--dsym-hint=${folder}`, `--obj=${program}`];
  const [name, place = ''] = run('llvm-symbolizer', ...options, `0x${address}`).split('\n');
  return `${name}, ${place.replace(/^\.\//, '').replace(/:\d+$/, '')}`;
}

function* differences() {
  const missing = [program, symbols].find(file => !existsSync(file));
  if (missing) return yield `there is no ${shownPath(missing)}; scripts/package-macos makes it`;
  const present = identifiers(symbols);
  for (const [architecture, uuid] of identifiers(program)) {
    const own = present.get(architecture);
    if (own !== uuid) {
      yield `${architecture}: the symbols are of ${own ?? 'no program'}, the program is ${uuid}`;
      continue;
    }
    const found = nameOfMain(architecture);
    if (!found.match(/^main, (.*):[1-9]\d*$/)?.[1].endsWith(source))
      yield `${architecture}: main is read as "${found}"`;
  }
  if (readFileSync(symbols).includes(`${path.resolve(macosTools, '../..')}/`))
    yield 'the symbols name the folder of the build';
}

const problems = [...differences()];
for (const problem of problems) console.log(`${shownPath(folder)}: ${problem}`);
process.exitCode = problems.length ? 1 : 0;
