// Linker stubs (text-based stubs of libraries, version 4).

import { readFileSync } from 'node:fs';

/// Reads the documents of a stub: [{file, installName, targets, exports}], each of the exports being
/// {targets, symbols, classes}: symbols in the linker's spelling, without those of the classes.
export function readStub(file) {
  return readFileSync(file, 'utf8')
    .split(/^---.*$/m)
    .slice(1)
    .map(text => ({
      file,
      installName: text.match(/^install-name:\s*'?([^'\n]+?)'?\s*$/m)?.[1],
      targets: list(text.match(/^targets:\s*\[([^\]]*)\]/m)?.[1]),
      exports: [
        ...text.matchAll(/^ +- targets:\s*\[([^\]]*)\](.*(?:\n(?! +- targets:|\S).*)*)/gm),
      ].map(([, targets, block]) => ({
        targets: list(targets),
        symbols: ['symbols', 'weak-symbols', 'thread-local-symbols'].flatMap(key =>
          lists(block, key),
        ),
        classes: lists(block, 'objc-classes'),
      })),
    }));
}

/// The names that the documents of a library's stub export for `architecture`.
export function offered(documents, architecture) {
  const fits = target => target === `${architecture}-macos` || target === `${architecture}e-macos`;
  const names = documents
    .flatMap(document => document.exports)
    .filter(block => block.targets.some(fits))
    .flatMap(({ symbols, classes }) => [
      ...symbols,
      ...classes.flatMap(name => [`_OBJC_CLASS_$_${name}`, `_OBJC_METACLASS_$_${name}`]),
    ]);
  return new Set(names);
}

const list = text =>
  (text ?? '')
    .split(',')
    .map(item => item.trim().replace(/^['"]|['"]$/g, ''))
    .filter(Boolean);

const lists = (text, key) =>
  [...text.matchAll(new RegExp(`^ +${key}:\\s*\\[([^\\]]*)\\]`, 'gm'))].flatMap(match =>
    list(match[1]),
  );
