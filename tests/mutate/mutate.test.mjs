// Tests scripts/mutate on a small project. Takes the name of a case.

import assert from 'node:assert/strict';
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { createReadStream, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { run } from '../../tools/mutate/Commands.mjs';
import { root, runCase } from '../support/cases.mjs';

const script = path.join(root, 'scripts/mutate');

// The tests do not notice that 10 counts as a digit.
const project = {
  'CMakeLists.txt': `cmake_minimum_required(VERSION 3.25)
project(Sample LANGUAGES CXX)
find_package(GTest REQUIRED)
add_executable(core_tests Digit.cpp Tests.cpp)
target_link_libraries(core_tests PRIVATE GTest::gtest_main)
`,
  'Digit.cpp': `bool isDigit(int value) {
  return value >= 0 && value <= 9;
}
`,
  'Tests.cpp': `#include <gtest/gtest.h>
bool isDigit(int value);
TEST(Digit, othersAreNone) { EXPECT_FALSE(isDigit(-1)); }
TEST(Digit, bordersAreDigits) { EXPECT_TRUE(isDigit(0) && isDigit(9)); }
`,
};

function makeProject(folder) {
  for (const [name, text] of Object.entries(project)) writeFileSync(path.join(folder, name), text);
  execFileSync('git', ['init', '--quiet'], { cwd: folder });
  writeFileSync(path.join(folder, '.gitignore'), '/build/\n');
}

function mutate(...args) {
  const { status, stdout, stderr } = spawnSync(script, args, { encoding: 'utf8' });
  return { status, stdout, stderr };
}

await runCase({
  survivorIsReportedAndOthersAreNot(folder) {
    makeProject(folder);
    const file = path.join(folder, 'Digit.cpp');
    const build = path.join(folder, 'build');
    const { status, stdout, stderr } = mutate('--root', folder, '--folder', build, file);
    assert.equal(
      stdout,
      `Digit.cpp:2: constant
  - return value >= 0 && value <= 9;
  + return value >= 0 && value <= 10;
8 mutants: 1 survive. 0 more do not compile.
`,
      stderr,
    );
    assert.equal(status, 1);
    assert.match(stderr, /^\d\/8 Digit\.cpp:2 Digit\.othersAreNone /m);
    assert.match(stderr, /^\d\/8 Digit\.cpp:2 Digit\.bordersAreDigits /m);
    assert.equal(readFileSync(file, 'utf8'), project['Digit.cpp']);
  },

  mutantsAreListedWithoutBuild(folder) {
    makeProject(folder);
    const build = path.join(folder, 'build');
    const file = path.join(folder, 'Digit.cpp');
    const { status, stdout } = mutate('--list', '--root', folder, '--folder', build, file);
    assert.match(stdout, /^Digit\.cpp:2: comparison\n {2}- .*>= 0.*\n {2}\+ .*> 0.*\n/m);
    assert.match(stdout, /\n8 mutants\.\n$/);
    assert.equal(status, 0);
  },

  secondRunInAFolderIsRefused(folder) {
    makeProject(folder);
    const build = path.join(folder, 'build');
    mkdirSync(build);
    const file = path.join(folder, 'Digit.cpp');
    const args = [build, script, '--root', folder, '--folder', build, file];
    const { status, stderr } = spawnSync('flock', args, { encoding: 'utf8' });
    assert.match(stderr, /another run works in/);
    assert.equal(status, 1);
  },

  wrongCallIsRefused() {
    for (const args of [[], ['--sample', '0', script], ['no-such.cpp'], [script], ['--unknown']])
      assert.equal(mutate(...args).status, 2, args.join(' '));
  },

  async programPastItsDeadlineEndsWithItsChildren() {
    const { status, output } = await run('sh', ['-c', 'echo begun; sleep 600 & wait'], { deadline: 0.5 });
    assert.equal(status, undefined);
    assert.equal(output, 'begun\n');
  },

  async programsEndWithTheScript(folder) {
    const pipe = path.join(folder, 'pipe');
    execFileSync('mkfifo', [pipe]);
    const commands = path.join(root, 'tools/mutate/Commands.mjs');
    const code = `import('${commands}').then(({ run }) =>
      run('sh', ['-c', 'exec > ${pipe}; echo begun; sleep 600']))`;
    const script = spawn(process.execPath, ['-e', code], { stdio: 'inherit' });
    const ended = once(script, 'exit');
    let text = '';
    // The pipe ends with the last program that holds it.
    for await (const part of createReadStream(pipe, 'utf8')) {
      text += part;
      script.kill('SIGTERM');
    }
    assert.equal(text, 'begun\n');
    assert.deepEqual(await ended, [128 + 15, null]);
  },
});
