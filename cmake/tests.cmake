# Test programs and fuzz targets, and their entries in ctest; ccrypto.cmake says what each function takes.

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

if(CCRYPTO_BUILD_TESTS OR CCRYPTO_FUZZ STREQUAL "REPLAY")
    enable_testing()
endif()
