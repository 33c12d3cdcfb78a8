// Helpers for the tests of the scripts.

import { mkdtempSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

export const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');

/// Runs the case that the command line names. `cases` is name -> function of an empty folder, which
/// is removed afterwards.
export async function runCase(cases) {
  const test = cases[process.argv[2]];
  if (!test) throw new Error(`no such case; there are ${Object.keys(cases).join(', ')}`);
  const folder = mkdtempSync(path.join(os.tmpdir(), 'driftmark-test-'));
  try {
    await test(folder);
  } finally {
    rmSync(folder, { recursive: true });
  }
}
