"""How the scripts take their arguments and the machine they find: what is wrong is refused with the reason, before a build."""

import contextlib
import fcntl
import importlib.machinery
import importlib.util
import io
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import unittest.mock

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Script and words, the exit code, a part of what it says.
REFUSED = [
    ("build --bogus", 2, "no preset --bogus"),
    ("build linux-debgu", 2, "no preset linux-debgu"),
    ("check-dll --bogus", 2, "scripts/check-dll [FILE]"),
    ("check-reproducible --bogus", 2, "not understood: --bogus"),
    ("demo --bogus", 2, "not understood: --bogus"),
    ("fuzz date_time abc", 2, "SECONDS a number"),
    ("fuzz date_time 0", 2, "SECONDS a number"),
    ("fuzz date_time 1 2", 2, "[TARGET [SECONDS]]"),
    ("list-files --bogus", 2, "not understood: --bogus"),
    ("list-files *.nosuch", 1, "no file matches *.nosuch"),
    ("make-icon --png 0 build/x.png", 2, "--png SIZE FILE"),
    ("make-icon --png 16 no/such/folder.png", 1, "scripts/make-icon: "),
    ("make-menu-picture en --bogus", 2, "not understood: --bogus"),
    ("make-menu-picture de", 2, "not understood: de"),
    ("make-pdf --bogus", 2, "scripts/make-pdf TITLE"),
    ("make-pdf \u03a9", 1, "has no '\u03a9'"),
    ("setup --bogus", 2, "not understood: --bogus"),
    ("tally build/no-such-preset", 1, "no results of a run"),
    ("tally --help", 0, "scripts/tally BUILD_FOLDER"),
    ("test --bogus", 2, "not understood: --bogus"),
    ("tidy --bogus", 2, "not understood: --bogus"),
    ("tidy nosuch.cpp", 2, "there is no file nosuch.cpp"),
]


def run(command, **options):
    answer = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    return answer.returncode, answer.stdout.decode("utf-8", "replace")


class Arguments(unittest.TestCase):
    def test_wrong_words_are_refused(self):
        for line, code, said in REFUSED:
            script, *words = line.split()
            with self.subTest(line):
                got, output = run([ROOT / "scripts" / script, *words], cwd=ROOT)
                self.assertEqual(got, code, output)
                self.assertIn(said, output)
                self.assertNotIn("Traceback", output)


class FreshTree(unittest.TestCase):
    """A tree of its own with some of the scripts, and a folder bin/ that comes first in PATH."""

    def make_tree(self, *scripts):
        folder = tempfile.TemporaryDirectory(prefix="tree \u00e4 ")
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        (self.tree / "scripts").mkdir()
        (self.tree / "bin").mkdir()
        for name in scripts:
            shutil.copy(ROOT / "scripts" / name, self.tree / "scripts")

    def stand_in(self, name, line):
        path = self.tree / name
        path.write_text(f"#!/bin/sh\n{line}\n")
        path.chmod(0o755)

    def file(self, name, text="mine"):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return name

    def run_script(self, *words, **variables):
        environment = {**os.environ, "PATH": f"{self.tree / 'bin'}:{os.environ['PATH']}", **variables}
        return run(words, cwd=self.tree, env=environment)


class ListFiles(FreshTree):
    def setUp(self):
        self.make_tree("list-files", "check-includes", "test")
        for name in ("core/a.h", "core/text/b \u00e4.cpp", "core/c.txt", "build/d.h"):
            self.file(name, "")
        self.stand_in("scripts/setup", "")

    def test_a_checkout_and_an_unpacked_archive_list_the_same(self):
        for step in ("archive", "new", "tracked"):
            with self.subTest(step):
                if step == "new":
                    self.file(".gitignore", "/build/\n")
                    run(["git", "init", "-q"], cwd=self.tree)
                elif step == "tracked":
                    self.file("core/removed.h", "")
                    run(["git", "add", "core"], cwd=self.tree)
                    (self.tree / "core/removed.h").unlink()
                self.assertEqual(self.run_script("scripts/list-files", "*.h", "*.cpp"), (0, "core/a.h\ncore/text/b \u00e4.cpp\n"))

    def test_a_checkout_that_git_refuses_fails_the_checks(self):
        code, output = self.run_script("scripts/test", "checks")
        self.assertIn("ok     2 files are formatted", output)
        self.file(".git", "not a git file")
        for words in (["list-files"], ["check-includes"], ["test", "checks"]):
            with self.subTest(words):
                code, output = self.run_script(f"scripts/{words[0]}", *words[1:])
                self.assertEqual(code, 1, output)
                self.assertIn("git cannot list the files", output)
                self.assertNotRegex(output, r"ok .* files (are formatted|follow)")

    def test_another_version_of_clang_format_fails_the_checks(self):
        self.stand_in("bin/clang-format-14", "echo clang-format version 16.0.6")
        self.assertIn("FAILED formatting: version 14 of clang-format is needed", self.run_script("scripts/test", "checks")[1])

    def test_a_second_run_of_the_tests_waits(self):
        self.file("build/test.lock", "")
        with open(self.tree / "build/test.lock") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            environment = {**os.environ, "PATH": f"{self.tree / 'bin'}:{os.environ['PATH']}"}
            second = subprocess.Popen(["scripts/test", "checks"], cwd=self.tree, stdout=subprocess.PIPE, text=True, env=environment)
            self.assertIn("Waiting for another run", second.stdout.readline())
            fcntl.flock(lock, fcntl.LOCK_UN)
            self.assertIn("ok     2 files are formatted", second.communicate()[0])


class Setup(FreshTree):
    """scripts/setup on a machine with the programs of this one, but for some, and with an apt-get that only notes its arguments."""

    def setUp(self):
        self.make_tree("setup")
        # Each word of the script may be a program that it calls or asks for.
        words = set(re.findall(r"[\w+.-]+", (ROOT / "scripts/setup").read_text()))
        for name in words - {"apt-get", "sudo", "import", "convert", "clang-format-14", "Xvfb"}:
            if shutil.which(name):
                (self.tree / "bin" / name).symlink_to(shutil.which(name))
        self.stand_in("bin/Xvfb", "")
        self.stand_in("bin/apt-get", f'echo "$@" >>"{self.tree}/asked"; case $* in *"source benchmark") exit 1 ;; esac')
        self.replace("clang-format", "echo clang-format version 14.0.6")

    def replace(self, program, line):
        (self.tree / "bin" / program).unlink(missing_ok=True)
        self.stand_in(f"bin/{program}", line)

    def setup(self, *words):
        return self.run_script("scripts/setup", *words, PATH=str(self.tree / "bin"))

    def test_installs_for_the_demo_what_the_demo_needs(self):
        self.assertEqual(self.setup(), (0, ""))
        self.stand_in("bin/convert", "")
        code, output = self.setup("demo")
        self.assertEqual(code, 1, output)
        self.assertIn("imagemagick", output)
        self.stand_in("bin/import", "")
        self.replace("clang-format", "exit 1")
        self.replace("valgrind", "exit 1")
        self.assertEqual(self.setup("demo")[0], 0)

    def test_proves_a_package_by_its_use(self):
        for program, line, package, said in (
                ("clang-format", "echo clang-format version 16.0.6", "clang-format-14", "must be version 14"),
                ("clang++", "echo /nowhere", "libclang-rt-dev", "")):
            with self.subTest(program):
                kept = (self.tree / "bin" / program).rename(self.tree / "kept")
                self.replace(program, line)
                code, output = self.setup()
                self.assertEqual(code, 1, output)
                self.assertIn(package, output)
                self.assertIn(said, output)
                kept.replace(self.tree / "bin" / program)

    def test_lacking_locales_without_root_is_no_failure(self):
        self.replace("locale", "echo C.utf8; echo fi_FI.utf8")
        self.replace("id", "echo 1000")
        code, output = self.setup()
        self.assertEqual(code, 0, output)
        self.assertIn("skipped: sv_FI.UTF-8 sv_SE.UTF-8 en_US.UTF-8 de_DE.UTF-8", output)
        self.stand_in("bin/import", "")
        self.stand_in("bin/convert", "")
        self.assertEqual(self.setup("demo"), (0, ""))

    def test_fetches_from_the_sources_of_the_machine(self):
        self.file("etc/sources.list", "# deb of old\ndeb [trusted=yes] file:/one stable main\n")
        self.file("etc/parts/two.sources", "Types: deb\nURIs: file:/two\nSuites: stable\n")
        self.file("etc/parts/three.list.off", "deb file:/three stable main\n")
        self.replace("apt-config", f"echo \"list='{self.tree}/etc/sources.list' parts='{self.tree}/etc/parts/'\"")
        code, output = self.setup("bench")
        self.assertEqual(code, 1, output)
        lists = {path.name: path.read_text() for path in (self.tree / "build/benchmark-download/sources").iterdir()}
        self.assertEqual(lists, {"sources.list": "# deb of old\ndeb-src [trusted=yes] file:/one stable main\n",
                                 "two.sources": "Types: deb-src\nURIs: file:/two\nSuites: stable\n"})
        self.assertIn("source benchmark", (self.tree / "asked").read_text())


class Bench(unittest.TestCase):
    def test_a_name_that_no_pair_has_is_a_failure(self):
        loader = importlib.machinery.SourceFileLoader("bench", str(ROOT / "scripts/bench"))
        bench = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
        loader.exec_module(bench)
        measured = {"text/8": 1, "text vs std::string/8": 2, "alone": 1}
        for names, code in ((["text"], 0), (["std::"], 0), (["text", "nosuch"], 1), (["alone"], 1)):
            with self.subTest(names), contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(io.StringIO()), \
                    unittest.mock.patch.multiple(bench, run=lambda *_: None, build=lambda _: [pathlib.Path("program")],
                                                 measure=lambda *_: measured):
                self.assertEqual(bench.main(["--native", *names]), code)

    def test_a_rival_that_is_native_only_serves_windows(self):
        loader = importlib.machinery.SourceFileLoader("bench", str(ROOT / "scripts/bench"))
        bench = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
        loader.exec_module(bench)
        times = {"linux-release": {"a": 1, "a vs there": 2, "b/4": 3, "b/4 vs both": 6, "c": 1, "c vs there": 1},
                 "windows-release": {"a": 3, "b/4": 4, "b/4 vs both": 2}}
        bounds = {"a": {"windows": 1.2, "linux": 1}}
        programs = {"linux-release": "bin/one", "windows-release": "bin/one.exe"}
        for options, rows, code in ((["--windows"], [("a", "1.50", "OVER"), ("b/4", "2.00")], 1),
                                    (["--native"], [("a", "0.50", "ok"), ("b/4", "0.50"), ("c", "1.00")], 0)):
            output = io.StringIO()
            with self.subTest(options=options), contextlib.redirect_stdout(output), \
                    unittest.mock.patch.multiple(
                        bench, run=lambda *_: None, build=lambda preset: [pathlib.Path(preset) / programs[preset]],
                        measure=lambda program, _: times[program.parts[0]]), \
                    unittest.mock.patch.object(bench.json, "loads", lambda _: bounds):
                self.assertEqual(bench.main(options), code)
            shown = [line.split() for line in output.getvalue().splitlines()[1:]]
            self.assertEqual([(row[1], row[-3 if row[-1] in ("ok", "OVER") else -2], *row[-1:][: row[-1] in ("ok", "OVER")])
                              for row in shown], rows)
            self.assertEqual(["(native)" in row for row in shown], [options == ["--windows"] and row[1] == "a" for row in shown])


class Demo(FreshTree):
    """scripts/demo in a fresh tree, as after a clone: no build/, a build that does nothing, and no screen to go on with."""

    def setUp(self):
        self.make_tree("demo", "make-pdf")
        self.stand_in("scripts/setup", "")
        self.stand_in("scripts/build", "echo built with $LC_ALL")
        self.stand_in("bin/Xvfb", "exit 1")

    def demo(self, *files, locale="C.UTF-8"):
        return self.run_script("scripts/demo", *files, LC_ALL=locale)

    def test_builds_in_a_fresh_tree(self):
        code, output = self.demo()
        self.assertEqual((code, (self.tree / "build/demo-build.log").read_text()), (1, "built with C.UTF-8\n"), output)
        self.assertIn("no screen", output)

    def test_says_what_is_wrong_with_a_file_before_it_does_anything(self):
        document, upper = self.file("a/report.pdf"), self.file("a/REPORT.PDF")
        cases = [
            (["a/nosuch.pdf"], "no file"),
            ([""], "no file"),
            (["a"], "no file"),
            ([document, "--bogus"], "not understood"),
            ([document, self.file("b/other.pdf")], "another folder"),
            ([upper, document], "the first file decides"),
            ([self.file("a/" + 250 * "x" + ".pdf")], "259 characters"),
        ]
        for files, said in cases:
            with self.subTest(files):
                code, output = self.demo(*files)
                self.assertEqual(code, 2, output)
                self.assertIn(said, output)
                self.assertFalse((self.tree / "build").exists())

    def test_leaves_what_is_not_its_own(self):
        mine, old = self.file("build/demo/To be signed, m\u00e4rz/Agreement.pdf"), self.file("build/demo/menu.png")
        code, output = self.demo(mine)
        self.assertIn("no screen", output)
        self.assertEqual((self.tree / mine).read_text(), "mine")
        self.assertFalse((self.tree / old).exists())

    def test_wants_a_language_that_is_there(self):
        code, output = self.demo(locale="xx_YY.UTF-8")
        self.assertEqual(code, 1)
        self.assertIn("has no locale xx_YY.UTF-8", output)
        self.assertLessEqual(output.count("setlocale"), 1, output)


if __name__ == "__main__":
    unittest.main()
