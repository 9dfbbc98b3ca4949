/* The system calls of the C library, all of which fail: a worklet has no files, and a module without imports
 * can be instantiated anywhere. The library's log lines end here. */
#include <stdint.h>

enum { kNotSupported = 58 }; /* errno of WASI */

uint16_t __wasi_fd_write(int file, const void* pieces, uint32_t count, uint32_t* written);
uint16_t __wasi_fd_close(int file);
uint16_t __wasi_fd_seek(int file, int64_t offset, uint8_t whence, uint64_t* position);
void __wasi_proc_exit(int code);

uint16_t __wasi_fd_write(int file, const void* pieces, uint32_t count, uint32_t* written) {
    (void)file, (void)pieces, (void)count, (void)written;
    return kNotSupported;
}

uint16_t __wasi_fd_close(int file) {
    (void)file;
    return kNotSupported;
}

uint16_t __wasi_fd_seek(int file, int64_t offset, uint8_t whence, uint64_t* position) {
    (void)file, (void)offset, (void)whence, (void)position;
    return kNotSupported;
}

void __wasi_proc_exit(int code) {
    (void)code;
    __builtin_trap();
}
