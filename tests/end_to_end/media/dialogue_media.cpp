#include "end_to_end/media/dialogue_media.h"

#include "end_to_end/media/media.h"

namespace test {

void makeDialogueMix(const std::string& speech, const std::string& background, const std::string& mix,
                     int seconds) {
    const std::string folder = SONIVEX_SPEECH_FOLDER;
    const std::string samples = std::to_string(48000 * seconds);
    ffmpeg({"-stream_loop", "-1", "-i", folder + "/Front_Center.wav", "-af",
            "atrim=end_sample=" + samples + ",volume=-9dB,pan=stereo|c0=c0|c1=c0", "-c:a", "pcm_s16le",
            speech});
    const std::string noise = "anoisesrc=color=pink:sample_rate=48000:amplitude=0.1:seed=";
    ffmpeg({"-f", "lavfi", "-i", noise + "1", "-f", "lavfi", "-i", noise + "2", "-filter_complex",
            "join=inputs=2:channel_layout=stereo,atrim=end_sample=" + samples, "-c:a", "pcm_s16le",
            background});
    ffmpeg({"-i", speech, "-i", background, "-filter_complex", "amix=inputs=2:normalize=0", "-c:a",
            "pcm_s16le", mix});
}

}  // namespace test
