// A program that links libsonivex, as a player does that uses an effect of its own, and loads the plug-in.
#include "own_symbols.h"
#include "sonivex/sonivex.h"

namespace {

using test::LoadedLibrary;

TEST(LinkedLibrary, AndThePluginUseTheirOwnFunctionsAndLogWriters) {
    for (const int mode : {RTLD_LOCAL, RTLD_GLOBAL}) {
        SCOPED_TRACE(mode == RTLD_LOCAL ? "local" : "global");
        test::inAnotherProcess([=] {
            const LoadedLibrary plugin(SONIVEX_PLUGIN, mode);
            const LoadedLibrary library(SONIVEX_LIBRARY, &logWriterFun);
            test::expectOwnSymbols(library, plugin);
        });
    }
}

int lines = 0;

// The program's logWriterFun is that of the library, also where the linker copies the variable into the
// program.
TEST(LinkedLibrary, CallsTheWriterThatTheProgramSets) {
    test::inAnotherProcess([] {
        const LoadedLibrary plugin(SONIVEX_PLUGIN, RTLD_GLOBAL);
        logWriterFun = [](const char*, int) { ++lines; };
        aem_ReleaseNormalizer(nullptr);
        EXPECT_EQ(lines, 1);
        plugin.logWriter() = nullptr;
        plugin.log();
        EXPECT_EQ(lines, 1);
        aem_ReleaseNormalizer(nullptr);
        EXPECT_EQ(lines, 2);
    });
}

}  // namespace
