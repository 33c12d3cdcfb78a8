// The requirements on the image of one architecture.

import os from 'node:os';
import { signatureFaults } from './CodeSignature.mjs';
import { setterOf } from './names.mjs';
import { ownClasses, sentSelectors } from './ObjectiveC.mjs';

const minimumSystem = '13.0';
const pages = { arm64: 0x4000, x86_64: 0x1000 };

/// Calls report(message) for each requirement that `image` does not meet. `libraries` has the names in
/// each library, by install name: the image must be linked to all of them and to no others. The image
/// must contain no path in the source tree `root`. Returns a line that sums the image up.
export function checkImage(image, { declarations, libraries, root }, report) {
  checkHeader(image, report);
  checkLibraries(image, libraries, report);
  const signature = checkSignature(image, report);
  checkPaths(image, root, report);
  const symbols = checkImports(image, libraries, report);
  const selectors = checkSelectors(image, declarations, report);
  return `${symbols} symbols of ${image.libraries.length} libraries, ${selectors} selectors; ${signature}`;
}

function checkHeader(image, report) {
  const { version } = image;
  if (!version || version.platform !== 'macos') report('is not for macOS');
  else if (version.minos !== minimumSystem) {
    report(`needs macOS ${version.minos}; it must run from ${minimumSystem} on`);
  }
  if (!image.isPositionIndependent) report('is not position-independent');
  if (image.start % pages[image.architecture] !== 0) {
    report(`starts at byte ${image.start} of the file, which begins no page`);
  }
}

function checkLibraries(image, libraries, report) {
  for (const library of image.libraries) {
    if (!libraries.has(library)) report(`is linked to ${library}`);
  }
  for (const library of libraries.keys()) {
    if (!image.libraries.includes(library)) report(`is not linked to ${library}`);
  }
}

// Apple silicon runs only signed programs; Intel also others.
function checkSignature(image, report) {
  const problems = signatureFaults(image);
  if (!problems) {
    if (image.architecture === 'arm64') report('is not signed');
    return 'not signed';
  }
  problems.forEach(report);
  return 'signed';
}

function checkPaths(image, root, report) {
  const text = image.bytes.toString('latin1');
  const source = /\/[\w.+@/-]*\/[\w.+-]+\.(?:cpp|mm|m|hpp|h|o|a)(?![\w.])/g;
  const found = new Set(text.match(source) ?? []);
  for (const place of [root, os.homedir()]) {
    if (place.length > 1 && text.includes(`${place}/`)) found.add(place);
  }
  for (const place of [...found].slice(0, 5)) report(`holds the path ${place}`);
}

function checkImports(image, libraries, report) {
  for (const { symbol, library } of image.imports) {
    if (library === undefined) report(`wants ${symbol} from any library`);
    else if (libraries.has(library) && !libraries.get(library).has(symbol)) {
      report(`wants ${symbol}, which ${library} has not`);
    }
  }
  return image.imports.length;
}

function checkSelectors(image, declarations, report) {
  const own = ownClasses(image);
  const known = new Set([...declarations.selectors, ...own.flatMap(each => each.selectors)]);
  const sent = sentSelectors(image);
  for (const selector of sent) {
    if (!known.has(selector)) report(`sends ${selector}, which nothing declares`);
  }
  // A delegate method with a wrong name is never called, and nothing else would show that. Of a
  // property's two methods only one may be called.
  const called = new Set([...sent, ...declarations.selectors]);
  for (const { name, selectors } of own) {
    const pairs = new Set(selectors.map(setterOf).filter(setter => selectors.includes(setter)));
    const isOfPair = selector => pairs.has(selector) || pairs.has(setterOf(selector));
    for (const selector of selectors) {
      if (!called.has(selector) && !isOfPair(selector) && !selector.startsWith('.cxx_')) {
        report(`${name} has a method ${selector}, which nothing calls`);
      }
    }
  }
  return sent.length;
}
