"""Changes of checks and statements."""

import re

from mutant import operator, replaced

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
