# Warnings, sanitizers and definitions of all targets of this project.

if(MSVC)
    add_compile_options(/W4 /WX /utf-8)
else()
    add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
    # Source paths in log messages start at the project, not at the machine's root.
    add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
endif()
if(WIN32)
    add_compile_definitions(UNICODE _UNICODE)
endif()

add_compile_definitions(QT_NO_KEYWORDS QT_NO_CAST_FROM_BYTEARRAY QT_DEPRECATED_WARNINGS)

if(VOICEDESK_SANITIZE)
    # A little optimised: the sound tests must keep pace with real time. Line tables are all that a report needs.
    add_compile_options(-O1 -fsanitize=${VOICEDESK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
    add_link_options(-fsanitize=${VOICEDESK_SANITIZE})
endif()
if(VOICEDESK_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# A library is linked for what is used of it.
if(UNIX AND NOT APPLE)
    add_link_options(LINKER:--as-needed)
endif()

# Quicker links and builds, where the machine has the programs for them.
if(NOT MSVC AND NOT CMAKE_CROSSCOMPILING)
    include(CheckLinkerFlag)
    check_linker_flag(CXX -fuse-ld=lld VOICEDESK_HAS_LLD)
    if(VOICEDESK_HAS_LLD)
        add_link_options(-fuse-ld=lld)
    endif()
endif()
find_program(VOICEDESK_CCACHE ccache)
if(VOICEDESK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VOICEDESK_CCACHE})
endif()
