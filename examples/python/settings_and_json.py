"""Settings and JSON from Python: the library as a host without a compiler calls it.

usage: settings_and_json.py FOLDER   writes a settings file there and reads it
"""
import ctypes
import os
import sys
from ctypes import POINTER, byref, c_char_p, c_double, c_int32, c_int64, c_uint8, c_uint32, c_void_p

ALL_LEVELS, PRIVILEGED = 7, 1
NULL, BOOL, ARRAY, OBJECT, INTEGER, NUMBER, STRING = range(7)


# The records of zjson_expression.h, field by field.
class Value(ctypes.Structure):
    pass


class Array(ctypes.Structure):
    _fields_ = [("count", c_int32), ("capacity", c_int32), ("items", POINTER(POINTER(Value)))]


class Member(ctypes.Structure):
    _fields_ = [("name", c_char_p), ("value", POINTER(Value))]


class Object(ctypes.Structure):
    _fields_ = [("count", c_int32), ("capacity", c_int32), ("members", POINTER(POINTER(Member)))]


class Payload(ctypes.Union):
    _fields_ = [("boolean", c_uint8), ("integer", c_int64), ("number", c_double), ("string", c_char_p),
                ("array", POINTER(Array)), ("object", POINTER(Object))]


Value._anonymous_ = ["payload"]
Value._fields_ = [("type", c_int32), ("payload", Payload)]


class Expression(ctypes.Structure):
    _fields_ = [("root", POINTER(Value)), ("errorMessage", c_char_p)]


library = ctypes.CDLL("libzorvcrt_core.so.2")


def declared(name, result, *arguments):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments
    return function


query = declared("QuorConfQuery", c_char_p, c_char_p, c_int32)
parse = declared("ZJsonExpression_Parse", POINTER(Expression), c_char_p, c_int32)
print_to = declared("ZJsonExpression_ToString", c_uint32, POINTER(Expression), POINTER(c_void_p), c_int32)
delete = declared("ZJsonExpression_Delete", None, POINTER(Expression))
free = declared("ZfxMemFree", None, c_void_p)


def setting(name, levels=ALL_LEVELS):
    """The text belongs to the library: ctypes copies it here, and nobody frees it."""
    value = query(name.encode(), levels)
    return None if value is None else value.decode()


class Document:
    """A parsed document. It belongs to us: the end of the with block releases it."""

    def __init__(self, text):
        data = text.encode()
        self.expression = parse(data, len(data))
        if not self.expression:
            raise MemoryError

    def __enter__(self):
        return self

    def __exit__(self, *_):
        delete(self.expression)

    def read(self):
        message = self.expression.contents.errorMessage
        if message is not None:
            raise ValueError(message.decode())
        root = self.expression.contents.root
        return to_python(root.contents) if root else None

    def pretty(self):
        """The printed text is ours as well: a void pointer, which ctypes does not convert and we can free."""
        text = c_void_p()
        length = print_to(self.expression, byref(text), 1)
        try:
            return ctypes.string_at(text, length).decode() if text else ""
        finally:
            free(text)


def to_python(value):
    if value.type == ARRAY and value.array:
        return [to_python(value.array.contents.items[i].contents) for i in range(value.array.contents.count)]
    if value.type == OBJECT and value.object:
        members = [value.object.contents.members[i].contents for i in range(value.object.contents.count)]
        return {member.name.decode(): to_python(member.value.contents) for member in members}
    if value.type == STRING:
        return value.string.decode()
    return {BOOL: bool(value.boolean), INTEGER: value.integer, NUMBER: value.number}.get(value.type)


def main(folder):
    path = os.path.join(os.path.abspath(folder), "quor.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write("SITE_ROOT=/srv/quor\nSITE_DATA=$SITE_ROOT/data   # expanded\n[PRIVILEGED]\nAUDIT_ENABLED=yes\n")
    os.environ["__KERNEL_DEVELOPER"] = path  # the file to read instead of the installation's
    print("SITE_DATA is", setting("SITE_DATA"))
    print("AUDIT_ENABLED is", setting("AUDIT_ENABLED", PRIVILEGED))
    print("NO_SUCH_SETTING is", setting("NO_SUCH_SETTING"))

    with Document("{'name': 'lamp', 'price': 24.25, 'stock': 12, 'on': true, 'tags': ['home', null]}") as lamp:
        print(lamp.read())
        print(lamp.pretty())
    with Document('{"name" "lamp"}') as broken:
        try:
            broken.read()
        except ValueError as error:
            print("not parsed:", error)


if __name__ == "__main__":
    main(sys.argv[1])
