// The typed listing of the SDK's frameworks from npm: its classes, protocols, functions, constants
// and enumerations. Names in it are joined (names.mjs).

import { readFileSync } from 'node:fs';
import path from 'node:path';
import { StatementReader } from './StatementReader.mjs';
import { listingPackage } from './toolchain.mjs';

/// The modules to read. Runtime has the root class and the names that belong to no framework.
const files = ['Runtime', 'CoreFoundation', 'Foundation', 'AppKit', 'ServiceManagement'];

export class Listing {
  // name -> [{kind, framework, text}]; a statement is parsed when it is asked for.
  #statements = new Map();
  #reader = new StatementReader();
  #types = new Map();

  constructor(folder = path.join(listingPackage, 'types')) {
    for (const framework of files) {
      const text = readFileSync(path.join(folder, `${framework}.d.ts`), 'utf8');
      for (const statement of text.split(/^(?=declare )/m)) this.#add(framework, statement);
    }
  }

  /// {name, framework, superclass?, protocols, generics, members}, or undefined; a member is {name,
  /// isStatic, isMethod, optional, readonly, parameters: kinds, type: kind}.
  class(name) {
    return this.#type(name, 'class');
  }

  /// The same. Where a class and a protocol share a name the listing appends "Protocol" to the
  /// latter's.
  protocol(name) {
    return (
      (this.class(name) && this.#type(`${name}Protocol`, 'interface')) ??
      this.#type(name, 'interface')
    );
  }

  /// {framework, parameters: kinds, type: kind}, or undefined.
  function(name) {
    return this.#statement(name, 'function');
  }

  /// {framework, type: kind}, or undefined.
  constant(name) {
    return this.#statement(name, 'const');
  }

  /// {framework, values: name -> number}, or undefined.
  enumeration(name) {
    return this.#statement(name, 'enumeration');
  }

  isEnumeration(name) {
    return this.#of(name, 'enumeration').length > 0;
  }

  /// The class and its superclasses, or the protocol and its own protocols: all types whose members
  /// `type` has.
  lineage(type, seen = new Set()) {
    if (!type || seen.has(type)) return [];
    seen.add(type);
    const parents = type.protocols.map(name => this.protocol(name));
    if (type.superclass) parents.unshift(this.class(type.superclass));
    return [type, ...parents.flatMap(parent => this.lineage(parent, seen))];
  }

  #add(framework, text) {
    const [, word, name, type] =
      text.match(/^declare (class|interface|function|const) ([\w$]+)(: \{)?/) ?? [];
    if (!word) return;
    // A protocol has a class beside it, which holds its class methods.
    const ofProtocol = text.startsWith(
      `declare class ${name} extends NativeObject implements ${name} `,
    );
    const kind = type ? 'enumeration' : ofProtocol ? 'interface' : word;
    const known = this.#statements.get(name);
    if (known) known.push({ kind, framework, text });
    else this.#statements.set(name, [{ kind, framework, text }]);
  }

  #of(name, kind) {
    return (this.#statements.get(name) ?? []).filter(statement => statement.kind === kind);
  }

  #statement(name, kind) {
    const [statement] = this.#of(name, kind);
    return statement && { framework: statement.framework, ...this.#reader.read(statement.text) };
  }

  // What several statements say of a type is one.
  #type(name, kind) {
    const key = `${kind} ${name}`;
    if (!this.#types.has(key)) {
      const parts = this.#of(name, kind).map(({ framework, text }) => ({
        name,
        framework,
        ...this.#reader.read(text),
      }));
      this.#types.set(
        key,
        parts.length && {
          ...parts[0],
          protocols: parts.flatMap(part => part.protocols).filter(protocol => protocol !== name),
          members: parts.flatMap(part => part.members),
        },
      );
    }
    return this.#types.get(key) || undefined;
  }
}
