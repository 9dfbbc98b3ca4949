// Uses every effect of the installed library by its common interface and by a function of its own.
#include <sonivex/sonivex.h>
#include <stdio.h>

static int failed(const char* what) {
    fprintf(stderr, "%s\n", what);
    return 1;
}

int main(void) {
    static int16_t in[1024], out[1024];
    for (int i = 0; i < 1024; ++i) in[i] = (int16_t)(i % 100);

    void* normalizer = aem_CreateNormalizer(2, 48000);
    const int written = aem_ProcessNormalizer(normalizer, in, out, 512, 2);
    aem_ReleaseNormalizer(normalizer);
    if (written != 1024 || out[99] <= 900)
        return failed("the normalizer's own functions do not raise the sound");

    SonivexEffect* effects[3] = {NULL, NULL, NULL};
    const int statuses[3] = {sonivex_create_normalizer(&effects[0], 2, 48000),
                             sonivex_create_surround(&effects[1], 2, 48000, 1, 1, 1),
                             sonivex_create_dialogue(&effects[2], 48000, 1.0)};
    const int kinds[3] = {SONIVEX_NORMALIZER, SONIVEX_SURROUND, SONIVEX_DIALOGUE};
    for (int i = 0; i < 3; ++i) {
        if (!sonivex_has_effect(kinds[i])) {
            if (statuses[i] != SONIVEX_ERROR_NOT_BUILT)
                return failed("an effect is neither there nor missing");
            continue;
        }
        if (statuses[i] != SONIVEX_OK) return failed(sonivex_status_text(statuses[i]));
        int loudest = 0;
        for (int call = 0; call < 20; ++call) {
            if (sonivex_process_int16(effects[i], in, out, 512) != SONIVEX_OK) return failed("a call failed");
            for (int k = 0; k < 1024; ++k) loudest = out[k] > loudest ? out[k] : loudest;
        }
        if (loudest < 50) return failed("an effect is silent");
        printf("effect %d: peak in 99, out %d, latency %d frames\n", kinds[i], loudest,
               sonivex_stream_latency_frames(effects[i]));
        sonivex_release(effects[i]);
    }
    printf("version %s\n", sonivex_version());
    return 0;
}
