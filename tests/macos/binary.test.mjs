// Tests that the check of programs reports each kind of error, in programs that are built here. Takes
// the name of a case.

import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { build, libraries, zig } from './program.mjs';
import { check, runCase, spoil } from './support.mjs';

/// Builds it for Intel processors with zig's linker, which writes the older tables for the loader.
function buildForIntel(folder) {
  const declared = path.join(folder, 'Frameworks');
  zig(folder, 'x86_64', '13.0', ['program.m', '-s', '-F', declared, ...libraries, '-o', 'program']);
  return path.join(folder, 'program');
}

/// Puts an image for Apple silicon into a universal file, at byte `start`.
function join(folder, image, start) {
  const bytes = readFileSync(image);
  const header = Buffer.alloc(start);
  [0xcafebabe, 1, 0x0100000c, 0, start, bytes.length, Math.log2(start)].forEach((word, index) =>
    header.writeUInt32BE(word, index * 4),
  );
  const file = path.join(folder, 'universal');
  writeFileSync(file, Buffer.concat([header, bytes]));
  return file;
}

const inspect = (folder, file, architectures = 'arm64') =>
  check(
    'binary.mjs',
    file,
    '--frameworks',
    path.join(folder, 'Frameworks'),
    '--architectures',
    architectures,
  );

/// Expects that the check reports `expected` and nothing else.
function finds({ status, lines }, expected) {
  const findings = lines.filter(line => !/^(?:arm64|x86_64): /.test(line));
  assert.equal(findings.length, 1, lines.join('\n'));
  assert.match(findings[0], expected);
  assert.equal(status, 1);
}

function accepts({ status, lines }) {
  assert.equal(status, 0, lines.join('\n'));
}

/// Changes the source before it is built.
const write = (folder, from, to) => spoil(folder, { file: 'program.m', from, to });

await runCase({
  soundProgramIsAccepted(folder) {
    accepts(inspect(folder, build(folder)));
  },

  intelProgramIsAccepted(folder) {
    accepts(inspect(folder, buildForIntel(folder), 'x86_64'));
  },

  missingArchitectureIsReported(folder) {
    finds(
      inspect(folder, build(folder), 'arm64,x86_64'),
      /is for arm64; it must be for arm64 and x86_64/,
    );
  },

  universalFileIsAccepted(folder) {
    accepts(inspect(folder, join(folder, build(folder), 0x4000)));
  },

  imageOffPageBoundaryIsReported(folder) {
    finds(inspect(folder, join(folder, build(folder), 0x1000)), /starts at byte 4096 of the file/);
  },

  undeclaredSelectorIsReported(folder) {
    write(
      folder,
      '@interface Greeter',
      '@interface NSMenu (More)\n- (void)openAtOnce;\n@end\n@interface Greeter',
    );
    write(folder, '  return [greeter', '  [menu openAtOnce];\n  return [greeter');
    finds(inspect(folder, build(folder)), /\(arm64\): sends openAtOnce, which nothing declares/);
  },

  selectorInExpressionIsReported(folder) {
    write(
      folder,
      '  return [greeter',
      '  SEL later = @selector(openAtOnce:);\n  printf("%p", (void*)later);\n  return [greeter',
    );
    finds(inspect(folder, build(folder)), /sends openAtOnce:, which nothing declares/);
  },

  misspeltDelegateMethodIsReported(folder) {
    write(
      folder,
      '@implementation Greeter',
      '@implementation Greeter\n- (void)menuNeedUpdate:(NSMenu*)menu {\n}',
    );
    finds(
      inspect(folder, build(folder)),
      /Greeter has a method menuNeedUpdate:, which nothing calls/,
    );
  },

  newerMinimumSystemIsReported(folder) {
    finds(
      inspect(folder, build(folder, { system: '14.0' })),
      /needs macOS 14\.0; it must run from 13\.0 on/,
    );
  },

  symbolMissingInSystemIsReported(folder) {
    const stub = path.join(folder, 'Frameworks', 'AppKit.framework', 'AppKit.tbd');
    const own = readFileSync(stub);
    spoil(folder, {
      file: 'Frameworks/AppKit.framework/AppKit.tbd',
      from: '    objc-classes:',
      to: '    symbols:           [ _NSOpenAtOnce ]\n    objc-classes:',
    });
    write(
      folder,
      'int main(void) {',
      'void NSOpenAtOnce(void);\nint main(void) {\n  NSOpenAtOnce();',
    );
    const file = buildForIntel(folder);
    writeFileSync(stub, own);
    finds(inspect(folder, file, 'x86_64'), /wants _NSOpenAtOnce, which .*AppKit has not/);
  },

  wrongLibraryIsReported(folder) {
    spoil(folder, {
      file: 'Frameworks/AppKit.framework/AppKit.tbd',
      from: 'Versions/C',
      to: 'Versions/A',
    });
    const file = build(folder);
    spoil(folder, {
      file: 'Frameworks/AppKit.framework/AppKit.tbd',
      from: 'Versions/A',
      to: 'Versions/C',
    });
    const { status, lines } = inspect(folder, file);
    assert.match(lines.join('\n'), /is linked to .*Versions\/A\/AppKit\n/);
    assert.match(lines.join('\n'), /is not linked to .*Versions\/C\/AppKit\n/);
    assert.equal(status, 1);
  },

  buildPathIsReported(folder) {
    write(folder, '"hello %d\\n"', '"/builds/driftmark/main.mm %d\\n"');
    finds(inspect(folder, build(folder)), /holds the path \/builds\/driftmark\/main\.mm/);
  },

  brokenSignatureIsReported(folder) {
    const file = build(folder);
    const bytes = readFileSync(file);
    bytes[bytes.indexOf('hello')] ^= 1;
    writeFileSync(file, bytes);
    finds(inspect(folder, file), /the digest of page 0 \(from byte 0\) is not its own/);
  },

  missingSignatureIsReported(folder) {
    const file = build(folder);
    const bytes = readFileSync(file);
    // Replaces the command for the signature by one that the check ignores.
    bytes.writeUInt32LE(0x2b, bytes.indexOf(Buffer.from([0x1d, 0, 0, 0, 0x10, 0, 0, 0])));
    writeFileSync(file, bytes);
    finds(inspect(folder, file), /is not signed/);
  },

  missingProgramIsReported(folder) {
    finds(inspect(folder, path.join(folder, 'nothing')), /there is no .*nothing/);
  },
});
