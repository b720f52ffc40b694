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
    # A little optimised: the sound tests must keep pace with real time.
    add_compile_options(-O1 -fsanitize=${VOICEDESK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g)
    add_link_options(-fsanitize=${VOICEDESK_SANITIZE})
endif()
if(VOICEDESK_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
