// Runs programs that may hang or take all memory, as mutants do.

import { spawn } from 'node:child_process';

const maxMemory = 6 * 2 ** 30; // bytes of addresses
const running = new Set();

/// Runs a program to its end: {status: undefined when it missed the deadline, output}. Its whole
/// process group ends with it, with the deadline (in seconds), and with this program.
export function run(program, args, { cwd, deadline, environment } = {}) {
  return new Promise((resolve, reject) => {
    const limits = [`--as=${maxMemory}`, '--core=0'];
    const child = spawn('prlimit', [...limits, program, ...args], {
      cwd,
      env: { ...process.env, ...environment },
      stdio: ['ignore', 'pipe', 'pipe'],
      detached: true,
    });
    running.add(child);
    let output = '';
    let isLate = false;
    const timer = deadline && setTimeout(() => { isLate = true; end(child); }, deadline * 1000);
    for (const stream of [child.stdout, child.stderr])
      stream.setEncoding('utf8').on('data', text => { output = (output + text).slice(-100_000); });
    child.on('error', reject);
    child.on('exit', () => end(child));
    child.on('close', (code, signal) => {
      clearTimeout(timer);
      running.delete(child);
      resolve({ status: isLate ? undefined : code ?? signal, output });
    });
  });
}

function end(child) {
  try {
    process.kill(-child.pid, 'SIGKILL');
  } catch (error) {
    if (error.code !== 'ESRCH') throw error;
  }
}

for (const [signal, number] of [['SIGHUP', 1], ['SIGINT', 2], ['SIGTERM', 15]])
  process.on(signal, () => {
    running.forEach(end);
    process.exit(128 + number);
  });
