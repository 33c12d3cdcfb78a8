/// Matches each comment and each literal of a C++ or JavaScript source. A digit separator begins none.
export const commentsAndStrings =
  /\/\/[^\n]*|\/\*[^]*?\*\/|R"([^(\s]*)\([^]*?\)\1"|"(?:[^"\\\n]|\\.)*"|(?<![0-9a-fA-F])'(?:[^'\\\n]|\\.)*'|`(?:[^`\\]|\\.)*`/g;
