// Reads one statement of the listing.

import { listedKind } from './kinds.mjs';
import { typescript } from './toolchain.mjs';

export class StatementReader {
  #ts = typescript();
  #source;

  /// A class or interface as {superclass?, protocols, generics, members}, a function as
  /// {parameters, type}, a constant as {type}, an enumeration as {values}.
  read(text) {
    const ts = this.#ts;
    this.#source = ts.createSourceFile('listing.d.ts', text, ts.ScriptTarget.Latest);
    const [statement] = this.#source.statements;
    if (ts.isFunctionDeclaration(statement)) return this.#signature(statement);
    if (!ts.isVariableStatement(statement)) return this.#type(statement);
    const { type } = statement.declarationList.declarations[0];
    return ts.isTypeLiteralNode(type) ? { values: this.#values(type) } : { type: this.#kind(type) };
  }

  #kind(node) {
    return listedKind(this.#ts, node, this.#source);
  }

  #name(node) {
    return node.name.getText(this.#source);
  }

  #signature(node) {
    const parameters = node.parameters.filter(parameter => this.#name(parameter) !== 'this');
    return {
      parameters: parameters.map(parameter => this.#kind(parameter.type)),
      type: this.#kind(node.type),
    };
  }

  #values(literal) {
    return new Map(
      literal.members.map(member => [
        this.#name(member),
        Number(member.type.getText(this.#source)),
      ]),
    );
  }

  #type(node) {
    const ts = this.#ts;
    const heritage = token =>
      (node.heritageClauses ?? [])
        .filter(clause => clause.token === token)
        .flatMap(clause => clause.types.map(type => type.expression.getText(this.#source)));
    const extended = heritage(ts.SyntaxKind.ExtendsKeyword);
    const isClass = ts.isClassDeclaration(node);
    return {
      // The listing's own root, above the SDK's.
      superclass: isClass ? extended.find(name => name !== 'NativeObject') : undefined,
      protocols: isClass ? heritage(ts.SyntaxKind.ImplementsKeyword) : extended,
      generics: (node.typeParameters ?? []).map(parameter => this.#name(parameter)),
      members: node.members.map(member => this.#member(member, node.members)).filter(Boolean),
    };
  }

  // A property that takes more than it gives (an array, say) is listed as a pair of accessors.
  #member(node, siblings) {
    const ts = this.#ts;
    if (!node.name || !ts.isIdentifier(node.name) || ts.isSetAccessor(node)) return undefined;
    const has = kind => (node.modifiers ?? []).some(modifier => modifier.kind === kind);
    const isMethod = ts.isMethodDeclaration(node) || ts.isMethodSignature(node);
    const isUnset = () =>
      !siblings.some(other => ts.isSetAccessor(other) && this.#name(other) === this.#name(node));
    return {
      name: this.#name(node).replace(/\$$/, ''),
      isStatic: has(ts.SyntaxKind.StaticKeyword),
      isMethod,
      optional: Boolean(node.questionToken),
      readonly: has(ts.SyntaxKind.ReadonlyKeyword) || (ts.isGetAccessor(node) && isUnset()),
      ...(isMethod ? this.#signature(node) : { parameters: [], type: this.#kind(node.type) }),
    };
  }
}
