// The checker of the document's table of calls sees each kind of slip. Takes the name of a case.

import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { check, macosTools, runCase } from './support.mjs';

const document = path.resolve(macosTools, '../../docs/macos.md');

/// Checks a copy of the document with `edit` done to its text.
function checkEdited(folder, edit) {
  const copy = path.join(folder, 'macos.md');
  writeFileSync(copy, edit(readFileSync(document, 'utf8')));
  return check('references.mjs', copy);
}

await runCase({
  seesALineThatHasMoved(folder) {
    const { status, lines } = checkEdited(folder, (text) =>
      text.replace(/(`bundlePath` \| macos\/MacBundle\.mm):\d+/, '$1:1'),
    );
    assert.deepEqual(lines, ['macos/MacBundle.mm:1 has no bundlePath']);
    assert.equal(status, 1);
  },

  seesACallThatIsNotMade(folder) {
    const { status, lines } = checkEdited(folder, (text) =>
      text.replace('`removeAllItems`', '`removeSomeItems:`'),
    );
    assert.match(lines.join('\n'), /^macos\/MacMenu\.mm:\d+ has no removeSomeItems:$/);
    assert.equal(status, 1);
  },

  seesThatTheTableIsGone(folder) {
    const { status, lines } = checkEdited(folder, () => 'Nothing.\n');
    assert.deepEqual(lines, ['The document has no table of calls.']);
    assert.equal(status, 1);
  },
});
