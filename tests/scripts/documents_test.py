"""That the documents name only files that exist, so a file that is moved takes its mention along."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The change log names files of the past, too.
DOCUMENTS = sorted({*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")} - {ROOT / "CHANGELOG.md"})
FOLDERS = "|".join(sorted(path.name for path in ROOT.iterdir() if path.is_dir() and path.name != "build" and path.name[0] != "."))

NAMED = re.compile(rf"(?<![\w./\\-])(?:{FOLDERS})/[\w./-]*\w")
LINK = re.compile(r"\]\(([^)#]+)[^)]*\)")
# fuzz/MODULE/corpus/TARGET stands for many.
PLACEHOLDER = re.compile(r"/[A-Z]+(/|$)")


def absent_paths(text, folder):
    named = {ROOT / name for name in NAMED.findall(text) if not PLACEHOLDER.search(name)}
    linked = {folder / target for target in LINK.findall(text) if "://" not in target}
    return sorted(str(path) for path in named | linked if not path.exists())


class Documents(unittest.TestCase):
    def test_name_files_that_exist(self):
        for document in DOCUMENTS:
            with self.subTest(document.name):
                self.assertEqual(absent_paths(document.read_text("utf-8"), document.parent), [])

    def test_an_absent_file_is_seen(self):
        text = "`core/nosuch.cpp`, [log](nosuch.md#part), fuzz/MODULE/corpus/TARGET, build/core/x and `scripts/test`"
        self.assertEqual(absent_paths(text, ROOT / "docs"), [str(ROOT / "core/nosuch.cpp"), str(ROOT / "docs/nosuch.md")])


if __name__ == "__main__":
    unittest.main()
