"""What scripts/check-includes refuses, and what it lets pass."""

import importlib.machinery
import importlib.util
import pathlib
import unittest

script = pathlib.Path(__file__).resolve().parents[2] / "scripts/check-includes"
loader = importlib.machinery.SourceFileLoader("check_includes", str(script))
check = importlib.util.module_from_spec(importlib.util.spec_from_loader("check_includes", loader))
loader.exec_module(check)

REFUSED = [
    ("ipc/gui_client.cpp", '#include "shellext/class_factory.h"', "upwards"),
    ("core/element.cpp", '#include "asn1/element_node.h"', "upwards out of core"),
    ("smartcard/atr.cpp", '#include "net/socket.h"', "sideways"),
    ("asn1/der_decoder.cpp", '#include "ipc/pipe_request_data.h"', "across"),
    ("core/platform/lock.h", '#include "core/element.h"', "platform upwards"),
    ("core/element.cpp", '#include "core/auto_logger.h"', "base to logging"),
    ("core/auto_logger.cpp", '#include "core/settings.h"', "logging to settings"),
    ("tests/asn1/der_test.cpp", '#include "pki/certificate.h"', "a test above its room"),
    ("tests/core/element_test.cpp", '#include "tests/ipc/pipe_peer.h"', "a test to another room's tests"),
    ("fuzz/core/text.cpp", '#include "asn1/element_node.h"', "a fuzz target above its room"),
    ("core/element.cpp", '  #  include "element.h"', "not from the root"),
    ("core/unheard_of.cpp", "", "not in the table"),
    ("cellar/thing.cpp", '#include "core/element.h"', "unknown room"),
    ("core/element.cpp", "#include <windows.h>", "Windows in a portable file"),
    ("core/element.cpp", "#include <Windows.h>", "Windows in a portable file, other case"),
    ("core/platform/lock.h", "#include <windows.h>", "Windows in a header for both systems"),
    ("ipc/pipe_request_data.cpp", "#include <winnt.h>", "Windows in the portable message"),
    ("core/element.cpp", "#ifdef _WIN32", "system switch"),
    ("shellext/module.cpp", "#if defined(A) && !defined(_WIN32)", "system switch in a condition"),
    ("core/element.cpp", "#include <gtest/gtest.h>", "the test framework in the product"),
    ("tests/core/element_test.cpp", "#include <openssl/sha.h>", "a library as second opinion"),
    ("asn1/deflate_stream.cpp", "#include <zlib.h>", "a rival in the product"),
]
ALLOWED = [
    ("shellext/handler.cpp", '#include "core/element.h"'),
    ("smartcard/p15.cpp", '#include "asn1/element_node.h"'),
    ("tools/cryptotool.cpp", '#include "shellext/handler.h"'),
    ("tests/pki/x509_test.cpp", '#include "core/auto_logger.h"'),
    ("tests/pki/x509_test.cpp", '#include "tests/support/files.h"'),
    ("core/auto_logger.cpp", '#include "core/element.h"'),
    ("core/element.cpp", '#include "core/platform/lock.h"'),
    ("core/element.cpp", '// #include "asn1/element_node.h"'),
    ("core/element.cpp", '/*\n#include "asn1/element_node.h"\n#ifdef _WIN32\n*/'),
    ("core/platform/win32/lock.cpp", "#include <windows.h>"),
    ("core/platform/lock.h", "#ifdef _WIN32"),
    ("tests/core/element_test.cpp", "#include <gtest/gtest.h>"),
    ("bench/crypto/sha_bench.cpp", "#include <openssl/sha.h>"),
    ("bench/asn1/deflate_bench.cpp", "#include <zlib.h>"),
]


class CheckIncludes(unittest.TestCase):
    def setUp(self):
        self.ranks = check.RANK_OF
        check.RANK_OF = {"element": 0, "auto_logger": 1, "settings": 2}

    def tearDown(self):
        check.RANK_OF = self.ranks

    def complaints(self, path, text):
        return check.file_complaints(path, text + "\n", lambda name: "/" in name)

    def test_refuses(self):
        for path, text, why in REFUSED:
            with self.subTest(why, path=path):
                self.assertEqual(len(self.complaints(path, text)), 1)

    def test_allows(self):
        for path, text in ALLOWED:
            with self.subTest(path=path, text=text):
                self.assertEqual(self.complaints(path, text), [])

    def test_names_the_line(self):
        self.assertEqual(self.complaints("core/element.cpp", '/* one\ntwo */\n\n#include "ipc/a.h"')[0][0], 4)


if __name__ == "__main__":
    unittest.main()
