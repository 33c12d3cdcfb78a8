// Where the tools of the cross build are: the npm packages of tools/macos.

import { spawnSync } from 'node:child_process';
import { createRequire } from 'node:module';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

export const macosTools = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');

export const listingPackage = path.join(
  macosTools,
  'node_modules',
  '@nativescript',
  'macos-node-api',
);

/// A path as messages show it: from here if it is below, else whole.
export function shownPath(file) {
  const relative = path.relative(process.cwd(), file);
  return relative.startsWith('..') ? file : relative;
}

/// The TypeScript compiler's module.
export function typescript() {
  return createRequire(import.meta.url)('typescript');
}

/// Runs zig with `args`, `input` on its standard input; returns {status, stdout, stderr}.
export function zig(args, { input = '', cwd } = {}) {
  const result = spawnSync(path.join(macosTools, 'zig'), args, {
    input,
    cwd,
    encoding: 'utf8',
    maxBuffer: 1 << 30,
  });
  if (result.error) throw result.error;
  return result;
}

/// The folder of zig's own headers and stubs.
export function zigLibrary() {
  const found = zig(['env']).stdout.match(/\.lib_dir = "([^"]+)"/);
  if (!found) throw new Error('zig does not run; scripts/bootstrap installs it');
  return path.resolve(found[1]);
}
