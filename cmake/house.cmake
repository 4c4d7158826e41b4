# The words in which each folder's CMakeLists.txt is written.
#
#   house_room(NAME [WINDOWS_ONLY])      adds NAME, tests/NAME, fuzz/NAME and bench/NAME, those that exist
#   house_library(NAME ...)              static archive, build/PRESET/lib
#   house_dll(NAME ...)                  Windows DLL without a "lib" prefix, build/PRESET/bin
#   house_program(NAME ...)              executable, build/PRESET/bin
#   house_test(NAME ...)                 GoogleTest program and its one ctest entry
#   house_secrets_test(NAME ...)         GoogleTest program that runs under valgrind, in the build with secrets marked alone
#   house_test_again(ENTRY PROGRAM NAME [FILTER pattern] [ENVIRONMENT VARIABLE=value...])
#                                        a further ctest entry for a test program, for cases that need another environment
#   house_fuzz(NAME ...)                 fuzz target NAME_fuzz with the corpus folder corpus/NAME beside its CMakeLists.txt
#   house_bench(NAME ...)                Google Benchmark program
#
# The library, DLL, program, test, fuzz target and bench take these lists:
#   SOURCES          files for both systems; headers need not be listed
#   POSIX_SOURCES    files for the native build alone       WINDOWS_SOURCES  files for the Windows build alone
#   LINKS            rooms and libraries for both systems
#   POSIX_LINKS      for the native build alone             WINDOWS_LINKS    for the Windows build alone (ole32, shlwapi, ...)
# house_library and house_test take besides:
#   APART            those of the files that are never compiled together with others (see HOUSE_JOINED)
# house_library takes besides:
#   IN_DLL           the DLL is made of it
# house_test takes besides:
#   OWN_MAIN         the sources hold main(), which starts GoogleTest itself
#   TIMEOUT seconds  180 when left out: Wine on a busy machine is slow
#   ENVIRONMENT      VARIABLE=value...
#   PROGRAMS         targets the tests start; they are built first and stand in the directory PROGRAM_DIR names
# Tests are compiled with two text constants: TEST_DATA_DIR (data/ beside the CMakeLists.txt) and PROGRAM_DIR (build/PRESET/bin).

option(HOUSE_TESTS "Build the tests" ON)
# Most of the time a file takes goes into the headers it includes: sixteen files at once take a third of it. Such a build hides an
# #include that is missing; scripts/tidy finds that. It would make the DLL larger by a fifteenth, so the rooms that are in it are
# compiled file by file on Windows.
option(HOUSE_JOINED "Compile the files of a library or of a test program several at a time" OFF)
option(HOUSE_BENCH "Build the benches" OFF)
set(HOUSE_FUZZ OFF CACHE STRING "Fuzz targets: OFF, REPLAY (each runs its corpus once) or ENGINE (libFuzzer)")
option(HOUSE_SECRETS_MARKED "Tell valgrind which bytes are secret, and test nothing but that none decides a branch or an address" OFF)
option(HOUSE_SYMBOLS "Leave the symbols in Windows programs and the DLL" OFF)
set(HOUSE_SANITIZE "" CACHE STRING "Sanitizers for everything we compile")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(houseRoot "${CMAKE_CURRENT_LIST_DIR}/..")
cmake_path(NORMAL_PATH houseRoot)
set(houseResults "${CMAKE_BINARY_DIR}/results")
file(MAKE_DIRECTORY "${houseResults}")

include("${CMAKE_CURRENT_LIST_DIR}/flags.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/packages.cmake")

macro(house_room name)
    if(WIN32 OR NOT "${ARGN}" STREQUAL "WINDOWS_ONLY")
        foreach(folder ${name} tests/${name} fuzz/${name} bench/${name})
            # A folder that appears later is noticed by the next build.
            file(GLOB found CONFIGURE_DEPENDS "${houseRoot}/${folder}/CMakeLists.txt")
            if(found)
                add_subdirectory("${houseRoot}/${folder}" "${CMAKE_BINARY_DIR}/${folder}")
            endif()
        endforeach()
    endif()
endmacro()

# Reads the lists every house_ function takes into house_FILES, house_LINKS and the given further keywords.
macro(house_arguments options values lists)
    cmake_parse_arguments(house "${options}" "${values}"
        "SOURCES;POSIX_SOURCES;WINDOWS_SOURCES;LINKS;POSIX_LINKS;WINDOWS_LINKS;${lists}" ${ARGN})
    if(house_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "Not understood: ${house_UNPARSED_ARGUMENTS}")
    endif()
    set(house_FILES ${house_SOURCES})
    if(WIN32)
        list(APPEND house_FILES ${house_WINDOWS_SOURCES})
        list(APPEND house_LINKS ${house_WINDOWS_LINKS})
    else()
        list(APPEND house_FILES ${house_POSIX_SOURCES})
        list(APPEND house_LINKS ${house_POSIX_LINKS})
    endif()
endmacro()

# Names of the files' own differ within a room, but for the files that are compiled APART.
function(house_join name batch)
    if(HOUSE_JOINED)
        set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${batch})
        set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        # What a test's file keeps to itself looks to GCC as if a header made it.
        target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
endfunction()

function(house_library name)
    house_arguments("IN_DLL" "" "APART" ${ARGN})
    add_library(${name} STATIC ${house_FILES})
    target_include_directories(${name} PUBLIC "${houseRoot}")
    target_link_libraries(${name} PUBLIC ${house_LINKS} PRIVATE house_flags)
    if(NOT (house_IN_DLL AND WIN32))
        house_join(${name} 16 ${house_APART})
    endif()
endfunction()

function(house_dll name)
    house_arguments("" "" "" ${ARGN})
    add_library(${name} SHARED ${house_FILES})
    set_target_properties(${name} PROPERTIES PREFIX "")
    target_include_directories(${name} PRIVATE "${houseRoot}")
    target_link_libraries(${name} PRIVATE ${house_LINKS} house_flags)
endfunction()

function(house_program name)
    house_arguments("" "" "" ${ARGN})
    add_executable(${name} ${house_FILES})
    target_include_directories(${name} PRIVATE "${houseRoot}")
    target_link_libraries(${name} PRIVATE ${house_LINKS} house_flags)
endfunction()

function(house_secrets_test name)
    if(NOT HOUSE_TESTS OR NOT HOUSE_SECRETS_MARKED)
        return()
    endif()
    house_arguments("" "" "" ${ARGN})
    house_googletest()
    house_program(${name} SOURCES ${house_FILES} LINKS ${house_LINKS} GTest::gtest GTest::gtest_main)
    house_join(${name} 16)
    house_secrets_entry(${name} ${name})
endfunction()

# house_secrets_test_again(ENTRY PROGRAM NAME ENVIRONMENT NAME=VALUE...)
#
# Such a program once more, with other variables.
function(house_secrets_test_again entry)
    if(NOT HOUSE_TESTS OR NOT HOUSE_SECRETS_MARKED)
        return()
    endif()
    cmake_parse_arguments(house "" "PROGRAM" "ENVIRONMENT" ${ARGN})
    house_secrets_entry(${entry} ${house_PROGRAM} ${house_ENVIRONMENT})
endfunction()

function(house_secrets_entry entry program)
    # A leak is the sanitizers' to find.
    add_test(NAME ${entry} COMMAND valgrind --quiet --error-exitcode=99 --leak-check=no --num-callers=30 $<TARGET_FILE:${program}>
        WORKING_DIRECTORY "${houseResults}")
    house_test_properties(${entry} 300 "GTEST_OUTPUT=json:${entry}.json" ${ARGN})
endfunction()

# Test code is compiled for a fast build; what it tests keeps the flags of the preset. Undefined behaviour is looked for in what is
# tested alone: looking for it in the tests, too, adds half to the time they take to compile. These flags take some of house_flags
# back, so they have to be linked after it.
add_library(house_test_flags INTERFACE)
target_compile_options(house_test_flags INTERFACE -O0 -fno-sanitize=undefined)
if(WIN32)
    # Unoptimised, a file of tests may hold more sections than a plain Windows object does, and the linker is slow to sort them out.
    target_compile_options(house_test_flags INTERFACE -Wa,-mbig-obj -fno-function-sections -fno-data-sections)
    target_link_options(house_test_flags INTERFACE -Wl,--no-gc-sections)
endif()

# What all tests include, compiled once for all of their programs.
function(house_test_headers)
    if(NOT TARGET house_test_headers)
        house_googletest()
        file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/house_test_headers.cpp" CONTENT "")
        add_library(house_test_headers OBJECT "${CMAKE_BINARY_DIR}/house_test_headers.cpp")
        target_link_libraries(house_test_headers PRIVATE house_flags house_test_flags GTest::gmock)
        target_precompile_headers(house_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h> <string>)
    endif()
endfunction()

function(house_test name)
    if(NOT HOUSE_TESTS OR HOUSE_SECRETS_MARKED)
        return()
    endif()
    house_arguments("OWN_MAIN" "TIMEOUT" "APART;PROGRAMS;ENVIRONMENT" ${ARGN})
    house_test_headers()
    house_program(${name} SOURCES ${house_FILES} LINKS ${house_LINKS} GTest::gmock)
    target_link_libraries(${name} PRIVATE house_test_flags)
    target_precompile_headers(${name} REUSE_FROM house_test_headers)
    # For every symbol the linker of Windows programs searches the sections of its object, of which tests have many.
    set(batch 16)
    if(WIN32)
        set(batch 4)
    endif()
    house_join(${name} ${batch} ${house_APART})
    if(NOT house_OWN_MAIN)
        target_link_libraries(${name} PRIVATE GTest::gmock_main)
    endif()
    if(NOT house_TIMEOUT)
        set(house_TIMEOUT 180)
    endif()
    if(house_PROGRAMS)
        add_dependencies(${name} ${house_PROGRAMS})
    endif()
    set(drive "$<$<PLATFORM_ID:Windows>:Z:>")
    target_compile_definitions(${name} PRIVATE
        "TEST_DATA_DIR=\"${drive}${CMAKE_CURRENT_SOURCE_DIR}/data\"" "PROGRAM_DIR=\"${drive}${CMAKE_BINARY_DIR}/bin\"")

    house_test_entry(${name} ${name} ${house_TIMEOUT} ${house_ENVIRONMENT})
endfunction()

function(house_test_again entry)
    if(NOT HOUSE_TESTS OR HOUSE_SECRETS_MARKED)
        return()
    endif()
    cmake_parse_arguments(house "" "PROGRAM;FILTER;TIMEOUT" "ENVIRONMENT" ${ARGN})
    if(NOT house_TIMEOUT)
        set(house_TIMEOUT 180)
    endif()
    if(house_FILTER)
        list(APPEND house_ENVIRONMENT "GTEST_FILTER=${house_FILTER}")
    endif()
    house_test_entry(${entry} ${house_PROGRAM} ${house_TIMEOUT} ${house_ENVIRONMENT})
endfunction()

# The program's own count of its cases lands in results/ENTRY.json.
function(house_test_entry entry program timeout)
    add_test(NAME ${entry} COMMAND ${program} WORKING_DIRECTORY "${houseResults}")
    house_test_properties(${entry} ${timeout} "GTEST_OUTPUT=json:${entry}.json" ${ARGN})
endfunction()

function(house_test_properties entry timeout)
    # Those with the longest time to run begin first.
    set_tests_properties(${entry} PROPERTIES TIMEOUT ${timeout} COST ${timeout} ENVIRONMENT
        "ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1;UBSAN_OPTIONS=print_stacktrace=1;${ARGN}")
endfunction()

# Under libFuzzer the engine supplies main(); otherwise the program takes files and folders and feeds each file once.
function(house_fuzz name)
    if(NOT HOUSE_FUZZ)
        return()
    endif()
    house_arguments("" "" "" ${ARGN})
    if(HOUSE_FUZZ STREQUAL "ENGINE")
        house_program(${name}_fuzz SOURCES ${house_FILES} LINKS ${house_LINKS})
        target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
    else()
        if(NOT TARGET house_replay)
            house_library(house_replay SOURCES "${houseRoot}/fuzz/replay.cpp")
        endif()
        house_program(${name}_fuzz SOURCES ${house_FILES} LINKS house_replay ${house_LINKS})
        add_test(NAME ${name}_fuzz COMMAND ${name}_fuzz "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
        house_test_properties(${name}_fuzz 120)
    endif()
endfunction()

function(house_bench name)
    if(NOT HOUSE_BENCH)
        return()
    endif()
    house_arguments("" "" "" ${ARGN})
    house_benchmark()
    house_program(${name} SOURCES ${house_FILES} LINKS ${house_LINKS} benchmark::benchmark benchmark::benchmark_main)
    add_dependencies(benches ${name})
    file(APPEND "${CMAKE_BINARY_DIR}/benches.txt" "${name}${CMAKE_EXECUTABLE_SUFFIX}\n")
endfunction()

if(HOUSE_TESTS OR HOUSE_FUZZ STREQUAL "REPLAY")
    enable_testing()
endif()
if(HOUSE_BENCH)
    # scripts/bench builds this target and runs the programs of this list.
    add_custom_target(benches)
    file(WRITE "${CMAKE_BINARY_DIR}/benches.txt" "")
endif()
