#include "frame_stream.h"

#include <memory>

#include "audio_source.h"
#include "interrupt.h"
#include "pcm_file.h"

namespace sonivex_tool {

FrameStream openFrameStream(const std::string& path, const std::optional<PcmFormat>& format) {
    if (!format) {
        auto source = std::make_shared<AudioSource>(InputSettings{.path = path});
        return {source->info().codec, source->info().spec, [source] { return source->read(); }, 0,
                [source] { return source->damageReport(); }};
    }
    auto file = std::make_shared<PcmFile>(path, *format);
    return {avcodec_get_name(AV_NE(AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S16LE)), file->spec(),
            [file] {
                throwIfInterrupted();
                return file->read();
            },
            file->restBytes()};
}

}  // namespace sonivex_tool
