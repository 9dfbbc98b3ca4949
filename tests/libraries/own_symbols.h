// Checks that two loaded libraries with the same functions keep to themselves.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace test {

using LogWriter = void (*)(const char* line, int length);

/** The functions that libsonivex and the plug-in both export. */
inline constexpr const char* kCommonFunctions[] = {"aem_CreateDialoguEnhance",
                                                   "aem_ProcessDialoguEnhance",
                                                   "aem_ReleaseDialoguEnhance",
                                                   "aem_CreateNormalizer",
                                                   "aem_ProcessNormalizer",
                                                   "aem_ReleaseNormalizer",
                                                   "aem_CreateSurround",
                                                   "aem_ProcessSurround",
                                                   "aem_ReleaseSurround",
                                                   "aem_VectorTarget",
                                                   "_Z29ProcessSurround_Kelvo_Bingo_2PvPsS0_i",
                                                   "ZubrelAem_logTrace",
                                                   "logWrite"};

/** A library that the process has loaded. */
class LoadedLibrary {
  public:
    LoadedLibrary(const char* path, int mode) : handle_(dlopen(path, RTLD_NOW | mode)) {
        EXPECT_NE(handle_, nullptr) << dlerror();
        writer_ = static_cast<LogWriter*>(symbol("logWriterFun"));
    }
    /** A library that the program links. The linker may have copied its log writer into the program.
     *  @param writer the program's logWriterFun. */
    LoadedLibrary(const char* path, LogWriter* writer) : LoadedLibrary(path, RTLD_LOCAL | RTLD_NOLOAD) {
        writer_ = writer;
    }

    /** Address of an exported symbol; null if it is missing. */
    void* symbol(const char* name) const { return dlsym(handle_, name); }
    LogWriter& logWriter() const { return *writer_; }
    /** Makes the library write one log line. */
    void log() const {
        for (const char* name :
             {"aem_ReleaseSurround", "aem_ReleaseNormalizer", "aem_ReleaseDialoguEnhance"}) {
            reinterpret_cast<void (*)(void*)>(symbol(name))(nullptr);
        }
    }
    /** Log lines of one call of log(): one for each effect. */
    static constexpr int kLinesOfLog = 3;

  private:
    void* handle_;
    LogWriter* writer_;
};

inline int lines_of_first = 0;
inline int lines_of_second = 0;

/** Replaces the log writer of one library after the other and counts the lines that reach each. */
inline void expectOwnSymbols(const LoadedLibrary& first, const LoadedLibrary& second) {
    for (const char* name : kCommonFunctions) {
        ASSERT_NE(first.symbol(name), nullptr) << name;
        ASSERT_NE(second.symbol(name), nullptr) << name;
        EXPECT_NE(first.symbol(name), second.symbol(name)) << name;
    }
    ASSERT_NE(&first.logWriter(), &second.logWriter());
    EXPECT_EQ(reinterpret_cast<void*>(first.logWriter()), first.symbol("logWrite"));
    EXPECT_EQ(reinterpret_cast<void*>(second.logWriter()), second.symbol("logWrite"));

    lines_of_first = 0;
    lines_of_second = 0;
    first.logWriter() = [](const char*, int) { ++lines_of_first; };
    EXPECT_EQ(reinterpret_cast<void*>(second.logWriter()), second.symbol("logWrite"));
    second.logWriter() = [](const char*, int) { ++lines_of_second; };
    first.log();
    EXPECT_EQ(lines_of_first, LoadedLibrary::kLinesOfLog);
    EXPECT_EQ(lines_of_second, 0);
    second.log();
    EXPECT_EQ(lines_of_first, LoadedLibrary::kLinesOfLog);
    EXPECT_EQ(lines_of_second, LoadedLibrary::kLinesOfLog);
}

/** Runs `work` in a child process, because a library cannot be unloaded with certainty. Fails the test if
 *  `work` fails. */
template <typename Work>
void inAnotherProcess(Work work) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
}

}  // namespace test
