// Reads the part of YAML that the workflows use: blocks of keys and of list entries, lists in brackets,
// quoted and plain scalars, texts after "|". Throws YamlError for everything else.

export class YamlError extends Error {
  constructor(line, message) {
    super(message);
    this.line = line;
  }
}

const otherSyntax = /^[&*!{}>%@`?]|^-$|: |:$/;

function scalar(text, line) {
  const quote = text[0];
  if (quote === '"' || quote === "'") {
    const inside = text.slice(1, -1);
    if (text.length < 2 || !text.endsWith(quote) || inside.includes(quote) || inside.includes('\\'))
      throw new YamlError(line, `cannot read ${text}`);
    return { line, value: inside };
  }
  if (otherSyntax.test(text)) throw new YamlError(line, `cannot read ${text}`);
  return { line, value: text };
}

function inlineValue(text, line) {
  if (!text.startsWith('[')) return scalar(text, line);
  if (!text.endsWith(']')) throw new YamlError(line, `cannot read ${text}`);
  const entries = text.slice(1, -1).split(',').map((entry) => entry.trim());
  return { line, value: entries.filter(Boolean).map((entry) => scalar(entry, line)) };
}

/// The document as {line, value}: value is a string, an array of such nodes, a Map from key to node, or
/// null.
export function readYaml(text) {
  const lines = text.split('\n').map((raw, index) => {
    const content = raw.replace(/(^|\s)#.*$/, '').trimEnd();
    return { raw, line: index + 1, indent: content.search(/\S/), text: content.trim() };
  });
  let next = 0;

  function peek() {
    while (next < lines.length && lines[next].text === '') ++next;
    return lines[next];
  }

  function textBlock(parent, line) {
    const from = next;
    while (next < lines.length && (lines[next].raw.trim() === '' || lines[next].raw.search(/\S/) > parent)) ++next;
    return { line, value: lines.slice(from, next).map(({ raw }) => raw.trim()).join('\n').trim() };
  }

  function valueAfter(inline, parent, line) {
    if (inline === '|') return textBlock(parent, line);
    if (inline !== '') return inlineValue(inline, line);
    const below = peek();
    return below && below.indent > parent ? block(below.indent) : { line, value: null };
  }

  function list(indent) {
    const node = { line: peek().line, value: [] };
    for (let entry = peek(); entry?.indent === indent && entry.text.startsWith('- '); entry = peek()) {
      const inline = entry.text.slice(2).trim();
      if (/^[\w-]+:( |$)/.test(inline)) {
        Object.assign(entry, { indent: indent + 2, text: inline });
        node.value.push(block(indent + 2));
      } else {
        ++next;
        node.value.push(inlineValue(inline, entry.line));
      }
    }
    return node;
  }

  function mapping(indent) {
    const node = { line: peek().line, value: new Map() };
    for (let entry = peek(); entry?.indent === indent; entry = peek()) {
      const match = /^([\w-]+):(?: +(.*))?$/.exec(entry.text);
      if (!match) throw new YamlError(entry.line, `cannot read ${entry.text}`);
      const [, key, inline = ''] = match;
      if (node.value.has(key)) throw new YamlError(entry.line, `the key '${key}' is there twice`);
      ++next;
      node.value.set(key, { ...valueAfter(inline, indent, entry.line), line: entry.line });
    }
    return node;
  }

  function block(indent) {
    const node = peek().text.startsWith('- ') ? list(indent) : mapping(indent);
    if (peek()?.indent > indent) throw new YamlError(peek().line, 'unexpected indentation');
    return node;
  }

  for (const { raw, line } of lines)
    if (/^\s*\t/.test(raw)) throw new YamlError(line, 'indentation with tabs');
  if (!peek()) throw new YamlError(1, 'empty');
  const document = block(0);
  if (peek()) throw new YamlError(peek().line, 'unexpected indentation');
  return document;
}
