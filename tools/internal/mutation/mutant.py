"""Single small changes to a C++ source. Named operators, which work on its text, make them."""

from dataclasses import dataclass
from functools import cached_property

from source import Source


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
