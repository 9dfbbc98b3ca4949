# The outside libraries as imported targets, as far as the chosen parts need them (SonivexParts.cmake). Their headers
# count as system headers, so they cause no warnings. GLOBAL targets are visible to a project that adds this one with
# add_subdirectory.
if(EMSCRIPTEN)
    include(SonivexWasm)
    return()
endif()
find_package(PkgConfig REQUIRED)

pkg_check_modules(HWY REQUIRED IMPORTED_TARGET GLOBAL libhwy>=1.0.3)
if(SONIVEX_HAS_DIALOGUE OR SONIVEX_FILTER)
    pkg_check_modules(LIBAVUTIL REQUIRED IMPORTED_TARGET GLOBAL libavutil>=57.28)
endif()

if(SONIVEX_FILTER)
    find_package(Threads REQUIRED)
    pkg_check_modules(LIBAVFILTER REQUIRED IMPORTED_TARGET libavfilter>=8.44)
    # Boost's own package file, where CMake no longer has a module that finds it.
    if(POLICY CMP0167)
        cmake_policy(SET CMP0167 NEW)
    endif()
    find_package(Boost 1.74 REQUIRED)
    find_package(nlohmann_json 3.11 REQUIRED)
endif()

if(SONIVEX_TOOLS)
    pkg_check_modules(LIBAVFORMAT REQUIRED IMPORTED_TARGET libavformat>=59.27)
    pkg_check_modules(LIBAVCODEC REQUIRED IMPORTED_TARGET libavcodec>=59.37)
    pkg_check_modules(LIBSWRESAMPLE REQUIRED IMPORTED_TARGET libswresample>=4.7)
    pkg_check_modules(LIBEBUR128 REQUIRED IMPORTED_TARGET libebur128)
    pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo>=1.16)
    find_package(CLI11 2.1 REQUIRED)

    # Without SDL2 the command "play" finds no sound card.
    pkg_check_modules(SDL2 QUIET IMPORTED_TARGET sdl2>=2.0.16)

    # Only the generator of the impulse responses and the tests of its output need libmysofa. The output is committed.
    pkg_check_modules(LIBMYSOFA QUIET IMPORTED_TARGET libmysofa)
endif()

# The LV2 bundle needs only headers. It is built where they are, unless SONIVEX_LV2 is ON or OFF.
if(NOT DEFINED SONIVEX_LV2)
    pkg_check_modules(LV2 QUIET IMPORTED_TARGET lv2>=1.18)
    set(SONIVEX_LV2 "${LV2_FOUND}")
elseif(SONIVEX_LV2)
    pkg_check_modules(LV2 REQUIRED IMPORTED_TARGET lv2>=1.18)
endif()

if(SONIVEX_DEVELOPER)
    find_package(GTest REQUIRED)
    find_package(rapidcheck REQUIRED)
    find_package(benchmark REQUIRED)
    if(SONIVEX_LV2)
        pkg_check_modules(LILV REQUIRED IMPORTED_TARGET lilv-0)
    endif()
endif()
