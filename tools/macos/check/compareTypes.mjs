// Compares declared classes, protocols and categories with the listing.

import { declaredKind, difference, knownNames } from './kinds.mjs';
import { argumentCount, joined, setterOf } from './names.mjs';

/// Calls report(place, subject, message) for each difference between `declarations` and `listing`.
export function compareTypes(declarations, listing, spellings, report) {
  const context = {
    declarations,
    listing,
    spellings,
    report,
    names: knownNames(declarations, listing),
  };

  for (const { name, place } of declarations.forward) {
    if (!listing.class(name)) report(place, name, 'the SDK has no such class');
  }
  for (const declared of declarations.classes) {
    const listed = listing.class(declared.name);
    if (!listed) {
      report(declared.place, declared.name, 'the SDK has no such class');
      continue;
    }
    compareHeritage(context, declared, listed);
    compareMembers(context, declared, listed);
  }
  for (const declared of declarations.categories) {
    const listed = listing.class(declared.name);
    if (listed) compareMembers(context, declared, listed);
    else report(declared.place, declared.name, 'the SDK has no such class');
  }
  for (const declared of declarations.protocols) {
    const listed = listing.protocol(declared.name);
    if (listed) {
      compareProtocols(context, declared, listed);
      compareMembers(context, declared, listed, { isProtocol: true });
    } else report(declared.place, declared.name, 'the SDK has no such protocol');
  }
}

function compareHeritage(context, declared, listed) {
  const { report, declarations } = context;
  const framework = declarations.framework(declared.place);
  // The C half of Foundation is listed with it or with Core Foundation.
  if (listed.framework !== framework && listed.framework !== 'Runtime') {
    report(
      declared.place,
      declared.name,
      `declared in ${framework}; the SDK has it in ${listed.framework}`,
    );
  }
  if (declared.superclass !== listed.superclass) {
    report(
      declared.place,
      declared.name,
      `its superclass is ${declared.superclass}; in the SDK it is ${listed.superclass ?? 'none'}`,
    );
  }
  compareProtocols(context, declared, listed);
}

function compareProtocols({ listing, report }, declared, listed) {
  const adopted = new Set(listing.lineage(listed).map(type => type.name));
  for (const protocol of declared.protocols) {
    if (!adopted.has(protocol) && !adopted.has(`${protocol}Protocol`)) {
      report(declared.place, declared.name, `adopts ${protocol}; in the SDK it does not`);
    }
  }
}

function compareMembers(context, declared, listed, { isProtocol = false } = {}) {
  const lineage = context.listing.lineage(listed);
  for (const member of declared.members) {
    const subject =
      member.kind === 'method'
        ? `${member.isStatic ? '+' : '-'}[${declared.name} ${member.name}]`
        : `${declared.name}.${member.name}`;
    const reportMember = message => context.report(member.place, subject, message);
    const problem = compareMember(context, member, lineage, isProtocol);
    if (problem) reportMember(problem);
    for (const selector of selectorsOf(member)) {
      if (!problem && !context.spellings.has(selector))
        reportMember(`no method of the SDK is spelt ${selector}`);
    }
  }
}

function selectorsOf(member) {
  if (member.kind === 'method') return [member.name];
  return member.readonly ? [member.getter] : [member.getter, setterOf(member.name)];
}

// The first difference between a declared member and the listed one, or undefined.
function compareMember({ names }, member, lineage, isProtocol) {
  const isMethod = member.kind === 'method';
  const name = isMethod ? joined(member.name) : member.name;
  const named = lineage.flatMap(type =>
    type.members
      .filter(other => other.name === name)
      .map(other => ({ ...other, generics: type.generics })),
  );
  if (!named.length) return `the SDK has no such ${member.kind}${likely(lineage, name)}`;

  const sameSide = named.filter(other => other.isStatic === member.isStatic);
  if (!sameSide.length) {
    return `a ${member.kind} of ${side(member)}; in the SDK it is one of ${side(named[0])}`;
  }
  const sameKind = sameSide.filter(other => other.isMethod === isMethod);
  if (!sameKind.length) {
    return `declared as a ${member.kind}; in the SDK it is a ${isMethod ? 'property' : 'method'}`;
  }
  const count = argumentCount(isMethod ? member.name : '');
  const candidates = sameKind.filter(other => other.parameters.length === count);
  if (!candidates.length) {
    return `has ${count} arguments; in the SDK it has ${sameKind[0].parameters.length}`;
  }
  const problems = candidates.map(other => compareDetails(member, other, names, isProtocol));
  return problems.every(Boolean) ? problems[0] : undefined;
}

function compareDetails(member, listed, names, isProtocol) {
  const options = { generics: listed.generics };
  if (member.kind === 'property' && !member.readonly && listed.readonly) {
    return 'writable; in the SDK it is readonly';
  }
  if (isProtocol && member.optional !== listed.optional) {
    return member.optional
      ? 'optional; in the SDK it is required'
      : 'required; in the SDK it is optional';
  }
  const own = declaredKind(member.type, names);
  const result = difference(
    member.kind === 'method' ? 'its result' : 'it',
    own,
    listed.type,
    options,
  );
  if (result) return result;
  for (const [index, parameter] of member.parameters.entries()) {
    const kind = declaredKind(parameter.type, names);
    const problem = difference(
      `argument ${index + 1} (${parameter.name})`,
      kind,
      listed.parameters[index],
      { ...options, argument: true },
    );
    if (problem) return problem;
  }
  return undefined;
}

const side = member => (member.isStatic ? 'the class' : 'instances');

// Members whose names begin alike, since a wrong name may be a misspelling of one.
function likely(lineage, name) {
  const start = name.slice(0, Math.max(4, Math.ceil(name.length / 2)));
  const names = new Set(
    lineage
      .flatMap(type => type.members.map(member => member.name))
      .filter(other => other.startsWith(start)),
  );
  return names.size ? ` (it has ${[...names].slice(0, 4).join(', ')})` : '';
}
