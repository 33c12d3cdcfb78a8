// Exact names. The listing joins a selector's parts and so cannot tell "moveTo:" from "move:to" and
// the like; the table of names that comes with it (data inside the package's library, which is only
// read) keeps them as they are.

import { readFileSync } from 'node:fs';
import path from 'node:path';
import { listingPackage } from './toolchain.mjs';

const library = [
  'build',
  'RelWithDebInfo',
  'NativeScript.apple.node',
  'macos-arm64',
  'NativeScript.framework',
  'Versions',
  '0.1.0',
  'NativeScript',
];

export class Spellings {
  #names = new Set(
    readFileSync(path.join(listingPackage, ...library), 'latin1').match(/(?<=\0)[\w:]+(?=\0)/g),
  );

  /// Whether some class or protocol of the SDK has a method of this selector.
  has(selector) {
    return this.#names.has(selector);
  }
}
