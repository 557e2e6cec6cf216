"""Changes of texts and of the rows of tables."""

import re

from mutant import operator, replaced
from source import LITERAL


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
