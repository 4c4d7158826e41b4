"""That documents and comments name only files that exist, and CMake only options that do: what is moved takes its mention along."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The change log names files of the past, too.
DOCUMENTS = sorted({*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")} - {ROOT / "CHANGELOG.md"})
FOLDERS = "|".join(sorted(path.name for path in ROOT.iterdir() if path.is_dir() and path.name != "build" and path.name[0] != "."))

NAMED = re.compile(rf"(?<![\w./\\-])(?:{FOLDERS})/[\w./-]*\w")
# In comments a path may begin below a module, too: "der/pem.h".
SOURCES = sorted(path for folder in FOLDERS.split("|") for ending in ("h", "cpp", "inc", "cmake") for path in (ROOT / folder).rglob(f"*.{ending}"))
COMMENT = re.compile(r"^\s*(?://|#(?!include)).*$", re.M)
NAMED_SOURCE = re.compile(r"(?<![\w./\\<-])[a-z0-9_]+(?:/[a-z0-9_]+)+\.(?:h|cpp|inc)\b")
FOREIGN = ("sanitizer/",)
OPTION = re.compile(r"\bCCRYPTO_[A-Z_]+\b")
CODE = re.compile(r"^ {4}.*$", re.M)
LINK = re.compile(r"\]\(([^)#]+)[^)]*\)")
# fuzz/MODULE/corpus/TARGET stands for many.
PLACEHOLDER = re.compile(r"/[A-Z]+(/|$)")


def absent_paths(text, folder):
    named = {ROOT / name for name in NAMED.findall(text) if not PLACEHOLDER.search(name)}
    linked = {folder / target for target in LINK.findall(CODE.sub("", text)) if "://" not in target}
    return sorted(str(path) for path in named | linked if not path.exists())


def absent_sources(text, path):
    """Paths in comments that are files neither below the root nor below a folder that the file stands in."""
    bases = [base for base in path.parents if base.is_relative_to(ROOT)]
    named = {name for comment in COMMENT.findall(text) for name in NAMED_SOURCE.findall(comment) if not name.startswith(FOREIGN)}
    return sorted(name for name in named if not any((base / name).exists() for base in bases))


def cmake_files():
    return [path for path in (*ROOT.rglob("CMakeLists.txt"), *ROOT.rglob("*.cmake")) if path.relative_to(ROOT).parts[0] != "build"]


class Documents(unittest.TestCase):
    def test_name_files_that_exist(self):
        for document in DOCUMENTS:
            with self.subTest(document.name):
                self.assertEqual(absent_paths(document.read_text("utf-8"), document.parent), [])

    def test_comments_name_files_that_exist(self):
        for path in SOURCES:
            with self.subTest(path.relative_to(ROOT)):
                self.assertEqual(absent_sources(path.read_text("utf-8"), path), [])
        self.assertEqual(absent_sources("// see der/nosuch.h, core/core.h and tree/element_node.h", ROOT / "asn1/der/pem.h"), ["der/nosuch.h"])

    def test_cmake_asks_for_options_that_exist(self):
        texts = {path: path.read_text("utf-8") for path in cmake_files()}
        declared = set(re.findall(r"(?:option|set|cmake_dependent_option)\(\s*(CCRYPTO_[A-Z_]+)", "".join(texts.values())))
        for path, text in texts.items():
            with self.subTest(path.relative_to(ROOT)):
                asked = {name for line in re.findall(r"^\s*(?:if|elseif)\s*\((.*)\)", text, re.M) for name in OPTION.findall(line)}
                self.assertEqual(sorted(asked - declared), [])

    def test_code_is_that_of_the_examples(self):
        """Code after "From `examples/NAME`:" stands there, block by block."""
        parts = re.findall(r"From\s+`(examples/\w+\.cpp)`:\n\n((?:(?: {4}.*)?\n)+)", (ROOT / "docs/library.md").read_text("utf-8"))
        self.assertGreaterEqual(len(parts), 3)
        for name, code in parts:
            example = "\n".join(line.strip() for line in (ROOT / name).read_text("utf-8").splitlines())
            for block in re.split(r"\n\n+", code.strip("\n")):
                with self.subTest(name, block=block):
                    self.assertIn("\n".join(line.strip() for line in block.splitlines()), example)

    def test_an_absent_file_is_seen(self):
        text = "`core/nosuch.cpp`, [log](nosuch.md#part), fuzz/MODULE/corpus/TARGET, build/core/x and `scripts/test`"
        self.assertEqual(absent_paths(text, ROOT / "docs"), [str(ROOT / "core/nosuch.cpp"), str(ROOT / "docs/nosuch.md")])


if __name__ == "__main__":
    unittest.main()
