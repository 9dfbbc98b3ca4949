# Reads the project's version from the public header include/sonivex/version.h into SONIVEX_VERSION.
set(SONIVEX_VERSION "")
foreach(part IN ITEMS MAJOR MINOR PATCH)
    file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../include/sonivex/version.h" line
         REGEX "^#define SONIVEX_VERSION_${part} [0-9]+$")
    string(REGEX MATCH "[0-9]+$" number "${line}")
    if(number STREQUAL "")
        message(FATAL_ERROR "include/sonivex/version.h does not define SONIVEX_VERSION_${part}")
    endif()
    list(APPEND SONIVEX_VERSION ${number})
endforeach()
list(JOIN SONIVEX_VERSION "." SONIVEX_VERSION)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/../include/sonivex/version.h")
