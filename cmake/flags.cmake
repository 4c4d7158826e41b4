# How our own code is compiled and linked; code of others (GoogleTest) never links ccrypto_flags.
add_library(ccrypto_flags INTERFACE)

set(cxx "$<COMPILE_LANGUAGE:CXX>")
target_compile_options(ccrypto_flags INTERFACE
    $<${cxx}:-Wall> $<${cxx}:-Wextra> $<${cxx}:-Wpedantic> $<${cxx}:-Wconversion> $<${cxx}:-Wshadow>
    $<$<AND:${cxx},$<BOOL:${CCRYPTO_WARNINGS_AS_ERRORS}>>:-Werror>
    $<${cxx}:-ffile-prefix-map=${ccryptoRoot}=./> $<${cxx}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=.>)

# Two clean builds are byte-identical: no times, users or modes in archives.
set(CMAKE_CXX_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")

if(CCRYPTO_SANITIZE)
    # Instrumented code makes g++ see uninitialised reads that are not there.
    target_compile_options(ccrypto_flags INTERFACE -fsanitize=${CCRYPTO_SANITIZE} -fno-sanitize-recover=all
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_compile_definitions(ccrypto_flags INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(ccrypto_flags INTERFACE -fsanitize=${CCRYPTO_SANITIZE})
endif()

if(CCRYPTO_SECRETS_MARKED)
    target_compile_definitions(ccrypto_flags INTERFACE CCRYPTO_SECRETS_MARKED)
endif()

if(WIN32)
    enable_language(RC)
    target_compile_definitions(ccrypto_flags INTERFACE _WIN32_WINNT=0x0A00 NOMINMAX WIN32_LEAN_AND_MEAN)
    # Of an inline function the linker keeps one copy of many. GCC takes the copy before its eyes for the one that will run, and so
    # keeps values in registers which that copy leaves alone, while the one that runs, of a file with other flags, may use them. (For
    # ELF it knows better.)
    target_compile_options(ccrypto_flags INTERFACE $<${cxx}:-fno-ipa-ra> $<${cxx}:-fno-ipa-stack-alignment>)
    target_compile_options(ccrypto_flags INTERFACE
        $<${cxx}:-ffunction-sections> $<${cxx}:-fdata-sections> $<${cxx}:-fvisibility=hidden> $<${cxx}:-fvisibility-inlines-hidden>)
    target_link_options(ccrypto_flags INTERFACE
        -static $<$<NOT:$<BOOL:${CCRYPTO_SYMBOLS}>>:-s>
        -Wl,--gc-sections -Wl,--no-insert-timestamp -Wl,--nxcompat -Wl,--dynamicbase -Wl,--high-entropy-va)
endif()
