// Runs a fuzzer on the files that are named, and on all files of the folders that are named:
//
//     fuzz_options fuzz/options/corpus/options      the committed corpus, as a test
//     afl-fuzz -i corpus -o out -- fuzz_options @@  beneath AFL++
//
// It fails if it finds no file, so that a test of a lost corpus fails.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
__attribute__((weak)) int LLVMFuzzerInitialize(int* count, char*** arguments);
}

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
    if (!fs::is_directory(path)) return {path};
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool runOn(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "cannot read %s\n", file.c_str());
        return false;
    }
    // The bytes lie in memory of exactly their size, so that a sanitizer sees every read beyond them.
    const std::vector<char> text{std::istreambuf_iterator<char>(stream), {}};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    std::fprintf(stderr, "%s\n", file.c_str());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&count, &arguments);
    int runs = 0;
    for (int i = 1; i < count; ++i) {
        for (const fs::path& file : filesOf(arguments[i])) {
            if (!runOn(file)) return 2;
            ++runs;
        }
    }
    std::fprintf(stderr, "%d inputs\n", runs);
    return runs > 0 ? 0 : 2;
}
