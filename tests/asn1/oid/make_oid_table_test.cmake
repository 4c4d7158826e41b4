# cmake -D SCRIPT=make_oid_table.cmake -P make_oid_table_test.cmake
#
# What the build refuses in a list of names, with the line it says, and what it takes.

set(names "${CMAKE_CURRENT_BINARY_DIR}/make_oid_table_test.txt")

# The line of the fault, or 0 for a list that is right, and the list; a "~" stands for the character that a CMake list cannot hold.
function(check line text)
    string(REPLACE "~" ";" text "${text}")
    file(WRITE "${names}" "${text}")
    execute_process(COMMAND "${CMAKE_COMMAND}" -D "NAMES=${names}" -D "TABLE=${names}.cpp" -P "${SCRIPT}"
        RESULT_VARIABLE result ERROR_VARIABLE reason OUTPUT_QUIET)
    # CMake breaks long lines at blanks.
    string(REGEX MATCH "make_oid_table_test.txt:([0-9]+):" found "${reason}")
    if((line EQUAL 0 AND result EQUAL 0) OR (line GREATER 0 AND NOT result EQUAL 0 AND CMAKE_MATCH_1 STREQUAL line))
        return()
    endif()
    message(SEND_ERROR "line ${line} expected of:\n${text}\nresult ${result}: ${reason}")
endfunction()

check(0 "1 a\n1.2 b\n")
check(0 "# a comment\n\n1.2 a\n")
check(0 "1.2 no line end")
check(0 "1.9 a\n1.10 b\n1.10.1 c\n")
check(0 "1.2 a\n1.2.0 b\n1.2.0.0 c\n1.2.0.1 d\n1.2.1 e\n")
check(0 "1.39 a\n2.40 b\n2.999 c\n")
check(0 "1.2 name (with 1) # signs: 2, +\n")

check(1 "1.2\n")
check(1 "1.2 \n")
check(1 "1.2  a\n")
check(1 "1.2 a \n")
check(1 "1.2 a  b\n")
check(1 " 1.2 a\n")
check(1 "name\n")
check(1 "3.1 a\n")
check(1 "12 a\n")
check(1 "1.2. a\n")
check(1 "1..2 a\n")
check(1 "1.02 a\n")
check(1 "1.40 a\n")
check(1 "0.100.1 a\n")
check(2 "1.2 a\n1.2 a\n")
check(4 "1.2 a\n# b\n\n1.2 c\n")
check(2 "1.10 a\n1.9 b\n")
check(2 "1.2.0 a\n1.2 b\n")
check(2 "1.2 a\n1.3 \"b\n")
check(2 "1.2 a\n1.3 b\\n\n")
check(2 "1.2 a\n1.3 b[\n")
check(2 "1.2 a\n1.3 ä\n")
check(3 "1.2 a\n\n1.3 \tb\n")
check(2 "1.2 a\n1.3 b~\n")
check(1 "# no names\n")
