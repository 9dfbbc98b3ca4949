# What every target of ours is compiled with. Targets ask for it by linking `sonivex_build_options` privately,
# so that nothing leaks into a program that uses the libraries. The plain ones leave the sanitizers out.
add_library(sonivex_plain_build_options INTERFACE)
target_compile_features(sonivex_plain_build_options INTERFACE cxx_std_20 c_std_11)
add_library(sonivex_build_options INTERFACE)
target_link_libraries(sonivex_build_options INTERFACE sonivex_plain_build_options)

target_compile_options(
    sonivex_plain_build_options
    INTERFACE
        # The same bits from every compiler: a multiply and an add are never fused.
        -ffp-contract=off
        # Unique symbols pin a shared library in memory for ever; the plug-in must be unloadable.
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
        # Clang's -Wall has it, but where sources are joined it does not see it.
        $<$<CXX_COMPILER_ID:GNU>:-Wunused-const-variable=1>
        $<$<BOOL:${SONIVEX_DEVELOPER}>:-Werror>)

# What the vector kernels' targets are tuned for, by linking `sonivex_kernel_tuning` privately. Tuned for no processor
# in particular, GCC folds one load into several instructions and loads it every time. Which instructions there are, and
# the bits, stay as they are.
add_library(sonivex_kernel_tuning INTERFACE)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    target_compile_options(sonivex_kernel_tuning INTERFACE $<$<CXX_COMPILER_ID:GNU>:-mtune=skylake>)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    # Highway counts the cryptographic extension among what its vectors need. The kernels use nothing of it and run
    # without it, but the compiler must be told, or it refuses to inline.
    target_compile_options(sonivex_kernel_tuning INTERFACE -march=armv8-a+crypto)
endif()

# libavutil's headers are C and ask for the macros that C++ long had behind this.
target_compile_definitions(sonivex_plain_build_options INTERFACE __STDC_CONSTANT_MACROS)

if(SONIVEX_SANITIZE)
    # Line numbers are all that a report needs of the debug information.
    set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O1 -g1")
    set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
    target_compile_options(sonivex_build_options INTERFACE -fsanitize=${SONIVEX_SANITIZE} -fno-sanitize-recover=all
                                                           -fno-omit-frame-pointer)
    target_link_options(sonivex_build_options INTERFACE -fsanitize=${SONIVEX_SANITIZE})
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        # Clang takes two minutes to compile the kernels for older processors with sanitizers. Builds without sanitizers
        # have them.
        target_compile_options(sonivex_build_options INTERFACE -msse4.2 -maes -mpclmul)
    endif()
endif()

# Under sanitizers a target's sources are compiled in few pieces, what their headers bring once for a piece; the other
# builds show that each stands by itself.
function(sonivex_join_under_sanitizers target)
    if(SONIVEX_SANITIZE)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
    endif()
endfunction()

set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_EXTENSIONS OFF)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Built things lie together, as they do when installed: the command line finds the plug-in in ../lib.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
