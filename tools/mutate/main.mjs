// Makes the mutants of sources and prints those that no test notices. scripts/mutate has the usage.

import { readFileSync } from 'node:fs';
import path from 'node:path';
import { commandLine } from '../commandLine.mjs';
import { mutantsOf, mutated } from './Mutants.mjs';
import { Sandbox } from './Sandbox.mjs';
import { shuffled } from './shuffled.mjs';

const usage = `usage: main.mjs --root DIR --folder DIR [OPTION...] -- FILE...

What scripts/mutate runs; its --help describes the options.
`;
const { values: options, positionals: files } = commandLine(usage, {
  options: {
    root: { type: 'string' },
    folder: { type: 'string' },
    sample: { type: 'string' },
    seed: { type: 'string' },
    list: { type: 'boolean' },
    quick: { type: 'boolean' },
  },
});

const texts = new Map(files.map(file => [file, readFileSync(path.join(options.root, file), 'utf8')]));
const all = [...texts].flatMap(([file, text]) => mutantsOf(text).map(mutant => ({ ...mutant, file })));
for (const [order, mutant] of all.entries()) mutant.order = order;
const inOrder = (one, other) => one.order - other.order;

/// The mutant as the lines that it changes.
function shown({ file, line, kind, start, end, replacement }) {
  const text = texts.get(file);
  const from = text.lastIndexOf('\n', start - 1) + 1;
  const to = text.indexOf('\n', end);
  const joined = part => part.trim().replace(/\s*\n\s*/g, ' ');
  const after = text.slice(from, start) + replacement + text.slice(end, to);
  return `${file}:${line}: ${kind}\n  - ${joined(text.slice(from, to))}\n  + ${joined(after)}`;
}

if (options.list) {
  for (const mutant of all) console.log(shown(mutant));
  console.log(`${all.length} mutants.`);
  process.exit(0);
}

const sandbox = new Sandbox(options.root, options.folder);
console.error(`${all.length} mutants. Building the tests and running them once.`);
await sandbox.prepare();

// A mutant that the compiler refuses is none: another one takes its place in the sample.
const waiting = options.sample ? shuffled(all, Number(options.seed)) : [...all];
const wanted = Math.min(Number(options.sample ?? all.length), all.length);
const survivors = [];
let judged = 0;
let refused = 0;
while (judged < wanted && waiting.length > 0)
  for (const mutant of waiting.splice(0, wanted - judged).sort(inOrder)) {
    const start = performance.now();
    const text = mutated(texts.get(mutant.file), mutant);
    const verdict = await sandbox.judge(mutant.file, text, options.quick);
    if (verdict === 'refused') {
      ++refused;
      continue;
    }
    ++judged;
    const seconds = ((performance.now() - start) / 1000).toFixed(1);
    console.error(`${judged}/${wanted} ${mutant.file}:${mutant.line} ${verdict ?? 'SURVIVES'} (${seconds} s)`);
    if (!verdict) survivors.push(mutant);
  }

for (const mutant of survivors.sort(inOrder)) console.log(shown(mutant));
console.log(`${judged} mutants: ${survivors.length} survive. ${refused} more do not compile.`);
process.exit(survivors.length > 0 ? 1 : 0);
