#include "metadata.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace sonivex_tool;

// A file in memory with one stream and with tags on both.
class File {
  public:
    explicit File(const char* format) {
        context_ = avformat_alloc_context();
        context_->oformat = av_guess_format(format, nullptr, nullptr);
        context_->iformat = av_find_input_format(format);
        avformat_new_stream(context_, nullptr);
    }
    ~File() {
        context_->iformat = nullptr;
        avformat_free_context(context_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void tag(const char* key, const char* value) { av_dict_set(&context_->metadata, key, value, 0); }
    void tagStream(const char* key, const char* value) { av_dict_set(&stream().metadata, key, value, 0); }
    std::string tagOf(const char* key) const { return valueIn(context_->metadata, key); }
    std::string streamTagOf(const char* key) const { return valueIn(context_->streams[0]->metadata, key); }
    AVFormatContext& context() { return *context_; }
    AVStream& stream() { return *context_->streams[0]; }

  private:
    static std::string valueIn(const AVDictionary* tags, const char* key) {
        const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
        return entry != nullptr ? entry->value : "";
    }

    AVFormatContext* context_ = nullptr;
};

void copy(File& from, File& to) {
    copyMetadata(from.context(), from.stream(), to.context(), to.stream());
}

TEST(MetadataCopy, KeepsTheTagsOfTheFileAndOfTheStream) {
    File from("matroska");
    File to("matroska");
    from.tag("title", "Song");
    from.tagStream("language", "swe");
    copy(from, to);
    EXPECT_EQ(to.tagOf("title"), "Song");
    EXPECT_EQ(to.streamTagOf("language"), "swe");
    EXPECT_EQ(to.tagOf("language"), "");
}

TEST(MetadataCopy, OmitsTagsThatDescribeTheOldFile) {
    const auto keys = {"ENCODER",      "major_brand",           "handler_name",
                       "DURATION-eng", "_STATISTICS_TAGS",      "iTunSMPB",
                       "BPS",          "REPLAYGAIN_TRACK_GAIN", "R128_TRACK_GAIN"};
    File from("matroska");
    File to("matroska");
    for (const char* key : keys) {
        from.tag(key, "1");
        from.tagStream(key, "1");
    }
    copy(from, to);
    for (const char* key : keys) {
        EXPECT_EQ(to.tagOf(key), "") << key;
        EXPECT_EQ(to.streamTagOf(key), "") << key;
    }
}

TEST(MetadataCopy, MovesTagsOfAnOggStreamToTheFileOfOtherFormats) {
    File ogg("ogg");
    File flac("flac");
    ogg.tagStream("artist", "Band");
    copy(ogg, flac);
    EXPECT_EQ(flac.tagOf("artist"), "Band");
}

TEST(MetadataCopy, KeepsApartWhatTheFileAndTheStreamDisagreeOn) {
    for (const char* format : {"matroska", "ogg"}) {
        File from("matroska");
        File to(format);
        from.tag("title", "Film");
        from.tagStream("title", "Commentary");
        from.tagStream("language", "swe");
        copy(from, to);
        EXPECT_EQ(to.tagOf("title"), "Film") << format;
        EXPECT_EQ(to.streamTagOf("title"), "Commentary") << format;
        EXPECT_EQ(to.tagOf("language"), "") << format;
    }
}

TEST(MetadataCopy, DoesNotReplaceTagsThatTheOutputHas) {
    File from("ogg");
    File to("matroska");
    from.tag("title", "Film");
    from.tagStream("title", "Commentary");
    from.tagStream("artist", "Band");
    to.tag("artist", "Orchestra");
    to.tagStream("title", "Own");
    copy(from, to);
    EXPECT_EQ(to.tagOf("title"), "Film");
    EXPECT_EQ(to.tagOf("artist"), "Orchestra");
    EXPECT_EQ(to.streamTagOf("title"), "Own");
    EXPECT_EQ(to.streamTagOf("artist"), "Band");
}

}  // namespace
