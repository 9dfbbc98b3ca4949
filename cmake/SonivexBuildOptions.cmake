# Compiler options. Every target of the project links sonivex_build_options privately, so that no option
# reaches a program that uses the libraries. sonivex_plain_build_options leaves out the sanitizers.
add_library(sonivex_plain_build_options INTERFACE)
target_compile_features(sonivex_plain_build_options INTERFACE cxx_std_20 c_std_11)
add_library(sonivex_build_options INTERFACE)
target_link_libraries(sonivex_build_options INTERFACE sonivex_plain_build_options)

target_compile_options(
    sonivex_plain_build_options
    INTERFACE
        # No compiler may fuse a multiply and an add: the effects' bits must not depend on the compiler.
        -ffp-contract=off
        # The loader never unloads a library with unique symbols, and a player may unload the plug-in.
        $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
        -Wall
        -Wextra
        -Wpedantic
        -Wconversion
        -Wshadow
        -Wformat=2
        $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
        $<$<COMPILE_LANGUAGE:CXX>:-Wsuggest-override>
        $<$<COMPILE_LANGUAGE:CXX>:-Wzero-as-null-pointer-constant>
        $<$<CXX_COMPILER_ID:GNU>:-Wunused-const-variable=1> # part of Clang's -Wall
        # GCC 12 warns of overlaps that do not exist in "literal" + std::string (GCC bug 105651).
        $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
        $<$<BOOL:${SONIVEX_DEVELOPER}>:-Werror>)

# Rooms with vector kernels link sonivex_kernel_tuning privately. Without tuning, GCC folds a load into every
# instruction that uses the value and so loads it several times. Tuning changes neither the instruction set
# nor the bits of the output.
add_library(sonivex_kernel_tuning INTERFACE)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(sonivex_kernel_tuning INTERFACE $<$<CXX_COMPILER_ID:GNU>:-mtune=skylake>)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    # Highway marks its NEON functions with the cryptographic extension, and the compiler refuses to inline them
    # unless the extension is enabled. The kernels use none of its instructions and run on processors without it.
    target_compile_options(sonivex_kernel_tuning INTERFACE -march=armv8-a+crypto)
endif()

# A fuzzer learns nothing from the comparisons of loop counters, and to record them takes most of a kernel's time.
if(SONIVEX_SANITIZE MATCHES "fuzzer")
    target_compile_options(sonivex_kernel_tuning INTERFACE -fno-sanitize-coverage=trace-cmp)
endif()

# Clang takes five minutes to compile the kernels with a check of every pointer's sum, and a fifth of that without. The
# address sanitizer sees the access that such a pointer would lead to.
if(SONIVEX_SANITIZE MATCHES "undefined")
    target_compile_options(sonivex_kernel_tuning INTERFACE $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=pointer-overflow>)
endif()

# libavutil's headers need the integer constant macros. C++ before C++11 defined them only on this request.
target_compile_definitions(sonivex_plain_build_options INTERFACE __STDC_CONSTANT_MACROS)

if(SONIVEX_SANITIZE)
    # Sanitizer reports need line numbers but no other debug information. Tests take longer to compile than to run,
    # fuzzers run for hours.
    set(optimisation -O1)
    if(SONIVEX_SANITIZE MATCHES "fuzzer")
        set(optimisation -O2)
    endif()
    set(CMAKE_C_FLAGS_RELWITHDEBINFO "${optimisation} -g1")
    set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "${optimisation} -g1")
    target_compile_options(sonivex_build_options INTERFACE -fsanitize=${SONIVEX_SANITIZE} -fno-sanitize-recover=all
                                                           -fno-omit-frame-pointer)
    target_link_options(sonivex_build_options INTERFACE -fsanitize=${SONIVEX_SANITIZE})
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        # The kernels are built for every vector instruction set from SSSE3 up. Without one, Highway emulates vectors
        # in scalar code, which Clang takes five minutes to compile with sanitizers; the release build tests that.
        target_compile_options(sonivex_build_options INTERFACE -mssse3)
    endif()
endif()

if(SONIVEX_COVERAGE)
    # Without optimisation the vector kernels would be a hundred times slower; with more than this, lines would merge.
    # Several threads and processes count at a time.
    set(CMAKE_C_FLAGS_DEBUG "-O1 -g1")
    set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
    target_compile_options(sonivex_plain_build_options INTERFACE --coverage -fprofile-update=atomic -fno-inline-functions)
    target_link_options(sonivex_plain_build_options INTERFACE --coverage
                                                             LINKER:--wrap=_exit,--wrap=execv,--undefined=__wrap__exit)
    add_library(sonivex_coverage_end STATIC "${PROJECT_SOURCE_DIR}/tests/coverage/program_end.c")
    target_link_libraries(sonivex_plain_build_options INTERFACE $<BUILD_INTERFACE:sonivex_coverage_end>)
    # A kernel is compiled for the build's own processor alone. The lines of the others, which this machine may lack, would
    # count as not reached.
    target_compile_definitions(sonivex_kernel_tuning INTERFACE HWY_COMPILE_ONLY_STATIC)
    target_compile_options(sonivex_kernel_tuning INTERFACE $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-mssse3>)
endif()

# A compiler cache, if one is installed, speeds up repeated builds. Precompiled headers speed up a build from nothing. They
# exclude each other: when a header has been made anew, the cache has none of the sources that use it.
find_program(CCACHE_PROGRAM ccache)
set(cache_is_usable OFF)
if(CCACHE_PROGRAM AND SONIVEX_DEVELOPER AND NOT DEFINED ENV{CCACHE_DISABLE})
    set(cache_is_usable ON)
endif()
option(SONIVEX_COMPILER_CACHE "Compile through ccache, and without precompiled headers" ${cache_is_usable})
if(SONIVEX_COMPILER_CACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    if(NOT CCACHE_PROGRAM)
        message(FATAL_ERROR "SONIVEX_COMPILER_CACHE is on, but ccache was not found. Install ccache, or configure with "
                            "-D SONIVEX_COMPILER_CACHE=OFF.")
    endif()
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()
if(CMAKE_CXX_COMPILER_LAUNCHER AND NOT DEFINED CMAKE_DISABLE_PRECOMPILE_HEADERS)
    set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# The runtime libraries of C++, for programs in C that link a static library of the project.
set(SONIVEX_CXX_RUNTIME ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER SONIVEX_CXX_RUNTIME INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|m)$")
list(REMOVE_DUPLICATES SONIVEX_CXX_RUNTIME)

# An installed file keeps the room of the path to the build's own libraries. A path relative to the file is the same in every
# folder, so two builds of a release have the same bytes. Tests copy their programs, which then need whole paths.
if(NOT SONIVEX_DEVELOPER)
    set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
endif()

set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(NOT EMSCRIPTEN) # WebAssembly has no shared libraries, and such code is slower there
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# The build tree has the folders of an installation, because the command line looks for the plug-in in ../lib.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
