#include "media_names.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::isWritableExtension;
using sonivex_tool::looksLikeMedia;

TEST(MediaNames, KnowsAudioAndFilmsByTheirExtensionInAnyCase) {
    for (const char* name : {"a.flac", "a.FLAC", "b/c.Mkv", "x.y.mp3", "3.3gp", "z.wv"})
        EXPECT_TRUE(looksLikeMedia(name)) << name;
    for (const char* name : {"a.txt", "flac", "a.flac.part", "cover.jpg", "", "a.", ".flac"})
        EXPECT_FALSE(looksLikeMedia(name)) << name;
}

TEST(MediaNames, KnowsWhichExtensionsCanBeWritten) {
    for (const char* extension : {"wav", "flac", "mp3", "mkv", "m4a", "opus"})
        EXPECT_TRUE(isWritableExtension(extension)) << extension;
    // No encoder exists for Monkey's Audio, "sw" is bare samples, "png" is a picture.
    for (const char* extension : {"ape", "sw", "png", "xyz", "", "srt", ".wav", "x/y.wav"})
        EXPECT_FALSE(isWritableExtension(extension)) << extension;
}

TEST(MediaNames, KnowsTheExtensionOfAFormat) {
    EXPECT_EQ(sonivex_tool::extensionOfFormat("matroska"), "mkv");
    EXPECT_EQ(sonivex_tool::extensionOfFormat("flac"), "flac");
    EXPECT_EQ(sonivex_tool::extensionOfFormat("no such format"), "");
}

}  // namespace
