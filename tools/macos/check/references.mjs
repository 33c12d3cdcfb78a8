// Looks up every line that docs/macos.md names: it must have the call that the table says.
import { readFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const root = join(dirname(fileURLToPath(import.meta.url)), '../../..');
const document = process.argv[2] ?? join(root, 'docs/macos.md');

const lines = new Map();
function lineOf(file, number) {
  if (!lines.has(file)) lines.set(file, readFileSync(join(root, 'src/platform', file), 'utf8').split('\n'));
  return lines.get(file)[number - 1] ?? '';
}

const row = /^\| `([^`]+)`[^|]*\| ((?:macos|posix)\/[\w.]+):(\d+) \|/gm;
const rows = [...readFileSync(document, 'utf8').matchAll(row)];
const wrong = rows.filter(([, call, file, number]) =>
  !lineOf(file, Number(number)).includes(call.split(/(?<=:)/)[0]));
for (const [, call, file, number] of wrong) console.error(`${file}:${number} has no ${call}`);
if (rows.length === 0) console.error('The document has no table of calls.');
process.exitCode = wrong.length > 0 || rows.length === 0 ? 1 : 0;
