"""Shows the library's types in gdb as what they stand for. In gdb, or once and for all in ~/.gdbinit:

    source <this project>/Tools/gdb/ormel.py

    JSONValue, JSONArray, JSONObject   the JSON: a text, a number, or elements and members
    SharedText                         the text
    Task, std::coroutine_handle of it  the coroutine, how far it is, and its result once it has ended
    ThreadEvent, ThreadItem, ...       the case that the variant holds: any class of `ormel` whose only member is one

The printers read memory and call nothing of the program, so that core files can be looked at as well. The library itself
may be without debug information; the program that uses it must have some.
"""

import re

import gdb
import gdb.printing

WORD = gdb.lookup_type('long').sizeof


def unsigned_at(address, size=WORD):
    return int.from_bytes(gdb.selected_inferior().read_memory(address, size).tobytes(), 'little')


def is_readable(address):
    try:
        unsigned_at(address)
        return True
    except gdb.MemoryError:
        return False


def text_at(address, size):
    if size == 0:
        return ''
    character = gdb.lookup_type('char').const().pointer()
    return gdb.Value(address).cast(character).lazy_string('UTF-8', length=size)


def value_at(address, type_):
    return gdb.Value(address).cast(type_.pointer()).dereference()


def parts_of(type_):
    """Bases and members, without those that are static."""
    return [field for field in type_.fields() if hasattr(field, 'bitpos')]


def members_of(type_):
    return [field for field in parts_of(type_) if not field.is_base_class]


def symbol_at(address):
    """The symbol in which an address lies, or None."""
    line = gdb.execute(f'info symbol {address:#x}', to_string=True)
    found = re.match(r'(.+?)(?: \+ \d+)? in section ', line)
    return found and found.group(1)


class Text:
    """A text, quoted."""

    def __init__(self, address, size):
        self.address, self.size = address, size

    def to_string(self):
        return text_at(self.address, self.size)

    def display_hint(self):
        return 'string'


class StoredText:
    """A text as JSON values keep it: a 32-bit byte count in front of the bytes."""

    def __init__(self, address):
        self.address = address

    def to_string(self):
        return text_at(self.address + 4, unsigned_at(self.address, 4))

    def display_hint(self):
        return 'string'


class Word:
    """What is shown as it stands."""

    def __init__(self, word):
        self.word = word

    def to_string(self):
        return self.word


# In front of a container's elements: a 32-bit count and a word of other properties.
CONTAINER_HEADER = 8
# A member is the address of its stored key, and its value.
MEMBER_VALUE = 8
MEMBER = 24
ELEMENT = 16


class Elements:
    """A JSON array."""

    def __init__(self, address):
        self.address = address

    def to_string(self):
        return f'JSON array of {unsigned_at(self.address, 4)}'

    def children(self):
        type_ = gdb.lookup_type('ormel::JSONValue')
        for index in range(unsigned_at(self.address, 4)):
            yield f'[{index}]', value_at(self.address + CONTAINER_HEADER + index * ELEMENT, type_)

    def display_hint(self):
        return 'array'


class Members:
    """A JSON object."""

    def __init__(self, address):
        self.address = address

    def to_string(self):
        return f'JSON object of {unsigned_at(self.address, 4)}'

    def children(self):
        type_ = gdb.lookup_type('ormel::JSONValue')
        for index in range(unsigned_at(self.address, 4)):
            member = self.address + CONTAINER_HEADER + index * MEMBER
            yield f'key {index}', StoredText(unsigned_at(member)).to_string()
            yield f'value {index}', value_at(member + MEMBER_VALUE, type_)

    def display_hint(self):
        return 'map'


KINDS_IN_MEMORY = {0, 3, 4}


def printer_of_json(value):
    payload, kind = value['payload_'], int(value['ownerAndKind_']) & 7
    bits = int(payload['bits'])
    kinds = [
        lambda: StoredText(bits),
        lambda: Word(payload['number'].format_string()),
        lambda: Word('true' if bits else 'false'),
        lambda: Members(bits),
        lambda: Elements(bits),
        lambda: Word('null'),
    ]
    # A local that is not alive yet, or an optional that holds nothing, may contain anything.
    is_broken = kind >= len(kinds) or kind in KINDS_IN_MEMORY and not is_readable(bits)
    return Word('<no JSON value>') if is_broken else kinds[kind]()


# In front of a shared buffer's bytes: references, bytes used, capacity.
SHARED_TEXT_HEADER = 3 * WORD


def printer_of_shared_text(value):
    return Text(int(value['buffer_']) + SHARED_TEXT_HEADER, int(value['size_']))


def name_of_function(address):
    """Without its parameters: in the symbol of a coroutine's body they are not those of the source."""
    name = re.sub(r' \[clone [^]]*\]| \(\.\w+\)$', '', symbol_at(address) or '')
    depth = 0
    for at in range(len(name) - 1, -1, -1):
        depth += {')': 1, '(': -1}.get(name[at], 0)
        if depth == 0:
            return name[:at] if name[at] == '(' else name
    return f'{address:#x}'


class Coroutine:
    """A coroutine by the address of its frame: where to resume and where to destroy it, then its promise."""

    def __init__(self, frame, promise_type):
        self.frame = frame
        self.promise = None
        if frame:
            alignment = max(promise_type.alignof, WORD)
            self.promise = value_at(frame + -(-2 * WORD // alignment) * alignment, promise_type)

    def state(self):
        if unsigned_at(self.frame) == 0:
            return 'ended'
        return 'running' if int(self.promise['completion']) else 'not started'

    def to_string(self):
        if not self.frame:
            return 'no coroutine'
        # The address to resume at is gone at the end; both lie in the same function.
        return f'{name_of_function(unsigned_at(self.frame + WORD))}, {self.state()}'

    def children(self):
        if self.frame and self.state() == 'ended':
            result = self.promise['result']
            stored, error = result['value_'], unsigned_at(int(result['error_'].address))
            type_ = stored.type.strip_typedefs().template_argument(0)
            if error:
                table = symbol_at(unsigned_at(error)) or ''
                yield 'error', table[len('vtable for '):] if table.startswith('vtable for ') else f'{error:#x}'
            elif not MONOSTATE.match(type_.strip_typedefs().tag or ''):
                yield 'result', value_at(int(stored.address), type_)


def printer_of_handle(value):
    type_ = value.type.strip_typedefs()
    return Coroutine(int(value[members_of(type_)[0]]), type_.template_argument(0))


def printer_of_task(value):
    return printer_of_handle(value['frame_']['handle_'])


class Case:
    """The case that a variant holds, under the name of its type."""

    def __init__(self, variant):
        self.variant = variant
        self.type = variant.type.strip_typedefs()

    def parts(self):
        """The index of the case, and the union that begins with it."""
        try:
            return int(self.variant['_M_index']), self.variant['_M_u']  # libstdc++
        except gdb.error:
            inside = self.variant[members_of(self.type)[0]]  # libc++
            return int(inside['__index']), inside['__data']

    def held(self):
        """The type of the case, or None."""
        try:
            return self.type.template_argument(self.parts()[0])
        except (RuntimeError, OverflowError):
            return None

    def to_string(self):
        return None if self.held() else 'no case'

    def children(self):
        case = self.held()
        if case:
            storage = int(self.parts()[1].address)
            yield re.sub(r'^ormel::(?!.*<)', '', str(case)), value_at(storage, case)


PRINTERS = {
    'ormel::JSONValue': printer_of_json,
    'ormel::JSONArray': lambda value: Elements(int(value.address)),
    'ormel::JSONObject': lambda value: Members(int(value.address)),
    'ormel::SharedText': printer_of_shared_text,
}
TASK = re.compile(r'ormel::Task<.*>$')
HANDLE = re.compile(r'std::(__\w+::)?coroutine_handle<ormel::detail::TaskPromise<.*> ?>$')
VARIANT = re.compile(r'std::(__\w+::)?variant<')
MONOSTATE = re.compile(r'std::(__\w+::)?monostate$')


def only_variant_of(value, type_):
    """The variant that is all that the class has, or None."""
    parts = parts_of(type_)
    if len(parts) != 1 or parts[0].is_base_class:
        return None
    tag = parts[0].type.strip_typedefs().tag
    variant = value[parts[0]] if tag and VARIANT.match(tag) else None
    return variant if variant is not None and variant.address is not None else None


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__('ormel')

    def __call__(self, value):
        type_ = value.type.strip_typedefs()
        name = type_.tag
        if not name or type_.code != gdb.TYPE_CODE_STRUCT:
            return None
        if name in PRINTERS:
            return PRINTERS[name](value)
        if TASK.match(name):
            return printer_of_task(value)
        if HANDLE.match(name):
            return printer_of_handle(value)
        if name.startswith('ormel::'):
            variant = only_variant_of(value, type_)
            return Case(variant) if variant is not None else None
        return None


gdb.printing.register_pretty_printer(None, Printers(), replace=True)
