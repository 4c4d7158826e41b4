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
    ("core/text/element.cpp", '#include "asn1/tree/element_node.h"', "upwards out of core"),
    ("crypto/hash/hash.cpp", '#include "asn1/types/algorithm_table.h"', "sideways"),
    ("smartcard/atr.cpp", '#include "net/socket.h"', "sideways"),
    ("asn1/der/der_decoder.cpp", '#include "ipc/pipe_request_data.h"', "across"),
    ("core/platform/lock.h", '#include "core/text/element.h"', "platform upwards"),
    ("core/text/element.cpp", '#include "core/diagnostics/auto_logger.h"', "chapter to the one above"),
    ("core/memory/wiped.h", '#include "core/containers/list.h"', "chapter to the one beside"),
    ("crypto/hash/hash.cpp", '#include "crypto/crypto.h"', "chapter to the folder above"),
    ("tools/cryptotool/cli/usage.cpp", '#include "tools/cryptotool/output/output.h"', "chapter of a tool"),
    ("tools/guiserver/main.cpp", '#include "tools/cryptotool/output/output.h"', "tool to tool"),
    ("tests/asn1/der/der_test.cpp", '#include "pki/x509/certificate.h"', "a test above its module"),
    ("tests/core/text/element_test.cpp", '#include "tests/ipc/pipe_peer.h"', "a test to another module's tests"),
    ("fuzz/core/text.cpp", '#include "asn1/tree/element_node.h"', "a fuzz target above its module"),
    ("fuzz/core/text.cpp", '#include "tools/cryptotool/output/output.h"', "a fuzz target to a tool"),
    ("core/text/element.cpp", '  #  include "element.h"', "not from the root"),
    ("shellext/sign_action.cpp", '#include "shellext/context_menu/handler.h"', "a file that is a chapter, to the one above"),
    ("shellext/com/module.cpp", '#include "shellext/sign_action.h"', "chapter to a file that is one above"),
    ("core/attic/unheard_of.cpp", "", "a chapter not in the table"),
    ("cellar/thing.cpp", '#include "core/text/element.h"', "unknown module"),
    ("core/text/element.cpp", "#include <windows.h>", "Windows in a portable file"),
    ("core/text/element.cpp", "#include <Windows.h>", "Windows in a portable file, other case"),
    ("core/platform/lock.h", "#include <windows.h>", "Windows in a header for both systems"),
    ("ipc/pipe_request_data.cpp", "#include <winnt.h>", "Windows in the portable message"),
    ("core/text/element.cpp", "#ifdef _WIN32", "system switch"),
    ("shellext/com/module.cpp", "#if defined(A) && !defined(_WIN32)", "system switch in a condition"),
    ("core/text/element.cpp", "#include <gtest/gtest.h>", "the test framework in the product"),
    ("tests/core/text/element_test.cpp", "#include <openssl/sha.h>", "a library as second opinion"),
    ("deflate/deflate_stream.cpp", "#include <zlib.h>", "a rival in the product"),
    ("tests/core/text/element_test.cpp", "#include <latch>", "a wait that Windows may lose"),
]
ALLOWED = [
    ("shellext/context_menu/handler.cpp", '#include "core/text/element.h"'),
    ("shellext/context_menu/handler.cpp", '#include "shellext/sign_action.h"'),
    ("shellext/dll/exports.cpp", '#include "shellext/context_menu/handler.h"'),
    ("examples/sign_and_verify.cpp", '#include "pki/pki.h"'),
    ("smartcard/p15.cpp", '#include "asn1/tree/element_node.h"'),
    ("tools/menuhost/main.cpp", '#include "shellext/handler.h"'),
    ("tests/tools/cryptotool/cipher_test.cpp", '#include "tools/cryptotool/output/output.h"'),
    ("tests/pki/x509/x509_test.cpp", '#include "core/diagnostics/auto_logger.h"'),
    ("tests/pki/x509/x509_test.cpp", '#include "tests/support/files.h"'),
    ("tests/support/captured_log.cpp", '#include "core/log/log.h"'),
    ("core/diagnostics/auto_logger.cpp", '#include "core/text/element.h"'),
    ("core/settings/settings.cpp", '#include "core/base/ascii.h"'),
    ("core/text/element.cpp", '#include "core/platform/lock.h"'),
    ("core/text/element.cpp", '// #include "asn1/tree/element_node.h"'),
    ("core/text/element.cpp", '/*\n#include "asn1/tree/element_node.h"\n#ifdef _WIN32\n*/'),
    ("core/platform/win32/lock.cpp", "#include <windows.h>"),
    ("core/platform/lock.h", "#ifdef _WIN32"),
    ("tests/core/text/element_test.cpp", "#include <gtest/gtest.h>"),
    ("bench/crypto/sha_bench.cpp", "#include <openssl/sha.h>"),
    ("bench/deflate/deflate_bench.cpp", "#include <zlib.h>"),
]


class CheckIncludes(unittest.TestCase):
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
        self.assertEqual(self.complaints("core/text/element.cpp", '/* one\ntwo */\n\n#include "ipc/a.h"')[0][0], 4)


if __name__ == "__main__":
    unittest.main()
