"""Changes of codes, numbers, names and arguments."""

import re

from mutant import operator, replaced


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
