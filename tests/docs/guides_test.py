#!/usr/bin/env python3
"""Holds README.md and the guides in docs/ to what they show.

A fenced block says in the comment above it who answers for it:

    <!-- examples/NAME.c -->        it is that file
    <!-- output of NAME -->         it is what the example prints (examples/NAME.expected, with /tmp for FOLDER)
    <!-- run by PATH -->            that test reads it out of the guide
    <!-- file NAME -->              it is written to NAME before the sessions below it run

A session (```console) needs no comment: its commands run in a shell of the guide's own, in a new folder that has
the examples, with the library installed in ~/zorvcrt, and print what stands below them. "..." stands for any lines. Times of
log lines, and the name of the home folder, which is /home/ann in the guides, may differ.

usage: guides_test.py [TEST...]   with SOURCE_DIR, BINARY_DIR and CC in the environment
"""
import os
import re
import shlex
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(os.environ["SOURCE_DIR"])
BINARY = Path(os.environ["BINARY_DIR"])
GUIDES = [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]
HOME = "/home/ann"
MARK = "\x01"
BLOCK = re.compile(r"^([^\n]*)\n```(\w*)\n(.*?)^```$", re.S | re.M)
TIME = re.compile(r"\[[A-Z][a-z]{2} [A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d ")

# What a reader does once and the tests have done already: configuring and building. The build that is installed is
# the one that is tested.
DONE_BEFORE = ("./demo", "./check")


def blocks(guide):
    return [match.groups() for match in BLOCK.finditer("\n" + guide.read_text())]


def commands_of(session):
    """Pairs of a command and the output below it."""
    pairs = []
    for line in session.splitlines():
        if line.startswith("$ "):
            pairs.append([line[2:], ""])
        elif line.startswith("> ") and not pairs[-1][1]:
            pairs[-1][0] += "\n" + line[2:]
        else:
            pairs[-1][1] += line + "\n"
    return pairs


def plain(text, home):
    return TIME.sub("[TIME ", text.replace(home, HOME))


def matches(shown, printed):
    pattern = re.escape(shown).replace(re.escape("...\n"), "(?:.*\n)*")
    return re.fullmatch(pattern, printed) is not None


def environment(home):
    kept = {name: os.environ[name] for name in ("CC", "CXX") if name in os.environ}
    path = f"{home}/zorvcrt/bin:/usr/local/bin:/usr/bin:/bin"
    return {**kept, "HOME": home, "PATH": path, "TZ": "UTC0", "LC_ALL": "C", "TERM": "dumb",
            "LD_LIBRARY_PATH": f"{home}/zorvcrt/lib", "PKG_CONFIG_PATH": f"{home}/zorvcrt/lib/pkgconfig"}


def script_for(guide):
    """A shell script of all sessions and files of a guide, and the commands with what they show."""
    script, shown = f"cd {shlex.quote(str(SOURCE))}\n", []
    if guide.name != "getting-started.md":
        script = f"mkdir ~/work && cd ~/work && cp {shlex.quote(str(SOURCE / 'examples'))}/{{*.c,python/*.py}} .\n"
    for above, language, text in blocks(guide):
        file = re.fullmatch(r"<!-- file (\S+) -->", above)
        if file:
            script += f"cat >{file[1]} <<'END OF FILE'\n{text}END OF FILE\n"
        if language != "console":
            continue
        for command, output in commands_of(text):
            if command.split()[0] in DONE_BEFORE:
                command = "true"
            command = command.replace("cmake --install build/demo", f"cmake --install {BINARY}")
            script += f"{{ {command}\n}} </dev/null; status=$?; printf '{MARK}'; (exit $status)\n"
            shown.append((command, output))
    return script, shown


def install(home):
    subprocess.run(["cmake", "--install", str(BINARY), "--prefix", f"{home}/zorvcrt"], check=True,
                   stdout=subprocess.DEVNULL)


class Guides(unittest.TestCase):
    maxDiff = None

    def test_have_no_block_that_nobody_answers_for(self):
        counted = 0
        for guide in GUIDES:
            for above, language, text in blocks(guide):
                with self.subTest(guide=guide.name, block=text):
                    counted += 1
                    if language == "console":
                        self.assertTrue(text.startswith("$ "))
                        continue
                    comment = re.fullmatch(r"<!-- (?:(run by|file|output of) )?(\S+) -->", above)
                    self.assertTrue(comment, f"nobody answers for a block below {above!r}")
                    if comment[1] is None:
                        self.assertEqual(text, (SOURCE / comment[2]).read_text())
                    if comment[1] == "run by":
                        self.assertIn(guide.name, (SOURCE / comment[2]).read_text())
                    if comment[1] == "output of":
                        printed = (SOURCE / "examples" / f"{comment[2]}.expected").read_text()
                        self.assertEqual(text, printed.replace("FOLDER", "/tmp"))
        self.assertGreater(counted, 30)

    def test_have_no_indented_blocks(self):
        for guide in GUIDES:
            prose = BLOCK.sub("", "\n" + guide.read_text())
            self.assertEqual(re.findall(r"\n\n(    [^\n]*)", prose), [], guide.name)

    def test_show_sessions_as_they_happen(self):
        for guide in GUIDES:
            script, shown = script_for(guide)
            if not shown:
                continue
            with tempfile.TemporaryDirectory() as home:
                if guide.name != "getting-started.md":
                    install(home)
                done = subprocess.run(["bash", "--noprofile", "--norc", "-s"], input=script, text=True,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=environment(home))
                printed = done.stdout.split(MARK)
                self.assertEqual(len(printed), len(shown) + 1, done.stdout)
                for (command, output), text in zip(shown, printed):
                    with self.subTest(guide=guide.name, command=command):
                        if not matches(plain(output, home), plain(text, home)):
                            self.assertEqual(plain(output, home), plain(text, home))

    def test_begin_with_an_example_program(self):
        """The first block of a guide that has a program of its name is that program."""
        first = {guide.stem: blocks(guide)[0][0] for guide in GUIDES if blocks(guide)}
        for name, program in (("getting-started", "start_up"), ("settings", "settings"), ("logging", "logging"),
                              ("json", "json_tidy"), ("threads", "threaded_server"), ("dates", "dates")):
            self.assertEqual(first[name], f"<!-- examples/{program}.c -->")

    def test_draw_the_rooms_as_the_build_knows_them(self):
        built = set()
        for path in SOURCE.glob("src/*/CMakeLists.txt"):
            found = re.search(r"zorvcrt_room\((\w+)\s+STANDS_ON ([\w ]+)", path.read_text())
            if found:
                built |= {(found[1], below) for below in found[2].split()}
        self.assertGreater(len(built), 5)
        drawn = re.findall(r'<path id="(\w+)-(\w+)"', (SOURCE / "docs" / "rooms.svg").read_text())
        self.assertEqual(sorted(drawn), sorted(built))
        table = re.findall(r"^\| `(\w+)` \|.*\| ([\w, ]*) \|$", (SOURCE / "docs" / "architecture.md").read_text(), re.M)
        self.assertEqual(sorted((room, below) for room, all in table for below in all.split(", ") if below), sorted(built))

    def test_link_to_what_is_there(self):
        links = [(guide, link) for guide in [*GUIDES, *SOURCE.glob("*.md")]
                 for link in re.findall(r"\]\(([^)#]+)[^)]*\)", guide.read_text()) if "://" not in link]
        self.assertGreater(len(links), 20)
        for guide, link in links:
            self.assertTrue((guide.parent / link).exists(), f"{guide.name}: {link}")

    def test_are_all_named_by_the_readme(self):
        readme = (SOURCE / "README.md").read_text()
        for guide in GUIDES[1:]:
            self.assertIn(f"(docs/{guide.name})", readme)


class Examples(unittest.TestCase):
    def test_are_short(self):
        programs = sorted((SOURCE / "examples").glob("*.c"))
        self.assertGreater(len(programs), 10)
        for program in programs:
            self.assertLess(len(program.read_text().splitlines()), 100, program.name)


if __name__ == "__main__":
    unittest.main()
