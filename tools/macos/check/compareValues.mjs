// Compares declared functions, constants, enumerations and structures with the listing.

import { declaredKind, difference, knownNames } from './kinds.mjs';
import { numbers } from './known.mjs';
import { enumerationKey } from './names.mjs';

/// Calls report(place, subject, message) for each difference between `declarations` and `listing`.
export function compareValues(declarations, listing, report) {
  const names = knownNames(declarations, listing);
  for (const declared of declarations.functions) compareFunction(declared, listing, names, report);
  for (const declared of declarations.constants) compareConstant(declared, listing, names, report);
  for (const declared of declarations.enumerations) compareEnumeration(declared, listing, report);
  for (const declared of declarations.structures) compareStructure(declared, listing, report);
}

function compareFunction({ name, place, type, parameters }, listing, names, report) {
  const listed = listing.function(name);
  if (!listed) return report(place, name, 'the SDK has no such function');
  if (parameters.length !== listed.parameters.length) {
    return report(
      place,
      name,
      `has ${parameters.length} arguments; in the SDK it has ${listed.parameters.length}`,
    );
  }
  const problems = [difference('its result', declaredKind(type, names), listed.type)];
  for (const [index, parameter] of parameters.entries()) {
    const kind = { ...declaredKind(parameter.type, names), nullable: false };
    problems.push(
      difference(`argument ${index + 1} (${parameter.name})`, kind, listed.parameters[index], {
        argument: true,
      }),
    );
  }
  const problem = problems.find(Boolean);
  return problem && report(place, name, problem);
}

function compareConstant({ name, place, type, value }, listing, names, report) {
  const listed = listing.constant(name);
  if (!listed) return report(place, name, 'the SDK has no such constant');
  const kind = declaredKind(type, names);
  const problem = difference('it', kind, listed.type);
  if (problem) return report(place, name, problem);
  return kind.is === 'number' ? compareNumber(name, place, value, report) : undefined;
}

function compareEnumeration({ name, place, values }, listing, report) {
  const listed = listing.enumeration(name);
  if (name && !listed) return report(place, name, 'the SDK has no such enumeration');
  for (const constant of values) {
    if (!name) {
      if (listing.constant(constant.name))
        compareNumber(constant.name, constant.place, constant.value, report);
      else report(constant.place, constant.name, 'the SDK has no such constant');
      continue;
    }
    const key = enumerationKey(constant.name, name, [...listed.values.keys()]);
    if (key === undefined) {
      report(
        constant.place,
        constant.name,
        `the SDK's ${name} has no such value (${[...listed.values.keys()].join(', ')})`,
      );
    } else if (listed.values.get(key) !== constant.value) {
      report(
        constant.place,
        constant.name,
        `is ${constant.value}; in the SDK it is ${listed.values.get(key)}`,
      );
    }
  }
  return undefined;
}

// A structure is listed as a class whose properties are its fields, in order.
function compareStructure({ name, place, fields }, listing, report) {
  const listed = listing.class(name);
  const expected = listed?.members.map(member => member.name).join(', ');
  if (!listed) report(place, name, 'the SDK has no such structure');
  else if (fields.join(', ') !== expected) {
    report(place, name, `has the fields ${fields.join(', ')}; in the SDK it has ${expected}`);
  }
}

// The listing names a lone number but has no value for it, nor whether it is a symbol.
function compareNumber(name, place, value, report) {
  const known = numbers[name];
  if (!known) {
    report(
      place,
      name,
      'the listing has no value for this number; known.mjs must give it, with its source',
    );
  } else if (known.exported && value !== undefined) {
    report(place, name, 'defined here; in the SDK it is a symbol of the library');
  } else if (!known.exported && value !== known.value) {
    report(place, name, `is ${value ?? 'not given as a number'}; in the SDK it is ${known.value}`);
  }
}
