#!/usr/bin/env node
// Compares our declarations of Apple's frameworks, and the stubs beside them, with the listing of the
// real ones. Prints "file:line: what is declared: what the SDK has" for each difference; exits
// with 1 if there are any.

import path from 'node:path';
import { commandLine } from '../../commandLine.mjs';
import { compareStubs } from './compareStubs.mjs';
import { compareTypes } from './compareTypes.mjs';
import { compareValues } from './compareValues.mjs';
import { Declarations } from './Declarations.mjs';
import { exceptions, numbers } from './known.mjs';
import { Listing } from './Listing.mjs';
import { Spellings } from './Spellings.mjs';
import { macosTools, shownPath } from './toolchain.mjs';

const usage = `usage: declarations.mjs [FOLDER]

Compares the declarations of the frameworks in FOLDER, or in tools/macos/Frameworks, with the listing of
the real ones, and prints each difference.
`;
const [given] = commandLine(usage, { most: 1 }).positionals;
const folder = path.resolve(given ?? path.join(macosTools, 'Frameworks'));
const declarations = readDeclarations();
const listing = new Listing();

// A compiler error is printed in the compiler's words.
function readDeclarations() {
  try {
    return new Declarations(folder);
  } catch (error) {
    console.log(error.message);
    process.exit(1);
  }
}

const used = new Set();
const findings = new Set();
function report({ file, line }, subject, message) {
  if (subject in exceptions) {
    used.add(subject);
    return;
  }
  const place = shownPath(file);
  findings.add(`${line ? `${place}:${line}` : place}: ${subject}: ${message}`);
}

compareTypes(declarations, listing, new Spellings(), report);
compareValues(declarations, listing, report);
compareStubs(folder, declarations, listing, report);

// An exception in known.mjs that no name needs is a leftover.
if (!given) {
  const values = declarations.enumerations.flatMap(enumeration => enumeration.values);
  const declared = new Set(declarations.constants.concat(values).map(({ name }) => name));
  const leftovers = Object.keys(numbers)
    .filter(name => !declared.has(name))
    .concat(Object.keys(exceptions).filter(name => !used.has(name)));
  for (const name of leftovers) findings.add(`known.mjs: ${name}: is needed no more`);
}

for (const finding of findings) console.log(finding);
for (const subject of used) console.log(`accepted: ${subject}: ${exceptions[subject]}`);
const members = declarations.classes
  .concat(declarations.protocols, declarations.categories)
  .reduce((sum, type) => sum + type.members.length, 0);
console.log(
  `${declarations.classes.length} classes, ${declarations.protocols.length} protocols, ` +
    `${members} methods and properties, ${declarations.functions.length} functions, ` +
    `${declarations.constants.length} constants, ${declarations.enumerations.length} enumerations and ` +
    `${declarations.structures.length} structures: ` +
    `${findings.size || 'no'} differences`,
);
process.exitCode = findings.size ? 1 : 0;
