# Writes the source file OUTPUT with the commit of the sources in ROOT, "unknown" where there is no repository (an unpacked archive). The
# file is touched only when it changes.
cmake_minimum_required(VERSION 3.25)

set(commit "")
find_program(git git)
if(git AND EXISTS "${ROOT}/.git")
    execute_process(COMMAND "${git}" -C "${ROOT}" describe --always --exclude=* --abbrev=12 --dirty
        OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT commit MATCHES "^[0-9a-f]+(-dirty)?$")
    set(commit "unknown")
endif()
file(CONFIGURE OUTPUT "${OUTPUT}" @ONLY CONTENT
    "#include \"tools/cryptotool/cli/version.h\"\n\nnamespace ccrypto {\n\nconst char* const sourceCommit = \"@commit@\";\n\n} // namespace ccrypto\n")
