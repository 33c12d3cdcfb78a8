// Builds the program of the fixtures.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import path from 'node:path';
import { zigLibrary } from '../../tools/macos/check/toolchain.mjs';
import { macosTools } from './support.mjs';

export const libraries = ['-L', path.join(macosTools, 'lib'), '-lobjc'].concat([
  '-framework',
  'Foundation',
  '-framework',
  'AppKit',
]);

/// Builds the program of the fixtures in `folder` for Apple silicon, like the product. Returns the file.
export function build(folder, { system = '13.0', options = [], debug = ['-S'] } = {}) {
  const declared = path.join(folder, 'Frameworks');
  zig(folder, 'aarch64', system, [...options, '-c', 'program.m', '-o', 'program.o']);
  run(folder, 'ld64.lld-19', [
    ...['-arch', 'arm64', '-platform_version', 'macos', system, '14.0', '-adhoc_codesign'],
    ...debug,
    ...['-F', declared, '-L', path.join(zigLibrary(), 'libc', 'darwin')],
    ...['program.o', ...libraries, '-lSystem', '-o', 'program'],
  ]);
  return path.join(folder, 'program');
}

export function zig(folder, architecture, system, args) {
  const target = ['-target', `${architecture}-macos.${system}`];
  const options = ['-fobjc-arc', '-O1', '-iframework', path.join(folder, 'Frameworks')];
  run(folder, path.join(macosTools, 'zig'), ['cc', ...target, ...options, ...args]);
}

export function run(cwd, program, args) {
  const { status, stderr, error } = spawnSync(program, args, { cwd, encoding: 'utf8' });
  assert.equal(status, 0, error?.message ?? stderr);
}
