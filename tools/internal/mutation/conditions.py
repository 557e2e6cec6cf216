"""Changes of conditions."""

import re

from mutant import operator, replaced

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
