#!/usr/bin/env python3
"""Reads the built library and the public headers and holds them to the rules of the house.

usage: library_test.py [TEST...]   with SOURCE_DIR, BINARY_DIR, CC and CXX in the environment
"""
import ctypes
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import hosts
from hosts import output_of

SOURCE = Path(os.environ["SOURCE_DIR"])
BINARY = Path(os.environ["BINARY_DIR"])
CC, CXX = os.environ["CC"], os.environ["CXX"]
INCLUDE = SOURCE / "include"
LIBRARY = BINARY / "lib" / "libzorvcrt_core.so.2"
ARCHIVE = BINARY / "lib" / "libzorvcrt_core.a"
VERSION = "ZORVCRT_CORE_2"

# What must never be called: no bounds, hidden state or an end of the process ...
BANNED = {
    "strcpy", "strcat", "sprintf", "vsprintf", "strtok", "gets", "setlocale", "abort", "exit", "localtime",
    "gmtime", "ctime", "__strcpy_chk", "__strcat_chk", "__sprintf_chk", "__vsprintf_chk", "_exit"}
# ... but for these, each with the contract that asks for it.
ALLOWED = {
    "exit": "a fatal settings load, an internal scanner failure and a child without a program end the process",
}
ALLOWED_NEEDED = {"libc.so.6", "libm.so.6"}




def dynamic_symbols(*flags):
    names = {}
    for line in output_of("nm", "-D", *flags, str(LIBRARY)).splitlines():
        kind, name = line.split()[-2:]
        base, _, version = name.partition("@")
        names[base] = (kind, version.lstrip("@"))
    return names


def declared_names():
    """Every function and variable that the public headers declare, as the compiler sees them."""
    with tempfile.TemporaryDirectory() as folder:
        listing = Path(folder) / "prototypes"
        source = Path(folder) / "all.c"
        source.write_text('#include "zorvcrt.h"\n')
        output_of("gcc", "-std=c11", "-fsyntax-only", f"-I{INCLUDE}", "-aux-info", str(listing), str(source))
        functions = {
            re.search(r"(\w+) \(", line.split("*/", 1)[1]).group(1)
            for line in listing.read_text().splitlines()
            if line.startswith(f"/* {INCLUDE}/") and "*/ extern" in line}
    variables = {
        name for header in INCLUDE.glob("*.h")
        for name in re.findall(r"^ZFX_API extern [\w ]+?\*?(\w+);", header.read_text(), re.M)}
    return functions | variables


def compilers():
    return [(c, cxx) for c, cxx in (("gcc", "g++"), ("clang", "clang++")) if shutil.which(c) and shutil.which(cxx)]


class Library(unittest.TestCase):
    def test_is_named_as_hosts_load_it(self):
        self.assertIn("[libzorvcrt_core.so.2]", output_of("readelf", "-d", str(LIBRARY)).split("SONAME")[1])
        self.assertFalse(LIBRARY.is_symlink())
        self.assertEqual(os.readlink(LIBRARY.with_name("libzorvcrt_core.so")), "libzorvcrt_core.so.2")

    def test_needs_nothing_but_the_c_library(self):
        needed = set(re.findall(r"NEEDED.*\[(.*)\]", output_of("readelf", "-d", str(LIBRARY))))
        self.assertIn("libc.so.6", needed)
        self.assertLessEqual(needed, ALLOWED_NEEDED)

    def test_needs_no_cxx_run_time(self):
        undefined = dynamic_symbols("--undefined-only")
        run_time = {name for name in undefined if re.match(r"_Z|__cxa|_Unwind|__gxx", name)}
        self.assertLessEqual(run_time, {"__cxa_finalize"})
        if run_time:
            self.assertEqual(undefined["__cxa_finalize"][0], "w")

    def test_exports_exactly_what_the_headers_declare(self):
        exported = set(dynamic_symbols("--defined-only")) - {VERSION}
        declared = declared_names()
        self.assertGreater(len(declared), 15)
        self.assertEqual(sorted(exported - declared), [], "exported and not declared")
        self.assertEqual(sorted(declared - exported), [], "declared and not exported")

    def test_gives_every_export_its_symbol_version(self):
        for name, (_, version) in dynamic_symbols("--defined-only").items():
            if name != VERSION:
                self.assertEqual(version, VERSION, name)

    def test_lists_every_export_once(self):
        text = (SOURCE / "src" / "exports.map").read_text()
        listed = re.findall(r"^    (\w+);", text, re.M)
        self.assertEqual(sorted(listed), sorted(set(listed)))
        self.assertEqual(set(listed), declared_names())

    def test_calls_no_banned_function(self):
        called = set(dynamic_symbols("--undefined-only"))
        self.assertEqual(sorted(called & BANNED - ALLOWED.keys()), [])

    def test_runs_nothing_when_it_is_loaded(self):
        sections = output_of("readelf", "-SW", str(LIBRARY))
        size = re.search(r"\.init_array\s+INIT_ARRAY\s+\w+\s+\w+\s+(\w+)", sections)
        # The one entry is the compiler's own start-up stub.
        self.assertLessEqual(int(size.group(1), 16), 8)
        self.assertNotIn(".ctors", sections)

    def test_is_hardened(self):
        dynamic = output_of("readelf", "-dW", str(LIBRARY))
        segments = output_of("readelf", "-lW", str(LIBRARY))
        self.assertIn("BIND_NOW", dynamic)
        self.assertIn("GNU_RELRO", segments)
        self.assertRegex(segments, r"GNU_STACK.* RW ")
        self.assertNotIn("TEXTREL", dynamic)
        self.assertIn("__stack_chk_fail", dynamic_symbols("--undefined-only"))

    def test_begins_every_exported_function_with_a_branch_target(self):
        functions = {name for name, (kind, _) in dynamic_symbols("--defined-only").items() if kind == "T"}
        starts = re.findall(r"^\w+ <(\w+)(?:@@\w+)?>:\n.*\t(\w+)", output_of("objdump", "-d", str(LIBRARY)), re.M)
        first = dict(starts)
        self.assertEqual(sorted(name for name in functions if first.get(name) != "endbr64"), [])

    def test_can_be_loaded_late_by_any_language(self):
        version = ctypes.create_string_buffer(32)
        ctypes.CDLL(str(LIBRARY)).ZfxGetCrtVersion(version, ctypes.c_uint64(len(version)))
        self.assertEqual(version.value, b"8.4-4:1")

    def test_may_be_unloaded_before_threads_that_used_it_end(self):
        # A process of its own, for it ends by a signal when a thread's end calls into what is gone.
        output_of(sys.executable, "-c", f"""
import ctypes, _ctypes, threading
path = {str(LIBRARY)!r}
library = ctypes.CDLL(path)
used, unloaded = threading.Event(), threading.Event()
def use():
    library.ZfxGetSourceLocation(b"f", b"x.c", ctypes.c_int32(1))
    library.ZfxReadRCS(b"NAME", ctypes.c_uint32(7))
    used.set()
    unloaded.wait()
thread = threading.Thread(target=use)
thread.start()
used.wait()
_ctypes.dlclose(library._handle)
assert path not in open("/proc/self/maps").read(), "still loaded"
unloaded.set()
thread.join()
""")

    def test_is_also_there_as_an_archive(self):
        defined = set(re.findall(r" [TDB] (\w+)$", output_of("nm", "--defined-only", str(ARCHIVE)), re.M))
        self.assertEqual(sorted(declared_names() - defined), [])


class Headers(unittest.TestCase):
    def test_compile_alone_in_both_languages(self):
        flags = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only", f"-I{INCLUDE}"]
        for c, cxx in compilers():
            for header in sorted(INCLUDE.glob("*.h")):
                for command in ([c, "-std=c11", "-xc"], [cxx, "-std=c++20", "-xc++"]):
                    with self.subTest(header=header.name, compiler=command[0]):
                        done = subprocess.run([*command, *flags, "-"], input=f'#include "{header.name}"\n',
                                              capture_output=True, text=True)
                        self.assertEqual(done.returncode, 0, done.stderr)

    def test_shadow_no_system_header(self):
        for compiler, language in ((CC, "c"), (CXX, "c++")):
            verbose = subprocess.run([compiler, "-E", "-v", f"-x{language}", os.devnull, "-o", os.devnull],
                                     check=True, capture_output=True, text=True).stderr
            search = verbose.split("search starts here:\n")[-1].split("End of search list")[0].split()
            self.assertGreater(len(search), 1)
            for header in INCLUDE.glob("*.h"):
                for folder in search:
                    self.assertFalse((Path(folder) / header.name).exists(), f"{folder}/{header.name}")

    def test_are_all_in_the_umbrella(self):
        umbrella = (INCLUDE / "zorvcrt.h").read_text()
        for header in INCLUDE.glob("*.h"):
            if header.name != "zorvcrt.h":
                self.assertIn(f'#include "{header.name}"', umbrella)

    def test_are_all_in_a_room(self):
        rooms = "".join(path.read_text() for path in SOURCE.glob("src/*/CMakeLists.txt"))
        for header in INCLUDE.glob("*.h"):
            if header.name != "zorvcrt.h":
                self.assertRegex(rooms, rf"\n    {re.escape(header.name)}\n")


class Layouts(unittest.TestCase):
    def test_are_pinned_for_every_record_field_and_constant(self):
        text = "\n".join(re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S) for header in INCLUDE.glob("*.h"))
        bodies = re.findall(r"^(?:typedef )?(?:struct|union) (\w+) \{\n(.*?)^\}", text, re.M | re.S)
        self.assertGreater(len(bodies), 15)
        fields = {f"FIELD({record}, {field}, " for record, body in bodies
                  for field in re.findall(r"(\w+)(?:\[\w+\])?;", body)}
        constants = {f"CONSTANT({name}, {value});" for name, value in
                     re.findall(r"^(?: +|#define )([A-Z]\w+) (?:= )?(\d\w*),?\s*$", text, re.M)}
        self.assertGreater(len(constants), 40)
        records = {f"RECORD({record}, " for record, _ in bodies}
        pinned = (SOURCE / "tests" / "frame" / "layouts.h").read_text()
        self.assertEqual(sorted(line for line in records | fields | constants if line not in pinned), [])


class Installation(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.prefix = self.folder / "prefix"
        output_of("cmake", "--install", str(BINARY), "--prefix", str(self.prefix))

    def test_serves_hosts_in_every_way_in_both_languages_wherever_it_is_moved(self):
        hosts.build_and_run(self.prefix.rename(self.folder / "moved"))

    def test_has_a_command_that_can_be_moved(self):
        moved = self.prefix.rename(self.folder / "moved here")
        self.assertEqual(output_of(str(moved / "bin" / "zorvcrt"), "version"), "zorvcrt_core 8.4-4:1\n")

    def test_serves_python(self):
        examples = self.prefix / "share" / "doc" / "zorvcrt" / "examples" / "python"
        programs = sorted(examples.glob("*.py"))
        self.assertEqual(len(programs), len(list((SOURCE / "examples" / "python").glob("*.py"))))
        self.assertGreater(len(programs), 0)
        for program in programs:
            with tempfile.TemporaryDirectory() as folder:
                printed = output_of(sys.executable, program, folder,
                                    LD_LIBRARY_PATH=str(hosts.library_folder(self.prefix)))
                expected = program.with_suffix(".expected").read_text()
                self.assertEqual(printed.replace(folder, "FOLDER"), expected, program.name)

    def test_is_refused_by_hosts_of_another_major_version(self):
        for version, is_found in (("2", True), ("2.0", True), ("1", False), ("3", False)):
            with self.subTest(version=version):
                host = self.folder / version
                host.mkdir()
                (host / "CMakeLists.txt").write_text(
                    "cmake_minimum_required(VERSION 3.25)\nproject(host LANGUAGES NONE)\n"
                    f"find_package(zorvcrt_core {version} CONFIG)\nmessage(FATAL_ERROR found=${{zorvcrt_core_FOUND}})\n")
                done = subprocess.run(["cmake", "-S", host, "-B", host / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}"],
                                      capture_output=True, text=True)
                self.assertIn(f"found={int(is_found)}", done.stderr)

    def test_can_be_staged(self):
        stage, prefix = self.folder / "stage", Path("/opt") / self.folder.name
        output_of("cmake", "--install", BINARY, "--prefix", prefix, DESTDIR=str(stage))
        self.assertEqual(self.files(stage / prefix.relative_to("/")), self.files(self.prefix))
        self.assertFalse(prefix.exists())

    def test_lays_down_everything(self):
        files = {str(path) for path in self.files(self.prefix)}
        library = str(hosts.library_folder(self.prefix).relative_to(self.prefix))
        pages = {f"share/man/man1/{page.name}" for page in (SOURCE / "docs" / "man").glob("*.1")}
        completions = {f"share/bash-completion/completions/{path.stem}"
                       for path in (SOURCE / "tools" / "completion").glob("*.bash")}
        examples = {f"share/doc/zorvcrt/{path.relative_to(SOURCE)}"
                    for kind in ("*.c", "*.py", "*.conf*") for path in (SOURCE / "examples").rglob(kind)}
        guides = {f"share/doc/zorvcrt/{path.relative_to(SOURCE)}" for path in (SOURCE / "docs").glob("*.md")}
        headers = {f"include/zorvcrt/{header.name}" for header in INCLUDE.glob("*.h")}
        self.assertLessEqual(headers | pages | completions | examples | guides | {
            "bin/zorvcrt", f"{library}/libzorvcrt_core.so.2", f"{library}/libzorvcrt_core.so",
            f"{library}/libzorvcrt_core.a", f"{library}/pkgconfig/zorvcrt_core.pc",
            f"{library}/cmake/zorvcrt_core/zorvcrt_core-config.cmake"}, files)
        self.assertEqual({name for name in files if name.startswith("include/")}, headers)

    def test_names_no_folder_of_the_build(self):
        for path in self.files(self.prefix):
            if path.parts[:2] == ("share", "doc"):
                continue
            content = (self.prefix / path).read_bytes()
            for folder in (SOURCE, BINARY, self.folder):
                self.assertFalse(f"{folder}/".encode() in content, f"{path} names {folder}")

    @staticmethod
    def files(prefix):
        return {path.relative_to(prefix) for path in prefix.rglob("*") if path.is_file()}


class Rooms(unittest.TestCase):
    def test_do_not_see_the_rooms_above(self):
        """An include that runs upwards does not compile: the lowest room cannot find the header of another."""
        others = set(os.listdir(BINARY / "rooms")) - {"foundation"}
        seen = [BINARY / "rooms" / "foundation", SOURCE / "src" / "foundation"]
        for room in others:
            for header in os.listdir(BINARY / "rooms" / room):
                self.assertFalse(any((folder / header).exists() for folder in seen), header)

    def test_reach_each_other_by_name_only(self):
        for path in SOURCE.glob("src/*/*.?pp"):
            self.assertNotRegex(path.read_text(), r'#include "[^"]*/', f"{path}: a path in an include")


if __name__ == "__main__":
    unittest.main()
