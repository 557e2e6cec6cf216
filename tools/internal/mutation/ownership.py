"""Changes of who owns a reference."""

from mutant import operator, replaced

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
