// The single changes of a source that a test should notice.

import { Source } from './Source.mjs';

const comparisons = { '<': '<=', '<=': '<', '>': '>=', '>=': '>', '==': '!=', '!=': '==' };
const arithmetic = {
  '+': '-', '-': '+', '*': '/', '/': '*', '%': '*', '<<': '>>', '>>': '<<', '&': '|', '|': '&',
};
const assignments = { '+=': '-=', '-=': '+=', '*=': '/=', '/=': '*=', '|=': '&=', '&=': '|=' };
const logic = { '&&': '||', '||': '&&' };
const steps = { '++': '--', '--': '++' };
const constants = { true: 'false', false: 'true' };
const functions = { min: 'max', max: 'min' };
const keywords = /^(if|for|while|do|switch|else|return|case|default|static_assert|throw)$/;

/// The mutants of a source in its order: [{kind, line, start, end, replacement}]. `line` counts from 1;
/// the text from `start` to `end` becomes `replacement`.
export function mutantsOf(text) {
  const source = new Source(text);
  const mutants = [];
  const add = (kind, start, end, replacement) => {
    const line = text.slice(0, start).split('\n').length;
    mutants.push({ kind, line, start, end, replacement });
  };
  for (let index = 0; index < source.tokens.length; ++index) {
    if (source.word(index) === 'static_assert') index = source.behind(index + 1);
    swaps(source, index, add);
    numbers(source, index, add);
    conditions(source, index, add);
    if (beginsStatement(source, index)) statements(source, index, add);
  }
  return mutants.sort((one, other) => one.start - other.start || one.end - other.end);
}

/// The text with the mutant in it.
export function mutated(text, { start, end, replacement }) {
  return text.slice(0, start) + replacement + text.slice(end);
}

function swaps(source, index, add) {
  const { text, start, end } = source.tokens[index];
  const swap = (kind, table) => Object.hasOwn(table, text) && add(kind, start, end, table[text]);
  if (source.isBinary(index)) {
    swap('comparison', comparisons);
    // Text can only be added.
    if (![index - 1, index + 1].some(at => source.word(at).startsWith('"'))) swap('arithmetic', arithmetic);
    swap('logic', logic);
  }
  swap('assignment', assignments);
  swap('step', steps);
  swap('constant', constants);
  if (source.word(index + 1) === '(') swap('function', functions);
  if (text === '!') add('condition', start, end, '');
}

function numbers(source, index, add) {
  const { text, start, end } = source.tokens[index];
  const match = /^(0[xX][\da-fA-F']+|\d[\d']*)([uUlLzZ]*)$/.exec(text);
  if (match) {
    const isPure =
      source.word(index - 1) === '=' && /^(\)|const|noexcept|override)$/.test(source.word(index - 2));
    if (isPure) return;
    const value = BigInt(match[1].replaceAll("'", ''));
    if (value > 0n) add('constant', start, end, `${value - 1n}${match[2]}`);
    add('constant', start, end, `${value + 1n}${match[2]}`);
  } else if (/^\d[\d']*\.\d+$/.test(text)) {
    add('constant', start, end, `(${text} - 1)`);
    add('constant', start, end, `(${text} + 1)`);
  }
}

// Negates the condition of if, while and "?". What a swap does already is left out.
function conditions(source, index, add) {
  let first;
  let last;
  if (/^(if|while)$/.test(source.word(index))) {
    const open = source.find(index + 1, '(');
    if (source.word(open) !== '(') return;
    first = open + 1;
    last = source.partner[open] - 1;
    for (let at = source.find(first, ';'); at < last; at = source.find(first, ';')) first = at + 1;
    if (source.isDeclaration(first)) return;
  } else if (source.word(index) === '?') {
    last = index - 1;
    first = index;
    while (!/^([=,([{;:?]|return|[-+]=|<<)$/.test(source.word(first - 1)))
      first = Math.min(first - 1, source.partner[first - 1] ?? first);
  } else return;

  const words = source.tokens.slice(first, last + 1).map(token => token.text);
  const isCompound = words.some(word => word in logic);
  if (!isCompound && words.some(word => /^(!|==|!=)$/.test(word))) return;
  const { start } = source.tokens[first];
  const { end } = source.tokens[last];
  add('condition', start, end, `!(${source.text.slice(start, end)})`);
}

function beginsStatement(source, index) {
  if (!source.isInBlock(index) || source.word(index) === '{') return false;
  const before = source.word(index - 1);
  if (/^(;|else|do)$/.test(before)) return true;
  const bracket = Math.min(index - 1, source.partner[index - 1] ?? index);
  if (/^[{}]$/.test(before)) return source.kinds[bracket] === 'block';
  if (before === ')') return /^(if|for|while|switch|constexpr)$/.test(source.word(bracket - 1));
  if (before !== ':') return false;
  // A label, or a branch of "?".
  let at = index - 2;
  while (!/^([;{}?]|case|default)$/.test(source.word(at))) --at;
  return /^(case|default)$/.test(source.word(at));
}

function statements(source, index, add) {
  const end = source.find(index, ';');
  if (source.word(end) !== ';' || end === index) return;
  const { start } = source.tokens[index];
  const word = source.word(index);
  if (word === 'return' && end > index + 1) {
    const from = source.tokens[index + 1].start;
    const to = source.tokens[end].start;
    const value = source.text.slice(from, to);
    if (/^(true|false)$/.test(value)) return;
    if (!/^(\{\}|std::nullopt|nullptr|""|0)$/.test(value)) add('returned value', from, to, '{}');
    add('returned value', from, to, 'true');
  } else if (word === 'return' || !(keywords.test(word) || source.isDeclaration(index))) {
    add('removed', start, source.tokens[end].start, '');
  }
}
