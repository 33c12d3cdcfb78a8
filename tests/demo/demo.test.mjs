// Tests scripts/demo and scripts/try with the programs in the folder DRIFTMARK_BUILD. Takes the name of a
// case.

import assert from 'node:assert/strict';
import { once } from 'node:events';
import { spawn, spawnSync } from 'node:child_process';
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
  const script = spawn(path.join(root, 'scripts/try'), [], { env: environment(folder), stdio: ['ignore', 'pipe', 'inherit'] });
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

await runCase({
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
