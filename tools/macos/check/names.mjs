// How names of the SDK appear in the listing.

/// A selector as the listing joins it: "initWithTitle:action:" is "initWithTitleAction".
export function joined(selector) {
  const [first, ...others] = selector.split(':');
  return first + others.map(part => part.charAt(0).toUpperCase() + part.slice(1)).join('');
}

export const argumentCount = selector => selector.split(':').length - 1;

/// The selector that sets a property which has no setter name.
export const setterOf = name => `set${name.charAt(0).toUpperCase()}${name.slice(1)}:`;

/// The key of `keys` that stands for the constant `name` in the listing of `enumeration`, which
/// leaves out what constants share with their enumeration's name: "NSCachesDirectory" of
/// NSSearchPathDirectory is "Caches". Undefined if there is none.
export function enumerationKey(name, enumeration, keys) {
  const stems = [enumeration, enumeration.replace(/s$/, '')];
  const shared = key => {
    const at = name.lastIndexOf(key);
    if (at < 0) return false;
    const before = name.slice(0, at);
    const after = name.slice(at + key.length);
    return stems.some(stem => stem.startsWith(before) && stem.endsWith(after));
  };
  return keys.filter(shared).sort((a, b) => b.length - a.length)[0];
}
