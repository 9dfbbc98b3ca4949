#include "preset_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using testing::HasSubstr;

namespace fs = std::filesystem;

/** Sets an environment variable, or removes it, for the lifetime of the object. */
class Environment {
  public:
    Environment(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* former = std::getenv(name)) former_ = former;
        set(value);
    }
    ~Environment() { set(former_); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name_, value->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> former_;
};

class PresetFiles : public testing::Test {
  protected:
    PresetFiles() {
        for (const char* name : {"first", "second", "home"}) fs::create_directories(folder_.file(name));
        fs::create_directories(folder_.file("home/.config/sonivex/presets"));
    }

    static std::string refusalOf(const std::string& name) {
        try {
            return "found " + sonivex_tool::findPreset(name).string();
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
            return failure.what();
        }
    }

    test::TemporaryFolder folder_;
    Environment listed_{"SONIVEX_PRESETS", folder_.file("first") + "::" + folder_.file("second")};
    Environment home_{"HOME", folder_.file("home")};
    Environment config_{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(PresetFiles, TheSearchGoesFromTheEnvironmentOverTheUserToTheProgram) {
    const auto folders = sonivex_tool::presetFolders();
    ASSERT_EQ(folders.size(), 4U);
    EXPECT_EQ(folders[0], folder_.file("first"));
    EXPECT_EQ(folders[1], folder_.file("second"));
    EXPECT_EQ(folders[2], folder_.file("home/.config/sonivex/presets"));
    EXPECT_EQ(folders[3],
              fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "share/sonivex/presets");

    const std::vector<std::string> places = {"home/.config/sonivex/presets", "second", "first"};
    for (const std::string& place : places) {
        const std::string path = folder_.file(place + "/mine.preset");
        test::writeFile(path, "voice = 2\n");
        EXPECT_EQ(sonivex_tool::findPreset("mine"), path);
        EXPECT_EQ(sonivex_tool::findPreset("mine.preset"), path);
    }
}

TEST_F(PresetFiles, TheUsersFolderFollowsTheConfigurationFolder) {
    const Environment config("XDG_CONFIG_HOME", folder_.file("config"));
    EXPECT_EQ(sonivex_tool::presetFolders()[2], folder_.file("config/sonivex/presets"));
    const Environment relative("XDG_CONFIG_HOME", "config");  // to be ignored
    EXPECT_EQ(sonivex_tool::presetFolders()[2], folder_.file("home/.config/sonivex/presets"));
    const Environment homeless("HOME", std::nullopt);
    EXPECT_EQ(sonivex_tool::presetFolders().size(), 3U);
    EXPECT_THROW(sonivex_tool::savedPresetPath("mine"), Failure);
}

TEST_F(PresetFiles, APathIsTakenAsItIs) {
    EXPECT_EQ(sonivex_tool::findPreset("./mine.txt"), "./mine.txt");
    EXPECT_EQ(sonivex_tool::savedPresetPath("/tmp/mine.txt"), "/tmp/mine.txt");
}

TEST_F(PresetFiles, AnUnknownNameIsRefusedWithTheNearest) {
    test::writeFile(folder_.file("first/evening.preset"), "");
    EXPECT_THAT(refusalOf("evenign"), HasSubstr("unknown preset \"evenign\"; did you mean \"evening\"?"));
    EXPECT_THAT(refusalOf("zzzzzz"), HasSubstr("unknown preset \"zzzzzz\" ("));
    EXPECT_THAT(refusalOf(""), HasSubstr("unknown preset"));
}

TEST_F(PresetFiles, TheListHasEachNameOnceWithItsTitle) {
    test::writeFile(folder_.file("first/both.preset"), "#  The first one \nvoice = 2\n");
    test::writeFile(folder_.file("second/both.preset"), "# The second one\n");
    test::writeFile(folder_.file("second/aaa.preset"), "voice = 2\n# no title\n");
    test::writeFile(folder_.file("second/notes.txt"), "# no preset\n");
    fs::create_directories(folder_.file("second/folder.preset"));
    std::vector<std::string> seen;
    for (const auto& preset : sonivex_tool::allPresets()) {
        if (preset.path.string().rfind(folder_.path(), 0) == 0)
            seen.push_back(preset.name + ":" + preset.title);
    }
    EXPECT_THAT(seen, testing::ElementsAre("aaa:", "both:The first one "));
}

TEST_F(PresetFiles, AnUnreadableFileIsRefused) {
    const auto why = [](const std::string& path) -> std::string {
        try {
            return "read: " + sonivex_tool::readPreset(path);
        } catch (const Failure& failure) {
            return failure.what();
        }
    };
    EXPECT_THAT(why(folder_.file("none")), HasSubstr("none\": No such file"));
    EXPECT_THAT(why(folder_.path()), HasSubstr("not a file"));
    EXPECT_THAT(why("/dev/zero"), HasSubstr("not a file"));
    test::writeFile(folder_.file("long"), std::string(65537, '#'));
    EXPECT_THAT(why(folder_.file("long")), HasSubstr("64 KiB"));
    test::writeFile(folder_.file("binary"), std::string("a\0b", 3));
    EXPECT_THAT(why(folder_.file("binary")), HasSubstr("not a text file"));
    test::writeFile(folder_.file("good"), "voice = 2\n");
    EXPECT_EQ(why(folder_.file("good")), "read: voice = 2\n");
}

TEST_F(PresetFiles, SavingCreatesTheUsersFolder) {
    const Environment config("XDG_CONFIG_HOME", folder_.file("new"));
    EXPECT_EQ(sonivex_tool::savedPresetPath("mine"), folder_.file("new/sonivex/presets/mine.preset"));
    EXPECT_TRUE(fs::is_directory(folder_.file("new/sonivex/presets")));
    for (const char* name : {"", ".hidden", "-x", ".preset"})
        EXPECT_THROW(sonivex_tool::savedPresetPath(name), Failure) << name;
    test::writeFile(folder_.file("file"), "");
    const Environment blocked("XDG_CONFIG_HOME", folder_.file("file"));
    try {
        sonivex_tool::savedPresetPath("mine");
        FAIL() << "saved below a file";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputNotWritable);
    }
}

}  // namespace
