// How the tools read their command lines.

import path from 'node:path';
import { parseArgs } from 'node:util';

/// The values and positionals of this process's command line; `options` are those of parseArgs. --help
/// prints the usage and ends the process. A wrong call, also with fewer than `least` or more than `most`
/// positionals, ends it with status 2.
export function commandLine(usage, { options = {}, least = 0, most = Infinity } = {}) {
  try {
    const { values, positionals } = parseArgs({
      allowPositionals: true,
      options: { ...options, help: { type: 'boolean' } },
    });
    if (values.help) {
      process.stdout.write(usage);
      process.exit(0);
    }
    if (positionals.length < least || positionals.length > most) throw new Error('wrong number of arguments');
    return { values, positionals };
  } catch (error) {
    process.stderr.write(`${path.basename(process.argv[1])}: ${error.message}; see --help\n`);
    process.exit(2);
  }
}
