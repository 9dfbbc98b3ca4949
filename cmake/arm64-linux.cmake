# A toolchain file for 64-bit Arm: Debian's cross compiler, libraries from a folder with Debian's packages for that
# processor, and an emulator that runs the programs. scripts/test-arm64 makes the folder.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(SONIVEX_ARM64_ROOT "${CMAKE_CURRENT_LIST_DIR}/../build/arm64/root" CACHE PATH "Unpacked packages for 64-bit Arm")
get_filename_component(root "${SONIVEX_ARM64_ROOT}" ABSOLUTE)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONIVEX_ARM64_ROOT)
set(CMAKE_SYSROOT "${root}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${root}")
set(ENV{PKG_CONFIG_LIBDIR} "${root}/usr/lib/aarch64-linux-gnu/pkgconfig:${root}/usr/share/pkgconfig")
# Libraries that other libraries of the folder need, and that are in folders of their own.
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${root}/usr/lib/aarch64-linux-gnu/pulseaudio")
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L "${root}")
