# ccryptoBuildDate: the date the log's banners show, in the form "May 25 2021". The same sources give the same date: it is taken from
# SOURCE_DATE_EPOCH, else from the last commit, else (an unpacked archive) it is ccryptoReleaseDate.

set(ccryptoReleaseDate 1795305600)

if(DEFINED ENV{SOURCE_DATE_EPOCH})
    set(ccryptoBuildEpoch "$ENV{SOURCE_DATE_EPOCH}")
elseif(EXISTS "${ccryptoRoot}/.git")
    find_program(ccryptoGit git)
    if(ccryptoGit)
        execute_process(COMMAND "${ccryptoGit}" -C "${ccryptoRoot}" log -1 --format=%ct OUTPUT_VARIABLE ccryptoBuildEpoch
            OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
endif()
if(NOT ccryptoBuildEpoch MATCHES "^[0-9]+$")
    set(ccryptoBuildEpoch "${ccryptoReleaseDate}")
endif()

# scripts/check-reproducible gives the same moment to its copy, which has no commits.
set(CCRYPTO_BUILD_EPOCH "${ccryptoBuildEpoch}" CACHE INTERNAL "")

# string(TIMESTAMP) writes the moment that the variable names.
set(ccryptoEpochBefore "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} "${ccryptoBuildEpoch}")
string(TIMESTAMP ccryptoBuildDate "%b %d %Y" UTC)
if(ccryptoEpochBefore STREQUAL "")
    unset(ENV{SOURCE_DATE_EPOCH})
else()
    set(ENV{SOURCE_DATE_EPOCH} "${ccryptoEpochBefore}")
endif()
string(REPLACE " 0" "  " ccryptoBuildDate "${ccryptoBuildDate}")
