// Calls an effect's own functions in the plug-in that the program links.
#include <sonivex/normalizer.h>

int main(void) {
    static short in[1024], out[1024];
    for (int i = 0; i < 1024; ++i) in[i] = (short)(i % 100);
    void* normalizer = aem_CreateNormalizer(2, 48000);
    const int written = aem_ProcessNormalizer(normalizer, in, out, 512, 2);
    aem_ReleaseNormalizer(normalizer);
    return written == 1024 && out[99] > 900 ? 0 : 1;
}
