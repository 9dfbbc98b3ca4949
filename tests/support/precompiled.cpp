// The target that compiles the headers of all tests needs a source of its own.
int main() {
    return 0;
}
