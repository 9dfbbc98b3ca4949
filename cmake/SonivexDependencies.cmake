# The outside libraries as imported targets. Their headers count as system headers, so they cause no warnings.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

pkg_check_modules(LIBAVUTIL REQUIRED IMPORTED_TARGET libavutil>=57.28)
pkg_check_modules(LIBAVFILTER REQUIRED IMPORTED_TARGET libavfilter>=8.44)
pkg_check_modules(LIBAVFORMAT REQUIRED IMPORTED_TARGET libavformat>=59.27)
pkg_check_modules(LIBAVCODEC REQUIRED IMPORTED_TARGET libavcodec>=59.37)
pkg_check_modules(LIBSWRESAMPLE REQUIRED IMPORTED_TARGET libswresample>=4.7)
pkg_check_modules(LIBEBUR128 REQUIRED IMPORTED_TARGET libebur128)
pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo>=1.16)
pkg_check_modules(HWY REQUIRED IMPORTED_TARGET libhwy>=1.0.3)

# Only the generator of the impulse responses and the tests of its output need libmysofa. The output is committed.
pkg_check_modules(LIBMYSOFA QUIET IMPORTED_TARGET libmysofa)

find_package(Boost 1.74 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(CLI11 2.1 REQUIRED)

if(SONIVEX_DEVELOPER)
    find_package(GTest REQUIRED)
    find_package(rapidcheck REQUIRED)
    find_package(benchmark REQUIRED)
endif()
