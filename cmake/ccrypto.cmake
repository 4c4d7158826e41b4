# The words in which each folder's CMakeLists.txt is written.
#
#   ccrypto_module(NAME [WINDOWS_ONLY])    adds NAME, tests/NAME, fuzz/NAME and bench/NAME, those that exist
#   ccrypto_library(NAME ...)              a module of the library: CCrypto::NAME, the archive build/PRESET/lib/libccrypto_NAME.a
#   ccrypto_part(NAME ...)                 static archive of what programs, the DLL and tests share; not installed
#   ccrypto_dll(NAME ...)                  Windows DLL without a "lib" prefix, build/PRESET/bin
#   ccrypto_program(NAME ...)              executable, build/PRESET/bin
#   ccrypto_test(NAME ...)                 GoogleTest program and its one ctest entry
#   ccrypto_secrets_test(NAME ...)         GoogleTest program that runs under valgrind, in the build with secrets marked alone
#   ccrypto_test_again(ENTRY PROGRAM NAME [FILTER pattern] [ENVIRONMENT VARIABLE=value...])
#                                          a further ctest entry for a test program, for cases that need another environment
#   ccrypto_secrets_test_again(ENTRY PROGRAM NAME ENVIRONMENT VARIABLE=value...)
#                                          the same for a program that runs under valgrind
#   ccrypto_fuzz(NAME ...)                 fuzz target NAME_fuzz with the corpus folder corpus/NAME beside its CMakeLists.txt
#   ccrypto_bench(NAME ...)                Google Benchmark program
#
# The library, part, DLL, program, test, fuzz target and bench take these lists:
#   SOURCES          files for both systems; headers need not be listed
#   POSIX_SOURCES    files for the native build alone       WINDOWS_SOURCES  files for the Windows build alone
#   LINKS            modules and libraries for both systems
#   POSIX_LINKS      for the native build alone             WINDOWS_LINKS    for the Windows build alone (ole32, shlwapi, ...)
# ccrypto_library, ccrypto_part and ccrypto_test take besides:
#   APART            those of the files that are never compiled together with others (see CCRYPTO_JOINED)
# ccrypto_library and ccrypto_part take besides:
#   IN_DLL           the DLL is made of it
# ccrypto_library takes besides:
#   PUBLIC_HEADERS   what clients may include, and what those headers include; installed below include/ccrypto
#   WINDOWS_PUBLIC_HEADERS   the same for the Windows build alone
# ccrypto_test takes besides:
#   OWN_MAIN         the sources hold main(), which starts GoogleTest itself
#   TIMEOUT seconds  180 when left out: Wine on a busy machine is slow
#   ENVIRONMENT      VARIABLE=value...
#   PROGRAMS         targets the tests start; they are built first and stand in the directory PROGRAM_DIR names
# Tests are compiled with two text constants: TEST_DATA_DIR (data/ beside the CMakeLists.txt) and PROGRAM_DIR (build/PRESET/bin).

# As a part of another project only the library is built, and warnings are not errors, unless that project asks for more.
option(BUILD_TESTING "Build the tests" ON)
set(ccryptoTests OFF)
if(PROJECT_IS_TOP_LEVEL AND BUILD_TESTING)
    set(ccryptoTests ON)
endif()
option(CCRYPTO_BUILD_TESTS "Build the tests of the library, the programs and the DLL" ${ccryptoTests})
option(CCRYPTO_BUILD_PROGRAMS "Build the programs and, for Windows, the DLL" ${PROJECT_IS_TOP_LEVEL})
option(CCRYPTO_INSTALL "Install the library, its headers and its CMake package" ${PROJECT_IS_TOP_LEVEL})
option(CCRYPTO_WARNINGS_AS_ERRORS "Stop at warnings of the compiler" ${PROJECT_IS_TOP_LEVEL})
# Most of the time a file takes goes into the headers it includes: sixteen files at once take a third of it. Such a build hides an
# #include that is missing; scripts/tidy finds that. It would make the DLL larger by a fifteenth, so the modules that are in it are
# compiled file by file on Windows.
option(CCRYPTO_JOINED "Compile the files of a library or of a test program several at a time" OFF)
option(CCRYPTO_BENCH "Build the benches" OFF)
set(CCRYPTO_FUZZ OFF CACHE STRING "Fuzz targets: OFF, REPLAY (each runs its corpus once) or ENGINE (libFuzzer)")
option(CCRYPTO_SECRETS_MARKED "Tell valgrind which bytes are secret, and test nothing but that none decides a branch or an address" OFF)
option(CCRYPTO_SYMBOLS "Leave the symbols in Windows programs and the DLL" OFF)
set(CCRYPTO_SANITIZE "" CACHE STRING "Sanitizers for everything we compile")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(ccryptoRoot "${CMAKE_CURRENT_LIST_DIR}/..")
cmake_path(NORMAL_PATH ccryptoRoot)
set(ccryptoResults "${PROJECT_BINARY_DIR}/results")
if(CCRYPTO_BUILD_TESTS OR CCRYPTO_FUZZ STREQUAL "REPLAY")
    file(MAKE_DIRECTORY "${ccryptoResults}")
endif()

include(GNUInstallDirs)
include("${CMAKE_CURRENT_LIST_DIR}/flags.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/packages.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/modules.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/install.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/tests.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/bench.cmake")
