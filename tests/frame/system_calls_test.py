#!/usr/bin/env python3
"""Finds in the built library which exported functions can reach a system call that the tests let fail, and holds
the tables of those tests to it: each such function has a row, or stands here with the reason why it has none.

usage: system_calls_test.py [TEST...]   with SOURCE_DIR and BINARY_DIR in the environment
"""
import bisect
import os
import platform
import re
import unittest
from pathlib import Path

from hosts import output_of

SOURCE = Path(os.environ["SOURCE_DIR"])
LIBRARY = Path(os.environ["BINARY_DIR"]) / "lib" / "libzorvcrt_core.so.2"
FAULTS = SOURCE / "tests" / "faults"

# Those whose failures are tested without a table, since some of them end the process, with a test of each ...
LONG_LISTS = "JsonWithoutPages, ReleasesLongListsInTheirTurn"
TESTED_ALONE = {
    "ZJsonExpression_Delete": LONG_LISTS,
    "ZJsonExpression_Parse": "JsonWithoutPages, SaysThatMemoryIsExhaustedByAnArray",
    "ZJsonExpression_ParseFile": "JsonRefused, EndsTheProcessWhenTheFileCannotBeRead",
    "ZJsonExpression_ParseStream": "JsonRefused, EndsTheProcessWhenAStreamCannotBeRead",
    "ZJsonExpression_SetRoot": LONG_LISTS,
    "ZJsonMember_Delete": LONG_LISTS,
    "ZJsonObject_DeleteMember": LONG_LISTS,
    "ZJsonObject_DeleteMemberByRef": LONG_LISTS,
    "ZJsonObject_Replace": LONG_LISTS,
    "ZJsonValue_Delete": LONG_LISTS,
    "zjson_lex": "JsonRefused, ScansOnBehindAnInterruptedReadOfAStream",
    "zjson_parse": "JsonRefused, EndsTheProcessWhenTheInputOfAScannerCannotBeRead",
}
# ... and those whose system calls cannot fail.
NULL_IS_STORED = "stores null for the thread, for which pthread_setspecific() needs no memory"
NO_LONG_LIST = "releases only what it has made itself, in which no long list was parsed"
CANNOT_FAIL = {
    "ZJsonArray_Clone": NO_LONG_LIST,
    "ZJsonMember_Clone": NO_LONG_LIST,
    "ZJsonObject_Clone": NO_LONG_LIST,
    "ZJsonObject_NewSimple": NO_LONG_LIST,
    "ZJsonValue_Clone": NO_LONG_LIST,
    "ZfxCloseRCS": NULL_IS_STORED,
    "ZfxCloseTlsRCS": NULL_IS_STORED,
    "tlsRCSDealloc": NULL_IS_STORED,
    "zjson_error": NO_LONG_LIST,
}


def plain(name):
    """The name without its version and without what the C library adds to it for fortified calls."""
    return re.sub(r"^__(\w+)_chk$", r"\1", name.partition("@")[0])


class Mentions:
    """What each function of the library mentions: functions that it calls or jumps to, or whose address it takes,
    itself or by way of a table."""

    HEADER = re.compile(r"^([0-9a-f]+) <(.+)>:$", re.M)
    REFERENCE = re.compile(r"(?:# |[\t ](?:call|j[a-z]+) +)([0-9a-f]+) <([^>]+)>")

    def __init__(self, library):
        listing = output_of("objdump", "-d", "--no-show-raw-insn", library)
        self.names = {int(at, 16): plain(name) for at, name in self.HEADER.findall(listing)}
        self.addresses = sorted(self.names)
        relocations = output_of("readelf", "-rW", library)
        self.tables = self.read_tables(library, relocations)
        slots = re.findall(r"^([0-9a-f]+) +\w+ R_X86_64_(?:GLOB_DAT|JUMP_SLOT?) +[0-9a-f]+ (\S+)", relocations, re.M)
        self.slots = {int(at, 16): plain(name) for at, name in slots}  # where calls of other libraries find them
        self.mentioned = {name: set() for name in self.names.values()}  # namesakes count as one function
        for line in listing.splitlines():
            if header := self.HEADER.match(line):
                function = plain(header[2])
            elif reference := self.REFERENCE.search(line):
                self.mentioned[function] |= self.functions_behind(int(reference[1], 16), reference[2])

    def read_tables(self, library, relocations):
        """The functions that a table of constants holds, by the addresses of the table."""
        pointers = re.findall(r"^([0-9a-f]+) +\w+ R_X86_64_RELATIVE +([0-9a-f]+)$", relocations, re.M)
        functions = {int(at, 16): self.names[int(to, 16)] for at, to in pointers if int(to, 16) in self.names}
        symbols = re.findall(r"^([0-9a-f]+) ([0-9a-f]+) [dD] ", output_of("nm", "-S", library), re.M)
        tables = [range(int(at, 16), int(at, 16) + int(size, 16)) for at, size in symbols]
        return {table: {name for at, name in functions.items() if at in table} for table in tables}

    def functions_behind(self, address, label):
        if address in self.slots:
            return {self.slots[address]}
        for table, functions in self.tables.items():
            if address in table:
                return functions
        if "@GLIBC" in label or self.addresses[0] <= address <= self.addresses[-1]:
            return {self.name_of(address, label)}
        return set()

    def name_of(self, address, label):
        if "@" in label:  # in the table of the dynamic linker, where a call of the C library goes
            return plain(label)
        return self.names[self.addresses[bisect.bisect_right(self.addresses, address) - 1]]

    def reachable(self, function):
        seen, ends = {function}, [function]
        while ends:
            new = self.mentioned.get(ends.pop(), set()) - seen
            seen |= new
            ends += new
        return seen - {function}


def watched_calls():
    text = (SOURCE / "tests/support/failing_calls.cpp").read_text()
    return set(re.findall(r'^    \{"(\w+)",', text.partition("kWatched[] = {")[2].partition("};")[0], re.M))


def exported_functions():
    return set(re.findall(r"^    (\w+);", (SOURCE / "src" / "exports.map").read_text(), re.M))


def fault_tests():
    return "".join(path.read_text() for path in sorted(FAULTS.glob("*_system_faults_test.cpp")))


@unittest.skipUnless(platform.machine() == "x86_64", "reads the code of one processor")
class SystemCalls(unittest.TestCase):
    def setUp(self):
        mentions, watched = Mentions(str(LIBRARY)), watched_calls()
        self.calls = {name: mentions.reachable(name) & watched for name in exported_functions()}
        self.rows = set(re.findall(r'^    \{"(\w+)", "', fault_tests(), re.M))

    def test_fail_for_every_export_that_makes_any(self):
        known = self.rows | TESTED_ALONE.keys() | CANNOT_FAIL.keys()
        self.assertGreater(len(self.rows), 50)
        self.assertEqual({name: calls for name, calls in self.calls.items() if calls and name not in known}, {})

    def test_are_found_in_every_export_that_has_them_fail(self):
        known = self.rows | TESTED_ALONE.keys() | CANNOT_FAIL.keys()
        self.assertEqual(sorted(name for name in known if not self.calls[name]), [])

    def test_fail_in_the_tests_that_stand_here(self):
        tests = set(re.findall(r"^TEST(?:_F)?\((\w+, \w+)\)", fault_tests(), re.M))
        self.assertEqual(set(TESTED_ALONE.values()) - tests, set())


if __name__ == "__main__":
    unittest.main()
