"""test_pages.py PROGRAM PAGES VERSION: each command and option that the program's help prints is in the manual pages and is
offered by the completions of bash and zsh, and no other one."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM, PAGES, VERSION = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def section(text, title):
    """The names that a section of a help has in its first column, with what follows the name."""
    found = re.search(rf"^{title}:\n((?:  .*\n)+)", text, re.M)
    lines = re.findall(r"^  (\S.*)$", found[1], re.M) if found else []
    return [re.split(r"\s{2,}", line)[0] for line in lines]


class Help:
    """What the help of a command, or of the program, says."""

    def __init__(self, command=None):
        text = run(PROGRAM, *([command] if command else []), "--help")
        self.usage = re.search(r"^Usage: (.*)$", text, re.M)[1]
        self.description = text.splitlines()[0]
        self.commands = section(text, "Commands")
        self.arguments = [entry.split()[0] for entry in section(text, "Arguments")]
        self.required = 0
        self.options = {}  # text after the name, by name
        for entry in section(text, "Options"):
            names, _, value = entry.partition(" ")
            self.required += value.endswith(" REQUIRED")
            for name in names.split(","):
                self.options[name] = "" if value.startswith("Excludes") else value.removesuffix(" REQUIRED")


PROGRAM_HELP = Help()
HELPS = {command.split()[0]: Help(command.split()[0]) for command in PROGRAM_HELP.commands}


def page_text(page):
    """A page's source without bold type; the formatter has nothing to say about it."""
    done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z", page], check=True, capture_output=True, text=True)
    assert not done.stderr, done.stderr
    source = re.sub(r"\\f[BR]|\\&", "", page.read_text())
    return source.replace("\\-", "-").replace("\\e", "\\")


def page_section(text, title):
    found = re.search(rf"^\.SH {title}\n((?:(?!\.SH).*\n)+)", text, re.M)
    return found[1] if found else ""


def page_entries(text, title):
    """What a section explains: the first line of each entry."""
    return re.findall(r"^\.TP\n(.*)\n.+\n", page_section(text, title), re.M)


class ManualPages(unittest.TestCase):
    def check_options(self, text, expected):
        names = {}
        for entry in page_entries(text, "OPTIONS"):
            head = re.fullmatch(r"((?:-[^ ,]+, )*-[^ ,]+)(?: (.+))?", entry)
            self.assertIsNotNone(head, entry)
            for name in head[1].split(", "):
                names[name] = head[2] or ""
        self.assertEqual(names, expected.options)

    def test_pages_there(self):
        expected = {"zrml.1"} | {f"zrml-{name}.1" for name in HELPS}
        self.assertEqual({path.name for path in (PAGES / "man1").iterdir()}, expected)
        self.assertGreaterEqual(len(expected), 8)

    def test_program(self):
        text = page_text(PAGES / "man1/zrml.1")
        self.check_options(text, PROGRAM_HELP)
        self.assertEqual([entry.split()[0] for entry in page_entries(text, "COMMANDS")], list(HELPS))
        self.assertIn(f"zrml {VERSION}", text)
        statuses = [entry.split()[0] for entry in page_entries(text, "EXIT STATUS")]
        self.assertEqual(statuses, ["0", "2", "3", "4", "5", "6", "7", "8"])
        for name in HELPS:
            self.assertIn(f".BR zrml-{name} (1)", text)

    def test_commands(self):
        for name, expected in HELPS.items():
            with self.subTest(name):
                text = page_text(PAGES / f"man1/zrml-{name}.1")
                self.check_options(text, expected)
                arguments = [entry.split()[0] for entry in page_entries(text, "ARGUMENTS")]
                self.assertEqual(arguments, expected.arguments)
                self.assertEqual(page_section(text, "SYNOPSIS"), expected.usage + "\n")
                self.assertEqual(text.count(" (required)"), expected.required)
                self.assertEqual(page_section(text, "NAME"), f"zrml-{name} - {expected.description}\n")


class Bash(unittest.TestCase):
    def offered(self, *words, folder=None):
        """What is offered for the last of the words that follow the program's name."""
        code = (f'source "{PAGES}/bash/zrml"; compopt() {{ :; }}; COMP_WORDS=(zrml "$@"); COMP_CWORD=$#; _zrml; '
                '[ ${#COMPREPLY[@]} -eq 0 ] || printf "%s\\n" "${COMPREPLY[@]}"')
        return run("bash", "-c", code, "bash", *words, cwd=folder).splitlines()

    def test_commands(self):
        self.assertEqual(self.offered(""), [*HELPS, "help"])
        self.assertEqual(self.offered("sc"), ["scans"])
        self.assertEqual(self.offered("help", "ch"), ["chromatogram", "check"])
        self.assertEqual(set(self.offered("-")), set(PROGRAM_HELP.options))

    def test_options(self):
        for name, expected in HELPS.items():
            with self.subTest(name):
                self.assertEqual(set(self.offered(name, "-")), set(expected.options))
        self.assertEqual(self.offered("convert", "run.raw", "--for"), ["--force", "--format"])

    def test_values(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "two words.raw").mkdir()
            (pathlib.Path(folder) / "report.rpt").touch()
            both = ["report.rpt", "two words.raw"]
            for name in HELPS:
                self.assertEqual(sorted(self.offered(name, "", folder=folder)), both, name)
            for option in ("-o", "--output"):
                self.assertEqual(self.offered("convert", option, "", folder=folder), ["two words.raw"])
            self.assertEqual(self.offered("convert", "--output", "=", folder=folder), ["two words.raw"])
            self.assertEqual(self.offered("convert", "--output", "=", "tw", folder=folder), ["two words.raw"])
            self.assertEqual(self.offered("convert", "--output", "r", folder=folder), [])
            self.assertEqual(sorted(self.offered("convert", "--file", "", folder=folder)), both)
            self.assertEqual(self.offered("info", "--sample", "", folder=folder), [])


class Zsh(unittest.TestCase):
    def specs(self, command=None):
        """What the completion hands to zsh for the program's own options, or for those of a command."""
        code = r"""
          commands_seen=0
          _describe() { print -rl -- ${(P)2} }
          _arguments() {
            [[ $1 == -C ]] || { print -rl -- "$@"; return }
            shift
            [[ -n $1 && -z $WANTED ]] && { print -rl -- "$@"; return }
            state=${STATE}; words=($WANTED); return 1
          }
          complete_zrml() { source $FILE }
          complete_zrml"""
        wanted = {"WANTED": command or "", "STATE": "argument", "FILE": str(PAGES / "zsh/_zrml")}
        return run("zsh", "-f", "-c", code, env={**wanted, "PATH": "/usr/bin:/bin"}).splitlines()

    def options(self, command=None):
        """Name of each option, and the name of its value."""
        found = {}
        for spec in self.specs(command):
            parts = re.fullmatch(r"(?:\([^)]*\)|\*)?(-[^=+\[]+)[=+]?\[(?:[^\]\\]|\\.)*\](?:::?((?:[^:\\]|\\.)*):.*)?", spec)
            if parts:
                found[parts[1]] = (parts[2] or "").replace("\\", "")
        return found

    def test_commands(self):
        self.assertEqual([line.partition(":")[0] for line in self.specs("help")], [*HELPS, "help"])

    def test_options(self):
        self.assertEqual(self.options(), PROGRAM_HELP.options)
        for name, expected in HELPS.items():
            with self.subTest(name):
                self.assertEqual(self.options(name), expected.options)

    def test_arguments(self):
        for name, expected in HELPS.items():
            arguments = [spec for spec in self.specs(name) if re.match(r"\*?::?[A-Z]+:", spec)]
            self.assertEqual([re.search("[A-Z]+", spec)[0] for spec in arguments], expected.arguments, name)
            self.assertTrue(all(spec.endswith(":_files") for spec in arguments), name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
