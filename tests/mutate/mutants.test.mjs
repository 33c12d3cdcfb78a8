// Tests which mutants are made of a source. Takes the name of a case.

import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import path from 'node:path';
import { mutantsOf, mutated } from '../../tools/mutate/Mutants.mjs';
import { shuffled } from '../../tools/mutate/shuffled.mjs';
import { root, runCase } from '../support/cases.mjs';

/// What the mutants make of a statement in a function.
function mutants(statement) {
  const text = `void f() {\n${statement}\n}\n`;
  return mutantsOf(text).map(mutant => mutated(text, mutant).split('\n').slice(1, -2).join('\n'));
}

function becomes(statement, ...expected) {
  assert.deepEqual(mutants(statement).sort(), expected.sort());
}

await runCase({
  bordersOfComparisonsAreMoved() {
    becomes('const bool x = a < b;', 'const bool x = a <= b;');
    becomes('const bool x = a >= b;', 'const bool x = a > b;');
    becomes('const bool x = a == b;', 'const bool x = a != b;');
  },

  operatorsAreSwapped() {
    becomes('const int x = a + b;', 'const int x = a - b;');
    becomes('const int x = a << b;', 'const int x = a >> b;');
    becomes('const int x = a && b;', 'const int x = a || b;');
    becomes('const int x = std::min(a, b);', 'const int x = std::max(a, b);');
    becomes('x += a;', 'x -= a;', ';');
    becomes('++x;', '--x;', ';');
  },

  constantsAreChangedByOne() {
    becomes('const int x = 7;', 'const int x = 6;', 'const int x = 8;');
    becomes("const int x = 1'000u;", 'const int x = 999u;', 'const int x = 1001u;');
    becomes('const int x = 0;', 'const int x = 1;');
    becomes('const double x = 1.5;', 'const double x = (1.5 - 1);', 'const double x = (1.5 + 1);');
    becomes('const bool x = true;', 'const bool x = false;');
  },

  conditionsAreNegated() {
    becomes('if (a)\n  f();', 'if (!(a))\n  f();', 'if (a)\n  ;');
    becomes('if (auto x = g(); x.empty()) {}', 'if (auto x = g(); !(x.empty())) {}');
    becomes('while (f(a)) {}', 'while (!(f(a))) {}');
    becomes('const int x = f(a) ? b : c;', 'const int x = !(f(a)) ? b : c;');
    becomes('if (!a) {}', 'if (a) {}');
  },

  statementsAreRemoved() {
    becomes('a.b(c)->d();', ';');
    becomes('*a = b;', ';');
    becomes('static_cast<void>(f());', ';');
    becomes('for (;;)\n  break;', 'for (;;)\n  ;');
    becomes('switch (a) {\ncase b:\n  return;\n}', 'switch (a) {\ncase b:\n  ;\n}');
    becomes('call([](int x) {\n  f(x);\n});', 'call([](int x) {\n  ;\n});', ';');
  },

  returnedValuesBecomeConstant() {
    becomes('return f(a);', 'return {};', 'return true;');
    becomes('return std::nullopt;', 'return true;');
    becomes('return false;', 'return true;');
  },

  declarationsAreLeftAlone() {
    becomes('std::vector<int> x;');
    becomes('const std::string text(a, b);');
    becomes('Type& x = y;');
    becomes('using std::swap;');
    becomes('static_assert(a < 7);');
    for (const text of [
      'struct A : B<C> {\n  virtual void f() = 0;\n  T& operator=(T&&) = delete;\n  std::string x;\n};\n',
      'template <class T> auto f(T* x, T&& y) -> A<B<T>>;\n',
      'namespace a {\nclass B;\nint f(int x);\n}\n',
    ])
      assert.deepEqual(mutantsOf(text), []);
  },

  commentsStringsAndDirectivesAreLeftAlone() {
    becomes('// a < b; f();');
    becomes('/* a < b;\n f(); */');
    becomes('const auto x = "a < b; f(1)";');
    becomes("const auto x = '<';");
    becomes('const auto x = R"(a < b)";');
    assert.deepEqual(mutantsOf('#include <a>\n#define B \\\n  (1 < 2)\n'), []);
  },

  everySourceOfTheCoreHasItsMutants() {
    for (const folder of ['app', 'evict', 'install', 'monitor', 'support', 'ui', 'update'])
      for (const file of readdirSync(path.join(root, 'src', folder)).filter(name => name.endsWith('.cpp'))) {
        const text = readFileSync(path.join(root, 'src', folder, file), 'utf8');
        const all = mutantsOf(text);
        assert.ok(all.length > 0, file);
        for (const mutant of all) {
          assert.notEqual(mutated(text, mutant), text);
          assert.equal(text.slice(0, mutant.start).split('\n').length, mutant.line);
        }
      }
  },

  orderOfTheSampleFollowsFromTheSeed() {
    const items = Array.from({ length: 100 }, (_, index) => index);
    assert.deepEqual(shuffled(items, 7), shuffled(items, 7));
    assert.notDeepEqual(shuffled(items, 7), shuffled(items, 8));
    assert.deepEqual(shuffled(items, 7).sort((one, other) => one - other), items);
  },
});
