"""Single small changes to a C++ source, made by named operators that work on its text."""

import re
from dataclasses import dataclass
from functools import cached_property

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


@dataclass(frozen=True)
class Mutant:
    source: Source
    operator: str
    start: int
    end: int
    replacement: str
    ordinal: int = 1

    @cached_property
    def line(self):
        return self.source.text.count('\n', 0, self.start) + 1

    @cached_property
    def id(self):
        suffix = f'#{self.ordinal}' if self.ordinal > 1 else ''
        return f'{self.source.name}:{self.line}:{self.operator}{suffix}'

    @cached_property
    def text(self):
        return self.source.text[:self.start] + self.replacement + self.source.text[self.end:]

    @cached_property
    def change(self):
        """Returns the removed and the added lines, without indentation and empty lines."""
        text = self.source.text
        first = text.rfind('\n', 0, self.start) + 1
        last = text.find('\n', max(self.start, self.end - 1))
        before = text[first:last].split('\n')
        after = (text[first:self.start] + self.replacement + text[self.end:max(last, self.end)]) \
            .split('\n')
        before, after = ([line.strip() for line in lines if line.strip()]
                         for lines in (before, after))
        while before and after and before[0] == after[0]:
            before, after = before[1:], after[1:]
        while before and after and before[-1] == after[-1]:
            before, after = before[:-1], after[:-1]
        return tuple(before), tuple(after)

    def describe(self):
        before, after = self.change
        return '\n'.join([self.id, *('  - ' + line for line in before),
                          *('  + ' + line for line in after)])


# Operators yield start, end and replacement.
OPERATORS = {}


def operator(function):
    OPERATORS[function.__name__.replace('_', '-')] = function
    return function


def replaced(match, replacement, group=0):
    return match.start(group), match.end(group), replacement


# Ownership.

GIVES_BACK = r'(?:\w+_unref|g_value_unset|g_free|gst_iterator_free|gst_element_release_request_pad)'
TAKES = r'(?:gst_object_ref|gst_mini_object_ref|g_\w+_ref)'


@operator
def drop_release(source):
    for m in source.find(rf'\b{GIVES_BACK}\((?:[^()]|\(\w+\))*\);'):
        yield replaced(m, '{}')
    for m in source.find(r'^ +(arm\()'):
        yield m.start(1), source.statement_end(m.start(1)), '{}'


@operator
def drop_reference(source):
    for m in source.find(rf'\b{TAKES}\((?:[^()]|\(\w+\))*\);'):
        yield replaced(m, '{}')


@operator
def flip_adoption(source):
    for m in source.find(r',\s*(true|false)\)'):
        yield replaced(m, 'false' if m[1] == 'true' else 'true', 1)
    for m in source.find(r'[= (](adopt)\((?!Gst\w+ \*)'):
        yield replaced(m, 'boost::intrusive_ptr', 1)
    for m in source.find(r'intrusive_ptr<\w+> \w+(\()|emplace_back(\()GST_'):
        closing = source.closing(m.end() - 1 if m[1] else m.start(2))
        if not source.code[:closing].endswith(('true', 'false')):
            yield closing, closing, ', false'


@operator
def leak_holder(source):
    for m in source.find(r'\)\.(get)\(\)'):
        yield replaced(m, 'release', 1)


@operator
def keep_in_holder(source):
    for m in source.find(r'\.(detach)\(\)'):
        yield replaced(m, 'get', 1)


# Conditions.

CONDITION_STOPS = r'([;,:]|<<|[^=!<>]=|\breturn)[ \n]$'
OPERAND_STOPS = CONDITION_STOPS.replace('[;,:]', r'[;,:?]|&&|\|\|')


def conditions(source):
    for m in source.find(r'\b(?:if|while) \('):
        yield m.end(), source.closing(m.end() - 1)
    for m in source.find(r'\s\? '):
        yield source.operand_start(m.start(), CONDITION_STOPS), m.start()
    for m in source.find(r'\breturn ([^;?{}]*(?:[=!]=|&&|\|\||_is_\w+\(|\bfind_in_bin)[^;?{}]*);'
                         r'|\bbool \w+ = ([^;?]*(?:[=!]=|&&|\|\||_is_)[^;?]*);'):
        yield m.span(1 if m[1] else 2)


@operator
def negate_condition(source):
    for start, end in conditions(source):
        condition = source.code[start:end]
        declares = re.search(r'[^=!<>]=[^=]', condition)
        # A flipped comparison or a dropped negation has the same effect.
        simple = not re.search(r'&&|\|\|', condition) and re.search(r'[=!]=|^!', condition)
        if not declares and not simple:
            yield start, end, f'!({source.text[start:end]})'


@operator
def flip_comparison(source):
    flipped = {'==': ['!='], '!=': ['=='], '<': ['<=', '>'], '<=': ['<', '>'], '>': ['>=', '<'],
               '>=': ['>', '<']}
    for m in source.find(r' (==|!=|<=|>=|<|>) '):
        for comparison in flipped[m[1]]:
            yield replaced(m, comparison, 1)


@operator
def swap_logic(source):
    for m in source.find(r' (&&|\|\|)\s'):
        yield replaced(m, '||' if m[1] == '&&' else '&&', 1)


@operator
def drop_operand(source):
    for m in source.find(r' (&&|\|\|)\s+'):
        start = source.operand_start(m.start(), OPERAND_STOPS)
        yield start, m.end(), ''
        yield m.start(), source.operand_end(m.end(), r'[;,?]|&&|\|\|'), ''


@operator
def drop_not(source):
    for m in source.find(r'(!)\w'):
        yield replaced(m, '', 1)


@operator
def flip_boolean(source):
    for m in source.find(r'(?:= |return )(true|false)\b'):
        yield replaced(m, 'false' if m[1] == 'true' else 'true', 1)


# Checks and statements.

CHECK = r'^ +(check_\w+\()'


@operator
def drop_check(source):
    for m in source.find(CHECK):
        yield m.start(1), source.statement_end(m.start(1)), '{}'
    for m in source.find(r'^ +(if \()'):
        body = source.skip_space(source.closing(m.end(1) - 1) + 1)
        if re.match(r'(return|throw\w*|continue)\b', source.code[body:]):
            yield m.start(1), source.statement_end(body), '{}'


@operator
def swap_checks(source):
    checks = [(m.start(1), source.statement_end(m.start(1))) for m in source.find(CHECK)]
    for (start, end), (next_start, next_end) in zip(checks, checks[1:]):
        between = source.text[end:next_start]
        if not between.strip():
            yield (start, next_end,
                   source.text[next_start:next_end] + between + source.text[start:end])


@operator
def drop_statement(source):
    for m in source.find(r'^ +((?:[\w:]+(?:(?:\.|->)\w+)*\([^;{}]*\)|[\w.>-]+ = [^;\n]+|\+\+\w+);)'
                         r'$'):
        if source.code[:m.start()].rstrip().endswith((';', '{', '}', ')')):
            yield replaced(m, '{}', 1)


# Texts and tables.

def letters(text):
    """Returns the positions that can be changed without changing the format of a literal."""
    plain = re.sub(r'%[0-9.]*[a-z]|\\.', lambda m: ' ' * len(m[0]), text)
    return [m.start() for m in re.finditer(r'[A-Za-z0-9]', plain)] or \
           [m.start() for m in re.finditer(r'[^ "\'\\]', plain)]


@operator
def alter_text(source):
    for m in LITERAL.finditer(source.commentless):
        places = letters(m[0])
        if m[0] == '""':
            yield replaced(m, '"x"')
        elif places:
            place = m.start() + places[len(places) // 2]
            letter = source.text[place]
            yield place, place + 1, 'x' if letter != 'x' else 'y'
        for field in re.finditer(r'%0(\d)u', m[0]):
            width = m.start() + field.start(1)
            yield width, width + 1, str(int(field[1]) - 1)


@operator
def drop_row(source):
    for row in source.rows:
        yield replaced(row, '')


@operator
def alter_row(source):
    """Gives a row the key, or the non-string value, of an adjacent row."""
    for group in 'key', 'value':
        for row, neighbour in neighbours(source.rows):
            if group == 'value' and row[group].startswith('"'):
                continue
            if row[group] != neighbour[group]:
                yield replaced(row, neighbour[group], group)


def neighbours(rows):
    for index, row in enumerate(rows):
        for other in (*rows[index + 1:index + 2], *rows[max(0, index - 1):index]):
            if row.end() == other.start() or other.end() == row.start():
                yield row, other
                break


@operator
def swap_rows(source):
    """Swaps rows of the table that is searched in order; the others are sorted by key."""
    for table in source.find(r'\bcandidates\[\] = \{'):
        rows = [row for row in source.rows if table.end() < row.start()]
        for row, following in zip(rows, rows[1:]):
            if row.end() != following.start():
                break
            yield row.start(), following.end(), following[0] + row[0]


# Values.

@operator
def swap_code(source):
    thrown = list(source.find(r'\bTEC::([A-Z_]+),'))
    for m, other in zip(thrown, thrown[1:] + thrown[:1]):
        if m[1] != other[1]:
            yield replaced(m, other[1], 1)


@operator
def swap_class(source):
    for m in source.find(r'\bthrow (Error|Tavren_Error<std::logic_error>)\('):
        yield replaced(m, 'Error' if m[1] != 'Error' else 'Tavren_Error<std::runtime_error>', 1)


@operator
def change_number(source):
    for m in source.find(r'(?<![\w.])(0x[0-9A-F]+|\d+)(\.\d+)?(?![\w.])'):
        if m[2]:
            yield replaced(m, str(float(m[0]) / 2))
        elif m[0].startswith('0x'):
            yield replaced(m, f'0x{int(m[0], 16) + 1:X}')
        else:
            yield replaced(m, str(int(m[0]) + 1))
            if int(m[0]) > 0:
                yield replaced(m, str(int(m[0]) - 1))


@operator
def swap_arithmetic(source):
    swapped = {'+': '-', '-': '+', '*': '/', '/': '*', '%': '/'}
    for m in source.find(r'[\w)] ([-+*/%])\s[\w(]'):
        yield replaced(m, swapped[m[1]], 1)
    for m in source.find(r'(\+\+)\w'):
        yield replaced(m, '--', 1)


PAIRS = [('.first', '.second'), ('width', 'height'), ('numerator', 'denominator'),
         ('_src', '_sink'), ('GST_PAD_SRC', 'GST_PAD_SINK'), ('_video', '_audio'),
         ('hours', 'minutes'), ('seconds', 'nanoseconds'), ('buffers', 'bytes'),
         ('bounds', 'source')]
MEDIA_TYPES = ['JPEG', 'H264', 'MPEG_AUDIO', 'MPEG_VIDEO', 'RTP_METADATA', 'RTP', 'VIDEO_RAW',
               'AUDIO_RAW', 'MULAW', 'UNKNOWN']
SEGMENT_FIELDS = ['rate', 'applied_rate', 'base', 'offset', 'start', 'stop', 'time', 'position',
                  'duration']
OTHERS = {'GST_SECOND': 'GST_MSECOND', 'GST_CLOCK_TIME_NONE': '(GST_CLOCK_TIME_NONE - 1)',
          'GST_PAD_LINK_OK': 'GST_PAD_LINK_REFUSED', 'GST_DISCOVERER_OK': 'GST_DISCOVERER_TIMEOUT',
          'GST_FORMAT_TIME': 'GST_FORMAT_BYTES', 'GST_TYPE_BIN': 'GST_TYPE_ELEMENT',
          'GST_TYPE_ELEMENT': 'GST_TYPE_OBJECT', 'G_TYPE_INVALID': 'G_TYPE_NONE',
          'GST_STATE_CHANGE_FAILURE': 'GST_STATE_CHANGE_ASYNC', 'badbit': 'failbit',
          'std::locale::classic': 'std::locale', 'max': 'min', 'find_last_of': 'find_first_of',
          'gst_bin_iterate_recurse': 'gst_bin_iterate_elements',
          'gst_pad_get_current_caps': 'gst_pad_get_pad_template_caps',
          'gst_pad_get_peer': 'gst_pad_get_single_internal_link'}


def other_names():
    """Yields a pattern of names, and the replacement for each."""
    for one, other in PAIRS:
        names = {one: other, other: one}
        start = '' if one[0] in '._' else r'\b'
        yield rf'{start}({re.escape(one)}|{re.escape(other)})(?=_|\b)', names
    for names, before in ((MEDIA_TYPES, ''), (SEGMENT_FIELDS, 'segment->')):
        yield rf'{before}\b({"|".join(names)})\b(?! =)', dict(zip(names, names[1:] + names[:1]))
    yield rf'\b({"|".join(OTHERS)})\b', OTHERS


@operator
def swap_name(source):
    """Works in the bodies of functions: all indented lines except the rows of tables."""
    for pattern, names in other_names():
        for m in source.find(pattern):
            line = source.code[source.code.rfind('\n', 0, m.start()) + 1:]
            if line.startswith(' ') and \
                    not any(row.start() <= m.start() < row.end() for row in source.rows):
                yield replaced(m, names[m[1]], 1)


@operator
def drop_word(source):
    """Works on headers; in a source file the compiler would require the same keywords."""
    if source.name.endswith('.h'):
        for m in source.find(r'\b(?:virtual|noexcept)\b'):
            yield replaced(m, '')


@operator
def drop_initialiser(source):
    for m in source.find(r'[:,] (\w+)(\()\w+\) [{,]'):
        yield m.end(2), source.closing(m.start(2)), ''


@operator
def swap_arguments(source):
    for m in source.find(r'\b(?:gst_caps_is_subset|gst_caps_is_equal|gst_pad_link|gst_pad_unlink|'
                         r'gst_element_link)\(([^;,]+), ((?:[^;,()]|\(\))+)\)'):
        yield (m.start(1), m.end(2), source.text[m.start(2):m.end(2)] + ', ' +
               source.text[m.start(1):m.end(1)])


def mutants_of(source):
    """Returns all mutants of a source in the order of its lines, without duplicates."""
    seen = {source.text}
    found = []
    for name, changes in OPERATORS.items():
        for start, end, replacement in changes(source):
            mutant = Mutant(source, name, start, end, replacement)
            if mutant.text not in seen:
                seen.add(mutant.text)
                found.append(mutant)
    ordinals = {}
    numbered = []
    for mutant in found:
        ordinal = ordinals[mutant.id] = ordinals.get(mutant.id, 0) + 1
        numbered.append(Mutant(mutant.source, mutant.operator, mutant.start, mutant.end,
                               mutant.replacement, ordinal))
    return sorted(numbered, key=lambda mutant: mutant.line)
