// A copy of the sources with a build folder of its own. Mutants live in it and nowhere else.

import { execFileSync } from 'node:child_process';
import { existsSync, mkdirSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { run } from './Commands.mjs';

const slowTest = 0.25; // seconds
const settings = [
  '-GNinja',
  '--no-warn-unused-cli',
  '-DCMAKE_BUILD_TYPE=RelWithDebInfo',
  '-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0',
  // A warning says nothing about the tests, and most removals leave something unused.
  '-DCMAKE_CXX_FLAGS=-w',
  '-DDRIFTMARK_FRONTEND=OFF',
  '-DDRIFTMARK_BENCH=OFF',
  '-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST',
];

export class Sandbox {
  #slow = [];
  #fastDeadline;
  #slowDeadline;

  /// `root`: the project, whose target core_tests is built and run. `folder`: the sandbox, kept for
  /// the next time.
  constructor(root, folder) {
    this.root = root;
    this.source = path.join(folder, 'source');
    this.build = path.join(folder, 'build');
    this.programs = path.join(folder, 'programs');
    this.results = path.join(folder, 'results.json');
  }

  /// Copies what has changed, builds, and runs all tests once. Throws unless they pass.
  async prepare() {
    this.#copy();
    const configured = await run('cmake', [
      '-S', this.source, '-B', this.build, ...settings, `-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${this.programs}`,
    ]);
    if (configured.status !== 0) throw new Error(configured.output);
    const built = await this.#make();
    if (built.status !== 0) throw new Error(built.output);
    const tested = await this.#test([`--gtest_output=json:${this.results}`], 3600);
    if (tested.status !== 0) throw new Error(`the tests fail without a mutant:\n${tested.output}`);

    let fast = 0;
    let slow = 0;
    for (const { name: suite, testsuite } of JSON.parse(readFileSync(this.results, 'utf8')).testsuites)
      for (const { name, time } of testsuite)
        if (parseFloat(time) >= slowTest) {
          this.#slow.push(`${suite}.${name}`);
          slow += parseFloat(time);
        } else fast += parseFloat(time);
    this.#fastDeadline = 10 + 5 * fast;
    this.#slowDeadline = 10 + 5 * slow;
  }

  /// Whether `text` in place of `file` is noticed: "refused" by the compiler, the name of a test
  /// that fails or "deadline", undefined when nothing notices it. `isQuick` leaves out slow tests.
  async judge(file, text, isQuick) {
    const copy = path.join(this.source, file);
    const original = readFileSync(copy);
    writeFileSync(copy, text);
    try {
      if ((await this.#make()).status !== 0) return 'refused';
      const slow = this.#slow.join(':');
      const fast = ['--gtest_fail_fast', `--gtest_filter=*-${slow}`];
      const verdict = noticed(await this.#test(fast, this.#fastDeadline));
      if (verdict || isQuick || !slow) return verdict;
      const count = os.availableParallelism();
      const shards = Array.from({ length: count }, (_, index) => {
        const shard = { GTEST_TOTAL_SHARDS: count, GTEST_SHARD_INDEX: index };
        return this.#test(['--gtest_fail_fast', `--gtest_filter=${slow}`], this.#slowDeadline, shard);
      });
      return (await Promise.all(shards)).map(noticed).find(Boolean);
    } finally {
      writeFileSync(copy, original);
    }
  }

  #make() {
    return run('ninja', ['-C', this.build, '--quiet', 'core_tests']);
  }

  #test(options, deadline, environment) {
    const args = ['--gtest_brief=1', ...options];
    return run(path.join(this.programs, 'core_tests'), args, { cwd: this.build, deadline, environment });
  }

  // Files that are alike keep their time, so that little is built again.
  #copy() {
    const git = (...options) => execFileSync('git', ['ls-files', '-z', ...options], { cwd: this.root });
    const names = output => output.toString().split('\0').filter(Boolean);
    const wanted = new Set(names(git('-co', '--exclude-standard')));
    for (const file of names(git('-d'))) wanted.delete(file);
    for (const file of wanted) {
      const copy = path.join(this.source, file);
      const bytes = readFileSync(path.join(this.root, file));
      if (existsSync(copy) && readFileSync(copy).equals(bytes)) continue;
      mkdirSync(path.dirname(copy), { recursive: true });
      writeFileSync(copy, bytes);
    }
    for (const entry of readdirSync(this.source, { recursive: true, withFileTypes: true })) {
      const file = path.relative(this.source, path.join(entry.path, entry.name));
      if (!entry.isDirectory() && !wanted.has(file)) rmSync(path.join(this.source, file));
    }
  }
}

function noticed({ status, output }) {
  if (status === 0) return undefined;
  if (status === undefined) return 'deadline';
  return /\[  FAILED  \] ([\w/]+\.[\w/]+)/.exec(output)?.[1] ?? `status ${status}`;
}
