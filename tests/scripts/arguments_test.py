"""How the scripts take what is typed behind their names: wrong words are refused with the reason, before anything is built."""

import contextlib
import importlib.machinery
import importlib.util
import io
import os
import pathlib
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
    ("make-icon --png 0 build/x.png", 2, "--png SIZE FILE"),
    ("make-icon --png 16 no/such/folder.png", 1, "scripts/make-icon: "),
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


class Demo(unittest.TestCase):
    """scripts/demo in a fresh tree, as after a clone: no build/, a build that does nothing, and no screen to go on with."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="demo \u00e4 ")
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        (self.tree / "scripts").mkdir()
        (self.tree / "bin").mkdir()
        for name in ("demo", "make-pdf"):
            shutil.copy(ROOT / "scripts" / name, self.tree / "scripts")
        self.stand_in("scripts/setup", "")
        self.stand_in("scripts/build", "echo built with $LC_ALL")
        self.stand_in("bin/Xvfb", "exit 1")

    def stand_in(self, name, line):
        path = self.tree / name
        path.write_text(f"#!/bin/sh\n{line}\n")
        path.chmod(0o755)

    def file(self, name):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("mine")
        return name

    def demo(self, *files, locale="C.UTF-8"):
        environment = {**os.environ, "LC_ALL": locale, "PATH": f"{self.tree / 'bin'}:{os.environ['PATH']}"}
        return run(["scripts/demo", *files], cwd=self.tree, env=environment)

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
