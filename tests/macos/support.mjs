// Helpers for the tests of the checks.

import { spawnSync } from 'node:child_process';
import { cpSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
export const fixtures = path.join(here, 'fixtures');
export const macosTools = path.resolve(here, '../../tools/macos');

/// Runs a script of tools/macos/check; returns {status, lines: what it printed}.
export function check(script, ...args) {
  const { status, stdout, stderr } = spawnSync(
    process.execPath,
    [path.join(macosTools, 'check', script), ...args],
    { encoding: 'utf8' },
  );
  return { status, lines: (stdout + stderr).trim().split('\n') };
}

/// Replaces `from` by `to` in `file`, in a copy of the fixtures below `folder`.
export function spoil(folder, { file, from, to }) {
  const target = path.join(folder, file);
  const text = readFileSync(target, 'utf8');
  if (!text.includes(from)) throw new Error(`${file} has no ${from}`);
  writeFileSync(
    target,
    text.replace(from, () => to),
  );
}

/// Runs the case that the command line names. `cases` is name -> function of a folder with a copy of
/// the fixtures, which is removed afterwards.
export async function runCase(cases) {
  const test = cases[process.argv[2]];
  if (!test) throw new Error(`no such case; there are ${Object.keys(cases).join(', ')}`);
  const folder = mkdtempSync(path.join(os.tmpdir(), 'driftmark-check-'));
  try {
    cpSync(fixtures, folder, { recursive: true });
    await test(folder);
  } finally {
    rmSync(folder, { recursive: true });
  }
}
