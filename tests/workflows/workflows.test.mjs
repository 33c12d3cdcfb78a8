// Tests that tools/workflows/check.mjs accepts the workflows, and reports what is planted in a copy of
// them. Takes the name of a case.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { cpSync, mkdirSync, readFileSync, rmSync, symlinkSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { readYaml } from '../../tools/workflows/Yaml.mjs';
import { root, runCase } from '../support/cases.mjs';

const file = '.github/workflows/ci.yml';
const checkout = 'actions/checkout@3d3c42e5aac5ba805825da76410c181273ba90b1';

function check(folder) {
  const script = path.join(root, 'tools/workflows/check.mjs');
  const { status, stdout, stderr } = spawnSync(process.execPath, [script, folder], { encoding: 'utf8' });
  assert.equal(stderr, '');
  return { status, lines: stdout.trim().split('\n') };
}

/// Expects exactly these findings, without their lines, for a copy of the workflows in which `to` stands
/// for the first `from`.
function expectReports(folder, from, to, ...reports) {
  const copy = path.join(folder, 'copy');
  mkdirSync(copy);
  cpSync(path.join(root, '.github'), path.join(copy, '.github'), { recursive: true });
  for (const name of ['.ci', 'scripts', 'tools']) symlinkSync(path.join(root, name), path.join(copy, name));
  const text = readFileSync(path.join(copy, file), 'utf8');
  assert.ok(text.includes(from), `no ${from}`);
  writeFileSync(path.join(copy, file), text.replace(from, () => to));
  const { status, lines } = check(copy);
  assert.deepEqual(
    lines.slice(0, -1).map((line) => line.replace(/^[^:]*:\d+: /, '')),
    reports,
  );
  assert.equal(lines.at(-1), `workflows: ${reports.length} findings in 1 files.`);
  assert.equal(status, 1);
  rmSync(copy, { recursive: true });
}

await runCase({
  workflowsAreSound() {
    assert.deepEqual(check(root), { status: 0, lines: ['workflows: 0 findings in 1 files.'] });
  },

  findingHasItsFileAndLine(folder) {
    mkdirSync(path.join(folder, '.github/workflows'), { recursive: true });
    writeFileSync(path.join(folder, file), 'name: CI\non:\n  push:\npermissions:\n  contents: read\njobs:\n  a: b\n');
    assert.deepEqual(check(folder).lines, [`${file}:7: job: keys are missing`, 'workflows: 1 findings in 1 files.']);
  },

  repositoryWithoutWorkflowsIsReported(folder) {
    mkdirSync(path.join(folder, '.github/workflows'), { recursive: true });
    assert.deepEqual(check(folder), { status: 1, lines: ['workflows: 0 findings in 0 files.'] });
  },

  actionWithoutDigestIsReported(folder) {
    for (const pin of ['actions/checkout@v7', 'actions/checkout', checkout.slice(0, -1), './actions/checkout'])
      expectReports(folder, checkout, pin, `'${pin}' is not pinned by a digest of 40 digits`);
  },

  actionWithoutVersionIsReported(folder) {
    for (const comment of ['', ' # the newest', ' # v7'])
      expectReports(folder, `${checkout} # v7.0.1`, checkout + comment,
        "no version behind actions/checkout, as in '# v1.2.3'");
  },

  differentPinsOfAnActionAreReported(folder) {
    const report = 'actions/checkout is pinned differently elsewhere';
    expectReports(folder, checkout, checkout.replace(/.$/, '2'), report, report, report, report);
  },

  permissionToWriteIsReported(folder) {
    const top = 'permissions:\n  contents: read';
    expectReports(folder, top, 'permissions:\n  contents: write', "'contents: write' for every job");
    expectReports(folder, top, `${top}\n  issues: read`, "'issues: read' for every job");
    expectReports(folder, top, 'permissions: write-all', 'permissions: keys are missing');
    expectReports(folder, top, '', "workflow: no 'permissions'");
    expectReports(folder, "    if: startsWith(github.ref, 'refs/tags/v')\n", '',
      "'contents: write' is allowed in a job for a tag only");
  },

  credentialsThatStayAreReported(folder) {
    expectReports(folder, 'persist-credentials: false', 'persist-credentials: true',
      'the sources keep the credentials');
  },

  unknownRunnerIsReported(folder) {
    expectReports(folder, 'runs-on: ubuntu-24.04', 'runs-on: ubuntu-latest', "unknown runner 'ubuntu-latest'");
    expectReports(folder, '[macos-15, macos-15-intel]', '[macos-15, macos-13]', "unknown runner 'macos-13'");
    expectReports(folder, 'matrix.runner }}\n    timeout', 'matrix.system }}\n    timeout',
      'no runner in the matrix for ${{ matrix.system }}');
    expectReports(folder, 'image: debian:12', 'image: debian:latest', "unknown image 'debian:latest'");
  },

  runThatIsNoScriptIsReported(folder) {
    const run = 'run: scripts/bootstrap';
    for (const script of ['scripts/no-such', 'apt-get', 'scripts', 'CHANGELOG.md', 'scripts/words'])
      expectReports(folder, run, `run: ${script} install`, `'${script}' is no script of the repository`);
    for (const command of ['scripts/bootstrap && true', 'scripts/lint ${{ github.ref }}', 'scripts/test; true'])
      expectReports(folder, run, `run: ${command}`, `'${command}' is more than a script and its arguments`);
    expectReports(folder, run, `run: |\n          scripts/bootstrap\n          scripts/test`,
      'more than one command in a step');
  },

  cacheWithoutLockFileIsReported(folder) {
    const key = "${{ hashFiles('tools/macos/package-lock.json') }}";
    expectReports(folder, key, 'always', 'the key of the cache has no digest of a lock file');
    for (const name of ['packages.txt', 'tools/package-lock.json'])
      expectReports(folder, key, `\${{ hashFiles('${name}') }}`, `'${name}' is no lock file of the repository`);
  },

  unknownKeyIsReported(folder) {
    expectReports(folder, 'pull_request:', 'pull_request_target:', "events: unknown key 'pull_request_target'");
    expectReports(folder, 'concurrency:', 'concurency:', "workflow: unknown key 'concurency'");
    expectReports(folder, '    container:', '    kontainer:', "job: unknown key 'kontainer'");
    expectReports(folder, '      - run: scripts/bootstrap', '      - run: scripts/bootstrap\n        shell: sh',
      "script: unknown key 'shell'");
  },

  missingKeyIsReported(folder) {
    expectReports(folder, '    timeout-minutes: 240\n', '', "job: no 'timeout-minutes'");
    expectReports(folder, '- run: scripts/bootstrap', '- name: nothing', "script: no 'run'");
  },

  unknownJobIsReported(folder) {
    expectReports(folder, 'needs: linux', 'needs: unix', "cross-built needs 'unix', which is no job");
  },

  textThatCannotBeReadIsReported(folder) {
    for (const [to, report] of [
      ['name: CI\nname: CI', "the key 'name' is there twice"],
      ['name: &anchor CI', 'cannot read &anchor CI'],
      ['name: {a: b}', 'cannot read {a: b}'],
      ['name: "CI', 'cannot read "CI'],
      ['name: [CI', 'cannot read [CI'],
      ['name: a: b', 'cannot read a: b'],
      ['name: CI\n\tmore', 'indentation with tabs'],
      ['name: CI\n  more: text', 'unexpected indentation'],
      ['- CI', 'unexpected indentation'],
      ['just a text', 'cannot read just a text'],
    ])
      expectReports(folder, 'name: CI', to, report);
  },

  documentIsReadAsWritten() {
    const plain = ({ value }) =>
      value instanceof Map
        ? Object.fromEntries([...value].map(([key, node]) => [key, plain(node)]))
        : Array.isArray(value) ? value.map(plain) : value;
    assert.deepEqual(plain(readYaml(`# A comment
a: 1 # one

list:
  - x
  - y: "z"
    v: 'w'
  - u:
      t: s#r
empty:
inline: [a, "b"]
text: |
  first
    second

last: https://host.example/
`)), {
      a: '1',
      list: ['x', { y: 'z', v: 'w' }, { u: { t: 's#r' } }],
      empty: null,
      inline: ['a', 'b'],
      text: 'first\nsecond',
      last: 'https://host.example/',
    });
  },
});
