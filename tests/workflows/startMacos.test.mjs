// Tests scripts/start-macos with programs of its own and stand-ins for the tools of a Mac. Takes the
// name of a case.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { root, runCase } from '../support/cases.mjs';

const tools = {
  uname: 'echo Darwin',
  plutil: 'echo "$2: OK"',
  codesign: 'exit 0',
  ditto: 'cp -R "$1" "$2"',
  // No other Driftmark counts; the children are those that the kernel lists.
  pgrep: 'case $1 in -x) exit 1 ;; *) cat "/proc/$2/task/$2/children" ;; esac',
};

/// Runs the script on a bundle whose program is this shell script; `others` replace tools.
function start(folder, program, others = {}) {
  const executable = path.join(folder, 'Driftmark.app/Contents/MacOS/Driftmark');
  mkdirSync(path.dirname(executable), { recursive: true });
  mkdirSync(path.join(folder, 'bin'));
  writeFileSync(executable, `#!/bin/bash\n${program}\n`, { mode: 0o755 });
  for (const [name, text] of Object.entries({ ...tools, ...others }))
    writeFileSync(path.join(folder, 'bin', name), `#!/bin/sh\n${text}\n`, { mode: 0o755 });
  const env = { ...process.env, HOME: path.join(folder, 'home'), PATH: `${folder}/bin:${process.env.PATH}` };
  const script = path.join(root, 'scripts/start-macos');
  const result = spawnSync(script, [path.join(folder, 'Driftmark.app')], { env, encoding: 'utf8' });
  assert.equal(existsSync(path.join(env.HOME, 'Applications/Driftmark.app')), false);
  return result;
}

const withChild = (atTerm) => `trap '${atTerm}' TERM; sleep 600 & wait`;

await runCase({
  programThatEndsWithItsChildrenIsAccepted(folder) {
    const { status, stdout, stderr } = start(folder, withChild('kill $!; wait; exit 0'));
    assert.match(stdout, /\nDriftmark runs, child processes: 1\.\nSIGTERM ended it and its children\.\n$/, stderr);
    assert.equal(status, 0);
  },

  programThatIgnoresSigtermIsKilledAndReported(folder) {
    const pid = path.join(folder, 'pid');
    const { status, stderr } = start(folder, `echo $$ >${pid}; trap '' TERM; sleep 10 & while :; do wait; done`);
    assert.match(stderr, /has not ended three seconds after SIGTERM/);
    assert.equal(status, 1);
    assert.throws(() => process.kill(Number(readFileSync(pid, 'utf8')), 0), { code: 'ESRCH' });
  },

  childThatIsLeftIsReported(folder) {
    const { status, stderr } = start(folder, withChild('exit 0'), { ps: 'echo sleep' });
    const [, child] = /the child (\d+) is left: sleep/.exec(stderr) ?? assert.fail(stderr);
    process.kill(Number(child));
    assert.equal(status, 1);
  },

  statusOtherThanZeroIsReported(folder) {
    const { status, stderr } = start(folder, withChild('kill $!; wait; exit 7'));
    assert.match(stderr, /the program ended with status 7/);
    assert.equal(status, 1);
  },

  programThatEndsByItselfIsReported(folder) {
    const { status, stderr } = start(folder, 'echo cannot bind a symbol >&2; exit 0');
    assert.match(stderr, /cannot bind a symbol\n.*the program ended by itself/);
    assert.equal(status, 1);
  },

  invalidSignatureIsReported(folder) {
    const ran = path.join(folder, 'ran');
    const { status } = start(folder, `echo >${ran}`, { codesign: 'exit 3' });
    assert.equal(status, 3);
    assert.equal(existsSync(ran), false);
  },

  runningProgramIsLeftAlone(folder) {
    const ran = path.join(folder, 'ran');
    const { status, stderr } = start(folder, `echo >${ran}`, { pgrep: 'exit 0' });
    assert.match(stderr, /Driftmark runs already/);
    assert.equal(status, 1);
    assert.equal(existsSync(ran), false);
  },
});
