#pragma once

// Owning pointers to the objects of the FFmpeg libraries, and the text of the libraries' errors.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <new>
#include <string>

#include "vorlin/owned_av_frame.h"

namespace sonivex_tool {

/** The unit of the times of a container, as opposed to those of its streams. AV_TIME_BASE_Q is not C++. */
constexpr AVRational kMicrosecond{1, AV_TIME_BASE};

/** Frees each kind of object with the function of its library. */
struct AvDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};

using FramePtr = Vorlin::OwnedAVFrame;
using PacketPtr = std::unique_ptr<AVPacket, AvDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, AvDeleter>;
using ResamplerPtr = std::unique_ptr<SwrContext, AvDeleter>;
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, AvDeleter>;

/** Returns `object` if it is not null. @throw std::bad_alloc if it is null */
template <typename Object>
Object* allocated(Object* object) {
    if (object == nullptr) throw std::bad_alloc();
    return object;
}

/** Describes an FFmpeg error code: "No such file or directory". */
inline std::string errorText(int averror) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(averror, text, sizeof text);
    return text;
}

/** Describes an FFmpeg error code of an input. An absurd size in a damaged file is the likeliest reason for a
 *  lack of memory. */
inline std::string inputErrorText(int averror) {
    if (averror == AVERROR(ENOMEM)) return "it asks for more memory than there is; it may be damaged";
    return errorText(averror);
}

/** An AVDictionary that frees itself. */
class Dictionary {
  public:
    Dictionary() = default;
    Dictionary(const Dictionary& other) { av_dict_copy(&entries_, other.entries_, 0); }
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() { av_dict_free(&entries_); }

    /** Sets `key` to `value`. @param flags AV_DICT_* */
    void set(const std::string& key, const std::string& value, int flags = 0) {
        av_dict_set(&entries_, key.c_str(), value.c_str(), flags);
    }
    /** The value of `key`, or null. The pointer is valid until the dictionary changes. */
    const char* get(const std::string& key) const {
        const AVDictionaryEntry* entry = av_dict_get(entries_, key.c_str(), nullptr, 0);
        return entry != nullptr ? entry->value : nullptr;
    }
    /** The underlying dictionary; null while it is empty. */
    const AVDictionary* entries() const { return entries_; }
    /** The address that FFmpeg functions take to read and replace the dictionary. */
    AVDictionary** address() { return &entries_; }

  private:
    AVDictionary* entries_ = nullptr;
};

}  // namespace sonivex_tool
