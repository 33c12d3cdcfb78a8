#!/usr/bin/env node
// Checks that names and prose use the field's terms. A name is split at its capitals and underscores.

import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { basename, dirname, extname, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { commentsAndStrings } from './commentsAndStrings.mjs';

const usage = `usage: scripts/words.mjs [FILE...]

Checks the words of the FILEs, given from the top of the repository, or of the
whole tree: in the names of files and identifiers, and in comments and documents. Prints each word that is not the
field's term, with the term to use, and fails if there is any.
`;

// Words of names. Several words, as in "put aside", are parts that follow one another.
const names = [
  [['rooms'], 'components'],
  [['front', 'fronts'], 'frontend'],
  [['road', 'roads'], 'path, update end-to-end'],
  [['person', 'persons'], 'UI driver, user'],
  [['eyes'], 'window inspector'],
  [['hands'], 'input injector'],
  [['visitor', 'visitors'], 'driver plug-in'],
  [['seat', 'attendant'], 'connection, listener'],
  [['act', 'acts', 'acted', 'acting'], 'operation, user steps'],
  [['narrator'], 'reporter'],
  [['world'], 'sandbox'],
  [['ending', 'endings'], 'shutdown'],
  [['tell', 'tells', 'told', 'telling'], 'report'],
  [['story', 'stories'], 'scenario'],
  [['maker', 'makers'], 'vendor'],
  [['seal', 'seals', 'sealed', 'unsealed'], 'signature'],
  [['authority', 'authorities'], 'CA certificates'],
  [['address', 'addresses'], 'URL'],
  [['look for'], 'check for'],
  [['first look'], 'first check'],
  [['patience', 'patient'], 'timeout'],
  [['grace'], 'grace period'],
  [['nap', 'naps'], 'poll interval'],
  [['rest', 'rests', 'resting'], 'coalesce, remainder'],
  [['way', 'ways'], 'cursor'],
  [['involved'], 'tracked'],
  [['come by', 'comes by'], 'visit'],
  [['put aside', 'puts aside'], 'suspend'],
  [['newcomer', 'newcomers'], 'new instance'],
  [['surroundings'], 'context'],
  [['text cuts', 'text repair'], 'string and UTF-8 helpers'],
  [['shown text'], 'display text'],
];

// Words and phrases of prose, in any case. The words of names that are missing here have an ordinary
// sense too, as in "the rest" or "the address of a socket": a reader judges those.
const prose = [
  [/\brooms\b/, 'components'],
  [/\bfronts\b|\b(mac's|linux|qt|appkit|native|both|the|a|one|each) front(?=[ ,.;:)'’]|$)(?! of\b)/, 'frontend'],
  [/\bDRIFTMARK_FRONT\b/, 'DRIFTMARK_FRONTEND'],
  [/\broads?\b/, 'path, update end-to-end'],
  [/\bpersons?\b/, 'UI driver, user'],
  [/\b(attendant|narrator)s?\b/, 'listener, reporter'],
  [/\bact logs?\b/, 'journal'],
  [/\b(story|stories)\b/, 'scenario'],
  [/\bmakers?\b/, 'vendor'],
  [/\b(un)?seal(s|ed)?\b/, 'signature, signed'],
  [/\bauthorities\b/, 'CA certificates'],
  [/\b(web|http|https) address(es)?\b/, 'URL'],
  [/\blook(s|ed|ing)? for (an update|updates|new versions|a new version)\b/, 'check for updates'],
  [/\bfirst looks?\b/, 'first check'],
  [/\bpatience\b/, 'timeout'],
  [/\bgrace\b(?! period)/, 'grace period'],
  [/\bnap(s|ped|ping)?\b/, 'poll interval'],
  [/\bcome(s)? by\b/, 'visit'],
  [/\bnewcomers?\b/, 'new instance'],
  [/\bsurroundings\b/, 'context'],
  [/\bas a person counts\b/, 'grapheme clusters'],
  [/\bshown text\b/, 'display text'],
  [/\bin vain\b/, 'timed out'],
  [/\blet(s|ting)? go\b/, 'release'],
  [/\b(see|sees|seen|saw) to it\b/, 'ensure'],
  [/\b(go|goes|went|going) on\b(?! to\b)/, 'continue'],
  [/\b(is|are|was|were|be|been) told\b/, 'receive'],
];

// Words that are right although a list has them: everywhere, or in the files and lines that match.
const exceptions = [
  { words: /^(front|(push|pop|emplace)_front)$/, reason: 'members of the standard containers' },
  { words: /^(orderFront|makeKeyAndOrderFront|bringToFront)/, reason: "Apple's names" },
  { words: /(In|AtThe)Front/, reason: 'in front of, at the front: the ordinary sense' },
  { words: /[a-z]Hands/, reason: 'the verb' },
  { words: /^(ItemVisitor|visitors?_?)$/, files: /FolderWalk|CloudFiles/, reason: 'the visitor of a walk' },
  { words: /grace_?period/i, reason: 'the term itself' },
  { words: /address/i,
    files: /LocalSocket|LocalPort|PlainServer|SessionBus|Session\.cpp|ScreenReader|TestMachine\.cpp|Sandbox\.cpp|platform\/main\.cpp/,
    reason: 'addresses of sockets, of buses and in memory' },
  { words: /^(AddressSanitizer|SockAct|__SANITIZE_ADDRESS__|address_sanitizer|QHostAddress)$/, reason: 'names of others' },
  { words: /^XAUTHORITY$/, reason: "the X server's variable" },
  { words: /^(newcomer|ActLog|putAside)$/, files: /^tests\/CMakeLists\.txt$/,
    reason: 'what the test of this check expects' },
  { words: /^(un)?sealed$/i, line: /sealed (resource|contents)/i, reason: "Apple's messages of codesign" },
  { words: /^nap$/i, line: /App Nap/, reason: "Apple's name" },
  { words: /^address(es)?$/, files: /^tools\/macos\/check\//, reason: 'addresses in memory' },
];

const thirdParty = [
  { files: /^tools\/macos\/(Frameworks|lib)\//, reason: "declarations of Apple's names" },
  { files: /(^|\/)package-lock\.json$|\.(svg|png|tbd|zip|pcap)$/, reason: 'made by tools' },
  { files: /^scripts\/words\.mjs$/, reason: 'the lists themselves' },
  { files: /^tests\/layering\/OldWords\.h$/, reason: 'a breach for the test of this check' },
];

const root = resolve(dirname(fileURLToPath(import.meta.url)), '..');
const codeEndings = ['.cpp', '.h', '.mm', '.mjs', '.in'];

// "aURLOfTheAct_log" gives "a", "url", "of", "the", "act", "log".
function parts(name) {
  return name.replace(/([a-z0-9])([A-Z])/g, '$1 $2').replace(/([A-Z])([A-Z][a-z])/g, '$1 $2')
    .split(/[^A-Za-z]+/).filter(Boolean).map((part) => part.toLowerCase());
}

function isException(word, file, text) {
  return exceptions.some(({ words, files, line }) =>
    words.test(word) && (!files || files.test(file)) && (!line || line.test(text)));
}

// Separates a C++ or JavaScript source into code and the rest, with the same lines. Strings count as
// prose: names are not read in them.
function separate(text) {
  const blank = (part) => part.replace(/[^\n]/g, ' ');
  let code = '';
  let other = '';
  let end = 0;
  for (const match of text.matchAll(commentsAndStrings)) {
    const before = text.slice(end, match.index);
    end = match.index + match[0].length;
    const isInclude = /#\s*(include|import)\s*$/.test(before);
    code += before + (isInclude ? match[0] : blank(match[0]));
    other += blank(before) + (isInclude ? blank(match[0]) : match[0]);
  }
  return { code: code + text.slice(end), other: other + blank(text.slice(end)) };
}

function* nameBreaches(name, file, line = '') {
  if (isException(name, file, line)) return;
  const all = ` ${parts(name).join(' ')} `;
  for (const [words, term] of names)
    for (const word of words)
      if (all.includes(` ${word} `)) yield [name, term];
}

function* breachesOf(file) {
  for (const [name, term] of nameBreaches(basename(file), file)) yield [1, `file name ${name}`, term];
  const text = readFileSync(resolve(root, file), 'utf8').replace(/\\[nrt]/g, '  ');
  const isCode = codeEndings.includes(extname(file));
  const { code, other } = isCode ? separate(text) : { code: '', other: text };
  const codeLines = code.split('\n');
  for (const [index, line] of other.split('\n').entries()) {
    const identifiers = new Set((codeLines[index] ?? '').match(/[A-Za-z_]\w*/g) ?? []);
    // In prose, what has an underscore or a capital inside is a name.
    for (const word of line.match(/[A-Za-z_]\w*/g) ?? [])
      if (/[a-z0-9][A-Z]|._./.test(word)) identifiers.add(word);
    for (const identifier of identifiers)
      for (const [name, term] of nameBreaches(identifier, file, line)) yield [index + 1, name, term];
    for (const [pattern, term] of prose)
      for (const [match] of line.matchAll(new RegExp(pattern, 'gi')))
        if (!isException(match, file, line)) yield [index + 1, `"${match}"`, term];
  }
}

const files = process.argv.slice(2);
if (files.some((file) => file === '--help' || file === '-h')) {
  process.stdout.write(usage);
  process.exit(0);
}
if (files.some((file) => file.startsWith('-'))) {
  process.stderr.write('scripts/words.mjs: unknown option; see --help\n');
  process.exit(2);
}
if (files.length === 0) {
  const listed = execFileSync('git', ['ls-files', '-z', '-co', '--exclude-standard'], { cwd: root });
  const deleted = execFileSync('git', ['ls-files', '-z', '-d'], { cwd: root });
  const gone = new Set(deleted.toString().split('\0'));
  for (const file of listed.toString().split('\0'))
    if (file && !gone.has(file) && !thirdParty.some((entry) => entry.files.test(file))) files.push(file);
}

let count = 0;
for (const file of files)
  for (const [line, what, term] of breachesOf(file)) {
    console.log(`${file}:${line}: ${what}: use ${term}`);
    ++count;
  }
if (count > 0) {
  console.log(`words: ${count} in ${files.length} files; scripts/words.mjs has the list.`);
  process.exit(1);
}
console.log(`words: ${files.length} files are clean.`);
