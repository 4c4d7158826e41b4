"""That scripts/check-dll sees each fault: the built DLL with one thing spoilt fails exactly the check of that thing."""

import importlib.machinery
import importlib.util
import pathlib
import struct
import sys
import tempfile
import unittest

root = pathlib.Path(__file__).resolve().parents[2]
loader = importlib.machinery.SourceFileLoader("check_dll", str(root / "scripts/check-dll"))
check = importlib.util.module_from_spec(importlib.util.spec_from_loader("check_dll", loader))
loader.exec_module(check)
built = pathlib.Path(sys.argv.pop()) if len(sys.argv) > 1 else root / "build/windows-release/bin/explorermenuhandler.dll"


def replaced(old, new):
    def spoil(data, _):
        if old not in data:
            raise ValueError(f"{old} is not in the DLL")
        data[:] = bytes(data).replace(old, new)
    return spoil


def cleared(bit):
    def spoil(data, image):
        struct.pack_into("<H", data, image.optional + 70, image.characteristics & ~bit)
    return spoil


def stamped(data, image):
    struct.pack_into("<I", data, image.header + 8, 0x5F000000)


def without_resource(kind):
    def spoil(data, image):
        base = image.offset(image.directory(2)[0])
        for index in range(sum(struct.unpack_from("<HH", data, base + 12))):
            if image.number("<I", base + 16 + 8 * index) == kind:
                struct.pack_into("<I", data, base + 16 + 8 * index, 99)
    return spoil


def writable_code(data, image):
    first = image.optional + image.number("<H", image.header + 20)
    struct.pack_into("<I", data, first + 36, image.sections[0][5] | 0x80000000)


FAULTS = [
    ("exports", replaced(b"DllCanUnloadNow", b"DllCanUnloadNaw")),
    ("imports from", replaced(b"KERNEL32.dll", b"KERNEL23.dll")),
    ("HIGH_ENTROPY_VA", cleared(0x0020)),
    ("DYNAMIC_BASE", cleared(0x0040)),
    ("NX_COMPAT", cleared(0x0100)),
    ("writable and executable", writable_code),
    ("build time", stamped),
    ("build directory", lambda data, _: data.extend(b" " + str(root).encode() + b"/a.cpp")),
    ("icon group", without_resource(check.RT_GROUP_ICON)),
    ("its images", without_resource(check.RT_ICON)),
    ("asks for Common-Controls", replaced(b"Common-Controls", b"Common-Controlz")),
    ("version resource", without_resource(check.RT_VERSION)),
    ("size", lambda data, _: data.extend(bytes(check.SIZE_LIMIT))),
]


class CheckDll(unittest.TestCase):
    def test_sees_each_fault(self):
        for what, spoil in FAULTS:
            with self.subTest(what), tempfile.TemporaryDirectory() as folder:
                data = bytearray(built.read_bytes())
                spoil(data, check.Image(bytes(data)))
                path = pathlib.Path(folder) / built.name
                path.write_bytes(data)
                failed = [line for passed, line in check.checks(path) if not passed]
                # Without Common-Controls 6 the import that needs it is a second fault.
                self.assertTrue(any(what in line for line in failed), failed)
                self.assertLessEqual(len(failed), 2 if "Common-Controls" in what else 1, failed)

    def test_refuses_what_is_no_image(self):
        for data in (b"", b"MZ", built.read_bytes()[:200]):
            with self.subTest(len(data)), tempfile.TemporaryDirectory() as folder:
                path = pathlib.Path(folder) / "short.dll"
                path.write_bytes(data)
                self.assertEqual(check.main([str(path)]), 1)


if __name__ == "__main__":
    unittest.main()
