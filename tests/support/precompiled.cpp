// Gives the target that precompiles the test headers a source file, which CMake requires.
int main() {
    return 0;
}
