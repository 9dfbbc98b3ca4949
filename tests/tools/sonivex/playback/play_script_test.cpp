#include "play_script.h"

#include <gmock/gmock.h>

#include "failure.h"

namespace {

using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using sonivex_tool::parseScript;
using sonivex_tool::PlayAction;
using testing::HasSubstr;

TEST(PlayScript, ReadsTimesAndKeys) {
    const auto keys = parseScript(" 0.5 e;2 right ; 2 V;10 q; ");
    ASSERT_EQ(keys.size(), 4U);
    EXPECT_EQ(keys[0].time_s, 0.5);
    EXPECT_EQ(keys[0].action, PlayAction::ToggleEffect);
    EXPECT_EQ(keys[1].action, PlayAction::Forward);
    EXPECT_EQ(keys[2].action, PlayAction::LowerVoice);
    EXPECT_EQ(keys[3].time_s, 10.0);
    EXPECT_EQ(keys[3].action, PlayAction::Quit);
    EXPECT_TRUE(parseScript("").empty());
}

TEST(PlayScript, SaysWhatIsWrong) {
    for (const auto& [text, reason] : {std::pair{"e", "must be a time"},
                                       {"1", "must be a time"},
                                       {"1 e x", "must be"},
                                       {"-1 e", "no time"},
                                       {"nan e", "must be"},
                                       {"1 zz", "unknown key \"zz\""},
                                       {"1 rigth", "did you mean \"right\"?"},
                                       {"2 e; 1 e", "before that"}}) {
        SCOPED_TRACE(text);
        try {
            parseScript(text);
            ADD_FAILURE() << "it was accepted";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
            EXPECT_THAT(failure.what(), HasSubstr(reason));
        }
    }
}

}  // namespace
