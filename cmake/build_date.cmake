# houseBuildDate: the date the log's banners show, in the form "May 25 2021". The same sources give the same date: it is taken from
# SOURCE_DATE_EPOCH, else from the last commit, else (an unpacked archive) it is houseReleaseDate.

set(houseReleaseDate 1795305600)

if(DEFINED ENV{SOURCE_DATE_EPOCH})
    set(houseBuildEpoch "$ENV{SOURCE_DATE_EPOCH}")
elseif(EXISTS "${houseRoot}/.git")
    find_program(houseGit git)
    if(houseGit)
        execute_process(COMMAND "${houseGit}" -C "${houseRoot}" log -1 --format=%ct OUTPUT_VARIABLE houseBuildEpoch
            OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
endif()
if(NOT houseBuildEpoch MATCHES "^[0-9]+$")
    set(houseBuildEpoch "${houseReleaseDate}")
endif()

# scripts/check-reproducible gives the same moment to its copy, which has no commits.
set(HOUSE_BUILD_EPOCH "${houseBuildEpoch}" CACHE INTERNAL "")

# string(TIMESTAMP) writes the moment that the variable names.
set(houseEpochBefore "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} "${houseBuildEpoch}")
string(TIMESTAMP houseBuildDate "%b %d %Y" UTC)
if(houseEpochBefore STREQUAL "")
    unset(ENV{SOURCE_DATE_EPOCH})
else()
    set(ENV{SOURCE_DATE_EPOCH} "${houseEpochBefore}")
endif()
string(REPLACE " 0" "  " houseBuildDate "${houseBuildDate}")
