// Tests that every script and tool prints its usage, and refuses an unknown option. Takes the name of a
// case.

import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { root, runCase } from '../support/cases.mjs';

/// What the repository has to run: its executable files and the tools that Node.js runs. The compiler's
/// front end is none of them.
function scripts() {
  const listed = execFileSync('git', ['ls-files', '-co', '--exclude-standard'], { cwd: root, encoding: 'utf8' });
  const found = listed.split('\n').filter((name) => /^(\.ci|scripts|tools|packaging)\//.test(name))
    .filter((name) => isProgram(name) && name !== 'tools/macos/zig');
  assert.ok(found.length > 20, `only ${found}`);
  return found;
}

/// Whether the file is run by itself: it begins with an interpreter, or reads a command line.
function isProgram(name) {
  const text = readFileSync(path.join(root, name), 'latin1');
  return text.startsWith('#!') || (name.endsWith('.mjs') && /= commandLine\(usage/.test(text));
}

function run(name, argument) {
  const file = path.join(root, name);
  const command = name.endsWith('.mjs') ? [process.execPath, file] : [file];
  return spawnSync(command[0], [...command.slice(1), argument], { encoding: 'utf8', timeout: 60_000 });
}

const programs = () => process.env.DRIFTMARK_PROGRAMS.split(':');

/// Tools in place of the system's own fail like those.
const standIns = ['brctl', 'codesign', 'ditto', 'killall', 'open', 'xattr', 'xdg-open'];

/// Those that pass what they do not know on to the program that they start.
const passers = ['sh', 'launchd'];

function expectUsage(name, { status, stdout, stderr }) {
  assert.equal(status, 0, `${name}: ${stderr}`);
  assert.equal(stderr, '', name);
  const usage = stdout.split('\n', 1)[0];
  assert.ok(usage.startsWith('usage: ') && usage.includes(path.basename(name)), `${name}: ${usage}`);
}

await runCase({
  scriptsPrintUsage() {
    for (const name of scripts()) expectUsage(name, run(name, '--help'));
  },

  scriptsRefuseUnknownOption() {
    for (const name of scripts()) {
      const { status, stdout, stderr } = run(name, '--no-such-option');
      assert.equal(status, 2, `${name}: ${stderr}`);
      assert.equal(stdout, '', name);
      assert.match(stderr, /see --help\n$/, name);
    }
  },

  programsPrintUsage() {
    for (const file of programs()) expectUsage(file, spawnSync(file, ['--help'], { encoding: 'utf8' }));
  },

  programsRefuseUnknownOption() {
    for (const file of programs()) {
      const name = path.basename(file);
      if (passers.includes(name)) continue;
      const { status, stdout, stderr } = spawnSync(file, ['--no-such-option'], { encoding: 'utf8' });
      const statuses = standIns.includes(name) ? [1, 2, 64] : ['bird', 'icloud-demo'].includes(name) ? [64] : [2];
      assert.ok(statuses.includes(status), `${name}: status ${status}, ${stderr}`);
      assert.equal(stdout, '', name);
      assert.match(stderr, /see --help\n$|usage: /, name);
    }
  },

  replayLooksAtFileBeforeItBuilds(folder) {
    const { status, stderr } = run('scripts/replay', path.join(folder, 'nowhere.txt'));
    assert.equal(status, 1);
    assert.equal(stderr, `scripts/replay: ${folder}/nowhere.txt: no such file\n`);
    assert.match(run('scripts/replay', folder).stderr, /: is a folder\n$/);
  },

  demoLooksAtScenarioBeforeItBuilds(folder) {
    const file = path.join(folder, 'nowhere.scenario');
    for (const [script, ...options] of [['scripts/demo', '--scenario'], ['scripts/try']]) {
      const { status, stderr } = spawnSync(path.join(root, script), [...options, file], { encoding: 'utf8' });
      assert.equal(stderr, `${script}: no file '${file}'\n`);
      assert.equal(status, 1);
    }
  },
});
