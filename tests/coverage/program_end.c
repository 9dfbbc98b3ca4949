// Writes the counts of a program that ends without its exit handlers, or becomes another program. The linker
// puts these functions in the place of the C library's when the build counts lines.
#include <unistd.h>

void __gcov_dump(void);
void __gcov_reset(void);

_Noreturn void __real__exit(int code);
_Noreturn void __wrap__exit(int code);
int __real_execv(const char* path, char* const arguments[]);
int __wrap_execv(const char* path, char* const arguments[]);

void __wrap__exit(int code) {
    __gcov_dump();
    __real__exit(code);
}

int __wrap_execv(const char* path, char* const arguments[]) {
    __gcov_dump();
    __gcov_reset();  // a program that goes on after a failure must not count twice
    return __real_execv(path, arguments);
}
