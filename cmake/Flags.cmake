# The one place that holds compiler flags: every target of ours links venlo_flags.
add_library(venlo_flags INTERFACE)
target_include_directories(venlo_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(
    venlo_flags
    INTERFACE QT_NO_CAST_FROM_ASCII
              QT_NO_CAST_TO_ASCII
              QT_NO_CONTEXTLESS_CONNECT
              QT_NO_FOREACH
              QT_NO_KEYWORDS
              QT_STRICT_ITERATORS
              QT_DISABLE_DEPRECATED_BEFORE=0x060400
              VENLO_VERSION="${PROJECT_VERSION}")

if(WIN32)
    # The system's macros min and max break the library's functions of these names.
    target_compile_definitions(venlo_flags INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN UNICODE _UNICODE)
endif()

if(MSVC)
    target_compile_options(venlo_flags INTERFACE /W4 /utf-8 /permissive-)
    if(VENLO_WERROR)
        target_compile_options(venlo_flags INTERFACE /WX)
    endif()
else()
    target_compile_options(venlo_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(VENLO_WERROR)
        target_compile_options(venlo_flags INTERFACE -Werror)
    endif()
endif()

if(VENLO_SANITIZE)
    target_compile_options(
        venlo_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
                              -fno-omit-frame-pointer)
    target_link_options(venlo_flags INTERFACE -fsanitize=address,undefined)
endif()

if(VENLO_FUZZ)
    target_compile_options(
        venlo_flags INTERFACE -fsanitize=fuzzer-no-link,address,undefined
                              -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(venlo_flags INTERFACE -fsanitize=address,undefined)
endif()

# venlo_room(name SOURCES ... LINKS ...): one static library a room, so that the
# linker refuses an arrow that points upwards.
function(venlo_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(${name} PUBLIC venlo_flags ${ROOM_LINKS})
endfunction()
