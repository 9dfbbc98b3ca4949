# A build for WebAssembly: `emcmake cmake -S . -B FOLDER`, for one of two variants, see web/CMakeLists.txt. The kernels need
# only Highway's headers there, because no instruction set is chosen at run time.
option(SONIVEX_WEB_SIMD "Use the vector instructions of WebAssembly" ON)

# The folder of the headers also has those of this system's C library, so the build gets a folder with Highway's alone.
find_path(SONIVEX_HIGHWAY_HEADERS hwy/highway.h PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
set(highway "${PROJECT_BINARY_DIR}/highway")
file(MAKE_DIRECTORY "${highway}")
file(CREATE_LINK "${SONIVEX_HIGHWAY_HEADERS}/hwy" "${highway}/hwy" SYMBOLIC)
add_library(PkgConfig::HWY INTERFACE IMPORTED GLOBAL)
target_include_directories(PkgConfig::HWY INTERFACE "${highway}")
if(SONIVEX_WEB_SIMD)
    add_compile_options(-msimd128)
    target_compile_definitions(PkgConfig::HWY INTERFACE HWY_COMPILE_ONLY_STATIC)
else()
    target_compile_definitions(PkgConfig::HWY INTERFACE HWY_COMPILE_ONLY_SCALAR) # emulated vectors are slower
endif()
set(SONIVEX_LV2 OFF)
