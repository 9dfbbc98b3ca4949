/* Surround for headphones in a pipe: a whole program around the library, which needs no FFmpeg of its own.
 *
 *   ffmpeg -i film.mkv -f s16le -ac 6 -ar 48000 - | surround-pipe 6 48000 3DSurround | aplay -f dat
 *
 * Standard input and output are interleaved 16-bit samples in this machine's byte order, without a header.
 * The channels stand in the order of FFmpeg and of WAV files. The output is stereo, in step with the input,
 * and goes on after its end until the room has fallen silent. The program ends with 0, with 1 after a
 * failure, or with 2 for a wrong command. */
#include <sonivex/effect.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Calls of whole blocks have no delay. */
enum { kBlock_frames = 240, kMostChannels = 8, kEars = 2 };
enum { kTypeSurround = 1, kTypeMegaBass = 13, kMediumRoom = 2 };

static int failed(const char* what) {
    fprintf(stderr, "surround-pipe: %s\n", what);
    return EXIT_FAILURE;
}

/* Reads a positive number, or returns 0, which the library refuses. */
static int number(const char* word) {
    char* end = NULL;
    const long value = strtol(word, &end, 10);
    return *word != '\0' && *end == '\0' && value > 0 && value < 1000000 ? (int)value : 0;
}

/* Renders a block, of which the first frames go out. Returns 0 if they could not be written. */
static int render(SonivexEffect* effect, const int16_t* in, int frames) {
    int16_t out[kBlock_frames * kEars];
    sonivex_process_int16(effect, in, out, kBlock_frames);
    const size_t samples = (size_t)frames * kEars;
    return fwrite(out, sizeof *out, samples, stdout) == samples;
}

/* Renders the input and, after it, silence for the tail of the effect. */
static int pipe_through(SonivexEffect* effect) {
    int16_t in[kBlock_frames * kMostChannels];
    const size_t frame_bytes = sizeof *in * (size_t)sonivex_input_channels(effect);
    int tail = sonivex_tail_frames(effect);
    int is_cut = 0; /* within a frame */
    for (int is_over = 0; !is_over || tail > 0;) {
        const size_t bytes = is_over ? 0 : fread(in, 1, kBlock_frames * frame_bytes, stdin);
        if (ferror(stdin)) return failed("cannot read the input");
        const int frames = (int)(bytes / frame_bytes);
        is_cut |= bytes % frame_bytes != 0;
        is_over = frames < kBlock_frames;
        memset((char*)in + (size_t)frames * frame_bytes, 0, sizeof in - (size_t)frames * frame_bytes);
        const int silence = kBlock_frames - frames < tail ? kBlock_frames - frames : tail;
        if (!render(effect, in, frames + silence)) return failed("cannot write the output");
        tail -= silence;
    }
    if (fflush(stdout) != 0) return failed("cannot write the output");
    return is_cut ? failed("the input ends within a frame") : EXIT_SUCCESS;
}

int main(int argc, char** argv) {
    const int is_mega_bass = argc == 4 && strcmp(argv[3], "MegaBass") == 0;
    if (argc != 4 || (!is_mega_bass && strcmp(argv[3], "3DSurround") != 0)) {
        fprintf(stderr, "usage: surround-pipe CHANNELS RATE 3DSurround|MegaBass <IN >OUT\n");
        return 2;
    }
    const int type = is_mega_bass ? kTypeMegaBass : kTypeSurround;
    SonivexEffect* effect = NULL;
    const int status =
        sonivex_create_surround(&effect, number(argv[1]), number(argv[2]), type, kMediumRoom, 1);
    if (status != SONIVEX_OK) return failed(sonivex_status_text(status));
    const int result = pipe_through(effect);
    sonivex_release(effect);
    return result;
}
