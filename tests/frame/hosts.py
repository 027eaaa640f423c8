#!/usr/bin/env python3
"""Builds and runs small hosts against an installation, in every way that it offers, in C and in C++.

usage: hosts.py PREFIX   with CC and CXX in the environment, or gcc and g++
"""
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

COMPILERS = {"C": os.environ.get("CC", "gcc"), "CXX": os.environ.get("CXX", "g++")}
SUFFIXES = {"C": "c", "CXX": "cpp"}
EXAMPLE = Path(__file__).resolve().parents[2] / "examples" / "version.c"
EXPECTED = "zorvcrt 8.4-4:1\n"
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(host {language})
find_package(zorvcrt_core 2 REQUIRED CONFIG)
foreach(kind core core_static)
  add_executable(with_${{kind}} {source})
  target_link_libraries(with_${{kind}} PRIVATE zorvcrt::${{kind}})
endforeach()
"""


def output_of(*words, **variables):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True,
                          env={**os.environ, **variables})
    assert done.returncode == 0, f"{' '.join(map(str, words))}\n{done.stdout}{done.stderr}"
    return done.stdout


def library_folder(prefix):
    return next(Path(prefix).rglob("libzorvcrt_core.so")).parent


def by_cmake(prefix, source, language):
    """A project in one language alone: it must not need the other."""
    folder, build = source.parent, source.parent / "build"
    (folder / "CMakeLists.txt").write_text(PROJECT.format(language=language, source=source.name))
    output_of("cmake", "-G", "Ninja", "-S", folder, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}",
              f"-DCMAKE_{language}_COMPILER={COMPILERS[language]}")
    found = (build / "CMakeCache.txt").read_text()
    assert f"zorvcrt_core_DIR:PATH={library_folder(prefix)}/" in found, "another installation was found"
    output_of("cmake", "--build", build)
    return build / "with_core", build / "with_core_static"


def by_pkg_config(prefix, source, language):
    """The static one is static down to the C library."""
    search = {"PKG_CONFIG_PATH": str(library_folder(prefix) / "pkgconfig")}
    shared, static = source.with_name("pkg_config"), source.with_name("pkg_config_static")
    for program, kind, link in ((shared, [], []), (static, ["--static"], ["-static"])):
        flags = output_of("pkg-config", "--cflags", "--libs", *kind, "zorvcrt_core >= 2", **search).split()
        output_of(COMPILERS[language], source, *flags, *link, "-o", program)
    return shared, static


def by_hand(prefix, source, language):
    shared, static = source.with_name("by_hand"), source.with_name("by_hand_static")
    library = library_folder(prefix)
    compile_host = [COMPILERS[language], source, f"-I{prefix}/include/zorvcrt"]
    output_of(*compile_host, f"-L{library}", "-lzorvcrt_core", "-o", shared)
    output_of(*compile_host, library / "libzorvcrt_core.a", "-lm", "-o", static)
    return shared, static


def build_and_run(prefix):
    for language in COMPILERS:
        for build in (by_cmake, by_pkg_config, by_hand):
            with tempfile.TemporaryDirectory() as folder:
                source = Path(folder) / f"host.{SUFFIXES[language]}"
                shutil.copy(EXAMPLE, source)
                for program, is_shared in zip(build(prefix, source, language), (True, False)):
                    needs = "[libzorvcrt_core.so.2]" in output_of("readelf", "-d", program)
                    assert needs == is_shared, f"{program}: {'shared' if needs else 'static'}"
                    printed = output_of(program, LD_LIBRARY_PATH=str(library_folder(prefix)) if is_shared else "")
                    assert printed == EXPECTED, f"{program} printed {printed}"


if __name__ == "__main__":
    build_and_run(Path(sys.argv[1]))
