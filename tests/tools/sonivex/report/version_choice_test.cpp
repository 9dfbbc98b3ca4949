#include "version_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "failure.h"

namespace {

using sonivex_tool::Failure;
using sonivex_tool::parseVersion;
using testing::HasSubstr;

std::string refusal(const std::string& text) {
    try {
        (void)parseVersion(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), sonivex_tool::ExitCode::Usage);
        return failure.what();
    }
    return "";
}

TEST(VersionChoices, NameEffectsInTheirOrderWithTheirSettings) {
    const auto version = parseVersion("dialogue:voice=2.5,surround:type=MegaBass:mode=3:limiter=off");
    ASSERT_EQ(version.chain.size(), 2U);
    EXPECT_EQ(version.chain[0]->name, "dialogue");
    EXPECT_EQ(version.chain[1]->name, "surround");
    EXPECT_EQ(version.options.voice, 2.5);
    EXPECT_EQ(version.options.surround_type, "MegaBass");
    EXPECT_EQ(version.options.surround_mode, 3);
    EXPECT_TRUE(version.options.no_limiter);
    EXPECT_EQ(titleOf(version), "dialogue (voice 2.5), surround (MegaBass, mode 3, no limiter)");
    EXPECT_EQ(fileNameOf(version), "dialogue-voice-2-5-surround-megabass-mode-3-no-limiter");
}

TEST(VersionChoices, TellWhatIsWrong) {
    EXPECT_THAT(refusal("normalzer"),
                HasSubstr("unknown effect \"normalzer\"; did you mean \"normalizer\"?"));
    EXPECT_THAT(refusal(""), HasSubstr("name is missing"));
    EXPECT_THAT(refusal("dialogue,"), HasSubstr("name is missing"));
    EXPECT_THAT(refusal("dialogue,dialogue"), HasSubstr("names dialogue twice"));
    EXPECT_THAT(refusal("dialogue:voice"), HasSubstr("must be SETTING=VALUE"));
    EXPECT_THAT(refusal("dialogue:voice=0.5"), HasSubstr("voice must be 1 or more"));
    EXPECT_THAT(refusal("dialogue:voice=nan"), HasSubstr("must be a number"));
    EXPECT_THAT(refusal("dialogue:voice=1x"), HasSubstr("must be a number"));
    EXPECT_THAT(refusal("normalizer:voice=3"), HasSubstr("normalizer has no setting \"voice\""));
    EXPECT_THAT(refusal("surround:mode=2"), HasSubstr("add type=MegaBass"));
    EXPECT_THAT(refusal("surround:type=Megabass"), HasSubstr("did you mean \"MegaBass\"?"));
    EXPECT_THAT(refusal("surround:type=MegaBass:mode=4"), HasSubstr("mode must be 1, 2 or 3"));
    EXPECT_THAT(refusal("surround:limiter=maybe"), HasSubstr("limiter must be on or off"));
    EXPECT_THAT(refusal("surround:tpye=MegaBass"), HasSubstr("did you mean \"type\"?"));
}

TEST(VersionChoices, MustDiffer) {
    const auto different = {parseVersion("dialogue:voice=3"), parseVersion("dialogue:voice=4"),
                            parseVersion("dialogue"), parseVersion("dialogue,normalizer")};
    EXPECT_NO_THROW(requireDifferent(different));
    const auto same = {parseVersion("surround"), parseVersion("normalizer"), parseVersion("surround")};
    EXPECT_THROW(requireDifferent(same), Failure);
}

}  // namespace
