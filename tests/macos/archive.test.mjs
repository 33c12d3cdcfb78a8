// Tests that the check of the packed program reports each kind of error. Takes the name of a case.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { chmodSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { check, macosTools, runCase } from './support.mjs';

const version = '1.2.3';
const packaging = path.resolve(macosTools, '../../packaging/macos');

/// Makes a valid bundle in `folder`, breaks it with `change`, packs it. Returns the packed file.
function pack(folder, change = () => {}) {
  const contents = path.join(folder, 'Driftmark.app', 'Contents');
  const file = (name, bytes, mode) => {
    mkdirSync(path.dirname(path.join(contents, name)), { recursive: true });
    writeFileSync(path.join(contents, name), bytes);
    chmodSync(path.join(contents, name), mode);
  };
  const list = readFileSync(path.join(packaging, 'Info.plist.in'), 'utf8')
    .replaceAll('@PROJECT_VERSION@', version)
    .replaceAll('@CMAKE_OSX_DEPLOYMENT_TARGET@', '13.0');
  file('Info.plist', list, 0o644);
  file('PkgInfo', readFileSync(path.join(packaging, 'PkgInfo')), 0o644);
  file('MacOS/Driftmark', 'program', 0o755);
  file('Resources/Driftmark.icns', 'icns\0\0\0\x08', 0o644);
  change(contents, file);
  run(folder, 'find', ['Driftmark.app', '-type', 'd', '-exec', 'chmod', '755', '{}', '+']);
  run(folder, 'find', ['Driftmark.app', '-exec', 'touch', '-d', '2026-01-01T00:00:00Z', '{}', '+']);
  run(folder, 'zip', ['-q', '-X', '-r', 'packed.zip', 'Driftmark.app']);
  return path.join(folder, 'packed.zip');
}

function run(cwd, program, args) {
  const { status, stderr, error } = spawnSync(program, args, { cwd, encoding: 'utf8' });
  assert.equal(status, 0, error?.message ?? stderr);
}

function finds(file, expected) {
  const { status, lines } = check('archive.mjs', file, version);
  assert.equal(lines.length, 1, lines.join('\n'));
  assert.match(lines[0], expected);
  assert.equal(status, 1);
}

await runCase({
  soundPackageIsAccepted(folder) {
    const { status, lines } = check('archive.mjs', pack(folder), version);
    assert.deepEqual(lines, ['']);
    assert.equal(status, 0);
  },

  programThatCannotRunIsReported(folder) {
    finds(
      pack(folder, (contents, file) => file('MacOS/Driftmark', 'program', 0o644)),
      /Contents\/MacOS\/Driftmark has the mode 100644; it must have 100755/,
    );
  },

  strayFileIsReported(folder) {
    finds(
      pack(folder, (contents, file) => file('Resources/notes.txt', '', 0o644)),
      /packed\.zip: holds Driftmark\.app\/Contents\/Resources\/notes\.txt/,
    );
  },

  otherVersionIsReported(folder) {
    finds(
      pack(folder, (contents, file) => {
        const list = readFileSync(path.join(contents, 'Info.plist'), 'utf8');
        file(
          'Info.plist',
          list.replace(/(?<=CFBundleVersion<\/key>\s*<string>)[\d.]+/, '1.2.4'),
          0o644,
        );
      }),
      /its property list has CFBundleVersion 1\.2\.4; it must be 1\.2\.3/,
    );
  },

  missingReasonOfQuestionIsReported(folder) {
    finds(
      pack(folder, (contents, file) => {
        const list = readFileSync(path.join(contents, 'Info.plist'), 'utf8');
        file(
          'Info.plist',
          list.replace('NSDocumentsFolderUsageDescription', 'NSDocumentsUsageDescription'),
          0o644,
        );
      }),
      /its property list has no sentence about Driftmark as NSDocumentsFolderUsageDescription/,
    );
  },

  textsInOneLanguageAreReported(folder) {
    finds(
      pack(folder, (contents, file) => {
        const list = readFileSync(path.join(contents, 'Info.plist'), 'utf8');
        file(
          'Info.plist',
          list.replace(/(?<=CFBundleAllowMixedLocalizations<\/key>\s*)<true\/>/, '<false/>'),
          0o644,
        );
      }),
      /its property list has CFBundleAllowMixedLocalizations false; it must be true/,
    );
  },

  truncatedIconIsReported(folder) {
    finds(
      pack(folder, (contents, file) => file('Resources/Driftmark.icns', 'icns\0\0\0\x09', 0o644)),
      /its icon is no icon, or cut off/,
    );
  },
});
