// The tokens of a C++ source, and what its brackets hold. It relies on the project's format: binary
// operators stand between spaces, others touch an operand.

import { commentsAndStrings } from '../../scripts/commentsAndStrings.mjs';

const words = /[A-Za-z_]\w*|(?:0[xX][\da-fA-F']+|\d[\d']*(?:\.\d+)?)\w*|"+/;
const operators = /->|\+\+|--|<=>|<<=|(?<=\s)>>(?=\s)|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|<<|::|\S/;
const tokenPattern = new RegExp(`${words.source}|${operators.source}`, 'g');

const opening = { ')': '(', ']': '[', '}': '{' };
const blockBefore = /^([)\];{}:]|else|do|try|const|noexcept|override|mutable)$/;
const declares = /^(const|constexpr|static|auto|using|struct|class|enum|template|typedef|friend)$/;
const typeWords = new Set(['class', 'struct', 'union', 'enum', 'namespace']);

/// - text: the source
/// - tokens: [{text, start, end}]; comments and directives make none, a literal's text is quotes
/// - partner: for each bracket's index the index of its other one
/// - kinds: for each index of a "{": block, type or value
/// - around: for each index that of the innermost open bracket before it, or -1
export class Source {
  partner = [];
  kinds = [];
  around = [];

  constructor(text) {
    this.text = text;
    this.tokens = [...withoutProse(text).matchAll(tokenPattern)].map(match => ({
      text: match[0],
      start: match.index,
      end: match.index + match[0].length,
    }));
    const open = [];
    for (const [index, { text: token }] of this.tokens.entries()) {
      if (token in opening) {
        const other = open.pop();
        if (this.word(other) !== opening[token]) throw new Error(`"${token}" without its partner`);
        this.partner[index] = other;
        this.partner[other] = index;
      }
      this.around[index] = open.at(-1) ?? -1;
      if (token === '{') this.kinds[index] = this.#kind(index);
      if ('([{'.includes(token)) open.push(index);
    }
  }

  word(index) {
    return this.tokens[index]?.text ?? '';
  }

  isName(index) {
    return /^[A-Za-z_]/.test(this.word(index));
  }

  /// Whether the tokens `index` and `index + 1` touch.
  touches(index) {
    return this.tokens[index]?.end === this.tokens[index + 1]?.start;
  }

  /// Whether the token is an operator between two operands.
  isBinary(index) {
    return index > 0 && !this.touches(index - 1) && !this.touches(index);
  }

  isInBlock(index) {
    return this.kinds[this.around[index]] === 'block';
  }

  /// The index behind the template arguments, if any, that begin at `index`.
  behindTemplateArguments(index) {
    if (this.word(index) !== '<' || !this.touches(index - 1)) return index;
    let depth = 0;
    for (let at = index; at < this.tokens.length; at = this.behind(at)) {
      if (this.word(at) === '<') ++depth;
      if (this.word(at) === '>' && --depth === 0) return at + 1;
    }
    return index;
  }

  /// The index behind the token, or behind the pair of brackets that it opens.
  behind(index) {
    return (this.partner[index] > index ? this.partner[index] : index) + 1;
  }

  /// The first index from `index` on, outside inner brackets, of one of `words` or of the bracket that
  /// ends the outer pair.
  find(index, ...words) {
    let at = index;
    while (at < this.tokens.length && !words.includes(this.word(at)) && !(this.word(at) in opening))
      at = this.behind(at);
    return at;
  }

  /// Whether what begins at `index` declares something: a name follows a type.
  isDeclaration(index) {
    if (declares.test(this.word(index))) return true;
    if (!this.isName(index)) return false;
    let at = this.behindTemplateArguments(index + 1);
    while (this.word(at) === '::') at = this.behindTemplateArguments(at + 2);
    while (/^[*&]+$/.test(this.word(at)) && this.touches(at - 1)) ++at;
    return this.isName(at);
  }

  #kind(index) {
    const before = this.word(index - 1);
    if (before === '{') return this.kinds[index - 1];
    const head = this.#head(index);
    if (before !== ')' && head.some(word => typeWords.has(word))) return 'type';
    if (blockBefore.test(before)) return 'block';
    return head.includes('->') && !this.touches(index - 1) ? 'block' : 'value';
  }

  // The words before `index` back to the end of the last statement or to the outer bracket.
  #head(index) {
    const words = [];
    for (let at = index - 1; at >= 0 && !/^[;{}([]$/.test(this.word(at)); --at) {
      if (this.partner[at] < at) at = this.partner[at];
      else words.unshift(this.word(at));
    }
    return words[0] === 'template' ? words.slice(words.indexOf('>') + 1) : words;
  }
}

// The text at the same places without comments and directives; of literals only quotes are left.
function withoutProse(text) {
  const blank = part => part.replace(/[^\n]/g, ' ');
  return text
    .replace(commentsAndStrings, part => (/^\//.test(part) ? blank(part) : '"'.repeat(part.length)))
    .replace(/^[ \t]*#(?:\\\n|.)*/gm, blank);
}
