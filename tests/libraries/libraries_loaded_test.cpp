// A program that loads both libraries at run time.
#include "own_symbols.h"

namespace {

using test::LoadedLibrary;

void expectOwnSymbolsWhenLoaded(const char* first_path, const char* second_path, int mode) {
    test::inAnotherProcess([=] {
        const LoadedLibrary first(first_path, mode);
        const LoadedLibrary second(second_path, mode);
        test::expectOwnSymbols(first, second);
    });
}

TEST(LoadedLibraries, UseTheirOwnFunctionsAndLogWriters) {
    for (const int mode : {RTLD_LOCAL, RTLD_GLOBAL}) {
        SCOPED_TRACE(mode == RTLD_LOCAL ? "local" : "global");
        expectOwnSymbolsWhenLoaded(SONIVEX_LIBRARY, SONIVEX_PLUGIN, mode);
        expectOwnSymbolsWhenLoaded(SONIVEX_PLUGIN, SONIVEX_LIBRARY, mode);
    }
}

}  // namespace
