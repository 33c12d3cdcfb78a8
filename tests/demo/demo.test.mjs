// Tests scripts/demo and scripts/try with the programs in the folder DRIFTMARK_BUILD. Takes the name of a
// case.

import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { root, runCase } from '../support/cases.mjs';

/// The environment of a user without a display, with `folder` for temporary files.
function environment(folder) {
  const { DISPLAY, WAYLAND_DISPLAY, QT_QPA_PLATFORM, ...others } = process.env;
  return { ...others, TMPDIR: folder };
}

/// Starts scripts/try. `until(pattern)` waits until its output has a match.
function startTry(folder) {
  const options = { env: environment(folder), stdio: ['ignore', 'pipe', 'inherit'] };
  const script = spawn(path.join(root, 'scripts/try'), [], options);
  let output = '';
  const until = async (pattern) => {
    while (!pattern.test(output)) {
      const [chunk] = await Promise.race([once(script.stdout, 'data'), once(script, 'close').then(() => [null])]);
      assert.ok(chunk, `no ${pattern} in:\n${output}`);
      output += chunk;
    }
    return pattern.exec(output);
  };
  return { script, until };
}

const packagesOf = (name) => readFileSync(path.join(root, name), 'utf8').split('\n').filter((line) => /^[a-z]/.test(line));

/// What scripts/bootstrap installs where nothing is installed.
function installed(folder, ...options) {
  const tools = { 'dpkg-query': '', 'apt-get': `echo "$@" >>${folder}/asked`, 'sudo': 'exec "$@"' };
  for (const [name, text] of Object.entries(tools))
    writeFileSync(path.join(folder, name), `#!/bin/sh\n${text}\n`, { mode: 0o755 });
  const env = { ...process.env, PATH: `${folder}:${process.env.PATH}` };
  const { status, stderr } = spawnSync(path.join(root, 'scripts/bootstrap'), options, { env, encoding: 'utf8' });
  assert.equal(status, 0, stderr);
  const words = readFileSync(path.join(folder, 'asked'), 'utf8').split('\n')[1].split(' ');
  return words.slice(words.indexOf('install') + 1).filter((word) => !word.startsWith('-')).sort();
}

await runCase({
  demoInstallsItsPackagesOnly(folder) {
    assert.deepEqual(installed(folder, '--demo'), packagesOf('packages.txt').sort());
  },

  testsInstallAllPackages(folder) {
    const all = [...packagesOf('packages.txt'), ...packagesOf('packages-tests.txt')];
    assert.deepEqual(installed(folder), all.sort());
    assert.equal(new Set(all).size, all.length);
  },

  firstScenarioOfReadmeHolds(folder) {
    const text = readFileSync(path.join(root, 'simulator/README.md'), 'utf8');
    const file = path.join(folder, 'letters.scenario');
    writeFileSync(file, /## Your first scenario\n.*?```\n(.*?)```/s.exec(text)[1]);
    const { status, stdout } = spawnSync(path.join(root, 'scripts/demo'), ['--headless', '--scenario', file],
      { env: environment(folder), encoding: 'utf8' });
    assert.match(stdout, /no deviation from the scenario/);
    assert.equal(status, 0, stdout);
  },

  async triedDriveIsChangedByPrintedCommands(folder) {
    const { script, until } = startTry(folder);
    const [, drive] = await until(/ cd "(.*)"\n/);
    const [, brctl] = await until(/ brctl=(.*)\n/);
    await until(/Driftmark: state -> idle/);
    const { status, stderr } = spawnSync(brctl, ['download', 'Movies/Sunrise.mov'], { cwd: drive, encoding: 'utf8' });
    assert.equal(status, 0, stderr);
    await until(/Driftmark: downloading Sunrise\.mov/);
    script.kill('SIGINT');
    const [code] = await once(script, 'close');
    assert.equal(code, 130);
    assert.deepEqual(readdirSync(folder), []);
  },
});
