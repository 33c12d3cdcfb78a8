// Compares the linker stubs of the frameworks with the listing and the declarations.

import { existsSync } from 'node:fs';
import path from 'node:path';
import { readStub } from './Stubs.mjs';
import { frameworksIn } from './SyntaxTree.mjs';

/// Core Foundation's class of constant strings: the compiler refers to it, no header declares it.
const compilerSymbols = new Set(['___CFConstantStringClassReference']);

/// The version folder of each framework's library, which the listing does not contain.
const versions = { AppKit: 'C', Foundation: 'C', CoreFoundation: 'A', ServiceManagement: 'A' };

/// Calls report(place, subject, message) for each name in the stubs below `folder` that the framework
/// does not have or the headers do not declare, and for each declared name that a stub lacks.
export function compareStubs(folder, declarations, listing, report) {
  for (const framework of frameworksIn(folder)) {
    const file = path.join(folder, `${framework}.framework`, `${framework}.tbd`);
    if (!existsSync(file)) {
      report({ file }, framework, 'has no stub');
      continue;
    }
    for (const stub of readStub(file)) compareStub(framework, stub, declarations, listing, report);
  }
}

function compareStub(framework, stub, declarations, listing, report) {
  const place = { file: stub.file };
  const name = `/System/Library/Frameworks/${framework}.framework/Versions/${versions[framework]}/${framework}`;
  if (stub.installName !== name)
    report(place, 'install name', `is ${stub.installName}; it must be ${name}`);
  for (const target of ['arm64-macos', 'x86_64-macos']) {
    if (!stub.targets.includes(target)) report(place, target, 'is no target of the stub');
  }

  const ours = declared => declarations.framework(declared.place) === framework;
  const classes = new Set(declarations.classes.filter(ours).map(declared => declared.name));
  const all = key => [...new Set(stub.exports.flatMap(block => block[key]))];
  for (const symbol of all('classes')) {
    const listed = listing.class(symbol);
    if (!belongs(listed, framework)) report(place, symbol, `${framework} has no such class`);
    else if (!classes.has(symbol))
      report(place, symbol, `a class that ${framework}'s headers do not declare`);
  }

  const symbols = [
    ...declarations.functions.filter(declared => !declared.inlined),
    ...declarations.constants.filter(declared => declared.value === undefined),
  ].filter(ours);
  const declared = new Set(symbols.map(symbol => symbol.name));
  for (const symbol of all('symbols')) {
    const own = symbol.replace(/^_/, '');
    if (compilerSymbols.has(symbol)) continue;
    const listed = listing.function(own) ?? listing.constant(own);
    if (!belongs(listed, framework)) report(place, symbol, `${framework} has no such symbol`);
    else if (!declared.has(own))
      report(place, symbol, `a symbol that ${framework}'s headers do not declare`);
  }
  for (const symbol of symbols) {
    if (!all('symbols').includes(`_${symbol.name}`)) {
      report(symbol.place, symbol.name, `declared, but not in ${framework}'s stub`);
    }
  }
}

const belongs = (listed, framework) => listed && [framework, 'Runtime'].includes(listed.framework);
