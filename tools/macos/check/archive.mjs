#!/usr/bin/env node
// Checks the packed program: the bundle at the top, its files and their modes, its property list.
// Prints each difference; exits with 1 if there are any.

import { existsSync, readFileSync } from 'node:fs';
import { commandLine } from '../../commandLine.mjs';
import { shownPath } from './toolchain.mjs';
import { readZip } from './Zip.mjs';

const bundle = 'Driftmark.app/';
const program = 'Contents/MacOS/Driftmark';

/// Every file and folder of the bundle, and its mode.
const contents = {
  '': 0o40755,
  'Contents/': 0o40755,
  'Contents/Info.plist': 0o100644,
  'Contents/MacOS/': 0o40755,
  [program]: 0o100755,
  'Contents/PkgInfo': 0o100644,
  'Contents/Resources/': 0o40755,
  'Contents/Resources/Driftmark.icns': 0o100644,
};

/// What the system asks the user about, when "Free Up Space…" or the offer to move reads there.
const explained = [
  'NSDesktopFolderUsageDescription',
  'NSDocumentsFolderUsageDescription',
  'NSDownloadsFolderUsageDescription',
  'NSFileProviderDomainUsageDescription',
];

const demands = version => ({
  // Sizes, times and the system's own words are in the user's language, beside English ones of ours.
  CFBundleAllowMixedLocalizations: true,
  CFBundleExecutable: 'Driftmark',
  CFBundleIconFile: 'Driftmark',
  CFBundleIdentifier: 'com.tallowmere.driftmark',
  CFBundlePackageType: 'APPL',
  CFBundleShortVersionString: version,
  CFBundleVersion: version,
  LSMinimumSystemVersion: '13.0',
  LSUIElement: true,
  NSPrincipalClass: 'NSApplication',
});

/// The texts and truth values at the top of a property list.
function readPropertyList(text) {
  const pairs = text.matchAll(
    /<key>([^<]*)<\/key>\s*(?:<string>([^<]*)<\/string>|<(true|false)\/>)/g,
  );
  return Object.fromEntries(
    [...pairs].map(([, key, string, truth]) => [key, string ?? truth === 'true']),
  );
}

function* differences(entries, version) {
  const found = new Map(entries.map(entry => [entry.name, entry]));
  for (const { name } of entries) {
    if (!name.startsWith(bundle) || !(name.slice(bundle.length) in contents)) yield `holds ${name}`;
  }
  for (const [name, mode] of Object.entries(contents)) {
    const entry = found.get(bundle + name);
    if (!entry) yield `lacks ${bundle}${name}`;
    else if (entry.mode !== mode) {
      yield `${entry.name} has the mode ${entry.mode?.toString(8)}; it must have ${mode.toString(8)}`;
    }
  }
  if (new Set(entries.map(entry => entry.time)).size !== 1)
    yield 'its files are not all of one time';
  const bytes = name => found.get(bundle + name)?.bytes() ?? Buffer.alloc(0);
  yield* wrongValues(readPropertyList(bytes('Contents/Info.plist').toString('utf8')), version);
  if (bytes('Contents/PkgInfo').toString('latin1').slice(0, 4) !== 'APPL')
    yield "its PkgInfo is no program's";
  const icon = bytes('Contents/Resources/Driftmark.icns');
  if (icon.toString('latin1', 0, 4) !== 'icns' || icon.readUInt32BE(4) !== icon.length) {
    yield 'its icon is no icon, or cut off';
  }
}

function* wrongValues(values, version) {
  for (const [key, value] of Object.entries(demands(version))) {
    if (values[key] !== value)
      yield `its property list has ${key} ${values[key]}; it must be ${value}`;
  }
  for (const key of explained) {
    if (!/^(?=[A-Z]).*\bDriftmark\b.*\.$/.test(values[key]))
      yield `its property list has no sentence about Driftmark as ${key}`;
  }
}

const usage = `usage: archive.mjs FILE.zip VERSION

Checks the packed program, and prints each difference.
`;
const [file, version] = commandLine(usage, { least: 2, most: 2 }).positionals;
const problems = existsSync(file)
  ? [...differences(readZip(readFileSync(file)), version)]
  : ['is not there; scripts/package-macos makes it'];
for (const problem of problems) console.log(`${shownPath(file)}: ${problem}`);
process.exitCode = problems.length ? 1 : 0;
