// What an image declares to the Objective-C runtime.

/// The selectors that the program uses.
export function sentSelectors(image) {
  return pointers(image, '__objc_selrefs').map(address => image.text(image.offsetOf(address)));
}

/// The program's own classes and categories: [{name, selectors}].
export function ownClasses(image) {
  const categories = pointers(image, '__objc_catlist').map(address => {
    const at = image.offsetOf(address);
    return {
      name: image.text(image.offsetOf(image.pointer(at))),
      selectors: [
        ...methods(image, image.pointer(at + 16)),
        ...methods(image, image.pointer(at + 24)),
      ],
    };
  });
  return [
    ...pointers(image, '__objc_classlist').map(address => ownClass(image, address)),
    ...categories,
  ];
}

// A class record starts with the address of its metaclass. Its methods are in the data that it shares
// with the runtime.
function ownClass(image, address) {
  const at = image.offsetOf(address);
  const instance = data(image, at);
  const meta = data(image, image.offsetOf(image.pointer(at)));
  return { name: instance.name, selectors: [...instance.selectors, ...meta.selectors] };
}

function data(image, at) {
  // The lowest bits are flags.
  const address = image.pointer(at + 32);
  const offset = image.offsetOf(address - (address % 8));
  return {
    name: image.text(image.offsetOf(image.pointer(offset + 24))),
    selectors: methods(image, image.pointer(offset + 32)),
  };
}

// An entry is three pointers, or three offsets, the first one to the reference of a selector.
function methods(image, address) {
  if (!address) return [];
  const at = image.offsetOf(address);
  const header = image.bytes.readUInt32LE(at);
  const isRelative = header >>> 31 === 1;
  return Array.from({ length: image.bytes.readUInt32LE(at + 4) }, (_, index) => {
    const entry = at + 8 + index * (isRelative ? 12 : 24);
    const reference = isRelative ? entry + image.bytes.readInt32LE(entry) : entry;
    return image.text(image.offsetOf(image.pointer(reference)));
  });
}

function pointers(image, name) {
  return image.sections
    .filter(section => section.name === name)
    .flatMap(({ offset, size }) =>
      Array.from({ length: size / 8 }, (_, index) => image.pointer(offset + index * 8)),
    );
}
