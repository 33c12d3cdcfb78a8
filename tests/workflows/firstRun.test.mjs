// Tests scripts/first-run with programs of its own and stand-ins for the tools of a Mac, and the functions
// that read what those tools print. Takes the name of a case.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { root, runCase } from '../support/cases.mjs';

const menu = ['iCloud Drive is idle', 'missing value', 'Open iCloud Drive', 'Free Up Space…', 'About Driftmark',
  'Check for Updates…', 'Launch at Login', 'missing value', 'Quit Driftmark'];

// A program is ready when it has made the file ready.PID: then it has a window.
const ready = 'echo >${0%/Driftmark.app/*}/ready.$$';

const tools = {
  uname: 'echo Darwin',
  plutil: 'echo "$2: OK"',
  codesign: 'exit 0',
  spctl: 'echo rejected >&2; exit 3',
  ditto: 'cp -R "$1" "$2"',
  log: "echo '2026-11-22 05:00:00.000 Df Driftmark[7:9] (Foundation) state -> idle'",
  // No other Driftmark counts; the children are those that the kernel lists.
  pgrep: 'case $1 in -x) exit 1 ;; *) cat "/proc/$2/task/$2/children" ;; esac',
  osascript: `script=$(cat) pid=\${script#*unix id is } pid=\${pid%%)*}
case $script in
*'count of windows'*) ls "$TMPDIR"/*/Downloads/ready.$pid 2>/dev/null | wc -l ;;
*'{title, description, help}'*) echo 'missing value, iCloud Drive: idle, iCloud Drive: idle' ;;
*'name of menu items'*) printf '%s\\n' ${menu.map((title) => `'${title}'`).join(' ')} ;;
esac`,
};

// A program like ours: it ends the instance before it, has a child, and ends it at SIGTERM. The child
// ends with its program in any case.
const program = (folder) => `exec 2>/dev/null
trap '[[ $(<${folder}/instance) != $$ ]] || rm ${folder}/instance; exec 3>&-; while kill -0 $child; do wait $child; done; echo $$ >>${folder}/ended; exit 0' TERM
exec 3> >(exec cat >/dev/null)
child=$!
${ready}
read -r older <${folder}/instance
echo $$ >${folder}/instance
if [[ -n $older ]]; then
  kill -TERM $older
  for ((i = 0; i < 20; ++i)); do kill -0 $older || break; sleep 0.05; done
  ! kill -0 $older || kill -KILL $older
fi
while kill -0 $child; do wait $child; done`;

/// Runs the script on a bundle whose program is this shell script; `others` replace tools. Returns also
/// the results: what is printed for each item of the list, by its number.
function firstRun(folder, text, others = {}) {
  const executable = path.join(folder, 'Driftmark.app/Contents/MacOS/Driftmark');
  mkdirSync(path.dirname(executable), { recursive: true });
  mkdirSync(path.join(folder, 'bin'));
  writeFileSync(executable, `#!/bin/bash\n${text}\n`, { mode: 0o755 });
  for (const [name, tool] of Object.entries({ ...tools, ...others }))
    writeFileSync(path.join(folder, 'bin', name), `#!/bin/sh\n${tool}\n`, { mode: 0o755 });
  const env = { ...process.env, HOME: path.join(folder, 'home'), TMPDIR: folder, PATH: `${folder}/bin:${process.env.PATH}` };
  const script = path.join(root, 'scripts/first-run');
  const { status, stdout, stderr } = spawnSync(script, [path.join(folder, 'Driftmark.app')], { env, encoding: 'utf8' });
  process.stderr.write(stderr);
  assert.equal(existsSync(path.join(env.HOME, 'Applications/Driftmark.app')), false);
  const results = {};
  for (const [, number, state, notes] of stdout.matchAll(/^ ?(\d+)\. (done|part|to do|FAILED) .*\n((?: {12}.*\n)*)/gm))
    results[number] = [state, ...notes.split('\n').map((note) => note.trim()).filter(Boolean)];
  return { status, stdout, stderr, results };
}

/// What the function of scripts/firstRun.sh prints for the input.
function read(command, input) {
  const code = `source ${root}/scripts/firstRun.sh; ${command}`;
  return spawnSync('bash', ['-c', code], { input, encoding: 'utf8' }).stdout.trimEnd();
}

await runCase({
  everythingThatNeedsNoUserIsDriven(folder) {
    const { status, stdout, stderr, results } = firstRun(folder, program(folder));
    assert.equal(status, 0, stdout + stderr);
    assert.match(stdout, /would not open the bundle after a download: rejected/);
    const driven = Object.entries(results).filter(([, [state]]) => state !== 'to do');
    assert.deepEqual(Object.fromEntries(driven), {
      1: ['part', 'it starts from another folder and shows a window'],
      2: ['part', 'SIGTERM while the offer is open ended it'],
      4: ['part', 'the accessibility interface says: iCloud Drive: idle'],
      6: ['part', 'all commands are there, in their order'],
      8: ['done', 'SIGTERM while the menu is open ended it and its children'],
      15: ['done', 'a second copy ended the first', 'another one killed the second, which was stopped'],
      16: ['part', 'the log has its states: idle'],
      17: ['part', 'SIGTERM while it is idle ended it and its children'],
    });
    assert.match(stdout, /\n2 done, 6 in part, \d+ to do, 0 failed\.\n$/);
    // All five have ended in order but the one that was stopped.
    assert.equal(readFileSync(path.join(folder, 'ended'), 'utf8').trim().split('\n').length, 4);
    assert.equal(existsSync(path.join(folder, 'instance')), false);
  },

  whatIsNotAllowedStaysToDo(folder) {
    const osascript = 'cat >/dev/null; echo "osascript is not allowed assistive access. (-1719)" >&2; exit 1';
    const { status, stdout, stderr, results } = firstRun(folder, program(folder), { osascript });
    assert.equal(status, 0, stdout + stderr);
    for (const number of [1, 4, 6, 8]) assert.deepEqual(results[number], ['to do'], number);
    assert.deepEqual(results[2], ['part', 'SIGTERM after its start from another folder ended it']);
    assert.match(stdout, /Cannot read the status item: .*\(-1719\)/);
  },

  programThatIgnoresSigtermIsKilledAndReported(folder) {
    const pids = path.join(folder, 'pids');
    const { status, results } = firstRun(folder, `echo $$ >>${pids}; trap '' TERM; ${ready}; exec 3> >(exec cat); while :; do wait $!; done`);
    assert.deepEqual(results[2], ['FAILED', 'SIGTERM while the offer is open has not ended it in three seconds']);
    assert.deepEqual(results[8], ['FAILED', 'SIGTERM while the menu is open has not ended it in three seconds']);
    assert.deepEqual(results[15], ['FAILED', 'a second copy did not end the first',
      'another one did not kill the second, which was stopped']);
    assert.equal(status, 1);
    for (const pid of readFileSync(pids, 'utf8').trim().split('\n'))
      assert.throws(() => process.kill(Number(pid), 0), { code: 'ESRCH' });
  },

  childrenThatAreLeftAreReported(folder) {
    const pids = path.join(folder, 'pids');
    const { status, results, stderr } = firstRun(folder, `trap 'exit 0' TERM; ${ready}; sleep 600 & echo $! >>${pids}; wait`);
    for (const pid of readFileSync(pids, 'utf8').trim().split('\n')) process.kill(Number(pid));
    assert.match(results[8]?.join() ?? stderr, /^FAILED,after SIGTERM while the menu is open these children are left: \d+$/);
    assert.match(results[17]?.join() ?? stderr, /^FAILED,after SIGTERM while it is idle these children are left: \d+$/);
    assert.equal(status, 1);
  },

  statusOtherThanZeroIsReported(folder) {
    const { status, results } = firstRun(folder, program(folder).replace('exit 0', 'exit 7'));
    assert.deepEqual(results[2], ['FAILED', 'after SIGTERM while the offer is open its status was 7']);
    assert.equal(status, 1);
  },

  programThatEndsByItselfIsReported(folder) {
    const { status, stderr } = firstRun(folder, 'echo cannot bind a symbol >&2; exit 0');
    assert.match(stderr, /cannot bind a symbol\n.*the program ended by itself/);
    assert.equal(status, 1);
  },

  wrongMenuAndDescriptionAreReported(folder) {
    const osascript = tools.osascript.replace('idle, iCloud Drive: idle', 'asleep').replace(" 'Launch at Login'", '');
    const { status, results, stderr } = firstRun(folder, program(folder), { osascript, log: 'exit 0' });
    assert.ok(results[4], stderr);
    assert.deepEqual(results[4], ['FAILED', 'the accessibility interface says: missing value, iCloud Drive: asleep']);
    assert.deepEqual(results[6], ['FAILED', "in the menu, 'Launch at Login' is missing or out of order"]);
    assert.deepEqual(results[16], ['FAILED', 'the log has none of its states']);
    assert.equal(status, 1);
  },

  invalidSignatureIsReported(folder) {
    const ran = path.join(folder, 'ran');
    const { status } = firstRun(folder, `echo >${ran}`, { codesign: 'exit 3' });
    assert.equal(status, 3);
    assert.equal(existsSync(ran), false);
  },

  signedBundleIsCheckedAsAWhole(folder) {
    mkdirSync(path.join(folder, 'Driftmark.app/Contents/_CodeSignature'), { recursive: true });
    const codesign = 'case $* in *"--deep "*/Driftmark.app) exit 4 ;; esac';
    assert.equal(firstRun(folder, 'exit 0', { codesign }).status, 4);
  },

  runningProgramIsLeftAlone(folder) {
    const ran = path.join(folder, 'ran');
    const { status, stderr } = firstRun(folder, `echo >${ran}`, { pgrep: 'exit 0' });
    assert.match(stderr, /Driftmark runs already/);
    assert.equal(status, 1);
    assert.equal(existsSync(ran), false);
  },

  itemsAreReadFromTheDocument() {
    const items = read(`items_of_list ${root}/docs/macos.md`).split('\n').map((line) => line.split('\t'));
    assert.deepEqual(items.map(([number]) => Number(number)), items.map((_, index) => index + 1));
    assert.match(items[1][1], /^SIGTERM while that alert is open ends .* So does logging out\.$/);
  },

  stateIsReadFromTheDescription() {
    for (const [text, state] of [
      ['missing value, iCloud Drive: uploading 40%, x', 'iCloud Drive: uploading 40%'],
      ['a, iCloud Drive: syncing 3 transfers, 1.2 MB', 'iCloud Drive: syncing 3 transfers, 1.2 MB'],
      ['iCloud Drive: attention needed', 'iCloud Drive: attention needed'],
      ['status menu, iCloud Drive', ''],
    ])
      assert.equal(read('described_state', text), state);
  },

  missingCommandIsNamed() {
    assert.equal(read('missing_command', menu.join('\n')), '');
    assert.equal(read('missing_command', menu.slice(0, -1).join('\n')), 'Quit Driftmark');
    assert.equal(read('missing_command', [...menu].reverse().join('\n')), 'Free Up Space…');
    assert.equal(read('missing_command', ''), 'Open iCloud Drive');
  },

  statesAreReadFromTheLog() {
    const lines = ['Timestamp Ty Process[PID:TID]', '05:00:00 Df Driftmark[7:9] (Foundation) state -> idle',
      '05:00:01 Df Driftmark[7:9] (Foundation) downloading state -> idle.txt', '05:00:02 Df Driftmark[7:9] state -> both'];
    assert.equal(read('logged_states', lines.join('\n')), 'idle\nboth');
  },
});
