// What headers declare, read from the compiler's own syntax tree.

import { readFileSync, realpathSync } from 'node:fs';
import path from 'node:path';
import { constantValue, enumerationValues, parameters, readSyntaxTree } from './SyntaxTree.mjs';

/// Reads the headers of every framework below `folder`. Throws with the compiler's message where
/// they do not compile. Afterwards:
/// - classes, protocols, categories: [{name, place, superclass?, protocols, members}], each member
///   {kind: method or property, name, place, isStatic, type, parameters, readonly, getter,
///   optional}
/// - forward: classes that are only named, [{name, place}]
/// - functions: [{name, place, type, parameters, inlined}]
/// - constants: [{name, place, type, value?}], with a value if the header defines it
/// - enumerations: [{name?, place, values: [{name, value, place}]}]
/// - structures: [{name, place, fields: names}]
/// - selectors: every selector that these headers or the toolchain's declare
/// - classNames: every class, likewise.
/// A place is {file, line}; a type is the syntax tree's {qualType, desugaredQualType?}.
export class Declarations {
  classes = [];
  protocols = [];
  categories = [];
  forward = [];
  functions = [];
  constants = [];
  enumerations = [];
  structures = [];
  selectors = new Set();
  classNames = new Set();
  #sources = new Map();
  #typedefs = new Map();

  constructor(folder) {
    this.folder = realpathSync(folder);
    this.#walk(readSyntaxTree(this.folder).inner);
  }

  /// The framework whose header holds `place`.
  framework(place) {
    return path.relative(this.folder, place.file).split('.framework')[0];
  }

  #walk(nodes = []) {
    for (const [index, node] of nodes.entries()) {
      // A nameless structure is known by the name that follows it.
      if (node.kind === 'CXXRecordDecl') node.name ??= nodes[index + 1]?.name;
      if (node.kind === 'LinkageSpecDecl') this.#walk(node.inner);
      else this.#add(node, node.place?.file?.startsWith(this.folder + path.sep));
    }
  }

  #add(node, ours) {
    const { name, place } = node;
    if (node.kind === 'TypedefDecl')
      this.#typedefs.set(name, node.type.desugaredQualType ?? node.type.qualType);
    const isType = ['ObjCInterfaceDecl', 'ObjCProtocolDecl', 'ObjCCategoryDecl'].includes(
      node.kind,
    );
    if (isType) this.#addNames(node);
    if (!ours) return;
    if (node.kind === 'ObjCInterfaceDecl') {
      if (node.super?.name) this.classes.push(this.#type(node));
      else this.forward.push({ name, place });
    } else if (node.kind === 'ObjCProtocolDecl') {
      if (node.inner || node.protocols) this.protocols.push(this.#type(node));
    } else if (node.kind === 'ObjCCategoryDecl') {
      this.categories.push({ ...this.#type(node), name: node.interface.name });
    } else if (node.kind === 'FunctionDecl') {
      const type = this.#resultType(node.type.qualType);
      const inlined = (node.inner ?? []).some(child => child.kind === 'CompoundStmt');
      this.functions.push({ name, place, type, parameters: parameters(node), inlined });
    } else if (node.kind === 'VarDecl') {
      this.constants.push({
        name,
        place,
        type: node.type,
        value: node.init && constantValue(node.inner[0]),
      });
    } else if (node.kind === 'CXXRecordDecl' && node.completeDefinition) {
      const fields = (node.inner ?? [])
        .filter(child => child.kind === 'FieldDecl')
        .map(child => child.name);
      this.structures.push({ name, place, fields });
    } else if (node.kind === 'EnumDecl') {
      const values = enumerationValues(node);
      if (values.length) this.enumerations.push({ name, place, values });
    }
  }

  // The tree has a function's type only as written.
  #resultType(functionType) {
    const qualType = functionType.slice(0, functionType.indexOf('(')).trim();
    return { qualType, desugaredQualType: this.#typedefs.get(qualType) };
  }

  #addNames(node) {
    if (node.kind === 'ObjCInterfaceDecl') this.classNames.add(node.name);
    for (const member of node.inner ?? []) {
      if (member.kind === 'ObjCMethodDecl') this.selectors.add(member.name);
    }
  }

  #type(node) {
    return {
      name: node.name,
      place: node.place,
      superclass: node.super?.name,
      protocols: (node.protocols ?? []).map(protocol => protocol.name),
      members: (node.inner ?? []).map(member => this.#member(member)).filter(Boolean),
    };
  }

  #member(node) {
    const { name, place } = node;
    if (node.kind === 'ObjCPropertyDecl') {
      return {
        kind: 'property',
        name,
        place,
        isStatic: Boolean(node.class),
        type: node.type,
        parameters: [],
        readonly: Boolean(node.readonly),
        getter: node.getter?.name ?? name,
        optional: node.control === 'optional',
      };
    }
    if (node.kind !== 'ObjCMethodDecl' || node.isImplicit) return undefined;
    return {
      kind: 'method',
      name,
      place,
      isStatic: !node.instance,
      type: node.returnType,
      parameters: parameters(node),
      optional: this.#isOptional(place),
    };
  }

  // The tree does not say it; the last such word before the method does.
  #isOptional({ file, offset }) {
    if (!this.#sources.has(file)) this.#sources.set(file, readFileSync(file));
    const before = this.#sources.get(file).subarray(0, offset).toString('utf8');
    const words = before.match(/@(?:optional|required|protocol|interface)\b/g);
    return words?.at(-1) === '@optional';
  }
}
