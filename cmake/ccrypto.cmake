# The words in which each folder's CMakeLists.txt is written.
#
#   ccrypto_module(NAME [WINDOWS_ONLY])      adds NAME, tests/NAME, fuzz/NAME and bench/NAME, those that exist
#   ccrypto_library(NAME ...)              a module of the library: CCrypto::NAME, the archive build/PRESET/lib/libccrypto_NAME.a
#   ccrypto_part(NAME ...)                 static archive of what programs, the DLL and tests share; not installed
#   ccrypto_dll(NAME ...)                  Windows DLL without a "lib" prefix, build/PRESET/bin
#   ccrypto_program(NAME ...)              executable, build/PRESET/bin
#   ccrypto_test(NAME ...)                 GoogleTest program and its one ctest entry
#   ccrypto_secrets_test(NAME ...)         GoogleTest program that runs under valgrind, in the build with secrets marked alone
#   ccrypto_test_again(ENTRY PROGRAM NAME [FILTER pattern] [ENVIRONMENT VARIABLE=value...])
#                                        a further ctest entry for a test program, for cases that need another environment
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

macro(ccrypto_module name)
    if(WIN32 OR NOT "${ARGN}" STREQUAL "WINDOWS_ONLY")
        set(ccryptoFolders ${name})
        if(CCRYPTO_BUILD_TESTS OR CCRYPTO_FUZZ OR CCRYPTO_BENCH)
            list(APPEND ccryptoFolders tests/${name} fuzz/${name} bench/${name})
        endif()
        foreach(folder ${ccryptoFolders})
            # A folder that appears later is noticed by the next build.
            file(GLOB found CONFIGURE_DEPENDS "${ccryptoRoot}/${folder}/CMakeLists.txt")
            if(found)
                add_subdirectory("${ccryptoRoot}/${folder}" "${PROJECT_BINARY_DIR}/${folder}")
            endif()
        endforeach()
    endif()
endmacro()

# Reads the lists every ccrypto_ function takes into ccrypto_FILES, ccrypto_LINKS and the given further keywords.
macro(ccrypto_arguments options values lists)
    cmake_parse_arguments(ccrypto "${options}" "${values}"
        "SOURCES;POSIX_SOURCES;WINDOWS_SOURCES;LINKS;POSIX_LINKS;WINDOWS_LINKS;${lists}" ${ARGN})
    if(ccrypto_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "Not understood: ${ccrypto_UNPARSED_ARGUMENTS}")
    endif()
    set(ccrypto_FILES ${ccrypto_SOURCES})
    if(WIN32)
        list(APPEND ccrypto_FILES ${ccrypto_WINDOWS_SOURCES})
        list(APPEND ccrypto_LINKS ${ccrypto_WINDOWS_LINKS})
    else()
        list(APPEND ccrypto_FILES ${ccrypto_POSIX_SOURCES})
        list(APPEND ccrypto_LINKS ${ccrypto_POSIX_LINKS})
    endif()
endmacro()

# Names of the files' own differ within a module, but for the files that are compiled APART.
function(ccrypto_join name batch)
    if(CCRYPTO_JOINED)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${batch})
        set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        # What a test's file keeps to itself looks to GCC as if a header made it.
        target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
endfunction()

function(ccrypto_part name)
    ccrypto_arguments("IN_DLL" "" "APART;PUBLIC_HEADERS;WINDOWS_PUBLIC_HEADERS" ${ARGN})
    if(WIN32)
        list(APPEND ccrypto_PUBLIC_HEADERS ${ccrypto_WINDOWS_PUBLIC_HEADERS})
    endif()
    add_library(${name} STATIC ${ccrypto_FILES})
    target_sources(${name} PUBLIC FILE_SET public TYPE HEADERS BASE_DIRS "${ccryptoRoot}" FILES ${ccrypto_PUBLIC_HEADERS})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_link_libraries(${name} PUBLIC ${ccrypto_LINKS} PRIVATE "$<BUILD_INTERFACE:ccrypto_flags>")
    if(NOT (ccrypto_IN_DLL AND WIN32))
        ccrypto_join(${name} 16 ${ccrypto_APART})
    endif()
endfunction()

function(ccrypto_library name)
    ccrypto_part(ccrypto_${name} ${ARGN})
    add_library(CCrypto::${name} ALIAS ccrypto_${name})
    set_target_properties(ccrypto_${name} PROPERTIES EXPORT_NAME ${name})
    if(CCRYPTO_INSTALL)
        install(TARGETS ccrypto_${name} EXPORT CCryptoTargets
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
            FILE_SET public DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ccrypto")
    endif()
endfunction()

# What find_package(CCrypto) reads; called once, after the last module of the library.
function(ccrypto_install_package)
    if(NOT CCRYPTO_INSTALL)
        return()
    endif()
    include(CMakePackageConfigHelpers)
    set(packageFolder "${CMAKE_INSTALL_LIBDIR}/cmake/CCrypto")
    configure_package_config_file("${ccryptoRoot}/cmake/CCryptoConfig.cmake.in" "${PROJECT_BINARY_DIR}/CCryptoConfig.cmake"
        INSTALL_DESTINATION "${packageFolder}")
    write_basic_package_version_file("${PROJECT_BINARY_DIR}/CCryptoConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
    install(EXPORT CCryptoTargets NAMESPACE CCrypto:: DESTINATION "${packageFolder}")
    install(FILES "${PROJECT_BINARY_DIR}/CCryptoConfig.cmake" "${PROJECT_BINARY_DIR}/CCryptoConfigVersion.cmake"
        DESTINATION "${packageFolder}")
    install(FILES "${ccryptoRoot}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endfunction()

function(ccrypto_dll name)
    ccrypto_arguments("" "" "" ${ARGN})
    add_library(${name} SHARED ${ccrypto_FILES})
    set_target_properties(${name} PROPERTIES PREFIX "")
    target_include_directories(${name} PRIVATE "${ccryptoRoot}")
    target_link_libraries(${name} PRIVATE ${ccrypto_LINKS} ccrypto_flags)
endfunction()

function(ccrypto_program name)
    ccrypto_arguments("" "" "" ${ARGN})
    add_executable(${name} ${ccrypto_FILES})
    target_include_directories(${name} PRIVATE "${ccryptoRoot}")
    target_link_libraries(${name} PRIVATE ${ccrypto_LINKS} ccrypto_flags)
endfunction()

function(ccrypto_secrets_test name)
    if(NOT CCRYPTO_BUILD_TESTS OR NOT CCRYPTO_SECRETS_MARKED)
        return()
    endif()
    ccrypto_arguments("" "" "" ${ARGN})
    ccrypto_googletest()
    ccrypto_program(${name} SOURCES ${ccrypto_FILES} LINKS ${ccrypto_LINKS} GTest::gtest GTest::gtest_main)
    ccrypto_join(${name} 16)
    ccrypto_secrets_entry(${name} ${name})
endfunction()

# ccrypto_secrets_test_again(ENTRY PROGRAM NAME ENVIRONMENT NAME=VALUE...)
#
# Such a program once more, with other variables.
function(ccrypto_secrets_test_again entry)
    if(NOT CCRYPTO_BUILD_TESTS OR NOT CCRYPTO_SECRETS_MARKED)
        return()
    endif()
    cmake_parse_arguments(ccrypto "" "PROGRAM" "ENVIRONMENT" ${ARGN})
    ccrypto_secrets_entry(${entry} ${ccrypto_PROGRAM} ${ccrypto_ENVIRONMENT})
endfunction()

function(ccrypto_secrets_entry entry program)
    # A leak is the sanitizers' to find.
    add_test(NAME ${entry} COMMAND valgrind --quiet --error-exitcode=99 --leak-check=no --num-callers=30 $<TARGET_FILE:${program}>
        WORKING_DIRECTORY "${ccryptoResults}")
    ccrypto_test_properties(${entry} 300 "GTEST_OUTPUT=json:${entry}.json" ${ARGN})
endfunction()

# Test code is compiled for a fast build; what it tests keeps the flags of the preset. Undefined behaviour is looked for in what is
# tested alone: looking for it in the tests, too, adds half to the time they take to compile. These flags take some of ccrypto_flags
# back, so they have to be linked after it.
add_library(ccrypto_test_flags INTERFACE)
target_compile_options(ccrypto_test_flags INTERFACE -O0 -fno-sanitize=undefined)
if(WIN32)
    # Unoptimised, a file of tests may hold more sections than a plain Windows object does, and the linker is slow to sort them out.
    target_compile_options(ccrypto_test_flags INTERFACE -Wa,-mbig-obj -fno-function-sections -fno-data-sections)
    target_link_options(ccrypto_test_flags INTERFACE -Wl,--no-gc-sections)
endif()

# What all tests include, compiled once for all of their programs.
function(ccrypto_test_headers)
    if(NOT TARGET ccrypto_test_headers)
        ccrypto_googletest()
        file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/ccrypto_test_headers.cpp" CONTENT "")
        add_library(ccrypto_test_headers OBJECT "${PROJECT_BINARY_DIR}/ccrypto_test_headers.cpp")
        target_link_libraries(ccrypto_test_headers PRIVATE ccrypto_flags ccrypto_test_flags GTest::gmock)
        target_precompile_headers(ccrypto_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h> <string>)
    endif()
endfunction()

function(ccrypto_test name)
    if(NOT CCRYPTO_BUILD_TESTS OR CCRYPTO_SECRETS_MARKED)
        return()
    endif()
    ccrypto_arguments("OWN_MAIN" "TIMEOUT" "APART;PROGRAMS;ENVIRONMENT" ${ARGN})
    ccrypto_test_headers()
    ccrypto_program(${name} SOURCES ${ccrypto_FILES} LINKS ${ccrypto_LINKS} GTest::gmock)
    target_link_libraries(${name} PRIVATE ccrypto_test_flags)
    target_precompile_headers(${name} REUSE_FROM ccrypto_test_headers)
    # For every symbol the linker of Windows programs searches the sections of its object, of which tests have many.
    set(batch 16)
    if(WIN32)
        set(batch 4)
    endif()
    ccrypto_join(${name} ${batch} ${ccrypto_APART})
    if(NOT ccrypto_OWN_MAIN)
        target_link_libraries(${name} PRIVATE GTest::gmock_main)
    endif()
    if(NOT ccrypto_TIMEOUT)
        set(ccrypto_TIMEOUT 180)
    endif()
    if(ccrypto_PROGRAMS)
        add_dependencies(${name} ${ccrypto_PROGRAMS})
    endif()
    set(drive "$<$<PLATFORM_ID:Windows>:Z:>")
    target_compile_definitions(${name} PRIVATE
        "TEST_DATA_DIR=\"${drive}${CMAKE_CURRENT_SOURCE_DIR}/data\"" "PROGRAM_DIR=\"${drive}${PROJECT_BINARY_DIR}/bin\"")

    ccrypto_test_entry(${name} ${name} ${ccrypto_TIMEOUT} ${ccrypto_ENVIRONMENT})
endfunction()

function(ccrypto_test_again entry)
    if(NOT CCRYPTO_BUILD_TESTS OR CCRYPTO_SECRETS_MARKED)
        return()
    endif()
    cmake_parse_arguments(ccrypto "" "PROGRAM;FILTER;TIMEOUT" "ENVIRONMENT" ${ARGN})
    if(NOT ccrypto_TIMEOUT)
        set(ccrypto_TIMEOUT 180)
    endif()
    if(ccrypto_FILTER)
        list(APPEND ccrypto_ENVIRONMENT "GTEST_FILTER=${ccrypto_FILTER}")
    endif()
    ccrypto_test_entry(${entry} ${ccrypto_PROGRAM} ${ccrypto_TIMEOUT} ${ccrypto_ENVIRONMENT})
endfunction()

# The program's own count of its cases lands in results/ENTRY.json.
function(ccrypto_test_entry entry program timeout)
    add_test(NAME ${entry} COMMAND ${program} WORKING_DIRECTORY "${ccryptoResults}")
    ccrypto_test_properties(${entry} ${timeout} "GTEST_OUTPUT=json:${entry}.json" ${ARGN})
endfunction()

function(ccrypto_test_properties entry timeout)
    # Those with the longest time to run begin first.
    set_tests_properties(${entry} PROPERTIES TIMEOUT ${timeout} COST ${timeout} ENVIRONMENT
        "ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1;UBSAN_OPTIONS=print_stacktrace=1;${ARGN}")
endfunction()

# Under libFuzzer the engine supplies main(); otherwise the program takes files and folders and feeds each file once.
function(ccrypto_fuzz name)
    if(NOT CCRYPTO_FUZZ)
        return()
    endif()
    ccrypto_arguments("" "" "" ${ARGN})
    if(CCRYPTO_FUZZ STREQUAL "ENGINE")
        ccrypto_program(${name}_fuzz SOURCES ${ccrypto_FILES} LINKS ${ccrypto_LINKS})
        target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
    else()
        if(NOT TARGET ccrypto_replay)
            ccrypto_part(ccrypto_replay SOURCES "${ccryptoRoot}/fuzz/replay.cpp")
        endif()
        ccrypto_program(${name}_fuzz SOURCES ${ccrypto_FILES} LINKS ccrypto_replay ${ccrypto_LINKS})
        add_test(NAME ${name}_fuzz COMMAND ${name}_fuzz "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
        ccrypto_test_properties(${name}_fuzz 120)
    endif()
endfunction()

function(ccrypto_bench name)
    if(NOT CCRYPTO_BENCH)
        return()
    endif()
    ccrypto_arguments("" "" "" ${ARGN})
    ccrypto_benchmark()
    ccrypto_program(${name} SOURCES ${ccrypto_FILES} LINKS ${ccrypto_LINKS} benchmark::benchmark benchmark::benchmark_main)
    add_dependencies(benches ${name})
    file(APPEND "${PROJECT_BINARY_DIR}/benches.txt" "${name}${CMAKE_EXECUTABLE_SUFFIX}\n")
endfunction()

if(CCRYPTO_BUILD_TESTS OR CCRYPTO_FUZZ STREQUAL "REPLAY")
    enable_testing()
endif()
if(CCRYPTO_BENCH)
    # scripts/bench builds this target and runs the programs of this list.
    add_custom_target(benches)
    file(WRITE "${PROJECT_BINARY_DIR}/benches.txt" "")
endif()
