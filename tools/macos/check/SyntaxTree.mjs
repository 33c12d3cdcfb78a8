// The compiler's syntax tree of headers.

import { existsSync, readdirSync } from 'node:fs';
import path from 'node:path';
import { zig, zigLibrary } from './toolchain.mjs';

/// The names of the frameworks below `folder`, sorted.
export function frameworksIn(folder) {
  return readdirSync(folder)
    .filter(name => name.endsWith('.framework'))
    .map(name => name.replace(/\.framework$/, ''))
    .sort();
}

/// The tree of all that the headers of the frameworks below `folder` declare and include. Each
/// declaration has its `place`, {file, line, offset}. Throws with the compiler's message if they
/// do not compile.
export function readSyntaxTree(folder) {
  const library = zigLibrary();
  const umbrella = frameworksIn(folder)
    .filter(name => existsSync(path.join(folder, `${name}.framework`, 'Headers', `${name}.h`)))
    .map(name => `#import <${name}/${name}.h>\n`)
    .join('');
  // The compiler itself: "zig c++" caches results and would print nothing the second time.
  const { status, stdout, stderr } = zig(
    [
      ['clang', '-target', 'arm64-apple-macos13.0', '-nostdinc'],
      ['-isystem', path.join(library, 'include')],
      ['-isystem', path.join(library, 'libc', 'include', 'any-darwin-any')],
      ['-F', folder, '-std=c++20', '-fobjc-arc', '-Wno-nullability-completeness'],
      ['-fsyntax-only', '-Xclang', '-ast-dump=json', '-x', 'objective-c++', '-'],
    ].flat(),
    { input: umbrella },
  );
  if (status !== 0) throw new Error(`The declarations do not compile:\n${stderr}`);
  const tree = JSON.parse(stdout);
  locate(tree);
  return tree;
}

// Gives every declaration its place. The tree names a file and a line only where they differ from
// those of the location printed before, in the order of printing.
function locate(tree) {
  let file;
  let line;
  const note = location => {
    file = location.file ?? file;
    line = location.line ?? line;
    return { file, line, offset: location.offset };
  };
  const visit = node => {
    for (const [key, value] of Object.entries(node)) {
      if (value === null || typeof value !== 'object') continue;
      if (key === 'loc') node.place = visitLocation(value);
      else if (key === 'range') {
        visitLocation(value.begin);
        visitLocation(value.end);
      } else visit(value);
    }
  };
  const visitLocation = location => {
    if (location.spellingLoc) note(location.spellingLoc);
    return location.expansionLoc
      ? note(location.expansionLoc)
      : location.offset === undefined
        ? undefined
        : note(location);
  };
  visit(tree);
}

/// The arguments of a method or function: [{name, type}].
export const parameters = node =>
  (node.inner ?? [])
    .filter(child => child.kind === 'ParmVarDecl')
    .map(child => ({ name: child.name ?? '', type: child.type }));

/// The constants of an enumeration: [{name, place, value}].
export function enumerationValues(node) {
  let next = 0;
  return (node.inner ?? [])
    .filter(child => child.kind === 'EnumConstantDecl')
    .map(child => {
      const value = child.inner?.some(inner => inner.value !== undefined)
        ? constantValue(child.inner.find(inner => inner.value !== undefined))
        : next;
      next = value + 1;
      return { name: child.name, place: child.place, value };
    });
}

/// The number that an initialiser is, or undefined for what is no literal.
export function constantValue(node) {
  if (!node) return undefined;
  if (node.value !== undefined) return Number(node.value);
  if (node.inner?.length !== 1) return undefined;
  const inner = constantValue(node.inner[0]);
  return node.kind === 'UnaryOperator' && node.opcode === '-' ? -inner : inner;
}
