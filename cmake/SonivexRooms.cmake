# A room is a folder with a library of its own, and the folder is the library's only include root. Headers are
# included by their bare names, so a source reaches only the rooms that its own room links, directly or through
# their PUBLIC links. An include against the order of the rooms does not build.
#
#   sonivex_add_room(name SOURCES <file...> [PUBLIC <target...>] [PRIVATE <target...>])
#
# PUBLIC lists the rooms and libraries whose headers this room's headers include, PRIVATE all others.
function(sonivex_add_room name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} sonivex_build_options)
endfunction()
