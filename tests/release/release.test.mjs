// Tests scripts/release and scripts/draft-release in a small repository. Takes the name of a case.

import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { execFileSync, spawnSync } from 'node:child_process';
import { cpSync, existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { root, runCase } from '../support/cases.mjs';

const project = {
  'CMakeLists.txt': `cmake_minimum_required(VERSION 3.25)
project(Driftmark VERSION 0.1.0 LANGUAGES CXX)
set(DRIFTMARK_VENDOR_HOST "vendor.example" CACHE STRING
    "The vendor's web host")
`,
  'CHANGELOG.md': `# Changelog

## Unreleased

- A first entry, which names \`brctl\` and
  goes over two lines.
- A second one ([more](docs/more.md)).
`,
  '.gitignore': '/build/\n',
};
const scripts = ['scripts/release', 'scripts/draft-release', 'scripts/lib.sh', 'packaging/homebrew/driftmark.rb.in'];

const environment = {
  ...process.env,
  GIT_CONFIG_GLOBAL: '/dev/null',
  GIT_AUTHOR_NAME: 'Tester',
  GIT_AUTHOR_EMAIL: 'tester@driftmark.example',
  GIT_COMMITTER_NAME: 'Tester',
  GIT_COMMITTER_EMAIL: 'tester@driftmark.example',
};

/// A repository with `project` and the scripts in one commit, and what runs in it.
function makeRepository(folder) {
  const at = (name) => path.join(folder, name);
  for (const [name, text] of Object.entries(project)) writeFileSync(at(name), text);
  for (const name of scripts) cpSync(path.join(root, name), at(name));
  const git = (...args) => execFileSync('git', args, { cwd: folder, env: environment, encoding: 'utf8' }).trim();
  const commit = () => (git('add', '--all'), git('commit', '--quiet', '-m', 'A change'));
  git('init', '--quiet');
  commit();
  const run = (script, args, env = environment) =>
    spawnSync(at(script), args, { cwd: folder, env, encoding: 'utf8' });
  const release = (...args) => run('scripts/release', args);
  const read = (name) => readFileSync(at(name), 'utf8');
  const write = (name, text) => writeFileSync(at(name), text);
  const addEntry = () => {
    write('CHANGELOG.md', read('CHANGELOG.md').replace('## Unreleased\n', '## Unreleased\n\n- One more.\n'));
    commit();
  };
  return { at, git, commit, run, release, read, write, addEntry };
}

/// Expects that `result` failed with `message` and that the repository is as it was at `head`.
function expectRefused({ git }, result, message, head) {
  assert.match(result.stderr, message);
  assert.equal(result.status, 1);
  assert.equal(git('rev-parse', 'HEAD'), head);
  assert.equal(git('diff', 'HEAD', '--', 'CMakeLists.txt'), '');
}

/// Puts a gh into the folder `name` that notes its calls; `isDraft` is what it knows of the release.
function makeHost({ at }, isDraft) {
  mkdirSync(at('build/bin'), { recursive: true });
  writeFileSync(at('build/bin/gh'), `#!/bin/sh
echo "$*" >>'${at('build/calls')}'
case "$2" in view) ${isDraft === undefined ? 'exit 1' : `echo ${isDraft}`} ;; esac
`, { mode: 0o755 });
  return { ...environment, PATH: `${at('build/bin')}:${process.env.PATH}` };
}

/// A released repository with an archive in build/made.
function makeReleased(folder) {
  const repository = makeRepository(folder);
  assert.equal(repository.release('1.0').status, 0);
  mkdirSync(repository.at('build/made'), { recursive: true });
  repository.write('build/made/Driftmark-1.0.zip', 'archive');
  return repository;
}

await runCase({
  releaseIsCommittedAndTagged(folder) {
    const { git, release, read } = makeRepository(folder);
    const { status, stdout, stderr } = release('1.0');
    assert.equal(status, 0, stderr);
    assert.equal(stdout, 'v1.0 is the tag of this commit; its notes are in build/notes.txt.\n');
    assert.match(read('CMakeLists.txt'), /^project\(Driftmark VERSION 1\.0 LANGUAGES CXX\)$/m);
    assert.match(read('CHANGELOG.md'), /^# Changelog\n\n## Unreleased\n\n## 1\.0 \(\d{4}-\d\d-\d\d\)\n\n- A first/);
    assert.equal(git('log', '--format=%s', '-1'), 'Release 1.0');
    assert.equal(git('rev-parse', 'v1.0^{commit}'), git('rev-parse', 'HEAD'));
    assert.equal(git('cat-file', '-t', 'v1.0'), 'tag');
    assert.equal(git('status', '--porcelain'), '');
  },

  notesArePlainText(folder) {
    const { release, read } = makeRepository(folder);
    assert.equal(release('1.0').status, 0);
    assert.equal(
      read('build/notes.txt'),
      '- A first entry, which names brctl and goes over two lines.\n- A second one (more).\n',
    );
  },

  notesHoldTheirOwnSectionAlone(folder) {
    const { release, read, addEntry } = makeRepository(folder);
    assert.equal(release('1.9').status, 0);
    addEntry();
    const { status, stderr } = release('1.10');
    assert.equal(status, 0, stderr);
    assert.equal(read('build/notes.txt'), '- One more.\n');
  },

  firstReleaseMayHaveTheVersionOfTheSources(folder) {
    const { git, release } = makeRepository(folder);
    const { status, stderr } = release('0.1.0');
    assert.equal(status, 0, stderr);
    assert.equal(git('tag'), 'v0.1.0');
  },

  versionThatIsNotNewerIsRefused(folder) {
    const repository = makeRepository(folder);
    assert.equal(repository.release('1.2').status, 0);
    repository.addEntry();
    const head = repository.git('rev-parse', 'HEAD');
    for (const version of ['1.2', '1.2.0', '1.1.9', '0.10'])
      expectRefused(repository, repository.release(version), /is not newer than the release 1\.2$/m, head);
    assert.equal(repository.git('tag'), 'v1.2');
  },

  versionOlderThanTheSourcesIsRefused(folder) {
    const repository = makeRepository(folder);
    const head = repository.git('rev-parse', 'HEAD');
    expectRefused(repository, repository.release('0.0.9'), /is older than 0\.1\.0/, head);
  },

  treeThatIsNotCleanIsRefused(folder) {
    const repository = makeRepository(folder);
    const head = repository.git('rev-parse', 'HEAD');
    repository.write('new.txt', '');
    expectRefused(repository, repository.release('1.0'), /the tree is not clean/, head);
    assert.equal(repository.git('tag'), '');
  },

  releaseOfNothingIsRefused(folder) {
    const repository = makeRepository(folder);
    repository.release('1.0');
    const head = repository.git('rev-parse', 'HEAD');
    expectRefused(repository, repository.release('1.1'), /has nothing that is unreleased/, head);
    assert.equal(repository.git('tag'), 'v1.0');
  },

  refusedCommitLeavesTheTreeClean(folder) {
    const repository = makeRepository(folder);
    writeFileSync(repository.at('.git/hooks/pre-commit'), '#!/bin/sh\nexit 1\n', { mode: 0o755 });
    const head = repository.git('rev-parse', 'HEAD');
    assert.notEqual(repository.release('1.0').status, 0);
    assert.equal(repository.git('rev-parse', 'HEAD'), head);
    assert.equal(repository.git('status', '--porcelain'), '');
    assert.equal(repository.git('tag'), '');
  },

  checkRefusesWhatIsNotTheRelease(folder) {
    const repository = makeRepository(folder);
    const { git, release, write, commit, read } = repository;
    assert.match(release('--check').stderr, /has the version 0\.1\.0 and the tags: none/);
    git('tag', 'v0.1.0');
    assert.match(release('--check').stderr, /CHANGELOG\.md has no section 0\.1\.0/);
    git('tag', '--delete', 'v0.1.0');
    assert.equal(release('1.0').status, 0);
    assert.equal(release('--check').status, 0);
    git('tag', 'v1.1');
    assert.match(release('--check').stderr, /has the version 1\.0 and the tags: v1\.0\nv1\.1/);
    git('tag', '--delete', 'v1.1');
    write('README.md', read('.gitignore'));
    assert.match(release('--check').stderr, /the tree is not clean/);
    commit();
    assert.match(release('--check').stderr, /has the version 1\.0 and the tags: none/);
  },

  wrongCallIsRefused(folder) {
    const { release, run } = makeRepository(folder);
    for (const args of [[], ['1'], ['v1.0'], ['1.0-beta'], ['1.02'], ['1.0', '1.1'], ['--check', '1.0'], ['--unknown']])
      assert.equal(release(...args).status, 2, args.join(' '));
    for (const args of [[], ['--unknown'], ['build', 'build']])
      assert.equal(run('scripts/draft-release', args).status, 2, args.join(' '));
  },

  draftHoldsArchiveSymbolsCaskAndDigests(folder) {
    const repository = makeReleased(folder);
    const { at, run, read, write } = repository;
    mkdirSync(at('build/made/Driftmark.app.dSYM/Contents'), { recursive: true });
    write('build/made/Driftmark.app.dSYM/Contents/Info.plist', 'symbols');
    const { status, stderr } = run('scripts/draft-release', ['build/made'], makeHost(repository));
    assert.equal(status, 0, stderr);
    const files = ['Driftmark-1.0.dSYM.zip', 'Driftmark-1.0.zip', 'SHA256SUMS', 'driftmark.rb'];
    const [view, create, ...others] = read('build/calls').trim().split('\n');
    assert.match(view, /^release view v1\.0 /);
    assert.equal(
      create,
      'release create v1.0 --draft --verify-tag --title Driftmark 1.0 --notes-file build/notes.txt ' +
        files.map((name) => at(`build/draft-1.0/${name}`)).join(' '),
    );
    assert.deepEqual(others, []);
    const digests = execFileSync('sha256sum', ['--check', '--strict', 'SHA256SUMS'], { cwd: at('build/draft-1.0') });
    assert.equal(digests.toString(), 'Driftmark-1.0.dSYM.zip: OK\nDriftmark-1.0.zip: OK\ndriftmark.rb: OK\n');
    const packed = execFileSync('zip', ['-sf', at('build/draft-1.0/Driftmark-1.0.dSYM.zip')]);
    assert.match(packed.toString(), /^ *Driftmark\.app\.dSYM\/Contents\/Info\.plist$/m);
  },

  caskNamesTheArchiveAndItsDigest(folder) {
    const repository = makeReleased(folder);
    const { status, stderr } = repository.run('scripts/draft-release', ['build/made'], makeHost(repository));
    assert.equal(status, 0, stderr);
    const cask = repository.read('build/draft-1.0/driftmark.rb');
    assert.match(cask, /^ {2}version "1\.0"$/m);
    const digest = createHash('sha256').update('archive').digest('hex');
    assert.ok(cask.includes(`\n  sha256 "${digest}"\n`), cask);
    assert.ok(cask.includes('\n  url "https://vendor.example/driftmark/Driftmark-#{version}.zip"\n'), cask);
    assert.match(cask, /livecheck do\n {4}url "https:\/\/vendor\.example\/driftmark\/appcast\.json"/);
    assert.doesNotMatch(cask, /@/);
  },

  earlierDraftIsReplaced(folder) {
    const repository = makeReleased(folder);
    const { status, stderr } = repository.run('scripts/draft-release', ['build/made'], makeHost(repository, true));
    assert.equal(status, 0, stderr);
    const calls = repository.read('build/calls').split('\n').map((call) => call.split(' ').slice(0, 4).join(' '));
    assert.deepEqual(calls.slice(1), ['release delete v1.0 --yes', 'release create v1.0 --draft', '']);
  },

  publishedReleaseIsKept(folder) {
    const repository = makeReleased(folder);
    const { status, stderr } = repository.run('scripts/draft-release', ['build/made'], makeHost(repository, false));
    assert.match(stderr, /v1\.0 is published already/);
    assert.equal(status, 1);
    assert.match(repository.read('build/calls'), /^release view [^\n]*\n$/);
  },

  draftOfAnotherVersionIsRefused(folder) {
    const repository = makeReleased(folder);
    repository.addEntry();
    assert.equal(repository.release('1.1').status, 0);
    const { status, stderr } = repository.run('scripts/draft-release', ['build/made'], makeHost(repository));
    assert.match(stderr, /there is no .*Driftmark-1\.1\.zip/);
    assert.equal(status, 1);
    assert.equal(existsSync(repository.at('build/calls')), false);
  },
});
