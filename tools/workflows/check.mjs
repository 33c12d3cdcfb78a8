#!/usr/bin/env node
// Checks the workflows of a repository: their keys, and what keeps them safe and working.

import { accessSync, constants, existsSync, readdirSync, readFileSync, statSync } from 'node:fs';
import path from 'node:path';
import { commandLine } from '../commandLine.mjs';
import { readYaml, YamlError } from './Yaml.mjs';

const usage = `usage: tools/workflows/check.mjs ROOT

Checks ROOT/.github/workflows and prints each finding as FILE:LINE: TEXT. Every action is pinned by its
digest, with its version in a comment; a workflow may only read, a job writes only for a tag; runners
are those that exist; a step runs a script of the repository; caches are keyed on lock files.
`;

const runners = ['ubuntu-24.04', 'macos-15', 'macos-15-intel'];
const images = ['debian:12'];
const lockFile = /(^|\/)package-lock\.json$/;
const tagCondition = "startsWith(github.ref, 'refs/tags/v')";

// The keys of each place; those with true have to be there.
const keys = {
  workflow: { name: true, on: true, permissions: true, jobs: true, concurrency: false, env: false },
  events: { push: false, pull_request: false, schedule: false, workflow_dispatch: false },
  job: { 'name': true, 'runs-on': true, 'timeout-minutes': true, 'steps': true, 'needs': false, 'if': false,
    'container': false, 'strategy': false, 'permissions': false, 'env': false },
  container: { image: true, options: false },
  strategy: { 'matrix': true, 'fail-fast': false },
  action: { uses: true, name: false, if: false, with: false },
  script: { run: true, name: false, if: false, env: false },
};

function checkWorkflow(root, file, report) {
  const text = readFileSync(path.join(root, file), 'utf8');
  const lines = text.split('\n');
  const digests = new Map();

  // The Map of a node whose keys are those of `place`; empty where the node is something else.
  function entries(node, place) {
    if (!(node?.value instanceof Map)) {
      report(node?.line ?? 1, `${place}: keys are missing`);
      return new Map();
    }
    for (const [key, { line }] of node.value)
      if (keys[place] && !(key in keys[place])) report(line, `${place}: unknown key '${key}'`);
    for (const [key, isRequired] of Object.entries(keys[place] ?? {}))
      if (isRequired && !node.value.has(key)) report(node.line, `${place}: no '${key}'`);
    return node.value;
  }

  const list = (node) => (node === undefined ? [] : Array.isArray(node.value) ? node.value : [node]);

  function checkRunner(node, strategy) {
    const axis = /^\$\{\{ matrix\.(\w+) \}\}$/.exec(node?.value ?? '')?.[1];
    const matrix = axis && strategy?.value.get('matrix');
    const names = axis ? list(matrix?.value?.get(axis)) : list(node);
    if (node && names.length === 0) report(node.line, `no runner in the matrix for ${node.value}`);
    for (const { line, value } of names)
      if (!runners.includes(value)) report(line, `unknown runner '${value}'`);
  }

  function checkPermissions(node, isForTag) {
    for (const [scope, { line, value }] of entries(node, 'permissions'))
      if (value !== 'read' && value !== 'none' && !(value === 'write' && isForTag))
        report(line, `'${scope}: ${value}' is allowed in a job for a tag only`);
  }

  function checkAction({ line, value }, arguments_) {
    const [, name, digest] = /^([\w.-]+\/[\w.-]+)@([0-9a-f]{40})$/.exec(value ?? '') ?? [];
    if (!name) return report(line, `'${value}' is not pinned by a digest of 40 digits`);
    const version = / # (v\d+\.\d+\.\d+)$/.exec(lines[line - 1])?.[1];
    if (!version) return report(line, `no version behind ${name}, as in '# v1.2.3'`);
    const pin = `${digest} ${version}`;
    if (!digests.has(name)) digests.set(name, pin);
    if (digests.get(name) !== pin) report(line, `${name} is pinned differently elsewhere`);
    if (name === 'actions/checkout' && arguments_.get('persist-credentials')?.value !== 'false')
      report(line, 'the sources keep the credentials');
    if (name === 'actions/cache') checkCache(line, arguments_);
  }

  function checkCache(line, arguments_) {
    const key = arguments_.get('key');
    const files = [...(key?.value ?? '').matchAll(/hashFiles\('([^']*)'\)/g)].map((match) => match[1]);
    if (files.length === 0) report(key?.line ?? line, 'the key of the cache has no digest of a lock file');
    for (const name of files)
      if (!lockFile.test(name) || !existsSync(path.join(root, name)))
        report(key.line, `'${name}' is no lock file of the repository`);
  }

  function checkScript({ line, value }) {
    if (typeof value !== 'string' || value.includes('\n')) return report(line, 'more than one command in a step');
    if (/[;&|<>`$]/.test(value)) return report(line, `'${value}' is more than a script and its arguments`);
    const script = path.join(root, value.split(' ')[0]);
    try {
      accessSync(script, constants.X_OK);
      if (!statSync(script).isFile()) throw new Error('a folder');
    } catch {
      report(line, `'${value.split(' ')[0]}' is no script of the repository`);
    }
  }

  function checkJob(name, node, jobs) {
    const job = entries(node, 'job');
    for (const { line, value } of list(job.get('needs')))
      if (!jobs.has(value)) report(line, `${name} needs '${value}', which is no job`);
    if (job.has('strategy')) entries(job.get('strategy'), 'strategy');
    checkRunner(job.get('runs-on'), job.get('strategy'));
    if (job.has('container')) {
      const image = entries(job.get('container'), 'container').get('image');
      if (image && !images.includes(image.value)) report(image.line, `unknown image '${image.value}'`);
    }
    if (job.has('permissions')) checkPermissions(job.get('permissions'), job.get('if')?.value === tagCondition);
    const minutes = job.get('timeout-minutes');
    if (minutes && !/^[1-9]\d*$/.test(minutes.value)) report(minutes.line, 'no number of minutes');
    const steps = job.get('steps');
    if (steps && !Array.isArray(steps.value)) return report(steps.line, `${name} has no list of steps`);
    for (const step of steps?.value ?? []) {
      const isAction = step.value instanceof Map && step.value.has('uses');
      const step_ = entries(step, isAction ? 'action' : 'script');
      const arguments_ = step_.has('with') ? entries(step_.get('with'), 'with') : new Map();
      if (isAction) checkAction(step_.get('uses'), arguments_);
      else if (step_.has('run')) checkScript(step_.get('run'));
    }
  }

  const workflow = entries(readYaml(text), 'workflow');
  if (workflow.has('on')) entries(workflow.get('on'), 'events');
  if (workflow.has('permissions'))
    for (const [scope, { line, value }] of entries(workflow.get('permissions'), 'permissions'))
      if (`${scope}: ${value}` !== 'contents: read') report(line, `'${scope}: ${value}' for every job`);
  const jobs = workflow.has('jobs') ? entries(workflow.get('jobs'), 'jobs') : new Map();
  for (const [name, node] of jobs) checkJob(name, node, jobs);
}

const [root] = commandLine(usage, { least: 1, most: 1 }).positionals;

const folder = '.github/workflows';
const files = readdirSync(path.join(root, folder)).map((name) => path.posix.join(folder, name));
let count = 0;
for (const file of files) {
  const report = (line, message) => {
    console.log(`${file}:${line}: ${message}`);
    ++count;
  };
  try {
    checkWorkflow(root, file, report);
  } catch (error) {
    if (!(error instanceof YamlError)) throw error;
    report(error.line, error.message);
  }
}
console.log(`workflows: ${count} findings in ${files.length} files.`);
process.exit(count > 0 || files.length === 0 ? 1 : 0);
