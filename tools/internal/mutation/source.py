"""The text of a C++ source, and what mutations need to find in it."""

import re

# Comments, preprocessor lines, code for other systems, and static assertions.
NOT_CODE = re.compile(
    r'#ifdef \w*WINDOWS\w*\n.*?(?=^#else)|//[^\n]*|/\*.*?\*/|^[ \t]*#[^\n]*|'
    r'\bstatic_assert\([^;]*;',
    re.DOTALL | re.MULTILINE)
LITERAL = re.compile(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'')
OPENING, CLOSING = '([{', ')]}'


def blanked(match):
    return re.sub(r'[^\n]', ' ', match.group())


class Source:
    """A file's text, and its code: the same text with comments and the contents of literals blanked
    out, so that positions found in the code are valid in the text."""

    def __init__(self, name, text):
        self.name = name
        self.text = text
        self.commentless = NOT_CODE.sub(blanked, text)
        self.code = LITERAL.sub(lambda m: m[0][0] + '~' * (len(m[0]) - 2) + m[0][0],
                                self.commentless)
        # The rows of tables: {key, value}, one per line.
        self.rows = [m for m in re.finditer(
            r'^ +\{(?P<key>"[^"\n]*"|\w+),(?P<gap> +)(?P<value>"[^"\n]*"|\w+)\},\n',
            self.commentless, re.MULTILINE)]

    def closing(self, opening):
        depth = 0
        for position in range(opening, len(self.code)):
            if self.code[position] in OPENING:
                depth += 1
            elif self.code[position] in CLOSING:
                depth -= 1
                if depth == 0:
                    return position
        raise ValueError(f'{self.name}: the bracket at {opening} is not closed')

    def operand_start(self, end, stops):
        """Returns the start of the operand that ends before `end`: after a bracket or a stop."""
        depth = 0
        for position in range(end - 1, 0, -1):
            if self.code[position] in CLOSING:
                depth += 1
            elif self.code[position] in OPENING:
                if depth == 0:
                    return self.skip_space(position + 1)
                depth -= 1
            if depth == 0 and re.search(stops, self.code[max(0, position - 6):position + 1]):
                return self.skip_space(position + 1)
        return 0

    def operand_end(self, start, stops):
        depth = 0
        for position in range(start, len(self.code)):
            if depth == 0 and re.match(stops, self.code[position:position + 2]):
                break
            if self.code[position] in OPENING:
                depth += 1
            elif self.code[position] in CLOSING:
                if depth == 0:
                    break
                depth -= 1
        return start + len(self.code[start:position].rstrip())

    def skip_space(self, position):
        return position + len(self.code[position:]) - len(self.code[position:].lstrip())

    def statement_end(self, start):
        return self.operand_end(start, ';') + 1

    def find(self, pattern):
        return re.finditer(pattern, self.code, re.MULTILINE)
