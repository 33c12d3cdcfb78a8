#!/usr/bin/env node
// Checks a program built for macOS: both architectures, their minimum system, the libraries, and that
// everything it calls is declared and exists. Prints each difference as
// "file (architecture): what is wrong"; exits with 1 if there are any.

import { existsSync } from 'node:fs';
import path from 'node:path';
import { commandLine } from '../../commandLine.mjs';
import { checkImage } from './checkImage.mjs';
import { Declarations } from './Declarations.mjs';
import { readImages } from './MachO.mjs';
import { offered, readStub } from './Stubs.mjs';
import { frameworksIn } from './SyntaxTree.mjs';
import { macosTools, shownPath, zigLibrary } from './toolchain.mjs';

const usage = `usage: binary.mjs [--frameworks FOLDER] [--architectures arm64,x86_64] FILE

Checks a program built for macOS, and prints each difference.
`;
const {
  values: options,
  positionals: [file],
} = commandLine(usage, {
  options: {
    frameworks: { type: 'string', default: path.join(macosTools, 'Frameworks') },
    architectures: { type: 'string', default: 'arm64,x86_64' },
  },
  least: 1,
  most: 1,
});

if (!existsSync(file)) {
  console.log(`there is no ${shownPath(file)}; scripts/package-macos makes the program`);
  process.exit(1);
}

const declarations = new Declarations(options.frameworks);
const stubs = new Map(
  [
    ...frameworksIn(options.frameworks).map(name =>
      path.join(options.frameworks, `${name}.framework`, `${name}.tbd`),
    ),
    path.join(macosTools, 'lib', 'libobjc.tbd'),
    path.join(zigLibrary(), 'libc', 'darwin', 'libSystem.tbd'),
  ]
    .map(readStub)
    .map(documents => [documents[0].installName, documents]),
);

let findings = 0;
const name = shownPath(file);
const images = readImages(file);
const wanted = options.architectures.split(',');
const present = images.map(image => image.architecture);
const report = (where, message) => {
  ++findings;
  console.log(`${name}${where && ` (${where})`}: ${message}`);
};
if (wanted.join() !== [...present].sort().join()) {
  report('', `is for ${present.join(' and ')}; it must be for ${wanted.join(' and ')}`);
}
for (const image of images) {
  const libraries = new Map(
    [...stubs].map(([library, documents]) => [library, offered(documents, image.architecture)]),
  );
  const facts = checkImage(
    image,
    { declarations, libraries, root: path.resolve(macosTools, '../..') },
    message => report(image.architecture, message),
  );
  console.log(`${image.architecture}: ${facts}`);
}
process.exitCode = findings ? 1 : 0;
