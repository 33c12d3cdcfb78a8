// The kind of value that a type has, as far as Objective-C and the listing can be compared.
//
// A kind is {is, name?, nullable}: `is` is one of void, number, boolean, string (an NSString, a
// selector or a C string: the listing has one word for them), enumeration, object (name: its class,
// or undefined for any object), self (the receiver's class), block (takes: its
// arguments' kinds), structure and pointer.

const qualifiers =
  /\b(?:_Nonnull|_Nullable|_Null_unspecified|__strong|__weak|__autoreleasing|__unsafe_unretained|__kindof|const|struct|enum)\b/g;

const bare = type => type.replace(qualifiers, ' ').replace(/\s+/g, ' ').trim();

const number =
  /^(?:(?:unsigned |signed )?(?:char|short|int|long|long long|__int128)|unsigned|float|double)$/;

/// The types in the list that the last "(…)" of a block's type holds.
function blockArguments(type) {
  const list = type
    .slice(type.indexOf('(', type.indexOf('^') + 1) + 1, type.lastIndexOf(')'))
    .trim();
  if (list === '' || list === 'void') return [];
  const types = [''];
  let depth = 0;
  for (const char of list) {
    if ('(<['.includes(char)) ++depth;
    if (')>]'.includes(char)) --depth;
    if (char === ',' && depth === 0) types.push('');
    else types[types.length - 1] += char;
  }
  return types;
}

/// The kind of a type of the compiler's syntax tree, {qualType, desugaredQualType?}. The names that
/// are known come from knownNames.
export function declaredKind(type, names) {
  const written = bare(type.qualType);
  const full = bare(type.desugaredQualType ?? type.qualType);
  // The outermost qualifier of a pointer stands after its last star or, for a block, its caret.
  const outer = type.qualType.slice(Math.max(type.qualType.lastIndexOf('*'), 0));
  const nullable = full.includes('^')
    ? /\(\^\s*_Nullable/.test(type.qualType) ||
      (!type.qualType.includes('^') && /_Nullable/.test(type.qualType))
    : /_Nullable/.test(outer);
  const kind = (is, more = {}) => ({ is, nullable, ...more });

  if (/^instancetype\b/.test(written)) return kind('self');
  if (written === 'BOOL' || full === 'bool') return kind('boolean');
  if (written === 'Boolean') return kind('number');
  if (written === 'SEL') return kind('string');
  if (full === 'void') return kind('void');
  if (full.includes('^')) {
    const takes = blockArguments(full).map(qualType => declaredKind({ qualType }, names));
    return kind('block', { takes });
  }
  if (full.includes('(*')) return kind('pointer');
  const enumeration = [written, full].find(names.isEnumeration);
  if (enumeration) return kind('enumeration', { name: enumeration });
  if (number.test(full)) return kind('number');
  if (full === 'char *') return kind('string');
  const any = full.match(/^(?:id|Class)(?:<(\w+)>)?$/);
  if (any) return kind('object', { name: any[1] });
  const object = full.match(/^(\w+)(?:<.*>)? \*$/)?.[1];
  if (object === 'NSString') return kind('string');
  if (names.isClass(object)) return kind('object', { name: object });
  if (full.includes('*')) return kind('pointer');
  return kind('structure', { name: full });
}

/// The names that declaredKind recognizes.
export function knownNames(declarations, listing) {
  const declared = new Set(declarations.enumerations.map(enumeration => enumeration.name));
  return {
    isEnumeration: name => declared.has(name) || listing.isEnumeration(name),
    isClass: name => declarations.classNames.has(name),
  };
}

/// The kind of a type node of the listing.
export function listedKind(ts, node, source) {
  if (!node) return { is: 'void', nullable: false };
  const text = node.getText(source);
  if (ts.isParenthesizedTypeNode(node)) return listedKind(ts, node.type, source);
  if (ts.isFunctionTypeNode(node)) {
    // A block that may be nil is listed as one whose result may be.
    const nullable = ts.isUnionTypeNode(node.type) && /\bnull$/.test(text);
    const takes = node.parameters.map(parameter => listedKind(ts, parameter.type, source));
    return { is: 'block', nullable, takes };
  }
  if (ts.isUnionTypeNode(node)) {
    const nullable = node.types.some(type => type.getText(source) === 'null');
    return { ...listedKind(ts, node.types[0], source), nullable };
  }
  const kind = (is, name) => ({ is, name, nullable: false });
  const words = {
    void: 'void',
    number: 'number',
    boolean: 'boolean',
    string: 'string',
    this: 'self',
    unknown: 'structure',
  };
  if (words[text]) return kind(words[text]);
  if (text === 'interop.Object' || text === 'any') return kind('object');
  if (/^interop\.Pointer/.test(text)) return kind('pointer');
  if (/^InstanceType</.test(text)) return kind('self');
  const enumeration = text.match(/^interop\.Enum<typeof (\w+)>$/);
  if (enumeration) return kind('enumeration', enumeration[1]);
  return kind('object', text.replace(/<.*$/s, ''));
}

const shown = kind =>
  kind.is === 'object' || kind.is === 'structure' || kind.is === 'enumeration'
    ? (kind.name ?? 'any object')
    : kind.is === 'block'
      ? `a block of (${kind.takes.map(shown).join(', ')})`
      : kind.is;

/// The difference between the declared kind and the listed one, or undefined. `place` names the value.
export function difference(place, declared, listed, { argument = false, generics = [] } = {}) {
  const wrong = () => `${place} is ${shown(declared)}; the SDK has ${shown(listed)}`;
  if (!same(declared, listed, generics)) return wrong();
  if (argument && declared.nullable && !listed.nullable && listed.is !== 'pointer') {
    return `${place} may be nil; in the SDK it may not`;
  }
  if (!argument && listed.nullable && !declared.nullable) {
    return `${place} is never nil; in the SDK it may be`;
  }
  return undefined;
}

function same(declared, listed, generics) {
  // Generic parameters and Core Foundation's references are listed as any object, and the latter
  // now and then as pointers.
  if (listed.is === 'object' && generics.includes(listed.name)) return declared.is === 'object';
  if (declared.is === 'pointer')
    return listed.is === 'pointer' || (listed.is === 'object' && !listed.name);
  if (declared.is === 'structure') {
    return (
      ['structure', 'object'].includes(listed.is) && (!listed.name || listed.name === declared.name)
    );
  }
  if (declared.is !== listed.is) return false;
  if (declared.is !== 'block') return declared.name === listed.name;
  return (
    declared.takes.length === listed.takes.length &&
    declared.takes.every((kind, index) => same(kind, listed.takes[index], generics))
  );
}
