# cmake -D NAMES=object_identifiers.txt -D TABLE=oid_table.cpp -P make_oid_table.cmake
#
# Turns the list of names into the rows of a table. A line that is not a dotted identifier, one blank and a name, or that is not in
# order, ends the build with the file and the line.

cmake_minimum_required(VERSION 3.25)

function(ccrypto_refuse number reason)
    message(FATAL_ERROR "${NAMES}:${number}: ${reason}")
endfunction()

file(READ "${NAMES}" text)

# These would not survive as items of a list, or as a string of C++.
string(REGEX MATCH "[^ -~\n]|[];[\"\\]" strange "${text}")
if(NOT strange STREQUAL "")
    string(FIND "${text}" "${strange}" position)
    string(SUBSTRING "${text}" 0 ${position} before)
    string(REGEX REPLACE "[^\n]" "" before "${before}")
    string(LENGTH "${before}" number)
    math(EXPR number "${number} + 1")
    ccrypto_refuse(${number} "a character that is not printable ASCII, or a quote, backslash, semicolon or square bracket")
endif()

set(arc "(0|[1-9][0-9]*)")
set(number 0)
set(previous "")
set(rows "")
string(REGEX REPLACE "\n$" "" text "${text}")
string(REPLACE "\n" ";" lines "${text}")
foreach(line IN LISTS lines)
    math(EXPR number "${number} + 1")
    if(line STREQUAL "" OR line MATCHES "^#")
        continue()
    endif()
    if(NOT line MATCHES "^([012](\\.${arc})*) [^ ]")
        ccrypto_refuse(${number} "not a dotted object identifier, one blank and a name: ${line}")
    endif()
    set(oid "${CMAKE_MATCH_1}")
    if(line MATCHES "^[01]\\.([4-9][0-9]|[1-9][0-9][0-9])")
        ccrypto_refuse(${number} "the second arc under 0 and 1 is at most 39: ${oid}")
    endif()
    if(line MATCHES " $|  ")
        ccrypto_refuse(${number} "a blank too many: ${line}")
    endif()
    # Compared as versions, an arc equals its first descendants "arc.0", "arc.0.0".
    string(FIND "${oid}." "${previous}." beginsWithPrevious)
    if(oid STREQUAL previous)
        ccrypto_refuse(${number} "stands twice: ${oid}")
    elseif(NOT previous STREQUAL "" AND NOT oid VERSION_GREATER previous AND NOT beginsWithPrevious EQUAL 0)
        ccrypto_refuse(${number} "not in the order of numbers: ${oid} after ${previous}")
    endif()
    set(previous "${oid}")
    string(APPEND rows "    \"${line}\\0\"\n")
endforeach()
if(rows STREQUAL "")
    ccrypto_refuse(${number} "no names")
endif()

file(WRITE "${TABLE}" "// Made of object_identifiers.txt by make_oid_table.cmake.

#include \"asn1/oid/oid_table.h\"

namespace ccrypto::internal {

namespace {

constexpr char rows[] =
${rows}    \"\";

} // namespace

constinit const OidTable oidTable(rows);

} // namespace ccrypto::internal
")
